#include "webconf/Base64Groups.h"

#include "platform/Vectors.h"

#include <cstdint>
#include <cstring>

namespace aut
{
#if AUTOOLS_SSE2
namespace
{
constexpr std::size_t kBlock = 16; ///< characters

__m128i bytes(int value) { return _mm_set1_epi8(static_cast<char>(value)); }

/// 0xFF in every byte from `first` to `last`; all are below 128.
__m128i isBetween(__m128i x, char first, char last)
{
    return _mm_and_si128(_mm_cmpgt_epi8(x, bytes(first - 1)), _mm_cmplt_epi8(x, bytes(last + 1)));
}

/// The bits of `x` under `mask`, moved to the left (to the right) within each group of 32.
__m128i movedLeft(__m128i x, int mask, int by) { return _mm_slli_epi32(_mm_and_si128(x, _mm_set1_epi32(mask)), by); }
__m128i movedRight(__m128i x, int mask, int by) { return _mm_srli_epi32(_mm_and_si128(x, _mm_set1_epi32(mask)), by); }

int fourBytes(const unsigned char* in)
{
    std::int32_t word = 0;
    std::memcpy(&word, in, sizeof word);
    return word;
}

/// The characters of 16 values of the alphabet, by the distance of each of its five ranges from its values.
__m128i charactersOf(__m128i value)
{
    const auto above = [value](int last, int step)
    { return _mm_and_si128(_mm_cmpgt_epi8(value, bytes(last)), bytes(step)); };
    __m128i c = _mm_add_epi8(value, bytes('A'));
    c = _mm_add_epi8(c, above(25, 'a' - 'A' - 26));
    c = _mm_sub_epi8(c, above(51, 'a' + 26 - '0'));
    c = _mm_sub_epi8(c, above(61, '0' + 10 - '+'));
    return _mm_add_epi8(c, above(62, '/' - '+' - 1));
}
} // namespace

std::size_t encodeGroups(const unsigned char* in, std::size_t length, unsigned char* out) noexcept
{
    constexpr std::size_t kBytes = 12; // of one block; 13 are read
    std::size_t at = 0;
    for (; at + kBytes < length; at += kBytes, out += kBlock)
    {
        // In each lane the three bytes of a group, the first one lowest.
        const __m128i x =
            _mm_setr_epi32(fourBytes(in + at), fourBytes(in + at + 3), fourBytes(in + at + 6), fourBytes(in + at + 9));
        const __m128i first = movedRight(x, 0x0000FC, 2);
        const __m128i second = _mm_or_si128(movedLeft(x, 0x000003, 12), movedRight(x, 0x00F000, 4));
        const __m128i third = _mm_or_si128(movedLeft(x, 0x000F00, 10), movedRight(x, 0xC00000, 6));
        const __m128i fourth = movedLeft(x, 0x3F0000, 8);
        const __m128i values = _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), charactersOf(values));
    }
    return at;
}

std::size_t decodeGroups(const unsigned char* in, std::size_t length, unsigned char* out) noexcept
{
    std::size_t at = 0;
    // 14 bytes are written for the 12 that a block holds: those behind them are the next block's or still room.
    for (; at + kBlock <= length; at += kBlock, out += 12)
    {
        const __m128i read = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + at));
        const __m128i c = _mm_and_si128(read, bytes(0x7F));
        const __m128i capital = isBetween(c, 'A', 'Z');
        const __m128i small = isBetween(c, 'a', 'z');
        const __m128i digit = isBetween(c, '0', '9');
        const __m128i plus = _mm_cmpeq_epi8(c, bytes('+'));
        const __m128i slash = _mm_cmpeq_epi8(c, bytes('/'));
        const __m128i letter = _mm_or_si128(capital, small);
        const __m128i other = _mm_or_si128(digit, _mm_or_si128(plus, slash));
        if (_mm_movemask_epi8(_mm_or_si128(letter, other)) != 0xFFFF)
            break;
        const __m128i ofLetters =
            _mm_or_si128(_mm_and_si128(capital, bytes(-'A')), _mm_and_si128(small, bytes(26 - 'a')));
        const __m128i ofOthers =
            _mm_or_si128(_mm_and_si128(digit, bytes(52 - '0')),
                         _mm_or_si128(_mm_and_si128(plus, bytes(62 - '+')), _mm_and_si128(slash, bytes(63 - '/'))));
        const __m128i v = _mm_add_epi8(c, _mm_or_si128(ofLetters, ofOthers));

        const __m128i first = _mm_or_si128(movedLeft(v, 0x0000003F, 2), movedRight(v, 0x00003000, 12));
        const __m128i second = _mm_or_si128(movedLeft(v, 0x00000F00, 4), movedRight(v, 0x003C0000, 10));
        const __m128i third = _mm_or_si128(movedLeft(v, 0x00030000, 6), movedRight(v, 0x3F000000, 8));
        const __m128i groups = _mm_or_si128(first, _mm_or_si128(second, third)); // three bytes in each lane of four
        const __m128i low = _mm_and_si128(groups, _mm_set1_epi64x(0x0000000000FFFFFF));
        const __m128i high = _mm_andnot_si128(_mm_set1_epi64x(0x00000000FFFFFFFF), groups);
        const __m128i pairs = _mm_or_si128(low, _mm_srli_epi64(high, 8)); // six in each half
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), pairs);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 6), _mm_unpackhi_epi64(pairs, pairs));
    }
    return at;
}

std::size_t copyUpToBlank(const unsigned char* in, std::size_t length, unsigned char* out) noexcept
{
    std::size_t at = 0;
    for (; at + kBlock <= length; at += kBlock)
    {
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + at));
        const __m128i blank = _mm_or_si128(isBetween(c, 7, 13), _mm_cmpeq_epi8(c, bytes(' ')));
        if (_mm_movemask_epi8(blank) != 0)
            break;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), c);
    }
    return at;
}
#else
std::size_t encodeGroups(const unsigned char*, std::size_t, unsigned char*) noexcept { return 0; }

std::size_t decodeGroups(const unsigned char*, std::size_t, unsigned char*) noexcept { return 0; }

std::size_t copyUpToBlank(const unsigned char*, std::size_t, unsigned char*) noexcept { return 0; }
#endif
} // namespace aut
