#ifndef AUTOOLS_FOUNDATION_NUMBERSCAN_H
#define AUTOOLS_FOUNDATION_NUMBERSCAN_H

namespace aut
{
/// Reads a decimal number at `cursor` by the rules of scanf's "%d": white space before it is skipped, one sign is
/// accepted. Moves `cursor` behind the number and returns true, or returns false when there is none.
/// Unlike scanf's, the outcome for a number outside of 32 bits is fixed: the nearest number that fits.
bool scanNumber(const char*& cursor, int& value) noexcept;

/// Steps over `expected`, which must stand exactly at `cursor`.
bool scanLiteral(const char*& cursor, char expected) noexcept;

/// Takes any one character ("%c"); false at the end of the text.
bool scanCharacter(const char*& cursor, int& code) noexcept;
} // namespace aut

#endif
