#include "environment/ActiveXCache.h"

#include "tests/environment/FakeControlCache.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{
using Steps = std::vector<std::string>;

constexpr char kOwn[] = "{051FE707-9706-11D5-A836-000102A7C938}";
constexpr char kUnit[] = "SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units\\"
                         "{051FE707-9706-11D5-A836-000102A7C938}";
constexpr char kFolder[] = "C:\\WINDOWS\\Downloaded Program Files\\";

class IncompleteControlCacheTest : public ::testing::TestWithParam<const char*>
{
};
class UnreadableControlTest : public ::testing::TestWithParam<UINT>
{
};

/// The client's distribution unit, as the browser records it.
class DownloadedFilesTest : public ::testing::Test
{
protected:
    DownloadedFilesTest() { m_registry.removeKey(kUnit); }
    ~DownloadedFilesTest() override { m_registry.removeKey(kUnit); }

    void recordFile(const std::string& path)
    {
        m_registry.write(std::string(kUnit) + "\\Contains\\Files", path.c_str(), "");
    }
    void recordDownload(const char* name, const std::string& text)
    {
        m_registry.write(std::string(kUnit) + "\\DownloadInformation", name, text);
    }
    /// The path that was found; "not found" when there is none. Looks at the bytes behind the buffer too.
    static std::string search(const char* fileName)
    {
        char buffer[260 + 16];
        std::memset(buffer, '#', sizeof buffer);
        const bool found = SearchFileInDownloadedProgramFiles(fileName, buffer);
        EXPECT_EQ(std::string(16, '#'), std::string(buffer + 260, 16));
        EXPECT_EQ(found, buffer[0] != '\0') << "empty exactly when nothing was found";
        return found ? buffer : "not found";
    }

    const auttest::Registry m_registry;
};
} // namespace

TEST(RemoveCABFromCLSID, TheClientsOwnControlIsNeverRemoved)
{
    auttest::FakeControlCache cache;
    cache.controls = {{kOwn, "own.ocx", "{T}", 1}};
    EXPECT_FALSE(RemoveCABFromCLSID(kOwn));
    EXPECT_FALSE(RemoveCABFromCLSID("{051fe707-9706-11d5-a836-000102a7c938}"));
    EXPECT_EQ(Steps(), cache.steps);
}

TEST(RemoveCABFromCLSID, TheClientsOwnControlDoesNotEvenLoadTheCache)
{
    const auttest::LogFile log;
    EXPECT_FALSE(RemoveCABFromCLSID(kOwn));
    EXPECT_TRUE(log.events().empty()) << "a library that cannot be loaded is logged";
}

TEST(RemoveCABFromCLSID, IsFalseWhereThereIsNoControlCache) { EXPECT_FALSE(RemoveCABFromCLSID("{A}")); }

TEST_P(IncompleteControlCacheTest, NothingIsDoneWhenAFunctionIsMissing)
{
    auttest::FakeControlCache cache(std::string("without_") + GetParam());
    cache.controls = {{"{A}", "a.ocx", "{T}", 1}};
    EXPECT_FALSE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ(Steps(), cache.steps);
}

INSTANTIATE_TEST_SUITE_P(Each, IncompleteControlCacheTest,
                         ::testing::Values("FindFirstControl", "FindNextControl", "GetControlInfo",
                                           "RemoveControlByName", "ReleaseControlHandle", "FindControlClose",
                                           "anything"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST(RemoveCABFromCLSID, TheMatchingControlIsRemovedByForce)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{A}", "a.ocx", "{TA}", 1}, {"{B}", "C:\\b.ocx", "{TB}", 7}, {"{C}", "c.ocx", "{TC}", 0}};
    EXPECT_TRUE(RemoveCABFromCLSID("{B}"));
    EXPECT_EQ((Steps{"C:\\b.ocx|{B}|{TB}|1|7"}), cache.removed);
    EXPECT_EQ((Steps{"first", "3 of 0", "release 0", "next", "3 of 1", "2 of 1", "4 of 1", "9 of 1", "release 1",
                     "remove", "close"}),
              cache.steps);
}

TEST(RemoveCABFromCLSID, ClassIdsCompareWithoutRegardToCase)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{abCD}", "a.ocx", "", 0}};
    EXPECT_TRUE(RemoveCABFromCLSID("{ABcd}"));
    EXPECT_EQ((Steps{"a.ocx|{abCD}||1|0"}), cache.removed);
}

TEST(RemoveCABFromCLSID, OnlyTheFirstMatchIsRemoved)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{A}", "first.ocx", "", 0}, {"{A}", "second.ocx", "", 0}};
    EXPECT_TRUE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ((Steps{"first.ocx|{A}||1|0"}), cache.removed);
}

