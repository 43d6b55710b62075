#ifndef AUTOOLS_WEBCONF_BASE64GROUPS_H
#define AUTOOLS_WEBCONF_BASE64GROUPS_H

#include <cstddef>

namespace aut
{
// Many groups of Base64 at once. Each takes as many whole blocks as can be taken in one sweep, from the front, and
// tells how many bytes or characters of the input those were; what is left is for the caller to take one by one.

/// Encodes groups of 3 bytes into 4 characters each. `out` has room for 4 characters a group, whole or not.
std::size_t encodeGroups(const unsigned char* in, std::size_t length, unsigned char* out) noexcept;

/// Decodes groups of 4 characters into 3 bytes each, up to the first block with a character that is not of the alphabet
/// (with or without its top bit set) or is padding. `out` has room for as many bytes as there are characters.
std::size_t decodeGroups(const unsigned char* in, std::size_t length, unsigned char* out) noexcept;

/// Copies characters up to the first block with white space (the codes 7 to 13 and the blank). `out` has room for
/// `length`.
std::size_t copyUpToBlank(const unsigned char* in, std::size_t length, unsigned char* out) noexcept;
} // namespace aut

#endif
