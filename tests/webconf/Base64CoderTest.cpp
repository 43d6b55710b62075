#include "webconf/Base64Coder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{
/// Shows what only derived classes see.
struct Coder : Base64Coder
{
    using Base64Coder::_DecodeRaw;
    using Base64Coder::_DecodeToBuffer;
    using Base64Coder::_EncodeRaw;
    using Base64Coder::_EncodeToBuffer;
    using Base64Coder::_IsBadMimeChar;
    using Base64Coder::m_decoded;
    using Base64Coder::m_decodedCapacity;
    using Base64Coder::m_decodedLength;
    using Base64Coder::m_encoded;
    using Base64Coder::m_encodedCapacity;
    using Base64Coder::m_encodedLength;

    std::string decoded() const { return {reinterpret_cast<const char*>(m_decoded), m_decodedLength}; }
    std::string encoded() const { return {reinterpret_cast<const char*>(m_encoded), m_encodedLength}; }
};

std::string encode(const std::string& bytes)
{
    Coder coder;
    coder.Encode(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned long>(bytes.size()));
    EXPECT_EQ(coder.encoded(), coder.EncodedMessage());
    return coder.encoded();
}

std::string decode(const std::string& text)
{
    Coder coder;
    coder.Decode(text.c_str());
    return coder.decoded();
}

/// Texts of every length of the last group, as the standard gives them.
const struct
{
    const char* plain;
    const char* encoded;
} kPairs[] = {{"", ""},
              {"f", "Zg=="},
              {"fo", "Zm8="},
              {"foo", "Zm9v"},
              {"foob", "Zm9vYg=="},
              {"fooba", "Zm9vYmE="},
              {"foobar", "Zm9vYmFy"},
              {"Aladdin:open sesame", "QWxhZGRpbjpvcGVuIHNlc2FtZQ=="}};

/// All bytes, some of them twice, so that each group meets each position.
std::string allBytes(std::size_t length)
{
    std::string bytes(length, '\0');
    for (std::size_t i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 256);
    return bytes;
}

bool setsNothingApart(const Base64Coder& coder)
{
    return std::strcmp("", coder.DecodedMessage()) == 0 && std::strcmp("", coder.EncodedMessage()) == 0;
}
} // namespace

TEST(Base64Coder, StartsEmpty) { EXPECT_TRUE(setsNothingApart(Base64Coder())); }

TEST(Base64Coder, EncodesEveryLengthOfTheLastGroup)
{
    for (const auto& pair : kPairs)
    {
        Base64Coder coder;
        coder.Encode(pair.plain);
        EXPECT_STREQ(pair.encoded, coder.EncodedMessage());
        EXPECT_STREQ(pair.plain, coder.DecodedMessage());
    }
}

TEST(Base64Coder, DecodesEveryLengthOfTheLastGroup)
{
    for (const auto& pair : kPairs)
    {
        Base64Coder coder;
        coder.Decode(pair.encoded);
        EXPECT_STREQ(pair.plain, coder.DecodedMessage());
        EXPECT_STREQ(pair.encoded, coder.EncodedMessage());
        EXPECT_EQ(pair.plain, decode(pair.encoded));
    }
}

TEST(Base64Coder, UsesTheWholeAlphabet)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    for (unsigned i = 0; i < 64; i += 4)
    {
        bytes += static_cast<char>(i << 2 | (i + 1) >> 4);
        bytes += static_cast<char>((i + 1) << 4 | (i + 2) >> 2);
        bytes += static_cast<char>((i + 2) << 6 | (i + 3));
    }
    EXPECT_EQ(alphabet, encode(bytes));
    EXPECT_EQ(bytes, decode(alphabet));
}

TEST(Base64Coder, BringsBackWhatItEncodedOfAnyLength)
{
    for (const std::size_t length : {1u, 2u, 3u, 255u, 2047u, 2048u, 4095u, 4096u, 4097u, 6144u, 8191u, 8192u, 100000u})
    {
        const std::string bytes = allBytes(length);
        const std::string encoded = encode(bytes);
        EXPECT_EQ((length + 2) / 3 * 4, encoded.size());
        EXPECT_EQ(bytes, decode(encoded)) << length;
    }
}

