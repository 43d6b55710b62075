// The lists of most recent levels: insertion, bound, levels still in use, and the folders of those that are dropped.

#include "registry/CRegComponent.h"
#include "registry/CRegProductForComponent.h"
#include "tests/support/ClientRegistry.h"
#include "tests/torture/fuzz/data/Batches.h"

#include <algorithm>
#include <map>

namespace
{
using torture::Differences;
using torture::Generator;
using Texts = std::vector<std::string>;

constexpr char kComponent[] = "Component";
constexpr char kKey[] = "Components\\Component";
constexpr char kFolder[] = "C:\\Components";

const torture::Words& levels()
{
    static const torture::Words all = {"3.0", "3.1",  "3.1_EN", "3.1_en", "2.9B1_FR", "V2.9b1_fr", "10",  "..",
                                       ". .", "a\\b", "a/b",    "c:d",    " ",        "x y",       "1.0."};
    return all;
}

std::string level(Generator& input)
{
    std::string text = input.oneIn(8) ? input.text(levels(), 40) : input.oneOf(levels());
    if (input.oneIn(20))
        text = input.oneIn(2) ? "NUL" : "Com1.0"; // devices, which are no folders
    if (input.oneIn(3))
        text = std::to_string(input.number(0, 40));
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == ',' || c == ';'; }), text.end());
    return text;
}

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return text;
}
bool contains(const Texts& texts, const std::string& text)
{
    return std::any_of(texts.begin(), texts.end(),
                       [&text](const std::string& other) { return lower(other) == lower(text); });
}

std::string joined(const Texts& texts, const char* separator)
{
    std::string all;
    for (const std::string& text : texts)
        all += (&text == &texts.front() ? "" : separator) + text;
    return all;
}

/// What is stored for the component, as the rules change it.
struct Model
{
    std::string stored;
    unsigned long most = 0;
    std::map<std::string, std::pair<std::string, std::string>> products; ///< version and language by name
    Texts removed;

    /// A text above 259 characters reads as none; empty pieces are none.
    Texts read() const
    {
        Texts all(1);
        for (const char c : stored.size() <= 259 ? stored : std::string())
        {
            if (c != ',' && c != ';')
                all.back() += c;
            else
                all.emplace_back();
        }
        all.erase(std::remove(all.begin(), all.end(), std::string()), all.end());
        return all;
    }

    void insert(const std::string& inserted)
    {
        removed.clear();
        Texts all = read();
        if (inserted.empty() || (all.size() == 1 && contains(all, inserted)))
            return;
        const auto there = std::find_if(all.begin(), all.end(),
                                        [&](const std::string& other) { return lower(other) == lower(inserted); });
        if (there != all.end())
            all.erase(there);
        all.insert(all.begin(), inserted);
        bound(all);
    }

    void bound(const Texts& all)
    {
        Texts used;
        for (const auto& [name, entry] : products)
            used.push_back(entry.first + (entry.second.empty() ? "" : "_" + entry.second));
        const std::size_t first = most < 1 ? 20 : most;
        Texts kept;
        Texts dropped;
        for (std::size_t i = 0; i < all.size(); ++i)
            (i < first || contains(used, all[i]) ? kept : dropped).push_back(all[i]);
        for (std::size_t i = 0; i < all.size(); ++i)
        {
            // A folder outside of the component's own is never handed out for deletion, nor is one that is still kept.
            const bool isDropped = i >= first && !contains(used, all[i]);
            const bool plain = all[i].find_first_of("\\/:") == std::string::npos && all[i].back() != '.' &&
                               all[i].back() != ' ' && lower(all[i]) != "nul" && lower(all[i]) != "com1.0";
            const Texts before(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(i));
            const bool keptBefore =
                std::any_of(before.begin(), before.end(),
                            [&](const std::string& other)
                            {
                                const auto at = static_cast<std::size_t>(&other - before.data());
                                return lower(other) == lower(all[i]) && (at < first || contains(used, other));
                            });
            if (isDropped && plain && !keptBefore)
                removed.push_back(std::string(kFolder) + "\\" + kComponent + "\\" + all[i]);
        }
        stored = joined(kept, ",");
    }
};

/// The registry as the library finds it, and the model beside it; both go on from input to input of one run of fifty.
class Component
{
public:
    void reset(Differences& ofThisInput)
    {
        differences = &ofThisInput;
        m_registry.removeKey("");
        m_registry.write("", "CompPath", kFolder);
        model = Model();
    }
    void store(const std::string& text)
    {
        m_registry.write(kKey, "Most_Recent_levels", text);
        model.stored = text;
    }
    void setMost(unsigned long most)
    {
        CRegComponent(false).SetMaxLevels(most);
        model.most = most;
    }
    void setProduct(const std::string& name, const std::string& version, const std::string& language)
    {
        m_registry.write(std::string(kKey) + "\\" + name, "ComponentVersion", version);
        m_registry.write(std::string(kKey) + "\\" + name, "Language", language);
        model.products[name] = {version, language};
    }
    std::string stored() const { return m_registry.readText(kKey, "Most_Recent_levels").value_or(""); }

    Model model;
    Differences* differences = nullptr;

private:
    const auttest::ClientRegistry m_registry;
};

Component* component = nullptr;

Texts textsOf(const RT_List<String, String&>& list)
{
    Texts texts;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
        texts.emplace_back(list.GetNext(pos));
    return texts;
}

constexpr int kInsertions = 20;

/// What is stored beforehand, by this client or an older one.
void drawStored(Generator& input, Texts& initial)
{
    initial.clear();
    for (int left = input.oneIn(4) ? input.number(20, 30) : input.number(0, 6); left > 0; --left)
        initial.push_back(level(input));
    const char* separators[] = {",", ";", ",,", ";,"};
    component->store(joined(initial, input.oneOf(separators)));

    RT_List<String, String&> read;
    component->differences->expect("reading", true, CRegComponent(kComponent, true).GetMostRecentLevels(read));
    component->differences->expect("levels", joined(component->model.read(), "|"), joined(textsOf(read), "|"));
}

void checkLevels(Generator& input, Differences& differences)
{
    component->reset(differences);
    Texts initial;
    drawStored(input, initial);
    CRegComponent key(kComponent, false);
    for (int i = 0; i < kInsertions; ++i)
    {
        const std::string chosen = initial.empty() || input.oneIn(2) ? level(input) : input.oneOf(initial);
        if (input.oneIn(6))
            drawStored(input, initial);
        if (input.oneIn(6))
            component->setMost(input.oneIn(3) ? 0 : static_cast<unsigned long>(input.number(1, 5)));
        if (input.oneIn(6))
        {
            const std::size_t line = chosen.find('_');
            component->setProduct(input.oneIn(2) ? "Product" : "Other", chosen.substr(0, line),
                                  line == std::string::npos ? "" : chosen.substr(line + 1));
        }
        const std::string inserted = input.oneIn(3) ? chosen : level(input);
        RT_List<String, String&> removed;
        key.InsertMostRecentLevel(inserted.c_str(), removed);
        component->model.insert(inserted);
        differences.expect("removed folders", joined(component->model.removed, "|"), joined(textsOf(removed), "|"));
        differences.expect("stored levels", component->model.stored, component->stored());
        if (!differences.text().empty())
            return;
    }
}
} // namespace

TEST(Fuzz, LevelListsAnswerAsTheModelDoes)
{
    Component ofThisTest;
    component = &ofThisTest;
    torture::fuzzBatches("level lists", "insertions", checkLevels, kInsertions, "a component");
    component = nullptr;
}
