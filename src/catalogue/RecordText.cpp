#include "catalogue/RecordText.h"

#include "foundation/StreamText.h"
#include "platform/BoundedText.h"

#include <cctype>
#include <cstring>
#include <iomanip>
#include <istream>

namespace aut
{
namespace
{
constexpr char kEmptyWord[] = "~";
constexpr std::size_t kEscapedBlankChars = 3;
} // namespace

bool isBroken(const std::istream& stream) { return stream.fail() && !stream.eof(); }

std::string readWord(std::istream& stream, std::size_t maxChars)
{
    std::string word;
    if (!(stream >> std::setw(static_cast<int>(maxChars)) >> word))
        return std::string();
    // The width stops within a longer word. At the end of the stream peeking sets the end flag, as reading a word does.
    const int next = stream.good() ? stream.peek() : std::char_traits<char>::eof();
    if (next != std::char_traits<char>::eof() && std::isspace(next) == 0)
        stream.setstate(std::ios_base::failbit);
    return word;
}

std::string textOfWord(const std::string& word)
{
    std::string text(word.size() + 1, '\0');
    ConvertInputStreamString(word.c_str(), text.data());
    text.resize(std::strlen(text.c_str()));
    return text;
}

std::string textOfOptionalWord(const std::string& word)
{
    return word == kEmptyWord ? std::string() : textOfWord(word);
}

std::string wordOf(const char* text)
{
    std::string word(kEscapedBlankChars * std::strlen(orEmpty(text)) + 1, '\0');
    ConvertOutputStreamString(orEmpty(text), word.data());
    word.resize(std::strlen(word.c_str()));
    return word;
}

std::string optionalWordOf(const char* text) { return isEmpty(text) ? kEmptyWord : wordOf(text); }
} // namespace aut
