#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "foundation/StreamText.h"

#include <memory>
#include <string>
#include <vector>

namespace
{
namespace model = torture::model;

const torture::Words kWords = {" ",  "  ",   "%20",   "%2", "%", "%%20", "%2020", "20", "%25", "C:\\Program Files\\x",
                               "\t", "\r\n", "%20%20"};

/// What a conversion writes into a buffer of exactly the size that it needs.
std::string converted(void (*convert)(const char*, char*), const std::string& text, std::size_t length)
{
    const std::unique_ptr<char[]> out(new char[length + 1]);
    convert(text.c_str(), out.get());
    return out.get();
}

/// The text without its "%20", and a blank at each of those places.
std::string readBack(const std::string& text)
{
    std::string read;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t next = std::min(text.find("%20", at), text.size());
        read += text.substr(at, next - at);
        read += next < text.size() ? " " : "";
        at = next + 3;
    }
    return read;
}

void checkStreamText(torture::Generator& input, torture::Differences& differences)
{
    const std::string text = input.text(kWords);
    const std::string stored = model::join(model::split(text, ' '), "%20");
    differences.expect("written", stored, converted(ConvertOutputStreamString, text, stored.size()));
    const std::string read = readBack(text);
    differences.expect("read", read, converted(ConvertInputStreamString, text, read.size()));
    const std::string again = readBack(stored);
    differences.expect("read again", again, converted(ConvertInputStreamString, stored, again.size()));
    if (text.find("%20") == std::string::npos)
        differences.expect("a round", text, again);
}
} // namespace

AUTOOLS_FUZZ_TARGET(StreamText, "stream escaping", checkStreamText)
