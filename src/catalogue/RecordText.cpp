#include "catalogue/RecordText.h"

#include "foundation/StreamText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iomanip>
#include <locale>

namespace aut
{
namespace
{
constexpr char kEmptyWord[] = "~";
constexpr char kEscapedBlank[] = "%20";
constexpr int kEnd = std::char_traits<char>::eof();

/// White space and digits of the classic locale.
bool isSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(int c) { return c >= '0' && c <= '9'; }

/// Whether the stream reads and writes as it does when nobody has told it otherwise.
bool isPlain(const std::ios& stream)
{
    const std::ios_base::fmtflags changed = std::ios_base::basefield | std::ios_base::showpos | std::ios_base::unitbuf;
    return (stream.flags() & changed) == std::ios_base::dec && stream.width() == 0 && stream.tie() == nullptr &&
           stream.getloc() == std::locale::classic();
}

bool isPlainReader(const std::istream& stream)
{
    return isPlain(stream) && (stream.flags() & std::ios_base::skipws) != 0;
}

/// Takes the digits of a number, the sign before them; the character behind them stays. False when there are none or
/// they are too many. Sets `atEnd` when the stream ends with them.
bool scanInteger(std::streambuf& buffer, long long least, long long most, long long& value, bool& atEnd)
{
    int c = buffer.sgetc();
    const bool isNegative = c == '-';
    if (c == '-' || c == '+')
        c = buffer.snextc();
    const bool hasDigits = isDigit(c);
    // Counted below zero, where there is one number more. What is past the limit is read to its end all the same.
    const long long limit = isNegative ? least : -most;
    long long negative = 0;
    bool fits = true;
    for (; isDigit(c); c = buffer.snextc())
    {
        const int digit = c - '0';
        fits = fits && (negative > limit / 10 || (negative == limit / 10 && digit <= -(limit % 10)));
        if (fits)
            negative = negative * 10 - digit;
    }
    atEnd = c == kEnd;
    value = isNegative ? negative : -negative;
    return hasDigits && fits;
}

/// Skips white space; false at the end.
bool skipSpace(std::streambuf& buffer)
{
    int c = buffer.sgetc();
    while (isSpace(c))
        c = buffer.snextc();
    return c != kEnd;
}
} // namespace

bool isBroken(const std::istream& stream) { return stream.bad() || (stream.fail() && !stream.eof()); }

RecordReader::RecordReader(std::istream& stream) : m_stream(stream), m_isPlain(isPlainReader(stream)) {}

bool RecordReader::scanInteger(long long& value, long long least, long long most)
{
    if (!m_stream.good())
        return false;
    std::ios_base::iostate state = std::ios_base::goodbit;
    bool isRead = false;
    try
    {
        bool atEnd = !skipSpace(*m_stream.rdbuf());
        if (!atEnd)
        {
            isRead = aut::scanInteger(*m_stream.rdbuf(), least, most, value, atEnd);
            if (!isRead) // the end flag alone would make it look like a number left out
                state |= std::ios_base::failbit | std::ios_base::badbit;
        }
        if (atEnd)
            state |= std::ios_base::eofbit;
    }
    catch (const std::exception&) // the disk fails
    {
        isRead = false;
        state = std::ios_base::badbit;
    }
    if (state != std::ios_base::goodbit)
        m_stream.setstate(state);
    return isRead;
}

std::size_t RecordReader::scanWord(char* buffer, std::size_t maxChars)
{
    std::ios_base::iostate state = std::ios_base::goodbit;
    std::size_t length = 0;
    if (!m_stream.good())
    {
        m_stream.setstate(std::ios_base::failbit);
        return 0;
    }
    std::streambuf& characters = *m_stream.rdbuf();
    try
    {
        int c = skipSpace(characters) ? characters.sgetc() : kEnd;
        for (; c != kEnd && !isSpace(c) && length < maxChars; c = characters.snextc())
            buffer[length++] = static_cast<char>(c);
        if (c == kEnd)
            state |= std::ios_base::eofbit;
        if (length == 0 || (c != kEnd && !isSpace(c))) // nothing, or the middle of a longer word
            state |= std::ios_base::failbit;
    }
    catch (const std::exception&)
    {
        length = 0;
        state = std::ios_base::badbit;
    }
    if (state != std::ios_base::goodbit)
        m_stream.setstate(state);
    return length;
}

std::size_t RecordReader::extractWord(char* buffer, std::size_t maxChars)
{
    std::string word;
    if (!(m_stream >> std::setw(static_cast<int>(maxChars)) >> word))
        return 0;
    std::memcpy(buffer, word.data(), word.size());
    // The width stops within a longer word. At the end of the stream peeking sets the end flag, as reading a word does.
    const int next = m_stream.good() ? m_stream.peek() : kEnd;
    if (next != kEnd && !std::isspace(static_cast<char>(next), m_stream.getloc()))
        m_stream.setstate(std::ios_base::failbit);
    return word.size();
}

void unescape(char* word)
{
    if (std::strchr(word, *kEscapedBlank) != nullptr) // most words are their own text
        ConvertInputStreamString(word, word);         // which never becomes longer
}

void unescapeOptional(char* word, std::size_t length)
{
    if (std::string_view(word, length) == kEmptyWord)
        *word = '\0';
    else
        unescape(word);
}

RecordWriter::RecordWriter(std::ostream& stream) : m_stream(stream), m_isPlain(isPlain(stream)) {}

void RecordWriter::append(std::string_view characters)
{
    if (characters.size() > sizeof m_pending - m_length)
        flush();
    if (characters.size() > sizeof m_pending)
    {
        m_stream.write(characters.data(), static_cast<std::streamsize>(characters.size()));
        return;
    }
    std::memcpy(m_pending + m_length, characters.data(), characters.size());
    m_length += characters.size();
}

void RecordWriter::flush()
{
    if (m_length > 0)
        m_stream.write(m_pending, static_cast<std::streamsize>(m_length));
    m_length = 0;
}

void RecordWriter::appendInteger(long long value)
{
    char digits[std::numeric_limits<long long>::digits10 + 3];
    char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    *end = '\n';
    append({digits, static_cast<std::size_t>(end + 1 - digits)});
}

void RecordWriter::text(std::string_view text)
{
    std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos) // most texts are their own word
    {
        word(text);
        return;
    }
    std::string whole; // for a stream that pads its words
    for (; blank != std::string_view::npos; blank = text.find(' '))
    {
        appendPart(whole, text.substr(0, blank));
        appendPart(whole, kEscapedBlank);
        text.remove_prefix(blank + 1);
    }
    appendPart(whole, text);
    if (m_isPlain)
        append("\n");
    else
        word(whole);
}

void RecordWriter::appendPart(std::string& whole, std::string_view part)
{
    if (m_isPlain)
        append(part);
    else
        whole.append(part);
}

void RecordWriter::optionalText(std::string_view text) { text.empty() ? word(kEmptyWord) : this->text(text); }

void RecordWriter::word(std::string_view word)
{
    if (!m_isPlain)
    {
        m_stream << word << '\n';
        return;
    }
    append(word);
    append("\n");
}
} // namespace aut
