#include "webconf/Base64Coder.h"

#include "platform/BoundedText.h"
#include "platform/Layout.h"
#include "webconf/Base64Groups.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <typeinfo>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<Base64Coder>
{
    static_assert(sizeof(Base64Coder) == 40);
    static_assert(offsetof(Base64Coder, m_decoded) == 8);
    static_assert(offsetof(Base64Coder, m_decodedCapacity) == 16);
    static_assert(offsetof(Base64Coder, m_decodedLength) == 20);
    static_assert(offsetof(Base64Coder, m_encoded) == 24);
    static_assert(offsetof(Base64Coder, m_encodedCapacity) == 32);
    static_assert(offsetof(Base64Coder, m_encodedLength) == 36);
    static_assert(sizeof(Base64Coder::TempBucket) == 5);
};
AUT_LAYOUT_END

namespace
{
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char kInvalid = 254;
constexpr unsigned char kPadding = 255;
constexpr unsigned kTopBit = 128; ///< a character decodes alike with it

constexpr std::array<unsigned char, 256> makeDecodeTable()
{
    std::array<unsigned char, 256> table{};
    for (unsigned char& value : table)
        value = kInvalid;
    for (unsigned char value = 0; value < 64; ++value)
    {
        const auto code = static_cast<unsigned char>(kAlphabet[value]);
        table[code] = value;
        table[code + kTopBit] = value;
    }
    table['='] = kPadding;
    table['=' + kTopBit] = kPadding;
    return table;
}
constexpr std::array<unsigned char, 256> kDecodeTable = makeDecodeTable();

/// What a character says when it is neither padding nor invalid; those count as zero bits.
constexpr unsigned char bitsOf(unsigned char tableValue) { return tableValue < 64 ? tableValue : 0; }

constexpr unsigned long kGrowth = 4096;
/// So that doubled and rounded sizes stay in range.
constexpr unsigned long kMaxLength = std::numeric_limits<unsigned long>::max() / 4;

/// Makes room; what is in the buffer then is anything.
void reserve(unsigned char*& buffer, unsigned long& capacity, unsigned long& length, unsigned long size)
{
    length = 0;
    if (capacity >= size)
        return;
    delete[] buffer;
    capacity = size <= 2 * kMaxLength ? (size / kGrowth + 1) * kGrowth : 0;
    buffer = capacity > 0 ? new (std::nothrow) unsigned char[capacity] : nullptr;
    if (buffer == nullptr)
        capacity = 0;
}

/// Zeroes what stands behind the data.
void zeroBehind(unsigned char* buffer, unsigned long capacity, unsigned long length)
{
    if (buffer != nullptr)
        std::memset(buffer + length, 0, capacity - length);
}

void grow(unsigned char*& buffer, unsigned long& capacity, unsigned long& length, unsigned long size)
{
    reserve(buffer, capacity, length, size);
    zeroBehind(buffer, capacity, 0);
}

unsigned char* copyOf(const unsigned char* buffer, unsigned long capacity)
{
    unsigned char* const copy = capacity > 0 ? new (std::nothrow) unsigned char[capacity] : nullptr;
    if (copy != nullptr)
        std::memcpy(copy, buffer, capacity);
    return copy;
}

/// The input of a buffer, taken aside when it lies in that very buffer (a message encoded or decoded again).
class Input
{
public:
    Input(const unsigned char* data, unsigned long length, const unsigned char* buffer, unsigned long capacity)
        : m_data(data), m_length(data != nullptr && length <= kMaxLength ? length : 0)
    {
        if (m_length == 0 || std::less<>()(data, buffer) || !std::less<>()(data, buffer + capacity))
            return;
        m_copy.reset(copyOf(data, m_length));
        m_data = m_copy.get();
        if (m_data == nullptr)
            m_length = 0;
    }
    const unsigned char* data() const { return m_data; }
    unsigned long length() const { return m_length; }

private:
    std::unique_ptr<unsigned char[]> m_copy;
    const unsigned char* m_data;
    unsigned long m_length;
};

/// Whether the operations are the class's own. Those of a derived class are called as often and in the same order as
/// ever; without one, nobody sees that many groups are taken at once.
bool isNotDerived(const Base64Coder& coder) { return typeid(coder) == typeid(Base64Coder); }

bool isBlank(unsigned char c) { return (c >= 7 && c <= 13) || c == ' '; }

/// Copies all characters but white space; returns how many.
unsigned long copyWithoutBlanks(const unsigned char* in, unsigned long length, unsigned char* out)
{
    constexpr unsigned long kStep = 16; // looked at one by one after a block with white space
    unsigned long copied = 0;
    for (unsigned long at = 0; at < length;)
    {
        const auto block = static_cast<unsigned long>(aut::copyUpToBlank(in + at, length - at, out + copied));
        copied += block;
        at += block;
        for (const unsigned long end = at + std::min(length - at, kStep); at < end; ++at)
            if (!isBlank(in[at]))
                out[copied++] = in[at];
    }
    return copied;
}

const unsigned char* bytesOf(const char* text) { return reinterpret_cast<const unsigned char*>(aut::orEmpty(text)); }

unsigned long lengthOf(const char* text)
{
    return static_cast<unsigned long>(
        std::min<std::size_t>(std::strlen(aut::orEmpty(text)), std::numeric_limits<unsigned long>::max()));
}

const char* messageOf(const unsigned char* buffer)
{
    return buffer != nullptr ? reinterpret_cast<const char*>(buffer) : "";
}
} // namespace