TEST(Base64Coder, EncodesBytesWithZerosByTheirLength)
{
    EXPECT_EQ("AAAA", encode(std::string(3, '\0')));
    EXPECT_EQ("AA==", encode(std::string(1, '\0')));
    EXPECT_EQ("/////w==", encode(std::string(4, '\xFF')));
}

TEST(Base64Coder, SkipsWhiteSpaceOnDecoding)
{
    EXPECT_EQ("foobar", decode("Zm 9v\r\nYm\tFy\v\f\a\b "));
    Coder coder;
    coder.Decode(" Zg\r\n== ");
    EXPECT_STREQ("Zg==", coder.EncodedMessage());
    EXPECT_STREQ("f", coder.DecodedMessage());
    EXPECT_EQ("", decode(" \r\n\t"));
}

TEST(Base64Coder, DecodesACharacterWithItsTopBitSetAlike)
{
    std::string text = "Zm8=";
    for (char& character : text)
        character = static_cast<char>(character | '\x80');
    EXPECT_EQ("fo", decode(text));

    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string high = alphabet;
    for (char& character : high)
        character = static_cast<char>(character | '\x80');
    EXPECT_EQ(decode(alphabet), decode(high));
}

TEST(Base64Coder, DecodesAGroupThatIsCutOff)
{
    EXPECT_EQ("fo", decode("Zm8"));
    EXPECT_EQ("f", decode("Zg"));
    EXPECT_EQ("", decode("Z"));
    EXPECT_EQ("foof", decode("Zm9vZg"));
}

TEST(Base64Coder, PaddingCountsAsZeroBits)
{
    EXPECT_EQ("f", decode("Zg=="));
    EXPECT_EQ("fo", decode("Zm8="));
    EXPECT_EQ(std::string("f\0\x01", 3), decode("Zg=B"));
    EXPECT_EQ("", decode("===="));
    EXPECT_EQ("ff", decode("Zg==Zg==")); // each group for itself
}

TEST(Base64Coder, AnInvalidCharacterCountsAsZeroBits)
{
    EXPECT_EQ(decode("ZAAv"), decode("Z*-v"));
    EXPECT_EQ(std::string(3, '\0'), decode("\x01\x7F!?"));
}

TEST(Base64Coder, DecodesBytesByTheirLength)
{
    Coder coder;
    coder.Decode(reinterpret_cast<const unsigned char*>("Zm9vYmFy"), 4);
    EXPECT_STREQ("foo", coder.DecodedMessage());
    coder.Decode(reinterpret_cast<const unsigned char*>("Zm\0v"), 4); // a zero is an invalid character
    EXPECT_EQ(3u, coder.m_decodedLength);
}

TEST(Base64Coder, OnlyTheCodesSevenToThirteenAndTheBlankAreSkipped)
{
    Coder coder;
    for (int code = 0; code < 256; ++code)
        EXPECT_EQ((code >= 7 && code <= 13) || code == 32 ? 1 : 0,
                  coder._IsBadMimeChar(static_cast<unsigned char>(code)))
            << code;
}

TEST(Base64Coder, BuffersGrowToTheNextMultipleAboveTheRequest)
{
    Coder coder;
    const unsigned long sizes[][2] = {{1, 4096}, {4095, 4096}, {4096, 4096}, {4097, 8192}, {8192, 8192}, {8193, 12288}};
    for (const auto& size : sizes)
    {
        coder.AllocEncode(size[0]);
        coder.AllocDecode(size[0]);
        EXPECT_EQ(size[1], coder.m_encodedCapacity) << size[0];
        EXPECT_EQ(size[1], coder.m_decodedCapacity) << size[0];
    }
    Coder exact;
    exact.AllocEncode(4096); // strictly above
    exact.AllocDecode(4096);
    EXPECT_EQ(8192u, exact.m_encodedCapacity);
    EXPECT_EQ(8192u, exact.m_decodedCapacity);
}