TEST(RemoveCABFromCLSID, IsFalseAtTheEndOfTheWalk)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{A}"}, {"{B}"}};
    EXPECT_FALSE(RemoveCABFromCLSID("{C}"));
    EXPECT_EQ((Steps{"first", "3 of 0", "release 0", "next", "3 of 1", "release 1", "next", "close"}), cache.steps);
}

TEST(RemoveCABFromCLSID, IsFalseForAnEmptyCache)
{
    auttest::FakeControlCache cache;
    EXPECT_FALSE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ(Steps{"first"}, cache.steps) << "no walk that could be closed";
}

TEST(RemoveCABFromCLSID, AnyFailureEndsTheWalk)
{
    auttest::FakeControlCache cache;
    cache.endOfWalk = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(RemoveCABFromCLSID("{A}"));
    cache.controls = {{"{B}"}};
    EXPECT_FALSE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ((Steps{"first", "first", "3 of 0", "release 0", "next", "close"}), cache.steps);
}

TEST(RemoveCABFromCLSID, AControlWhoseClassIdCannotBeReadIsPassedBy)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{A}", "unreadable.ocx", "", 0, 3}, {"{A}", "a.ocx", "", 0}};
    EXPECT_TRUE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ((Steps{"a.ocx|{A}||1|0"}), cache.removed);
}

TEST_P(UnreadableControlTest, WhatCannotBeReadIsNotRemovedWhichIsTrueAllTheSame)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{A}", "a.ocx", "{T}", 1, GetParam()}};
    EXPECT_TRUE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ(Steps(), cache.removed);
}

INSTANTIATE_TEST_SUITE_P(Kinds, UnreadableControlTest, ::testing::Values(2U, 4U, 9U));

TEST(RemoveCABFromCLSID, IsFalseForAControlInUseAndTrueForEveryOtherFailure)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"{A}", "a.ocx", "{T}", 1}};
    cache.removal = static_cast<HRESULT>(0x80030020);
    EXPECT_FALSE(RemoveCABFromCLSID("{A}"));
    for (const unsigned long other : {0UL, 1UL, 259UL, 0x80004005UL, 0x80070005UL, 0x80070020UL, 0x30020UL})
    {
        cache.removal = static_cast<HRESULT>(other);
        EXPECT_TRUE(RemoveCABFromCLSID("{A}")) << other;
    }
    EXPECT_EQ(8U, cache.removed.size());
}

TEST(RemoveCABFromCLSID, NoClassIdNamesNoControl)
{
    auttest::FakeControlCache cache;
    cache.controls = {{"", "a.ocx", "", 0}};
    EXPECT_FALSE(RemoveCABFromCLSID(nullptr));
    EXPECT_FALSE(RemoveCABFromCLSID(""));
    EXPECT_EQ(Steps(), cache.steps);
}

TEST(RemoveCABFromCLSID, LongTextsAreCutByTheInterfaceNotByUs)
{
    auttest::FakeControlCache cache;
    const std::string path = "C:\\" + std::string(256, 'f');
    cache.controls = {{"{A}", path + "cut", path, 1}};
    EXPECT_FALSE(RemoveCABFromCLSID(std::string(10000, '{').c_str()));
    EXPECT_TRUE(RemoveCABFromCLSID("{A}"));
    EXPECT_EQ((Steps{path + "|{A}|" + path + "|1|1"}), cache.removed);
}

TEST_F(DownloadedFilesTest, AFileIsFoundByTheTailOfItsPath)
{
    recordFile(std::string(kFolder) + "one.dll");
    recordFile(std::string(kFolder) + "two.ocx");
    EXPECT_EQ(std::string(kFolder) + "one.dll", search("one.dll"));
    EXPECT_EQ(std::string(kFolder) + "two.ocx", search("two.ocx"));
}

TEST_F(DownloadedFilesTest, NamesCompareWithoutRegardToCase)
{
    recordFile(std::string(kFolder) + "One.DLL");
    EXPECT_EQ(std::string(kFolder) + "One.DLL", search("oNE.dll"));
}

TEST_F(DownloadedFilesTest, TheWholeFileNameMustMatch)
{
    recordFile(std::string(kFolder) + "one.dll");
    recordFile("bare.dll");
    EXPECT_EQ("not found", search("ne.dll"));
    EXPECT_EQ("not found", search("one.dl"));
    EXPECT_EQ("not found", search("one.dll2"));
    EXPECT_EQ("not found", search("bare.dll")) << "no backslash in front of it";
    EXPECT_EQ("not found", search("two.dll"));
}

