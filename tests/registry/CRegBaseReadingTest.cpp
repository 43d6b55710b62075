#include "platform/UniqueResource.h"
#include "registry/CRegBase.h"
#include "registry/CRegConfig.h"
#include "tests/registry/RegistryTests.h"
#include "tests/support/ImportPatch.h"

#include <algorithm>
#include <cstring>

using auttest::clientKey;
using auttest::ClientRegistry;

namespace
{
/// A reader on the client's key "Key", which holds what the test wrote there.
class CRegBaseReading : public ::testing::Test
{
protected:
    void store(DWORD type, const std::string& bytes)
    {
        m_registry.writeRaw("Key", "Value", type, bytes);
        m_key.Open(clientKey("Key").c_str(), KEY_READ);
    }

    bool readNumber(unsigned long& number) { return m_key.QueryValue("Value", number); }
    bool readBuffer() { return m_key.QueryValue("Value", m_buffer); }
    bool readString() { return m_key.QueryValue("Value", m_text); }
    bool readAnyType() { return m_key.QueryAnyTypeValue("Value", m_text); }

    ClientRegistry m_registry;
    CRegBase m_key;
    char m_buffer[260] = "before";
    String m_text{"before"};
};

using Types = std::initializer_list<DWORD>;

/// Wide text data as it is, odd sizes included, which the 8-bit functions would not store.
void storeWide(DWORD type, const std::string& bytes)
{
    HKEY key = nullptr;
    ::RegCreateKeyExA(HKEY_LOCAL_MACHINE, clientKey("Key").c_str(), 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_64KEY,
                      nullptr, &key, nullptr);
    const aut::UniqueKey opened(key);
    // Windows looks behind a text without a terminator, and stores the one it finds there too.
    const std::string followed = bytes + "####";
    ASSERT_EQ(ERROR_SUCCESS, ::RegSetValueExW(key, L"Value", 0, type, reinterpret_cast<const BYTE*>(followed.data()),
                                              static_cast<DWORD>(bytes.size())));
}
} // namespace

namespace
{
int queries = 0;

LSTATUS WINAPI countedQuery(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size)
{
    ++queries;
    return ::RegQueryValueExA(key, name, reserved, type, data, size);
}

template <typename Work> int queriesOf(Work&& work)
{
    const auttest::ImportPatch count("RegQueryValueExA", countedQuery);
    queries = 0;
    work();
    return queries;
}
} // namespace

TEST_F(CRegBaseReading, ATextOfUpTo259CharactersTakesOneQuery)
{
    for (const std::size_t length : {0U, 1U, 258U, 259U})
    {
        const std::string text(length, 't');
        store(REG_SZ, text + '\0');
        EXPECT_EQ(1, queriesOf([&] { readBuffer(); })) << length;
        EXPECT_EQ(text, m_buffer);
        EXPECT_EQ(1, queriesOf([&] { readString(); })) << length;
        EXPECT_STREQ(text.c_str(), m_text);
    }
    store(REG_SZ, std::string(260, 't') + '\0');
    EXPECT_EQ(2, queriesOf([&] { readString(); })); // its size, then all of it
    EXPECT_EQ(260, m_text.GetLength());
}

TEST_F(CRegBaseReading, ATextGetterOnAnOpenKeyTakesOneQuery)
{
    CRegConfig config(false);
    const std::string longest(259, 'c');
    config.SetTestCID(longest.c_str());
    EXPECT_EQ(1, queriesOf([&] { EXPECT_EQ(longest, config.GetTestCID()); }));
    EXPECT_EQ(1, queriesOf([&] { EXPECT_STREQ("", config.GetTestHWID()); })); // missing
}

TEST_F(CRegBaseReading, ANumberIsTheFourBytesOfAnyType)
{
    for (const DWORD type : Types{REG_DWORD, REG_BINARY, REG_DWORD_BIG_ENDIAN, REG_NONE})
    {
        unsigned long number = 1;
        store(type, std::string("\x01\x02\x03\xF4", 4));
        EXPECT_TRUE(readNumber(number)) << type;
        EXPECT_EQ(0xF4030201u, number) << type;
    }
    unsigned long number = 1;
    store(REG_SZ, std::string("abc\0", 4));
    EXPECT_TRUE(readNumber(number));
    EXPECT_EQ(0x00636261u, number);
}

TEST_F(CRegBaseReading, ANumberOfLessThanFourBytesIsFilledUpWithZeros)
{
    unsigned long number = 0xFFFFFFFF;
    store(REG_BINARY, "\x01\x02");
    EXPECT_TRUE(readNumber(number));
    EXPECT_EQ(0x0201u, number);
    store(REG_DWORD, "");
    EXPECT_TRUE(readNumber(number));
    EXPECT_EQ(0u, number);
}

