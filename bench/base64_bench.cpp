// Base64 of 3 MB, against a coder that takes one group after the other through its virtual operations.

#include "bench/Figures.h"

#include "7xAutoUpdateTools.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace
{
constexpr std::size_t kBytes = 3 * 1000 * 1000;
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Bucket
{
    unsigned char data[4];
    unsigned char size;
};

/// The operations of the library's coder, one bucket at a time: what it would be without any thought for speed.
class BucketCoder
{
public:
    BucketCoder()
    {
        std::fill(std::begin(m_table), std::end(m_table), static_cast<unsigned char>(254));
        for (unsigned char value = 0; value < 64; ++value)
        {
            m_table[static_cast<unsigned char>(kAlphabet[value])] = value;
            m_table[static_cast<unsigned char>(kAlphabet[value]) + 128] = value;
        }
        m_table['='] = m_table['=' + 128] = 255;
    }
    virtual ~BucketCoder() = default;

    void encode(const unsigned char* data, std::size_t length)
    {
        m_decoded.assign(length + 1, 0);
        std::memcpy(m_decoded.data(), data, length);
        m_encoded.assign(2 * length + 1, 0);
        m_encodedLength = 0;
        for (std::size_t at = 0; at < length; at += 3, m_encodedLength += 4)
        {
            Bucket bucket{};
            bucket.size = static_cast<unsigned char>(std::min<std::size_t>(length - at, 3));
            std::memcpy(bucket.data, m_decoded.data() + at, bucket.size);
            encodeToBuffer(bucket, m_encoded.data() + m_encodedLength);
        }
    }

    void decode(const unsigned char* text, std::size_t length)
    {
        m_encoded.assign(length + 1, 0);
        m_encodedLength = 0;
        for (std::size_t i = 0; i < length; ++i)
            if (isBadMimeChar(text[i]) == 0)
                m_encoded[m_encodedLength++] = text[i];
        m_decoded.assign(m_encodedLength + 1, 0);
        m_decodedLength = 0;
        for (std::size_t at = 0; at < m_encodedLength; at += 4)
        {
            Bucket bucket{};
            bucket.size = static_cast<unsigned char>(std::min<std::size_t>(m_encodedLength - at, 4));
            for (unsigned char i = 0; i < bucket.size; ++i)
                bucket.data[i] = m_table[m_encoded[at + i]];
            m_decodedLength += decodeToBuffer(bucket, m_decoded.data() + m_decodedLength);
        }
    }

    const unsigned char* encoded() const { return m_encoded.data(); }
    std::size_t encodedLength() const { return m_encodedLength; }
    const unsigned char* decoded() const { return m_decoded.data(); }
    std::size_t decodedLength() const { return m_decodedLength; }

protected:
    virtual void encodeToBuffer(const Bucket& bucket, unsigned char* out)
    {
        Bucket raw;
        encodeRaw(raw, bucket);
        for (unsigned char i = 0; i < 4; ++i)
            out[i] = static_cast<unsigned char>(i <= bucket.size ? kAlphabet[raw.data[i]] : '=');
    }
    virtual std::size_t decodeToBuffer(const Bucket& bucket, unsigned char* out)
    {
        Bucket raw;
        decodeRaw(raw, bucket);
        std::memcpy(out, raw.data, std::min<std::size_t>(raw.size, 3));
        return raw.size;
    }
    virtual void encodeRaw(Bucket& out, const Bucket& in)
    {
        out.size = 4;
        out.data[0] = static_cast<unsigned char>(in.data[0] >> 2);
        out.data[1] = static_cast<unsigned char>((in.data[0] << 4 | in.data[1] >> 4) & 0x3F);
        out.data[2] = static_cast<unsigned char>((in.data[1] << 2 | in.data[2] >> 6) & 0x3F);
        out.data[3] = static_cast<unsigned char>(in.data[2] & 0x3F);
    }
    virtual void decodeRaw(Bucket& out, const Bucket& in)
    {
        unsigned char bits[4] = {};
        unsigned char count = in.size;
        while (count > 0 && in.data[count - 1] == 255)
            --count;
        for (unsigned char i = 0; i < count; ++i)
            bits[i] = in.data[i] < 64 ? in.data[i] : static_cast<unsigned char>(0);
        out.size = static_cast<unsigned char>(count * 3 / 4);
        out.data[0] = static_cast<unsigned char>(bits[0] << 2 | bits[1] >> 4);
        out.data[1] = static_cast<unsigned char>(bits[1] << 4 | bits[2] >> 2);
        out.data[2] = static_cast<unsigned char>(bits[2] << 6 | bits[3]);
        out.data[3] = 0;
    }
    virtual int isBadMimeChar(unsigned char c) { return (c >= 7 && c <= 13) || c == ' ' ? 1 : 0; }

private:
    unsigned char m_table[256];
    std::vector<unsigned char> m_encoded;
    std::size_t m_encodedLength = 0;
    std::vector<unsigned char> m_decoded;
    std::size_t m_decodedLength = 0;
};
} // namespace

int main()
{
    std::vector<unsigned char> data(kBytes);
    unsigned int random = 12345;
    for (unsigned char& each : data)
    {
        random = random * 1664525U + 1013904223U;
        each = static_cast<unsigned char>(random >> 24);
    }
    // Both keep their buffers from one round to the next, as a program that uses one coder does.
    BucketCoder plain;
    Base64Coder coder;
    const auto bytes = static_cast<unsigned long>(data.size());
    const bench::Times encoding =
        bench::inTurns([&] { coder.Encode(data.data(), bytes); }, [&] { plain.encode(data.data(), data.size()); });
    const std::string text = coder.EncodedMessage();
    bench::require(text.size() == plain.encodedLength() && std::memcmp(text.data(), plain.encoded(), text.size()) == 0,
                   "encoding alike");

    const auto* const characters = reinterpret_cast<const unsigned char*>(text.data());
    const auto length = static_cast<unsigned long>(text.size());
    const bench::Times decoding =
        bench::inTurns([&] { coder.Decode(characters, length); }, [&] { plain.decode(characters, text.size()); });
    bench::require(plain.decodedLength() == data.size() &&
                       std::memcmp(coder.DecodedMessage(), data.data(), data.size()) == 0,
                   "decoding alike");
    bench::timesFaster("Base64Coder::Encode, 3 MB; bucket by bucket", encoding, 4);
    bench::timesFaster("Base64Coder::Decode, 3 MB; bucket by bucket", decoding, 8);
    return bench::status();
}