void Base64Coder::TempBucket::Clear()
{
    std::memset(nData, 0, sizeof nData);
    nSize = 0;
}

Base64Coder::Base64Coder()
    : m_decoded(nullptr), m_decodedCapacity(0), m_decodedLength(0), m_encoded(nullptr), m_encodedCapacity(0),
      m_encodedLength(0)
{
}

Base64Coder::Base64Coder(const Base64Coder& other) : Base64Coder() { *this = other; }

Base64Coder& Base64Coder::operator=(const Base64Coder& other)
{
    if (this == &other)
        return *this;
    delete[] m_decoded;
    m_decoded = copyOf(other.m_decoded, other.m_decodedCapacity);
    m_decodedCapacity = m_decoded != nullptr ? other.m_decodedCapacity : 0;
    m_decodedLength = m_decoded != nullptr ? other.m_decodedLength : 0;
    delete[] m_encoded;
    m_encoded = copyOf(other.m_encoded, other.m_encodedCapacity);
    m_encodedCapacity = m_encoded != nullptr ? other.m_encodedCapacity : 0;
    m_encodedLength = m_encoded != nullptr ? other.m_encodedLength : 0;
    return *this;
}

Base64Coder::~Base64Coder()
{
    delete[] m_decoded;
    delete[] m_encoded;
}

void Base64Coder::Encode(const char* text) { Encode(bytesOf(text), lengthOf(text)); }

void Base64Coder::Encode(const unsigned char* data, unsigned long length)
{
    SetDecodeBuffer(data, length);
    unsigned long at = 0;
    if (isNotDerived(*this))
    {
        reserve(m_encoded, m_encodedCapacity, m_encodedLength, m_decodedLength * 2);
        if (m_encoded != nullptr)
            at = static_cast<unsigned long>(aut::encodeGroups(m_decoded, m_decodedLength, m_encoded));
        m_encodedLength = at / 3 * 4;
        zeroBehind(m_encoded, m_encodedCapacity, m_encodedLength);
    }
    else
        AllocEncode(m_decodedLength * 2);
    if (m_encoded == nullptr)
        return;
    for (; at < m_decodedLength; at += 3)
    {
        TempBucket group;
        group.Clear();
        group.nSize = static_cast<unsigned char>(std::min(m_decodedLength - at, 3UL));
        std::memcpy(group.nData, m_decoded + at, group.nSize);
        _EncodeToBuffer(group, m_encoded + m_encodedLength);
        m_encodedLength += 4;
    }
}

void Base64Coder::Decode(const char* text) { Decode(bytesOf(text), lengthOf(text)); }

void Base64Coder::Decode(const unsigned char* data, unsigned long length)
{
    SetEncodeBuffer(data, length);
    const bool notDerived = isNotDerived(*this);
    if (notDerived)
        reserve(m_decoded, m_decodedCapacity, m_decodedLength, m_encodedLength);
    else
        AllocDecode(m_encodedLength);
    if (m_decoded == nullptr)
        return;
    for (unsigned long at = 0; at < m_encodedLength;)
    {
        if (notDerived)
        {
            const auto whole = static_cast<unsigned long>(
                aut::decodeGroups(m_encoded + at, m_encodedLength - at, m_decoded + m_decodedLength));
            at += whole;
            m_decodedLength += whole / 4 * 3;
        }
        // Up to four groups one by one: in one of them stands something else, or they are the last ones.
        for (int i = 0; i < 4 && at < m_encodedLength; ++i, at += 4)
        {
            TempBucket group;
            group.Clear();
            group.nSize = static_cast<unsigned char>(std::min(m_encodedLength - at, 4UL));
            for (unsigned char c = 0; c < group.nSize; ++c)
                group.nData[c] = kDecodeTable[m_encoded[at + c]];
            m_decodedLength += _DecodeToBuffer(group, m_decoded + m_decodedLength);
        }
    }
    if (notDerived)
        zeroBehind(m_decoded, m_decodedCapacity, m_decodedLength);
}

const char* Base64Coder::DecodedMessage() const { return messageOf(m_decoded); }

const char* Base64Coder::EncodedMessage() const { return messageOf(m_encoded); }

