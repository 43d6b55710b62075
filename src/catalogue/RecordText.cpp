#include "catalogue/RecordText.h"

#include "foundation/StreamText.h"

#include <cstring>
#include <iomanip>
#include <istream>
#include <locale>
#include <ostream>

namespace aut
{
namespace
{
constexpr char kEmptyWord[] = "~";
constexpr std::size_t kEscapedBlankChars = 3;
} // namespace

bool isBroken(const std::istream& stream) { return stream.bad() || (stream.fail() && !stream.eof()); }

std::string readWord(std::istream& stream, std::size_t maxChars)
{
    std::string word;
    if (!(stream >> std::setw(static_cast<int>(maxChars)) >> word))
        return std::string();
    // The width stops within a longer word. At the end of the stream peeking sets the end flag, as reading a word does.
    constexpr int kEnd = std::char_traits<char>::eof();
    const int next = stream.good() ? stream.peek() : kEnd;
    if (next != kEnd && !std::isspace(static_cast<char>(next), stream.getloc()))
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

void writeWord(std::ostream& stream, const char* text)
{
    if (std::strchr(text, ' ') == nullptr) // most texts are their own word
    {
        stream << text << '\n';
        return;
    }
    std::string word(kEscapedBlankChars * std::strlen(text) + 1, '\0');
    ConvertOutputStreamString(text, word.data());
    stream << word.c_str() << '\n';
}

void writeOptionalWord(std::ostream& stream, const char* text) { writeWord(stream, *text != '\0' ? text : kEmptyWord); }
} // namespace aut