TEST(Base64Coder, TheEncodedBufferTakesTwiceTheInput)
{
    Coder coder;
    const std::string bytes(2048, 'x');
    coder.Encode(bytes.c_str());
    EXPECT_EQ(8192u, coder.m_encodedCapacity);
}

TEST(Base64Coder, ABufferThatIsAllocatedIsZeroedAndEmpty)
{
    Coder coder;
    coder.Encode("foobar");
    unsigned char* const encoded = coder.m_encoded;
    coder.AllocEncode(10);
    coder.AllocDecode(10);
    EXPECT_EQ(encoded, coder.m_encoded); // large enough: not allocated again
    EXPECT_EQ(0u, coder.m_encodedLength);
    EXPECT_EQ(0u, coder.m_decodedLength);
    EXPECT_EQ(std::vector<unsigned char>(4096), std::vector<unsigned char>(coder.m_encoded, coder.m_encoded + 4096));
    EXPECT_EQ(std::vector<unsigned char>(4096), std::vector<unsigned char>(coder.m_decoded, coder.m_decoded + 4096));
    EXPECT_TRUE(setsNothingApart(coder));
}

TEST(Base64Coder, ARequestThatCannotBeServedLeavesAnEmptyBuffer)
{
    Coder coder;
    coder.Encode("foobar");
    coder.AllocEncode(0xFFFFFFFF);
    EXPECT_EQ(0u, coder.m_encodedCapacity);
    EXPECT_STREQ("", coder.EncodedMessage());
    coder.Encode("foobar");
    EXPECT_STREQ("Zm9vYmFy", coder.EncodedMessage());
}

TEST(Base64Coder, AMessageIsTerminatedWhenItFillsItsBuffer)
{
    Coder coder;
    const std::string full(4096, 'x');
    coder.SetDecodeBuffer(reinterpret_cast<const unsigned char*>(full.data()), 4096);
    EXPECT_EQ(full, coder.DecodedMessage());
    const std::string fuller(8192, 'x'); // what the buffer now holds to its last byte
    coder.SetDecodeBuffer(reinterpret_cast<const unsigned char*>(fuller.data()), 8192);
    EXPECT_EQ(fuller, coder.DecodedMessage());
    coder.SetEncodeBuffer(reinterpret_cast<const unsigned char*>(full.data()), 4096);
    coder.SetEncodeBuffer(reinterpret_cast<const unsigned char*>(fuller.data()), 8192);
    EXPECT_EQ(fuller, coder.EncodedMessage());
}

TEST(Base64Coder, BuffersAreSetWithTheirLength)
{
    Coder coder;
    coder.SetDecodeBuffer(reinterpret_cast<const unsigned char*>("a b\0c"), 5);
    EXPECT_EQ(std::string("a b\0c", 5), coder.decoded());
    coder.SetEncodeBuffer(reinterpret_cast<const unsigned char*>("a b\r\nc"), 6);
    EXPECT_EQ("abc", coder.encoded());
}

TEST(Base64Coder, NullIsEmpty)
{
    Base64Coder coder;
    coder.Encode("foo");
    coder.Encode(static_cast<const char*>(nullptr));
    EXPECT_TRUE(setsNothingApart(coder));
    coder.Encode("foo");
    coder.Decode(static_cast<const char*>(nullptr));
    EXPECT_TRUE(setsNothingApart(coder));
    coder.Encode("foo");
    coder.Encode(nullptr, 10);
    EXPECT_TRUE(setsNothingApart(coder));
    coder.Encode("foo");
    coder.Decode(nullptr, 10);
    EXPECT_TRUE(setsNothingApart(coder));
}

TEST(Base64Coder, IsUsedAgainAndAgain)
{
    Base64Coder coder;
    coder.Encode("a longer text than the next");
    coder.Encode("f");
    EXPECT_STREQ("Zg==", coder.EncodedMessage());
    EXPECT_STREQ("f", coder.DecodedMessage());
    coder.Decode("Zm8=");
    EXPECT_STREQ("fo", coder.DecodedMessage());
}

