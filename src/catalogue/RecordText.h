#ifndef AUTOOLS_CATALOGUE_RECORDTEXT_H
#define AUTOOLS_CATALOGUE_RECORDTEXT_H

#include <cstddef>
#include <istream>
#include <string>

namespace aut
{
// The words of the catalogue's stream records. White space of any kind separates them; a line feed means nothing more.
// All but `isBroken` may throw: the records catch it.
//
// The end of the stream belongs to the format: the records test it where it matters, and a number read behind it keeps
// its value. What can be no record at all (another word where a number stands, a number or a word that is too long)
// breaks the stream, and a record that meets a broken stream fails: reading on would take one field's text for the
// next one's.

/// Whether the stream was never readable or has met something that can be no record.
bool isBroken(const std::istream& stream);

/// Reads one number and skips the white space before it. At the end of the stream the number keeps its value; what is
/// there and is no number of this type breaks the stream, even where it runs to the very end, and keeps the value too.
/// @return false when the stream is broken
template <typename Number> bool readNumber(std::istream& stream, Number& number)
{
    if (stream.good())
        stream >> std::ws;
    if (!stream.good())
        return !isBroken(stream);
    Number read = 0;
    if (!(stream >> read))
    {
        stream.setstate(std::ios_base::badbit); // the end flag alone would make it look like a number left out
        return false;
    }
    number = read;
    return true;
}

/// Reads one whole word; one of more than `maxChars` characters breaks the stream. "" behind the end.
std::string readWord(std::istream& stream, std::size_t maxChars);
/// The text of a word; for an optional text the word "~" means "".
std::string textOfWord(const std::string& word);
std::string textOfOptionalWord(const std::string& word);

/// Writes the word for a text and a line feed; an optional text that is empty becomes "~".
void writeWord(std::ostream& stream, const char* text);
void writeOptionalWord(std::ostream& stream, const char* text);
} // namespace aut

#endif
