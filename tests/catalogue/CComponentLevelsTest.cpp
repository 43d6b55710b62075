#include "catalogue/CComponent.h"

#include "platform/UniqueResource.h"
#include "tests/catalogue/DecisionFixture.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

using auttest::snapshot;

namespace
{
/// The levels of the component "Comp", of which two are kept; each has a folder with files and a subfolder.
class ComponentLevels : public ::testing::Test
{
protected:
    ComponentLevels()
    {
        m_registry.write("", "CompPath", m_folder / "components");
        m_registry.write("Components", "Max_Levels", 2u);
        for (const char* const level : {"1.0B1_EN", "1.1B1_EN", "1.2B1_EN"})
            makeLevel("Comp", level);
        makeLevel("Other", "1.0B1_EN");
    }
    void makeLevel(const std::string& component, const std::string& level)
    {
        for (const char* const file : {"\\a.txt", "\\b.txt", "\\sub\\c.txt", "\\sub\\deep\\d.txt"})
            m_folder.writeFile(folderOf(component, level) + file, "x");
    }
    static std::string folderOf(const std::string& component, const std::string& level)
    {
        return "components\\" + component + "\\" + level;
    }
    /// How many of a level's four files are there.
    int filesOf(const std::string& component, const std::string& level) const
    {
        int files = 0;
        for (const char* const file : {"\\a.txt", "\\b.txt", "\\sub\\c.txt", "\\sub\\deep\\d.txt"})
            files += m_folder.exists(folderOf(component, level) + file) ? 1 : 0;
        return files;
    }
    void writeLevels(std::string_view levels) const
    {
        m_registry.write("Components\\Comp", "Most_Recent_levels", levels);
    }
    std::string levels() const
    {
        return m_registry.readText("Components\\Comp", "Most_Recent_levels").value_or("none");
    }
    /// Notes a level of "Comp".
    static void insert(const char* version, const char* build = "B1", const char* language = "EN")
    {
        CComponent(1, "Comp", version, build, language, 0, "").InsertLevelIntoRegistry();
    }