TEST_F(CRegBaseReading, ANumberOfMoreThanFourBytesIsZeroAndFalse)
{
    for (const std::size_t size : {5u, 8u, 300u})
    {
        unsigned long number = 1;
        store(REG_BINARY, std::string(size, '\x01'));
        EXPECT_FALSE(readNumber(number)) << size;
        EXPECT_EQ(0u, number) << size;
    }
}

TEST_F(CRegBaseReading, EveryReaderYieldsNothingForAMissingValue)
{
    m_registry.createKey("Key");
    m_key.Open(clientKey("Key").c_str(), KEY_READ);
    unsigned long number = 1;
    EXPECT_FALSE(readNumber(number));
    EXPECT_EQ(0u, number);
    EXPECT_FALSE(readBuffer());
    EXPECT_STREQ("", m_buffer);
    EXPECT_FALSE(readString());
    EXPECT_TRUE(m_text.IsEmpty());
    m_text = "before";
    EXPECT_FALSE(readAnyType());
    EXPECT_TRUE(m_text.IsEmpty());
}

TEST_F(CRegBaseReading, EveryReaderYieldsNothingForAClosedKey)
{
    store(REG_SZ, std::string("abc\0", 4));
    m_key.Close();
    unsigned long number = 1;
    EXPECT_FALSE(readNumber(number));
    EXPECT_EQ(0u, number);
    EXPECT_FALSE(readBuffer());
    EXPECT_STREQ("", m_buffer);
    EXPECT_FALSE(readString());
    EXPECT_TRUE(m_text.IsEmpty());
    m_text = "before";
    EXPECT_FALSE(readAnyType());
    EXPECT_TRUE(m_text.IsEmpty());
}

TEST_F(CRegBaseReading, ABufferTakes259Characters)
{
    store(REG_SZ, std::string(259, 'x') + '\0');
    EXPECT_TRUE(readBuffer());
    EXPECT_EQ(std::string(259, 'x'), m_buffer);
}

TEST_F(CRegBaseReading, ABufferIsEmptiedWhenTheTextIsLonger)
{
    for (const std::size_t length : {260u, 261u, 10000u})
    {
        m_buffer[0] = 'x';
        store(REG_SZ, std::string(length, 'x') + '\0');
        EXPECT_FALSE(readBuffer()) << length;
        EXPECT_STREQ("", m_buffer) << length;
    }
}

TEST_F(CRegBaseReading, ABufferTakesATextWithoutItsTerminator)
{
    store(REG_SZ, "abc");
    EXPECT_TRUE(readBuffer());
    EXPECT_STREQ("abc", m_buffer);
    store(REG_SZ, std::string(259, 'x'));
    EXPECT_TRUE(readBuffer());
    EXPECT_EQ(std::string(259, 'x'), m_buffer);
    store(REG_SZ, std::string(260, 'x'));
    EXPECT_FALSE(readBuffer());
    EXPECT_STREQ("", m_buffer);
}

TEST_F(CRegBaseReading, ABufferTakesOtherTypesAsTheBytesTheyAre)
{
    store(REG_BINARY, "ab");
    EXPECT_TRUE(readBuffer());
    EXPECT_STREQ("ab", m_buffer);
    store(REG_BINARY, std::string(259, 'x'));
    EXPECT_TRUE(readBuffer());
    EXPECT_EQ(std::string(259, 'x'), m_buffer);
    store(REG_BINARY, std::string(260, 'x')); // as long as the buffer, and no terminator
    EXPECT_FALSE(readBuffer());
    EXPECT_STREQ("", m_buffer);
    store(REG_DWORD, std::string("A\0\0\0", 4));
    EXPECT_TRUE(readBuffer());
    EXPECT_STREQ("A", m_buffer);
}

TEST_F(CRegBaseReading, ABufferFullOfDataHoldsTheTextThatEndsInIt)
{
    store(REG_BINARY, "abc" + std::string(1, '\0') + std::string(256, 'x')); // 260 bytes, the last one no terminator
    EXPECT_TRUE(readBuffer());
    EXPECT_STREQ("abc", m_buffer);
    store(REG_BINARY, "abc" + std::string(1, '\0') + std::string(257, 'x'));
    EXPECT_FALSE(readBuffer());
    EXPECT_STREQ("", m_buffer);
}

TEST_F(CRegBaseReading, ABufferIsEmptiedByAValueOfNoSize)
{
    store(REG_SZ, "");
    EXPECT_TRUE(readBuffer());
    EXPECT_STREQ("", m_buffer);
}

TEST_F(CRegBaseReading, ANullBufferIsRefused)
{
    store(REG_SZ, std::string("abc\0", 4));
    EXPECT_FALSE(m_key.QueryValue("Value", static_cast<char*>(nullptr)));
}

