#ifndef AUTOOLS_CATALOGUE_RECORDTEXT_H
#define AUTOOLS_CATALOGUE_RECORDTEXT_H

#include <cstddef>
#include <istream>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>

namespace aut
{
// The words of the catalogue's stream records. White space of any kind separates them; a line feed means nothing more.
// All but `isBroken` may throw: the records catch it.
//
// The end of the stream belongs to the format: the records test it where it matters, and a number read behind it keeps
// its value. What can be no record at all (another word where a number stands, a number or a word that is too long)
// breaks the stream, and a record that meets a broken stream fails: reading on would take one field's text for the
// next one's.
//
// A long list has a hundred thousand words. The stream's own << and >> look at its locale, its flags and its width for
// each of them; reader and writer look once a record, and where nobody has changed them, go to its characters.

/// Whether the stream was never readable or has met something that can be no record.
bool isBroken(const std::istream& stream);

/// Reads the words of one record.
class RecordReader
{
public:
    /// The stream must outlive the reader, and keep its format meanwhile.
    explicit RecordReader(std::istream& stream);

    /// Reads one number and skips the white space before it. At the end of the stream the number keeps its value; what
    /// is there and is no number of this type breaks the stream, even where it runs to the very end, and keeps the
    /// value too.
    /// @return false when the stream is broken
    template <typename Number> bool number(Number& value)
    {
        Number read = 0;
        if (m_isPlain ? scanNumber(read) : extractNumber(read))
            value = read;
        return !isBroken(m_stream);
    }

    /// Reads one whole word into `buffer`, as it stands; one that does not fit breaks the stream. "" behind the end.
    /// @return its length, which a NUL in the file may make more than that of the text
    template <std::size_t N> std::size_t word(char (&buffer)[N])
    {
        const std::size_t length = m_isPlain ? scanWord(buffer, N - 1) : extractWord(buffer, N - 1);
        buffer[length] = '\0';
        return length;
    }

private:
    // False when there is no number, for whatever reason; the stream tells.
    template <typename Number> bool extractNumber(Number& value)
    {
        if (m_stream.good())
            m_stream >> std::ws;
        if (!m_stream.good())
            return false;
        if (m_stream >> value)
            return true;
        m_stream.setstate(std::ios_base::badbit); // the end flag alone would make it look like a number left out
        return false;
    }
    template <typename Number> bool scanNumber(Number& value)
    {
        long long read = 0;
        const bool isRead = scanInteger(read, std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max());
        value = static_cast<Number>(read);
        return isRead;
    }
    bool scanInteger(long long& value, long long least, long long most);
    std::size_t extractWord(char* buffer, std::size_t maxChars);
    std::size_t scanWord(char* buffer, std::size_t maxChars);

    std::istream& m_stream;
    bool m_isPlain;
};

/// Turns a word into the text that it stands for, in its place; for an optional text the word "~" means "".
void unescape(char* word);
void unescapeOptional(char* word, std::size_t length);

/// Writes the words of one record, each with a line feed behind it. They reach the stream with `flush`, or when there
/// is no more room for them here.
class RecordWriter
{
public:
    /// The stream must outlive the writer.
    explicit RecordWriter(std::ostream& stream);
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    template <typename Number> void number(Number value)
    {
        if (m_isPlain)
            appendInteger(value);
        else
            m_stream << value << '\n';
    }
    /// The word for a text; an optional text that is empty becomes "~".
    void text(std::string_view text);
    void optionalText(std::string_view text);
    /// A word that is written as it is.
    void word(std::string_view word);
    void flush();

private:
    void append(std::string_view characters);
    void appendInteger(long long value);
    /// Of a word: at once, or into the whole of it.
    void appendPart(std::string& whole, std::string_view part);

    std::ostream& m_stream;
    bool m_isPlain;
    char m_pending[1024];
    std::size_t m_length = 0;
};
} // namespace aut

#endif
