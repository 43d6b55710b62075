#include "fileops/CFileVersion.h"
#include "tests/fileops/VersionedFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <type_traits>

static_assert(!std::is_polymorphic_v<CFileVersion>);

namespace
{
constexpr unsigned long kEnglishUnicode = 0x040904B0;

TEST(CFileVersion, ReadsWhatTheResourceCompilerMade)
{
    CFileVersion version;
    ASSERT_EQ(1, version.Open(auttest::compiledLibrary().c_str()));
    EXPECT_STREQ("3,3,302,1", version.GetFixedFileVersion());
    EXPECT_STREQ("4,0,1,2", version.GetFixedProductVersion());
    EXPECT_STREQ("A versioned library", version.QueryValue("FileDescription", 0));
    EXPECT_STREQ("Velmora", version.QueryValue("CompanyName", kEnglishUnicode));
}

TEST(CFileVersion, AFileWithoutAResourceCannotBeOpened)
{
    const auttest::TestFolder folder;
    auttest::writeBlankLibrary(folder / "blank.dll");
    CFileVersion version;
    EXPECT_EQ(0, version.Open((folder / "blank.dll").c_str()));
    EXPECT_STREQ("", version.GetFixedFileVersion());
    EXPECT_STREQ("", version.GetFixedProductVersion());
}

TEST(CFileVersion, NothingButALibraryCanBeOpened)
{
    const auttest::TestFolder folder;
    const std::string text = folder.writeFile("text.dll", "no library");
    const std::string empty = folder.writeFile("empty.dll", "");
    CFileVersion version;
    EXPECT_EQ(0, version.Open(text.c_str()));
    EXPECT_EQ(0, version.Open(empty.c_str()));
    EXPECT_EQ(0, version.Open(folder.path().c_str()));
    EXPECT_EQ(0, version.Open((folder / "missing.dll").c_str()));
    EXPECT_EQ(0, version.Open(""));
    EXPECT_EQ(0, version.Open(nullptr));
    EXPECT_EQ(0, version.Open(std::string(10'000, 'x').c_str()));
}

TEST(CFileVersion, AFileWithoutTranslationTableCountsAsHavingNoVersion)
{
    const auttest::TestFolder folder;
    auttest::VersionResource resource;
    resource.file = {1, 2, 3, 4};
    resource.translations.clear();
    auttest::writeLibrary(folder / "a.dll", resource);
    CFileVersion version;
    EXPECT_EQ(0, version.Open((folder / "a.dll").c_str()));
    EXPECT_STREQ("", version.GetFixedFileVersion());
    VS_FIXEDFILEINFO info;
    EXPECT_EQ(0, version.GetFixedInfo(info));
}

TEST(CFileVersion, ATranslationTableOfHalfAnEntryCountsAsNone)
{
    const auttest::TestFolder folder;
    auttest::VersionResource resource;
    resource.cutTranslation = true;
    auttest::writeLibrary(folder / "a.dll", resource);
    CFileVersion version;
    EXPECT_EQ(0, version.Open((folder / "a.dll").c_str()));
}

TEST(CFileVersion, AResourceWithoutTheFixedRecordHasItsStringsOnly)
{
    const auttest::TestFolder folder;
    auttest::VersionResource resource;
    resource.fixedRecord = false;
    resource.strings = {{L"CompanyName", L"Velmora"}};
    auttest::writeLibrary(folder / "a.dll", resource);
    CFileVersion version;
    ASSERT_EQ(1, version.Open((folder / "a.dll").c_str()));
    EXPECT_STREQ("", version.GetFixedFileVersion());
    EXPECT_STREQ("", version.GetFixedProductVersion());
    VS_FIXEDFILEINFO info{};
    EXPECT_EQ(0, version.GetFixedInfo(info));
    EXPECT_STREQ("Velmora", version.QueryValue("CompanyName", 0));
}

TEST(CFileVersion, FixedVersionsShowAllFourPartsUnsigned)
{
    const auttest::TestFolder folder;
    auttest::VersionResource resource;
    resource.file = {65535, 0, 65534, 32768};
    resource.product = {0, 0, 0, 7};
    auttest::writeLibrary(folder / "a.dll", resource);
    CFileVersion version;
    ASSERT_EQ(1, version.Open((folder / "a.dll").c_str()));
    EXPECT_STREQ("65535,0,65534,32768", version.GetFixedFileVersion());
    EXPECT_STREQ("0,0,0,7", version.GetFixedProductVersion());
}

TEST(CFileVersion, GetFixedInfoCopiesTheRecord)
{
    CFileVersion version;
    VS_FIXEDFILEINFO info{};
    EXPECT_EQ(0, version.GetFixedInfo(info));
    EXPECT_EQ(0u, info.dwSignature);
    ASSERT_EQ(1, version.Open(auttest::compiledLibrary().c_str()));
    EXPECT_EQ(1, version.GetFixedInfo(info));
    EXPECT_EQ(0xFEEF04BDu, info.dwSignature);
    EXPECT_EQ(0x00030003u, info.dwFileVersionMS);
    EXPECT_EQ(0x012E0001u, info.dwFileVersionLS);
    EXPECT_EQ(static_cast<DWORD>(VFT_DLL), info.dwFileType);
}

class ATranslatedFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        auttest::VersionResource resource;
        resource.translations = {{0x0407, 1252}, {0x0409, 1200}};
        resource.strings = {{L"ProductName", L"Beispiel"}, {L"Empty", L""}};
        auttest::writeLibrary(m_folder / "a.dll", resource);
        ASSERT_EQ(1, m_version.Open((m_folder / "a.dll").c_str()));
    }
    const auttest::TestFolder m_folder;
    CFileVersion m_version;
};

TEST_F(ATranslatedFile, TranslationZeroMeansTheFirstEntryOfTheTable)
{
    EXPECT_STREQ("Beispiel", m_version.QueryValue("ProductName", 0));
    EXPECT_STREQ("Beispiel", m_version.QueryValue("ProductName", 0x040704E4));
    EXPECT_STREQ("", m_version.QueryValue("ProductName", kEnglishUnicode));
}

TEST_F(ATranslatedFile, AValueThatIsNotThereIsEmpty)
{
    EXPECT_STREQ("", m_version.QueryValue("NoSuchName", 0));
    EXPECT_STREQ("", m_version.QueryValue("Empty", 0));
    EXPECT_STREQ("", m_version.QueryValue("", 0));
    EXPECT_STREQ("", m_version.QueryValue(nullptr, 0));
    EXPECT_STREQ("", m_version.QueryValue(std::string(10'000, 'n').c_str(), 0));
    EXPECT_STREQ("", m_version.QueryValue("%s%n%s", 0));
}

TEST_F(ATranslatedFile, CloseForgetsTheFile)
{
    m_version.Close();
    EXPECT_STREQ("", m_version.QueryValue("ProductName", 0));
    EXPECT_STREQ("", m_version.QueryValue("ProductName", 0x040704E4));
    EXPECT_STREQ("", m_version.GetFixedFileVersion());
    m_version.Close();
}

TEST_F(ATranslatedFile, OpeningAgainClosesTheFirstFile)
{
    EXPECT_EQ(0, m_version.Open((m_folder / "missing.dll").c_str()));
    EXPECT_STREQ("", m_version.QueryValue("ProductName", 0x040704E4));
    ASSERT_EQ(1, m_version.Open(auttest::compiledLibrary().c_str()));
    EXPECT_STREQ("Velmora", m_version.QueryValue("CompanyName", 0));
}

TEST_F(ATranslatedFile, IsNotHeldOpen) { EXPECT_TRUE(::DeleteFileA((m_folder / "a.dll").c_str())); }
} // namespace
