#include "tests/torture/fuzz/Fuzz.h"

#include "foundation/RT_List.h"
#include "foundation/String.h"

#include <string>
#include <vector>

namespace
{
using torture::Differences;
using torture::Generator;

const torture::Words kWords = {"", "a", "Level 1", "{4D36E96E}", "7xAutoUpdate", "x y"};

/// Both lists, and the position that the library gave for each element.
struct Twins
{
    struct Element
    {
        std::string text;
        POSITION position;
    };
    std::vector<Element> elements;
    RT_List<String, String&> library;
};

void expectSame(const Twins& twins, Differences& differences)
{
    differences.expect("GetCount", static_cast<int>(twins.elements.size()), twins.library.GetCount());
    differences.expect("IsEmpty", twins.elements.empty(), twins.library.IsEmpty());
    POSITION at = twins.library.GetHeadPosition();
    for (const Twins::Element& element : twins.elements)
    {
        differences.expect("position", true, at == element.position);
        if (at == nullptr)
            return;
        differences.expect("element", element.text, std::string(static_cast<const char*>(twins.library.GetNext(at))));
    }
    differences.expect("the end", true, at == nullptr);
}

void change(Twins& twins, Generator& input, Differences& differences)
{
    auto& elements = twins.elements;
    const int kind = input.number(0, 9);
    if (kind < 3 || (kind < 6 && elements.empty()))
    {
        const std::string text = input.text(kWords, 300);
        String value(text.c_str());
        if (kind == 0)
            elements.insert(elements.begin(), {text, twins.library.AddHead(value)});
        else
            elements.push_back({text, twins.library.AddTail(value)});
    }
    else if (kind < 5)
    {
        const std::size_t at = input.below(static_cast<unsigned>(elements.size()));
        twins.library.RemoveAt(elements[at].position);
        elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(at));
    }
    else if (kind == 5)
    {
        const String head = twins.library.RemoveHead();
        differences.expect("RemoveHead", elements.front().text, std::string(static_cast<const char*>(head)));
        elements.erase(elements.begin());
    }
    else if (kind == 6)
        twins.library.RemoveAt(nullptr);
    else if (kind == 7 && input.oneIn(4))
    {
        twins.library.RemoveAll();
        elements.clear();
    }
    else if (!elements.empty()) // what GetNext returns is the element itself
    {
        const std::size_t at = input.below(static_cast<unsigned>(elements.size()));
        POSITION position = elements[at].position;
        elements[at].text = input.text(kWords, 100);
        twins.library.GetNext(position) = elements[at].text.c_str();
    }
}

void checkList(Generator& input, Differences& differences)
{
    Twins twins;
    for (int left = input.number(1, 30); left > 0 && differences.text().empty(); --left)
    {
        change(twins, input, differences);
        expectSame(twins, differences);
    }
}
} // namespace

AUTOOLS_FUZZ_TARGET(List, "lists", checkList)