TEST_F(CRegBaseReading, AStringTakesATextOfAnyLength)
{
    for (const std::size_t length : {1u, 259u, 260u, 10000u, 1000000u})
    {
        store(REG_SZ, std::string(length, 'x') + '\0');
        EXPECT_TRUE(readString()) << length;
        EXPECT_EQ(static_cast<int>(length), m_text.GetLength());
        EXPECT_EQ(std::string(length, 'x'), static_cast<const char*>(m_text));
    }
}

TEST_F(CRegBaseReading, AStringTakesATextWithoutItsTerminator)
{
    for (const DWORD type : Types{REG_SZ, REG_BINARY})
    {
        store(type, "abc");
        EXPECT_TRUE(readString());
        EXPECT_STREQ("abc", m_text);
    }
}

TEST_F(CRegBaseReading, AStringEndsAtTheFirstTerminator)
{
    store(REG_MULTI_SZ, std::string("one\0two\0\0", 9));
    EXPECT_TRUE(readString());
    EXPECT_STREQ("one", m_text);
    EXPECT_EQ(3, m_text.GetLength());
}

TEST_F(CRegBaseReading, AStringIsEmptiedByAnEmptyText)
{
    store(REG_SZ, std::string("\0", 1));
    EXPECT_TRUE(readString());
    EXPECT_TRUE(m_text.IsEmpty());
}

TEST_F(CRegBaseReading, AStringIsLeftUnchangedByAValueOfNoSize)
{
    for (const DWORD type : Types{REG_SZ, REG_BINARY, REG_NONE})
    {
        store(type, "");
        EXPECT_TRUE(readString());
        EXPECT_STREQ("before", m_text);
    }
}

TEST_F(CRegBaseReading, AnyTypeTakesTextsAsTheyAre)
{
    store(REG_SZ, std::string("abc\0", 4));
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("abc", m_text);
    store(REG_SZ, std::string(10000, 'x') + '\0');
    EXPECT_TRUE(readAnyType());
    EXPECT_EQ(10000, m_text.GetLength());
    store(REG_SZ, "");
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("", m_text);
}

TEST_F(CRegBaseReading, AnyTypeTakesNumbersAsUnsignedDecimals)
{
    store(REG_DWORD, "\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("4294967295", m_text);
    store(REG_DWORD, std::string(4, '\0'));
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("0", m_text);
    store(REG_DWORD, std::string(8, '\x01'));
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("", m_text);
}

TEST_F(CRegBaseReading, AnyTypeTakesBinaryAsAHexadecimalNumberThatIsItsSize)
{
    store(REG_BINARY, std::string(26, 'x'));
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("1a", m_text);
    store(REG_BINARY, "");
    EXPECT_TRUE(readAnyType());
    EXPECT_STREQ("0", m_text);
}

TEST_F(CRegBaseReading, AnyTypeLeavesOtherTypesEmptyAndIsTrue)
{
    for (const DWORD type : Types{REG_NONE, REG_EXPAND_SZ, REG_DWORD_BIG_ENDIAN, REG_LINK, REG_MULTI_SZ, REG_QWORD, 77})
    {
        m_text = "before";
        store(type, std::string("abc\0\0\0\0\0", 8));
        EXPECT_TRUE(readAnyType()) << type;
        EXPECT_STREQ("", m_text) << type;
    }
}

// Whatever someone else left in the registry: every type with every size around the limits.
TEST_F(CRegBaseReading, EveryReaderStaysWithinItsBufferForAnyTypeAndSize)
{
    const std::size_t sizes[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 257, 258, 259, 260, 261, 262, 519, 520, 521, 1000, 70000};
    for (DWORD type = REG_NONE; type <= REG_QWORD; ++type)
        for (const std::size_t size : sizes)
            for (const bool wide : {false, true})
            {
                SCOPED_TRACE(::testing::Message() << "type " << type << ", size " << size << ", wide " << wide);
                if (wide)
                    storeWide(type, std::string(size, 'x'));
                else
                    store(type, std::string(size, 'x'));
                m_key.Open(clientKey("Key").c_str(), KEY_READ);

                char guarded[262];
                std::memset(guarded, '#', sizeof guarded);
                const bool buffered = m_key.QueryValue("Value", guarded + 1);
                EXPECT_EQ('#', guarded[0]);
                EXPECT_EQ('#', guarded[261]);
                const std::size_t length = ::strnlen(guarded + 1, 260);
                EXPECT_LT(length, 260u);
                EXPECT_TRUE(buffered || length == 0);

                m_text = "before";
                EXPECT_TRUE(readString());
                EXPECT_TRUE(length == 0 || m_text == guarded + 1) << guarded + 1;
                unsigned long number = 1;
                EXPECT_TRUE(readNumber(number) || number == 0);
                EXPECT_TRUE(readAnyType());
            }
}