TEST_F(DownloadedFilesTest, TheFirstMatchInTheRegistrysOrderCounts)
{
    recordFile("D:\\second\\one.dll");
    recordFile("C:\\first\\one.dll");
    const std::vector<std::string> names = m_registry.valueNames(std::string(kUnit) + "\\Contains\\Files");
    ASSERT_EQ(2U, names.size());
    EXPECT_EQ(names.front(), search("one.dll"));
}

TEST_F(DownloadedFilesTest, WhatAFilesValueHoldsDoesNotMatter)
{
    m_registry.write(std::string(kUnit) + "\\Contains\\Files", "C:\\x\\one.dll", 7);
    EXPECT_EQ("C:\\x\\one.dll", search("one.dll"));
}

TEST_F(DownloadedFilesTest, TheLongestPathFitsTheBuffer)
{
    const std::string path = "C:\\" + std::string(248, 'p') + "\\one.dll";
    ASSERT_EQ(259U, path.size());
    recordFile(path);
    EXPECT_EQ(path, search("one.dll"));
}

TEST_F(DownloadedFilesTest, APathThatDoesNotFitIsNotFound)
{
    recordFile("C:\\" + std::string(249, 'p') + "\\one.dll");
    EXPECT_EQ("not found", search("one.dll"));
}

TEST_F(DownloadedFilesTest, NothingIsFoundWhereNothingIsRecorded)
{
    EXPECT_EQ("not found", search("one.dll"));
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
    EXPECT_FALSE(m_registry.keyExists(kUnit)) << "looking creates nothing";
}

TEST_F(DownloadedFilesTest, TheInformationFileIsWhereTheDownloadSays)
{
    recordDownload("CODEBASE", "http://server/AutoUpdateATL.cab");
    recordDownload("INF", std::string(kFolder) + "AutoUpdateATL.inf");
    EXPECT_EQ(std::string(kFolder) + "AutoUpdateATL.inf", search("AutoUpdateATL.inf"));
    EXPECT_EQ(std::string(kFolder) + "AutoUpdateATL.inf", search("AUTOUPDATEatl.INF"));
}

TEST_F(DownloadedFilesTest, TheInformationFileIsNotLookedForAmongTheFiles)
{
    recordFile(std::string(kFolder) + "AutoUpdateATL.inf");
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
}

TEST_F(DownloadedFilesTest, OtherInformationFilesAreLookedForAmongTheFiles)
{
    recordDownload("INF", std::string(kFolder) + "AutoUpdateATL.inf");
    recordFile(std::string(kFolder) + "other.inf");
    EXPECT_EQ(std::string(kFolder) + "other.inf", search("other.inf"));
}

TEST_F(DownloadedFilesTest, AnEmptyOrEndlessLocationIsNone)
{
    recordDownload("INF", "");
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
    recordDownload("INF", std::string(260, 'x'));
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
    recordDownload("INF", std::string(10000, 'x'));
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
    recordDownload("INF", std::string(259, 'x'));
    EXPECT_EQ(std::string(259, 'x'), search("AutoUpdateATL.inf"));
}

TEST_F(DownloadedFilesTest, ALocationOfAnotherTypeOrWithoutATerminatorIsReadAsItsBytes)
{
    const std::string key = std::string(kUnit) + "\\DownloadInformation";
    m_registry.writeRaw(key, "INF", REG_BINARY, "C:\\x.inf");
    EXPECT_EQ("C:\\x.inf", search("AutoUpdateATL.inf"));
    m_registry.writeRaw(key, "INF", REG_SZ, std::string(259, 'x'));
    EXPECT_EQ(std::string(259, 'x'), search("AutoUpdateATL.inf"));
    m_registry.writeRaw(key, "INF", REG_SZ, std::string(260, 'x'));
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
    m_registry.write(key, "INF", DWORD{0});
    EXPECT_EQ("not found", search("AutoUpdateATL.inf"));
}

TEST_F(DownloadedFilesTest, NullEmptyAndEndlessNamesAreNotFound)
{
    recordFile("C:\\ends in a backslash\\");
    EXPECT_EQ("not found", search(nullptr));
    EXPECT_EQ("not found", search(""));
    EXPECT_EQ("not found", search(std::string(10000, 'x').c_str()));
    EXPECT_FALSE(SearchFileInDownloadedProgramFiles("one.dll", nullptr));
    EXPECT_FALSE(SearchFileInDownloadedProgramFiles("AutoUpdateATL.inf", nullptr));
}