TEST(Base64Coder, TakesItsOwnMessages)
{
    Base64Coder coder;
    coder.Encode("foobar");
    coder.Decode(coder.EncodedMessage());
    EXPECT_STREQ("foobar", coder.DecodedMessage());
    coder.Encode(coder.DecodedMessage());
    EXPECT_STREQ("Zm9vYmFy", coder.EncodedMessage());
    coder.Encode(coder.EncodedMessage());
    EXPECT_STREQ("Wm05dlltRnk=", coder.EncodedMessage());
    coder.Decode(coder.EncodedMessage());
    coder.Decode(coder.DecodedMessage());
    EXPECT_STREQ("foobar", coder.DecodedMessage());
}

TEST(Base64Coder, CopiesAreDeep)
{
    Coder original;
    original.Encode("foobar");
    Coder copy(original);
    Coder assigned;
    assigned.Encode("something else");
    assigned = original;
    original.Encode("other");
    for (const Coder* coder : {&copy, &assigned})
    {
        EXPECT_STREQ("foobar", coder->DecodedMessage());
        EXPECT_STREQ("Zm9vYmFy", coder->EncodedMessage());
        EXPECT_EQ(6u, coder->m_decodedLength);
        EXPECT_EQ(8u, coder->m_encodedLength);
        EXPECT_EQ(4096u, coder->m_decodedCapacity);
        EXPECT_NE(original.m_decoded, coder->m_decoded);
        EXPECT_NE(original.m_encoded, coder->m_encoded);
    }
    Coder& self = copy;
    copy = self;
    EXPECT_STREQ("foobar", copy.DecodedMessage());
    copy = Coder();
    EXPECT_TRUE(setsNothingApart(copy));
}

TEST(Base64Coder, EncodesAndDecodesOneGroup)
{
    Coder coder;
    Base64Coder::TempBucket bytes;
    bytes.Clear();
    EXPECT_EQ(0, bytes.nSize);
    EXPECT_EQ(0, bytes.nData[0] | bytes.nData[1] | bytes.nData[2] | bytes.nData[3]);
    std::memcpy(bytes.nData, "fo", 2);
    bytes.nSize = 2;

    unsigned char text[5] = {};
    coder._EncodeToBuffer(bytes, text);
    EXPECT_STREQ("Zm8=", reinterpret_cast<const char*>(text));

    Base64Coder::TempBucket sextets;
    coder._EncodeRaw(sextets, bytes);
    EXPECT_EQ(std::vector<int>({25, 38, 60, 0}),
              std::vector<int>({sextets.nData[0], sextets.nData[1], sextets.nData[2], sextets.nData[3]}));
    EXPECT_EQ(4, sextets.nSize);

    sextets.nData[3] = 255; // padding
    unsigned char back[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(2u, coder._DecodeToBuffer(sextets, back));
    EXPECT_EQ(0, std::memcmp(back, "fo##", 4));
    coder._DecodeRaw(bytes, sextets);
    EXPECT_EQ(2, bytes.nSize);
    EXPECT_EQ(0, std::memcmp(bytes.nData, "fo\0\0", 4));
}

TEST(Base64Coder, OperationsCanBeReplaced)
{
    struct Spelling : Base64Coder
    {
        int _IsBadMimeChar(unsigned char c) override { return c == '-' ? 1 : 0; }
    };
    Spelling coder;
    Base64Coder& base = coder;
    base.Decode("Zm-9v");
    EXPECT_STREQ("foo", base.DecodedMessage());
}

namespace
{
/// Everything that a coder holds, as a derived class sees it.
std::vector<std::string> stateOf(const Base64Coder& coder)
{
    Coder copy;
    static_cast<Base64Coder&>(copy) = coder;
    const auto whole = [](const unsigned char* buffer, unsigned long capacity)
    { return std::string(reinterpret_cast<const char*>(buffer), capacity); };
    return {copy.decoded(), copy.encoded(), whole(copy.m_decoded, copy.m_decodedCapacity),
            whole(copy.m_encoded, copy.m_encodedCapacity)};
}

/// Pseudo-random, the same in every run.
class Numbers
{
public:
    unsigned int below(unsigned int limit)
    {
        m_state = m_state * 1664525U + 1013904223U;
        return (m_state >> 8) % limit;
    }

private:
    unsigned int m_state = 1;
};

/// Mostly of the alphabet, here and there something else.
std::string hostileText(Numbers& numbers, std::size_t length, unsigned int oneIn)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < length; ++i)
    {
        const bool isOther = oneIn != 0 && numbers.below(oneIn) == 0;
        const auto other = static_cast<char>(numbers.below(4) == 0 ? '=' : numbers.below(256));
        text += isOther ? other : alphabet[numbers.below(64)];
    }
    return text;
}
} // namespace