void Base64Coder::AllocEncode(unsigned long size) { grow(m_encoded, m_encodedCapacity, m_encodedLength, size); }

void Base64Coder::AllocDecode(unsigned long size) { grow(m_decoded, m_decodedCapacity, m_decodedLength, size); }

// Both buffers keep one byte more than their data: a message ends with a NUL.

void Base64Coder::SetEncodeBuffer(const unsigned char* data, unsigned long length)
{
    const Input input(data, length, m_encoded, m_encodedCapacity);
    if (isNotDerived(*this))
    {
        reserve(m_encoded, m_encodedCapacity, m_encodedLength, input.length() + 1);
        if (m_encoded != nullptr)
            m_encodedLength = copyWithoutBlanks(input.data(), input.length(), m_encoded);
        zeroBehind(m_encoded, m_encodedCapacity, m_encodedLength);
        return;
    }
    AllocEncode(input.length() + 1);
    if (m_encoded == nullptr)
        return;
    for (unsigned long i = 0; i < input.length(); ++i)
        if (_IsBadMimeChar(input.data()[i]) == 0)
            m_encoded[m_encodedLength++] = input.data()[i];
}

void Base64Coder::SetDecodeBuffer(const unsigned char* data, unsigned long length)
{
    const Input input(data, length, m_decoded, m_decodedCapacity);
    const bool notDerived = isNotDerived(*this);
    if (notDerived)
        reserve(m_decoded, m_decodedCapacity, m_decodedLength, input.length() + 1);
    else
        AllocDecode(input.length() + 1);
    if (m_decoded == nullptr)
        return;
    if (input.length() > 0)
        std::memcpy(m_decoded, input.data(), input.length());
    m_decodedLength = input.length();
    if (notDerived)
        zeroBehind(m_decoded, m_decodedCapacity, m_decodedLength);
}

void Base64Coder::_EncodeToBuffer(const TempBucket& bucket, unsigned char* out)
{
    TempBucket raw;
    _EncodeRaw(raw, bucket);
    for (unsigned char i = 0; i < 4; ++i) // n bytes need n + 1 characters
        out[i] = static_cast<unsigned char>(i <= bucket.nSize ? kAlphabet[raw.nData[i] & 0x3F] : '=');
}

unsigned long Base64Coder::_DecodeToBuffer(const TempBucket& bucket, unsigned char* out)
{
    TempBucket raw;
    _DecodeRaw(raw, bucket);
    std::memcpy(out, raw.nData, std::min<std::size_t>(raw.nSize, 3));
    return raw.nSize;
}

void Base64Coder::_EncodeRaw(TempBucket& out, const TempBucket& in)
{
    const unsigned char* const bytes = in.nData;
    out.nSize = 4;
    out.nData[0] = static_cast<unsigned char>(bytes[0] >> 2);
    out.nData[1] = static_cast<unsigned char>((bytes[0] << 4 | bytes[1] >> 4) & 0x3F);
    out.nData[2] = static_cast<unsigned char>((bytes[1] << 2 | bytes[2] >> 6) & 0x3F);
    out.nData[3] = static_cast<unsigned char>(bytes[2] & 0x3F);
}

void Base64Coder::_DecodeRaw(TempBucket& out, const TempBucket& in)
{
    // Padding at the end holds no data; three characters hold two whole bytes, two hold one.
    unsigned char characters = std::min<unsigned char>(in.nSize, 4);
    while (characters > 0 && in.nData[characters - 1] == kPadding)
        --characters;
    unsigned char bits[4];
    for (unsigned char i = 0; i < 4; ++i)
        bits[i] = i < characters ? bitsOf(in.nData[i]) : static_cast<unsigned char>(0);

    out.nSize = static_cast<unsigned char>(characters * 3 / 4);
    out.nData[0] = static_cast<unsigned char>(bits[0] << 2 | bits[1] >> 4);
    out.nData[1] = static_cast<unsigned char>(bits[1] << 4 | bits[2] >> 2);
    out.nData[2] = static_cast<unsigned char>(bits[2] << 6 | bits[3]);
    out.nData[3] = 0;
}

int Base64Coder::_IsBadMimeChar(unsigned char c) { return (c >= 7 && c <= 13) || c == ' ' ? 1 : 0; }

bool Base64Encode(const String& user, const String& password, String& encoded)
{
    Base64Coder coder;
    coder.Encode(user + ":" + password);
    encoded = coder.EncodedMessage();
    return true;
}

bool Base64Decode(const String& encoded, String& user, String& password)
{
    if (encoded.IsEmpty())
    {
        user.Empty();
        password.Empty();
        return false;
    }
    Base64Coder coder;
    coder.Decode(encoded);
    const String decoded(coder.DecodedMessage());
    const int colon = decoded.Find(':');
    user = colon >= 0 ? decoded.Left(colon) : decoded;
    password = colon >= 0 ? decoded.Mid(colon + 1) : String();
    return true;
}
