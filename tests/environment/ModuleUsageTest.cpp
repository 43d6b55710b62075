#include "environment/ModuleUsage.h"

#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
using Entries = std::vector<std::string>;
using List = RT_List<String, String&>;

constexpr char kKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ModuleUsage";
constexpr char kA[] = "{AAAAAAAA-0000-0000-0000-000000000000}";
constexpr char kB[] = "{BBBBBBBB-0000-0000-0000-000000000000}";

Entries entriesOf(const List& list)
{
    Entries entries;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
        entries.emplace_back(static_cast<const char*>(list.GetNext(pos)));
    return entries;
}

void add(List& list, const char* text)
{
    String entry(text);
    list.AddTail(entry);
}

class ModuleUsageTest : public ::testing::Test
{
protected:
    ModuleUsageTest() { m_registry.removeKey(kKey); }
    ~ModuleUsageTest() override { m_registry.removeKey(kKey); }

    static std::string keyOf(const std::string& module) { return std::string(kKey) + "\\" + module; }
    void record(const std::string& module, const char* valueName) { m_registry.write(keyOf(module), valueName, ""); }
    static Entries files()
    {
        List list;
        GetModuleFiles(list);
        return entriesOf(list);
    }

    const auttest::Registry m_registry;
};
} // namespace

TEST_F(ModuleUsageTest, AModuleGivesItsFileNameAndItsClassId)
{
    record("C:/WINDOWS/Downloaded Program Files/one.ocx", kA);
    EXPECT_EQ(Entries{std::string("one.ocx=") + kA}, files());
}

TEST_F(ModuleUsageTest, AModuleWithoutAFolderGivesItsWholeName)
{
    record("one.ocx", kA);
    EXPECT_EQ(Entries{std::string("one.ocx=") + kA}, files());
}

TEST_F(ModuleUsageTest, AModuleThatEndsInASlashHasNoFileName)
{
    record("C:/folder/", kA);
    EXPECT_EQ(Entries{std::string("=") + kA}, files());
}

TEST_F(ModuleUsageTest, OnlyNamesThatBeginWithABraceAreClassIds)
{
    record("C:/one.ocx", ".Owner");
    record("C:/one.ocx", "Unknown Owner");
    record("C:/one.ocx", "");
    record("C:/one.ocx", "x{");
    EXPECT_EQ(Entries(), files());
    record("C:/one.ocx", kA);
    EXPECT_EQ(Entries{std::string("one.ocx=") + kA}, files());
}

TEST_F(ModuleUsageTest, TheFirstClassIdInTheRegistrysOrderCounts)
{
    record("C:/one.ocx", ".Owner");
    record("C:/one.ocx", kB);
    record("C:/one.ocx", kA);
    const Entries names = m_registry.valueNames(keyOf("C:/one.ocx"));
    const auto first = std::find_if(names.begin(), names.end(), [](const std::string& name) { return name[0] == '{'; });
    ASSERT_NE(names.end(), first);
    EXPECT_EQ(Entries{"one.ocx=" + *first}, files());
}

TEST_F(ModuleUsageTest, WhatAClassIdsValueHoldsDoesNotMatter)
{
    m_registry.write(keyOf("C:/one.ocx"), kA, 7);
    m_registry.writeRaw(keyOf("C:/two.ocx"), kB, REG_BINARY, "xyz");
    EXPECT_EQ((Entries{std::string("one.ocx=") + kA, std::string("two.ocx=") + kB}), files());
}

TEST_F(ModuleUsageTest, AModuleWithoutAClassIdIsLeftOut)
{
    m_registry.createKey(keyOf("C:/none.ocx"));
    record("C:/one.ocx", kA);
    EXPECT_EQ(Entries{std::string("one.ocx=") + kA}, files());
}

TEST_F(ModuleUsageTest, WhatTheListHeldStays)
{
    record("C:/one.ocx", kA);
    List list;
    add(list, "before");
    GetModuleFiles(list);
    GetModuleFiles(list);
    const std::string entry = std::string("one.ocx=") + kA;
    EXPECT_EQ((Entries{"before", entry, entry}), entriesOf(list));
}

TEST_F(ModuleUsageTest, WithoutTheKeyTheListStaysAsItIsAndNothingIsCreated)
{
    List list;
    add(list, "before");
    GetModuleFiles(list);
    EXPECT_EQ(Entries{"before"}, entriesOf(list));
    EXPECT_FALSE(m_registry.keyExists(kKey));
}