// A derived class is led through its operations, one group after the other; without one many groups are taken at once.
TEST(Base64Coder, ManyGroupsAtOnceAreWhatTheyAreOneByOne)
{
    Numbers numbers;
    Base64Coder atOnce;
    Coder oneByOne;
    for (int round = 0; round < 3000; ++round)
    {
        const std::string bytes = allBytes(numbers.below(5) == 0 ? numbers.below(9000) : numbers.below(100));
        const auto length = static_cast<unsigned long>(bytes.size());
        atOnce.Encode(reinterpret_cast<const unsigned char*>(bytes.data()), length);
        oneByOne.Encode(reinterpret_cast<const unsigned char*>(bytes.data()), length);
        ASSERT_EQ(stateOf(oneByOne), stateOf(atOnce)) << "encoding " << bytes.size();

        const std::string text = hostileText(numbers, bytes.size(), round % 4 == 0 ? 0 : 3U << (round % 8));
        atOnce.Decode(reinterpret_cast<const unsigned char*>(text.data()), length);
        oneByOne.Decode(reinterpret_cast<const unsigned char*>(text.data()), length);
        ASSERT_EQ(stateOf(oneByOne), stateOf(atOnce)) << "decoding " << text;
    }
}

TEST(Base64Coder, EveryCharacterAtEveryPlaceDecodesAsItDoesOneByOne)
{
    for (std::size_t place = 0; place < 40; ++place)
        for (int c = 0; c < 256; ++c)
        {
            std::string text(48, 'x');
            text[place] = static_cast<char>(c);
            Base64Coder atOnce;
            Coder oneByOne;
            atOnce.Decode(reinterpret_cast<const unsigned char*>(text.data()), 48);
            oneByOne.Decode(reinterpret_cast<const unsigned char*>(text.data()), 48);
            ASSERT_EQ(stateOf(oneByOne), stateOf(atOnce)) << c << " at " << place;
        }
}

TEST(Base64Coder, ADerivedClassSeesEveryGroup)
{
    struct Counting : Base64Coder
    {
        void _EncodeRaw(TempBucket& out, const TempBucket& in) override
        {
            ++encoded;
            Base64Coder::_EncodeRaw(out, in);
        }
        void _DecodeRaw(TempBucket& out, const TempBucket& in) override
        {
            ++decoded;
            Base64Coder::_DecodeRaw(out, in);
        }
        int encoded = 0;
        int decoded = 0;
    };
    Counting coder;
    Base64Coder& base = coder;
    base.Encode(std::string(3000, 'x').c_str());
    EXPECT_EQ(1000, coder.encoded);
    base.Decode(std::string(4000, 'x').c_str());
    EXPECT_EQ(1000, coder.decoded);
}

#ifdef __GNUC__ // where a pointer to a virtual member function is its slot's offset plus 1
namespace
{
template <typename Member> std::size_t slotOf(Member member)
{
    std::size_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof words);
    EXPECT_EQ(1u, words[0] % 8) << "not virtual";
    return words[0] / 8;
}
} // namespace