    const auttest::ClientRegistry m_registry;
    const auttest::TestFolder m_folder;
};

TEST_F(ComponentLevels, TheFullVersionIsPutFirst)
{
    insert("1.0");
    EXPECT_EQ("1.0B1_EN", levels());
    insert("1.1", "P2", "");
    EXPECT_EQ("1.1P2,1.0B1_EN", levels());
    insert("1.0", "b1", "en");
    EXPECT_EQ("1.0b1_en,1.1P2", levels());
    EXPECT_EQ(4, filesOf("Comp", "1.0B1_EN"));
}

TEST_F(ComponentLevels, TheOnlyLevelStaysAsItIs)
{
    writeLevels("1.0b1_en;");
    const auto before = snapshot(m_registry);
    insert("1.0");
    EXPECT_EQ(before, snapshot(m_registry));
}

TEST_F(ComponentLevels, TheFoldersOfDroppedLevelsAndOnlyTheseAreRemoved)
{
    writeLevels("1.1B1_EN,1.0B1_EN");
    insert("1.2");
    EXPECT_EQ("1.2B1_EN,1.1B1_EN", levels());
    EXPECT_FALSE(m_folder.exists(folderOf("Comp", "1.0B1_EN")));
    EXPECT_EQ(4, filesOf("Comp", "1.1B1_EN"));
    EXPECT_EQ(4, filesOf("Comp", "1.2B1_EN"));
    EXPECT_EQ(4, filesOf("Other", "1.0B1_EN"));
}

TEST_F(ComponentLevels, AllDroppedLevelsGo)
{
    writeLevels("1.2B1_EN,1.1B1_EN,not there,1.0B1_EN");
    insert("1.3");
    EXPECT_EQ("1.3B1_EN,1.2B1_EN", levels());
    EXPECT_FALSE(m_folder.exists(folderOf("Comp", "1.0B1_EN")));
    EXPECT_FALSE(m_folder.exists(folderOf("Comp", "1.1B1_EN")));
    EXPECT_EQ(4, filesOf("Comp", "1.2B1_EN"));
}

TEST_F(ComponentLevels, ALevelThatAProductUsesIsKept)
{
    writeLevels("1.1B1_EN,1.0B1_EN");
    auttest::writeEntry(m_registry, "Components\\Comp\\Product", {"1.0B1", "EN"});
    insert("1.2");
    EXPECT_EQ("1.2B1_EN,1.1B1_EN,1.0B1_EN", levels());
    EXPECT_EQ(4, filesOf("Comp", "1.0B1_EN"));
}

TEST_F(ComponentLevels, AreTwentyWithoutAMaximum)
{
    m_registry.removeValue("Components", "Max_Levels");
    std::string nineteen;
    for (int i = 0; i < 19; ++i)
        nineteen += std::to_string(100 + i) + ",";
    writeLevels(nineteen + "1.0B1_EN");
    insert("1.2");
    EXPECT_EQ("1.2B1_EN," + nineteen.substr(0, nineteen.size() - 1), levels());
    EXPECT_FALSE(m_folder.exists(folderOf("Comp", "1.0B1_EN")));
    EXPECT_EQ(4, filesOf("Comp", "1.1B1_EN"));
}

TEST_F(ComponentLevels, AFileInUseStaysForGood)
{
    const char kSession[] = "System\\CurrentControlSet\\Control\\Session Manager";
    const auto pending = [&kSession]
    {
        const auto value = auttest::Registry().readRaw(kSession, "PendingFileRenameOperations");
        return value ? value->bytes : std::string();
    };
    const std::string before = pending();
    writeLevels("1.1B1_EN,1.0B1_EN");
    {
        const aut::UniqueFile open(::CreateFileA((m_folder / folderOf("Comp", "1.0B1_EN\\a.txt")).c_str(), GENERIC_READ,
                                                 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(open);
        insert("1.2");
    }
    EXPECT_EQ("1.2B1_EN,1.1B1_EN", levels());
    EXPECT_EQ(1, filesOf("Comp", "1.0B1_EN"));
    EXPECT_TRUE(m_folder.exists(folderOf("Comp", "1.0B1_EN\\a.txt")));
    EXPECT_FALSE(m_folder.exists(folderOf("Comp", "1.0B1_EN\\sub")));
    EXPECT_EQ(before, pending()) << "nothing is left for the next start of Windows to do";
}

TEST_F(ComponentLevels, LevelsThatNameOtherFoldersRemoveNothing)
{
    m_folder.writeFile("outside\\a.txt", "x");
    writeLevels("1.1B1_EN,1.0B1_EN,..,..\\..\\outside,..\\Other,../Other,C:,.");
    insert("1.2");
    EXPECT_EQ("1.2B1_EN,1.1B1_EN", levels());
    EXPECT_FALSE(m_folder.exists(folderOf("Comp", "1.0B1_EN")));
    EXPECT_EQ(4, filesOf("Comp", "1.1B1_EN"));
    EXPECT_EQ(4, filesOf("Other", "1.0B1_EN"));
    EXPECT_TRUE(m_folder.exists("outside\\a.txt"));
}

TEST_F(ComponentLevels, WithoutAComponentPathNothingIsRemoved)
{
    m_registry.removeValue("", "CompPath");
    writeLevels("1.1B1_EN,1.0B1_EN");
    insert("1.2");
    EXPECT_EQ("1.2B1_EN,1.1B1_EN", levels());
    EXPECT_EQ(4, filesOf("Comp", "1.0B1_EN"));
}

TEST_F(ComponentLevels, WithARelativeComponentPathNothingIsRemoved)
{
    char current[MAX_PATH];
    ASSERT_NE(0u, ::GetCurrentDirectoryA(sizeof current, current));
    ASSERT_TRUE(::SetCurrentDirectoryA(m_folder.path().c_str()));
    m_registry.write("", "CompPath", "components");
    writeLevels("1.1B1_EN,1.0B1_EN");
    insert("1.2");
    EXPECT_TRUE(::SetCurrentDirectoryA(current));
    EXPECT_EQ(4, filesOf("Comp", "1.0B1_EN"));
}

TEST_F(ComponentLevels, WithoutNameOrVersionNothingIsNoted)
{
    const auto before = snapshot(m_registry);
    CComponent(1, "", "1.2", "B1", "EN", 0, "").InsertLevelIntoRegistry();
    EXPECT_EQ(before, snapshot(m_registry));
    writeLevels("1.1B1_EN,1.0B1_EN,0.9");
    insert("", "", "");
    EXPECT_EQ("1.1B1_EN,1.0B1_EN,0.9", levels());
    EXPECT_EQ(4, filesOf("Comp", "1.0B1_EN"));
}

TEST_F(ComponentLevels, OfANameWithoutAnEntryOfItsOwnAreRefused)
{
    writeLevels("1.1B1_EN");
    const auto before = snapshot(m_registry);
    // The first would look like a product that uses "Comp".
    for (const std::string name : {"Comp\\Product", "..", "a/b", "C:"})
    {
        auttest::LogFile log;
        CComponent(1, name.c_str(), "1.2", "B1", "EN", 0, "").InsertLevelIntoRegistry();
        EXPECT_EQ((std::vector<auttest::LogEvent>{{"Error", "CComponent::InsertLevelIntoRegistry - component " + name +
                                                                " refused: no entry of its own"}}),
                  log.events());
        EXPECT_EQ(before, snapshot(m_registry)) << name;
    }
}

TEST_F(ComponentLevels, OfAComponentWhoseNameLeadsElsewhereRemoveNothing)
{
    const std::string longName(259, 'n');
    for (const char* const name : {"..", "..\\components\\Other", "../Other", "Comp\\..\\Other", longName.c_str()})
    {
        m_registry.write(std::string("Components\\") + std::string(name).substr(0, 200), "Most_Recent_levels",
                         "1.1B1_EN,1.0B1_EN,Comp,Other,components");
        CComponent(1, name, "1.2", "B1", "EN", 0, "").InsertLevelIntoRegistry();
        EXPECT_EQ(4, filesOf("Other", "1.0B1_EN")) << name;
        EXPECT_EQ(4, filesOf("Comp", "1.0B1_EN")) << name;
    }
}
} // namespace
