#include "fileops/RT_File.h"
#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

namespace
{
constexpr char kKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
constexpr char kPath[] = "C:\\Program Files\\Shared\\a.dll";

class RT_FileShare : public ::testing::Test
{
protected:
    RT_FileShare()
    {
        m_registry.createKey(kKey);
        m_registry.removeValue(kKey, kPath);
    }
    ~RT_FileShare() override { m_registry.removeValue(kKey, kPath); }

    const auttest::Registry m_registry;
    RT_File m_file{kPath};
};

TEST_F(RT_FileShare, AnAbsentValueIsCreatedWithOne)
{
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(1u, m_registry.readNumber(kKey, kPath));
}

TEST_F(RT_FileShare, ACountGoesUpAndDownByOne)
{
    m_registry.write(kKey, kPath, 41);
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(42u, m_registry.readNumber(kKey, kPath));
    EXPECT_TRUE(m_file.UnShare());
    EXPECT_EQ(41u, m_registry.readNumber(kKey, kPath));
}

TEST_F(RT_FileShare, AValueOfAnotherTypeIsWrittenAsOne)
{
    m_registry.write(kKey, kPath, "7");
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(1u, m_registry.readNumber(kKey, kPath));
    m_registry.writeRaw(kKey, kPath, REG_BINARY, std::string("\x07\0\0\0", 4));
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(1u, m_registry.readNumber(kKey, kPath));
    m_registry.writeRaw(kKey, kPath, REG_SZ, std::string(10'000, 'x'));
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(1u, m_registry.readNumber(kKey, kPath));
    m_registry.writeRaw(kKey, kPath, REG_DWORD, "\x07");
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(1u, m_registry.readNumber(kKey, kPath));
}

TEST_F(RT_FileShare, UnShareOfACountOfOneDeletesTheValue)
{
    m_registry.write(kKey, kPath, 1);
    EXPECT_TRUE(m_file.UnShare());
    EXPECT_FALSE(m_registry.valueExists(kKey, kPath));
}

TEST_F(RT_FileShare, UnShareOfACountOfZeroDeletesTheValueAndDoesNotWrapAround)
{
    m_registry.write(kKey, kPath, DWORD{0});
    EXPECT_TRUE(m_file.UnShare());
    EXPECT_FALSE(m_registry.valueExists(kKey, kPath));
}

TEST_F(RT_FileShare, UnShareLeavesMissingValuesAndOtherTypesAlone)
{
    EXPECT_TRUE(m_file.UnShare());
    EXPECT_FALSE(m_registry.valueExists(kKey, kPath));
    m_registry.write(kKey, kPath, "1");
    EXPECT_TRUE(m_file.UnShare());
    EXPECT_EQ("1", m_registry.readText(kKey, kPath));
}

TEST_F(RT_FileShare, TheValueIsNamedByTheFullPathInAnyCase)
{
    EXPECT_TRUE(RT_File("c:/program files//SHARED/A.DLL").Share());
    EXPECT_TRUE(m_file.Share());
    EXPECT_EQ(2u, m_registry.readNumber(kKey, kPath));
}

TEST_F(RT_FileShare, ANameThatTheRegistryCannotHoldDoesNoHarm)
{
    RT_File file(("C:\\" + std::string(20'000, 'x')).c_str());
    EXPECT_TRUE(file.Share());
    EXPECT_TRUE(file.UnShare());
}

TEST_F(RT_FileShare, AMissingKeyIsNotCreated)
{
    ASSERT_TRUE(m_registry.valueNames(kKey).empty()) << "other programs' counts would be lost";
    m_registry.removeKey(kKey);
    EXPECT_FALSE(m_file.Share());
    EXPECT_FALSE(m_file.UnShare());
    EXPECT_FALSE(m_registry.keyExists(kKey));
}
} // namespace