TEST_F(ModuleUsageTest, AModuleMayHaveTheLongestNameOfAKey)
{
    const std::string module = "C:/" + std::string(244, 'd') + "/one.ocx";
    ASSERT_EQ(255U, module.size());
    m_registry.createKey(kKey);
    aut::UniqueKey key; // the whole path is longer than one call takes
    ASSERT_EQ(ERROR_SUCCESS, ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKey, 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, key.put()));
    auttest::Registry(key.get()).write(module, kA, "");
    EXPECT_EQ(Entries{std::string("one.ocx=") + kA}, files());
}

TEST_F(ModuleUsageTest, ALongClassIdComesWhole)
{
    const std::string classId = "{" + std::string(258, 'x');
    record("C:/one.ocx", classId.c_str());
    EXPECT_EQ(Entries{"one.ocx=" + classId}, files());
}

TEST_F(ModuleUsageTest, NamesAreNotFormats)
{
    record("C:/%s%n.ocx", "{%d%s}");
    EXPECT_EQ(Entries{"%s%n.ocx={%d%s}"}, files());
}

TEST_F(ModuleUsageTest, TheEntriesAnswerForTheirFiles)
{
    record("C:/x/one.ocx", kA);
    record("C:/x/two.ocx", kB);
    List list;
    GetModuleFiles(list);
    EXPECT_STREQ(kB, GetCLSIDFromFileName(list, "two.ocx"));
    EXPECT_STREQ(kA, GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(GetCLSIDFromFileName, GivesTheClassIdOnceThenNothing)
{
    List list;
    add(list, "one.ocx={A}");
    EXPECT_STREQ("{A}", GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_STREQ("", GetCLSIDFromFileName(list, "one.ocx"));
}

TEST(GetCLSIDFromFileName, TakesTheFirstEntryAndLeavesTheOthersInOrder)
{
    List list;
    for (const char* const entry : {"zero.ocx={Z}", "one.ocx={A}", "two.ocx={C}", "one.ocx={B}"})
        add(list, entry);
    EXPECT_STREQ("{A}", GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_EQ((Entries{"zero.ocx={Z}", "two.ocx={C}", "one.ocx={B}"}), entriesOf(list));
    EXPECT_STREQ("{B}", GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_EQ((Entries{"zero.ocx={Z}", "two.ocx={C}"}), entriesOf(list));
}

TEST(GetCLSIDFromFileName, NamesCompareWithoutRegardToCase)
{
    List list;
    add(list, "One.OCX={aA}");
    EXPECT_STREQ("{aA}", GetCLSIDFromFileName(list, "oNE.ocx"));
}

TEST(GetCLSIDFromFileName, TheWholeNameMustMatch)
{
    List list;
    add(list, "one.ocx={A}");
    for (const char* const other : {"one.oc", "one.ocxx", "ne.ocx", "one.ocx={A}", "{A}", "="})
        EXPECT_STREQ("", GetCLSIDFromFileName(list, other)) << other;
    EXPECT_EQ(1, list.GetCount());
}

TEST(GetCLSIDFromFileName, AnEntryIsSplitAtItsFirstEqualsSign)
{
    List list;
    add(list, "a=b.ocx={A}");
    EXPECT_STREQ("", GetCLSIDFromFileName(list, "a=b.ocx"));
    EXPECT_STREQ("b.ocx={A}", GetCLSIDFromFileName(list, "a"));
}

TEST(GetCLSIDFromFileName, AnEntryWithoutAnEqualsSignIsSkippedAndStays)
{
    List list;
    add(list, "one.ocx");
    add(list, "");
    add(list, "one.ocx={A}");
    EXPECT_STREQ("{A}", GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_STREQ("", GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_EQ((Entries{"one.ocx", ""}), entriesOf(list));
}

TEST(GetCLSIDFromFileName, AnEmptyClassIdIsTakenToo)
{
    List list;
    add(list, "one.ocx=");
    EXPECT_STREQ("", GetCLSIDFromFileName(list, "one.ocx"));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(GetCLSIDFromFileName, NullEmptyAndEndlessNamesAreNotFound)
{
    List list;
    EXPECT_STREQ("", GetCLSIDFromFileName(list, "one.ocx"));
    const std::string endless(10000, 'x');
    add(list, "one.ocx={A}");
    EXPECT_STREQ("", GetCLSIDFromFileName(list, nullptr));
    EXPECT_STREQ("", GetCLSIDFromFileName(list, ""));
    EXPECT_STREQ("", GetCLSIDFromFileName(list, endless.c_str()));
    add(list, (endless + "=" + endless).c_str());
    EXPECT_STREQ(endless.c_str(), GetCLSIDFromFileName(list, endless.c_str()));
    EXPECT_EQ(Entries{"one.ocx={A}"}, entriesOf(list));
}