TEST(Base64Coder, HasItsOperationsInOrder)
{
    using Bytes = const unsigned char*;
    // The destructor has the first two slots.
    EXPECT_EQ(2u, slotOf(static_cast<void (Coder::*)(const char*)>(&Coder::Encode)));
    EXPECT_EQ(3u, slotOf(static_cast<void (Coder::*)(Bytes, unsigned long)>(&Coder::Encode)));
    EXPECT_EQ(4u, slotOf(static_cast<void (Coder::*)(const char*)>(&Coder::Decode)));
    EXPECT_EQ(5u, slotOf(static_cast<void (Coder::*)(Bytes, unsigned long)>(&Coder::Decode)));
    EXPECT_EQ(6u, slotOf(&Coder::DecodedMessage));
    EXPECT_EQ(7u, slotOf(&Coder::EncodedMessage));
    EXPECT_EQ(8u, slotOf(&Coder::AllocEncode));
    EXPECT_EQ(9u, slotOf(&Coder::AllocDecode));
    EXPECT_EQ(10u, slotOf(&Coder::SetEncodeBuffer));
    EXPECT_EQ(11u, slotOf(&Coder::SetDecodeBuffer));
    EXPECT_EQ(12u, slotOf(&Coder::_EncodeToBuffer));
    EXPECT_EQ(13u, slotOf(&Coder::_DecodeToBuffer));
    EXPECT_EQ(14u, slotOf(&Coder::_EncodeRaw));
    EXPECT_EQ(15u, slotOf(&Coder::_DecodeRaw));
    EXPECT_EQ(16u, slotOf(&Coder::_IsBadMimeChar));
}
#endif

TEST(Base64Encode, PacksUserAndPassword)
{
    String encoded("before");
    EXPECT_TRUE(Base64Encode("Aladdin", "open sesame", encoded));
    EXPECT_STREQ("QWxhZGRpbjpvcGVuIHNlc2FtZQ==", encoded);
    EXPECT_TRUE(Base64Encode("", "", encoded));
    EXPECT_STREQ("Og==", encoded);
    String user("user");
    EXPECT_TRUE(Base64Encode(user, user, user));
    EXPECT_STREQ("dXNlcjp1c2Vy", user);
}

TEST(Base64Encode, PacksTextsOf10000Characters)
{
    const std::string user(10000, 'u');
    const std::string password(10000, 'p');
    String encoded;
    String userBack;
    String passwordBack;
    EXPECT_TRUE(Base64Encode(user.c_str(), password.c_str(), encoded));
    EXPECT_TRUE(Base64Decode(encoded, userBack, passwordBack));
    EXPECT_EQ(user, static_cast<const char*>(userBack));
    EXPECT_EQ(password, static_cast<const char*>(passwordBack));
}

TEST(Base64Decode, SplitsAtTheFirstColon)
{
    const struct
    {
        const char* encoded;
        const char* user;
        const char* password;
    } cases[] = {{"dXNlcjpzZWNyZXQ=", "user", "secret"},
                 {"dXNlcjpwYXNzOndvcmQ=", "user", "pass:word"},
                 {"dXNlcjo=", "user", ""},
                 {"OnNlY3JldA==", "", "secret"},
                 {"Og==", "", ""},
                 {"dXNlcg==", "user", ""},
                 {"!!!!", "", ""}};
    for (const auto& row : cases)
    {
        String user("before");
        String password("before");
        EXPECT_TRUE(Base64Decode(row.encoded, user, password)) << row.encoded;
        EXPECT_STREQ(row.user, user);
        EXPECT_STREQ(row.password, password);
    }
}

TEST(Base64Decode, AnEmptyInputEmptiesBothAndFails)
{
    String user("before");
    String password("before");
    EXPECT_FALSE(Base64Decode("", user, password));
    EXPECT_STREQ("", user);
    EXPECT_STREQ("", password);
}

TEST(Base64Decode, MayWriteOverItsInput)
{
    String text("dXNlcjpzZWNyZXQ=");
    String password;
    EXPECT_TRUE(Base64Decode(text, text, password));
    EXPECT_STREQ("user", text);
    EXPECT_STREQ("secret", password);
}
