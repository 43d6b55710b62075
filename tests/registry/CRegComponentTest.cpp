#include "registry/CRegComponent.h"

#include "tests/registry/RegistryTests.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/support/NoMemoryOnce.h"

#include <algorithm>

using auttest::fill;
using auttest::StringList;
using auttest::textsOf;
using Texts = std::vector<std::string>;

namespace
{
/// Shows what only derived classes may call.
struct Component : CRegComponent
{
    using CRegComponent::CRegComponent;
    using CRegComponent::DeleteMostRecentLevelFromList;
};

LSTATUS WINAPI noValue(HKEY, LPCSTR, DWORD, DWORD, const BYTE*, DWORD) { return ERROR_DISK_FULL; }

constexpr char kRoot[] = "Components";
constexpr char kComponent[] = "Components\\Comp";

class CRegComponentTest : public ::testing::Test
{
protected:
    CRegComponentTest() { m_registry.write("", "CompPath", "C:\\AU\\Components"); }

    std::optional<std::string> storedLevels() { return m_registry.readText(kComponent, "Most_Recent_levels"); }
    void storeLevels(const std::string& text) { m_registry.write(kComponent, "Most_Recent_levels", text); }
    Texts readLevels()
    {
        StringList list;
        fill(list, {"before"});
        EXPECT_TRUE(m_key.GetMostRecentLevels(list));
        return textsOf(list);
    }
    Texts setLevels(const Texts& levels)
    {
        StringList list;
        StringList removed;
        fill(list, levels);
        m_key.SetMostRecentLevels(list, removed);
        EXPECT_EQ(levels, textsOf(list));
        return textsOf(removed);
    }
    Texts insertLevel(const char* level)
    {
        StringList removed;
        m_key.InsertMostRecentLevel(level, removed);
        return textsOf(removed);
    }

    auttest::ClientRegistry m_registry;
    Component m_key{"Comp", false};
};

/// "1", "2" and so on.
Texts numbers(int count)
{
    Texts texts;
    for (int i = 1; i <= count; ++i)
        texts.push_back(std::to_string(i));
    return texts;
}

Texts sorted(Texts texts)
{
    std::sort(texts.begin(), texts.end());
    return texts;
}
} // namespace

TEST(CRegComponent, OpensTheKeyOfTheComponents)
{
    const auttest::ClientRegistry registry;
    auttest::expectKeyAt(registry, kRoot, [](bool readOnly) { CRegComponent{readOnly}; });
    auttest::expectKeyAt(registry, kRoot, [](bool readOnly) { CRegComponent{"", readOnly}; });
    auttest::expectKeyAt(registry, kRoot, [](bool readOnly) { CRegComponent{nullptr, readOnly}; });
}

TEST(CRegComponent, OpensTheKeyOfOneComponent)
{
    const auttest::ClientRegistry registry;
    auttest::expectKeyAt(registry, kComponent, [](bool readOnly) { CRegComponent{"Comp", readOnly}; });
}

TEST_F(CRegComponentTest, TheMaximumLivesOnTheRoot)
{
    CRegComponent root(false);
    EXPECT_EQ(0u, root.GetMaxLevels());
    EXPECT_EQ(0u, m_key.GetMaxLevels());
    m_key.SetMaxLevels(3);
    EXPECT_EQ(3u, m_registry.readNumber(kRoot, "Max_Levels"));
    EXPECT_FALSE(m_registry.valueExists(kComponent, "Max_Levels"));
    root.SetMaxLevels(4);
    EXPECT_EQ(4u, m_registry.readNumber(kRoot, "Max_Levels"));
    EXPECT_EQ(4u, root.GetMaxLevels());
    m_registry.write(kComponent, "Max_Levels", 9u);
    EXPECT_EQ(4u, m_key.GetMaxLevels());
}

TEST_F(CRegComponentTest, ListsTheComponentsFromRootAndComponent)
{
    m_registry.createKey("Components\\Other\\Product");
    CRegComponent root(true);
    for (CRegComponent* key : {&root, static_cast<CRegComponent*>(&m_key)})
    {
        StringList list;
        fill(list, {"before"});
        EXPECT_TRUE(key->GetComponentList(list));
        EXPECT_EQ((Texts{"Comp", "Other"}), sorted(textsOf(list)));
    }
}

TEST_F(CRegComponentTest, ListsItsProductsWithoutTheSharedEntry)
{
    for (const char* const entry : {"A", "B", "Shared", "SharedToo"})
        m_registry.createKey(std::string(kComponent) + "\\" + entry);
    StringList list;
    fill(list, {"before"});
    EXPECT_TRUE(m_key.GetProductList(list));
    EXPECT_EQ((Texts{"A", "B", "SharedToo"}), sorted(textsOf(list)));

    m_registry.removeKey(std::string(kComponent) + "\\Shared");
    m_registry.createKey(std::string(kComponent) + "\\sHARED");
    EXPECT_TRUE(m_key.GetProductList(list));
    EXPECT_EQ((Texts{"A", "B", "SharedToo"}), sorted(textsOf(list)));
}

TEST_F(CRegComponentTest, HasNoProductsOnTheRootOrWithoutAKey)
{
    StringList list;
    fill(list, {"before"});
    EXPECT_FALSE(CRegComponent(true).GetProductList(list));
    EXPECT_FALSE(CRegComponent("Missing", true).GetProductList(list));
    EXPECT_EQ((Texts{"before"}), textsOf(list));
}

TEST_F(CRegComponentTest, ReadsItsLevelsBetweenCommasAndSemicolons)
{
    EXPECT_EQ((Texts{}), readLevels());
    storeLevels("1.0;1.1,,1.2");
    EXPECT_EQ((Texts{"1.0", "1.1", "1.2"}), readLevels());
    storeLevels(",; 1.0 ;");
    EXPECT_EQ((Texts{" 1.0 "}), readLevels());
    storeLevels(",;,");
    EXPECT_EQ((Texts{}), readLevels());
}

TEST_F(CRegComponentTest, ReadsLevelsOfUpTo259Characters)
{
    storeLevels("1," + std::string(257, '2'));
    EXPECT_EQ((Texts{"1", std::string(257, '2')}), readLevels());
    storeLevels("1," + std::string(258, '2'));
    EXPECT_EQ((Texts{}), readLevels());
}

TEST_F(CRegComponentTest, HasNoLevelsOnTheRoot)
{
    m_registry.write(kRoot, "Most_Recent_levels", "1.0");
    CRegComponent root(false);
    StringList list;
    StringList removed;
    fill(list, {"before"});
    EXPECT_FALSE(root.GetMostRecentLevels(list));
    EXPECT_EQ((Texts{"before"}), textsOf(list));
    root.SetMostRecentLevels(list, removed);
    root.InsertMostRecentLevel("2.0", removed);
    EXPECT_EQ("1.0", m_registry.readText(kRoot, "Most_Recent_levels"));
    EXPECT_TRUE(removed.IsEmpty());
}

TEST_F(CRegComponentTest, DeletesTheFirstEqualLevelFromAList)
{
    StringList list;
    fill(list, {"1.0", "1.1b", "1.1B", "1.2"});
    EXPECT_TRUE(m_key.DeleteMostRecentLevelFromList(list, "1.1B"));
    EXPECT_EQ((Texts{"1.0", "1.1B", "1.2"}), textsOf(list));
    EXPECT_FALSE(m_key.DeleteMostRecentLevelFromList(list, "9"));
    EXPECT_FALSE(m_key.DeleteMostRecentLevelFromList(list, nullptr));
    EXPECT_EQ((Texts{"1.0", "1.1B", "1.2"}), textsOf(list));
}

TEST_F(CRegComponentTest, ANewLevelComesFirst)
{
    storeLevels("3.0,2.9");
    EXPECT_EQ((Texts{}), insertLevel("3.1"));
    EXPECT_EQ("3.1,3.0,2.9", storedLevels());
}

TEST_F(CRegComponentTest, AKnownLevelMovesToTheFront)
{
    storeLevels("3.1,3.0");
    EXPECT_EQ((Texts{}), insertLevel("3.0"));
    EXPECT_EQ("3.0,3.1", storedLevels());
    storeLevels("3.1,3.0b");
    insertLevel("3.0B");
    EXPECT_EQ("3.0B,3.1", storedLevels());
}

TEST_F(CRegComponentTest, TheOnlyLevelStaysAsItIs)
{
    storeLevels("3.1b;");
    EXPECT_EQ((Texts{}), insertLevel("3.1B"));
    EXPECT_EQ("3.1b;", storedLevels()); // not written again
    storeLevels("3.0");
    insertLevel("3.1");
    EXPECT_EQ("3.1,3.0", storedLevels());
}

TEST_F(CRegComponentTest, AFirstLevelStartsTheList)
{
    EXPECT_EQ((Texts{}), insertLevel("3.1"));
    EXPECT_EQ("3.1", storedLevels());
    EXPECT_EQ((Texts{}), insertLevel(""));
    EXPECT_EQ((Texts{}), insertLevel(nullptr));
    EXPECT_EQ("3.1", storedLevels());
}

TEST_F(CRegComponentTest, InsertingDropsWhatIsBeyondTheMaximum)
{
    m_key.SetMaxLevels(2);
    storeLevels("3.0,2.9");
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\2.9"}), insertLevel("3.1"));
    EXPECT_EQ("3.1,3.0", storedLevels());
}

TEST_F(CRegComponentTest, WhenTheLevelsCannotBeRecordedNoFolderIsDropped)
{
    m_key.SetMaxLevels(2);
    storeLevels("3.0,2.9");
    auttest::LogFile log;
    const auttest::ImportPatch patch("RegSetValueExA", noValue);
    EXPECT_EQ(Texts{}, insertLevel("3.1")) << "2.9 is still listed";
    EXPECT_EQ("3.0,2.9", storedLevels());
    EXPECT_TRUE(log.has("Error", "CRegComponent::SetMostRecentLevels - levels of component Comp not recorded"));
}

TEST_F(CRegComponentTest, KeepsTwentyLevelsWhenNoMaximumIsSet)
{
    const Texts removed = {"C:\\AU\\Components\\Comp\\21", "C:\\AU\\Components\\Comp\\22",
                           "C:\\AU\\Components\\Comp\\23", "C:\\AU\\Components\\Comp\\24",
                           "C:\\AU\\Components\\Comp\\25"};
    EXPECT_EQ(removed, setLevels(numbers(25)));
    EXPECT_EQ("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20", storedLevels());
    EXPECT_EQ((Texts{}), setLevels(numbers(20)));
    m_key.SetMaxLevels(0);
    EXPECT_EQ(removed, setLevels(numbers(25)));
}

TEST_F(CRegComponentTest, KeepsAnOlderLevelThanTheTwentiethThatAProductUses)
{
    m_registry.write("Components\\Comp\\A", "ComponentVersion", "23");
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\21", "C:\\AU\\Components\\Comp\\22", "C:\\AU\\Components\\Comp\\24",
                     "C:\\AU\\Components\\Comp\\25"}),
              setLevels(numbers(25)));
    EXPECT_EQ("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,23", storedLevels());
}

TEST_F(CRegComponentTest, KeepsAsManyLevelsAsTheMaximumSays)
{
    m_key.SetMaxLevels(3);
    EXPECT_EQ((Texts{}), setLevels({"1"}));
    EXPECT_EQ("1", storedLevels());
    EXPECT_EQ((Texts{}), setLevels({"1", "2", "3"}));
    EXPECT_EQ("1,2,3", storedLevels());
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\4"}), setLevels({"1", "2", "3", "4"}));
    EXPECT_EQ("1,2,3", storedLevels());
    m_key.SetMaxLevels(0xFFFFFFFF);
    EXPECT_EQ((Texts{}), setLevels(numbers(50)));
    EXPECT_EQ((Texts{}), setLevels({}));
    EXPECT_EQ("", storedLevels());
}

TEST_F(CRegComponentTest, KeepsOlderLevelsThatAProductUses)
{
    m_key.SetMaxLevels(1);
    m_registry.write("Components\\Comp\\A", "ComponentVersion", "2b");
    m_registry.write("Components\\Comp\\B", "ComponentVersion", "3");
    m_registry.write("Components\\Comp\\B", "Language", "SV");
    m_registry.write("Components\\Comp\\C", "Shared", 1u);
    m_registry.write("Components\\Comp\\C", "ComponentVersion", "6"); // its own entry does not count
    m_registry.write("Components\\Comp\\Shared", "ComponentVersion", "5");
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\3", "C:\\AU\\Components\\Comp\\4", "C:\\AU\\Components\\Comp\\6"}),
              setLevels({"1", "2B", "3", "3_sv", "4", "5", "6"}));
    EXPECT_EQ("1,2B,3_sv,5", storedLevels());
}

TEST_F(CRegComponentTest, TheSharedEntryAloneKeepsNoLevel)
{
    m_key.SetMaxLevels(1);
    m_registry.write("Components\\Comp\\Shared", "ComponentVersion", "2");
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\2"}), setLevels({"1", "2"}));
}

TEST_F(CRegComponentTest, LookingForUsersOfALevelCreatesNothing)
{
    m_key.SetMaxLevels(1);
    m_registry.write("Components\\Comp\\A", "Shared", 1u);
    setLevels({"1", "2"});
    EXPECT_FALSE(m_registry.keyExists("Components\\Comp\\Shared"));
}

TEST_F(CRegComponentTest, AddsToTheFoldersThatTheCallerHas)
{
    m_key.SetMaxLevels(1);
    StringList levels;
    StringList removed;
    fill(levels, {"1", "2"});
    fill(removed, {"before"});
    m_key.SetMostRecentLevels(levels, removed);
    EXPECT_EQ((Texts{"before", "C:\\AU\\Components\\Comp\\2"}), textsOf(removed));
}

TEST_F(CRegComponentTest, WithoutAComponentPathTheFoldersStayAndThatIsLogged)
{
    m_key.SetMaxLevels(1);
    const std::vector<auttest::LogEvent> logged = {
        {"Error",
         "CRegComponent::SetMostRecentLevels - the component path is not set: dropped levels of Comp stay on disk"}};
    const auttest::LogFile missing;
    m_registry.removeValue("", "CompPath");
    EXPECT_EQ((Texts{}), setLevels({"1", "2", "3"}));
    EXPECT_EQ("1", storedLevels());
    EXPECT_EQ(logged, missing.events());

    const auttest::LogFile tooLong;
    m_registry.write("", "CompPath", std::string(260, 'x'));
    EXPECT_EQ((Texts{}), setLevels({"1", "2"}));
    EXPECT_EQ(logged, tooLong.events());

    const auttest::LogFile nothingDropped;
    EXPECT_EQ((Texts{}), setLevels({"1"}));
    EXPECT_TRUE(nothingDropped.events().empty());
}

TEST_F(CRegComponentTest, TheFolderOfAKeptLevelIsNotRemovedWhenItIsListedAgain)
{
    m_key.SetMaxLevels(2);
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\3"}), setLevels({"1b", "2", "1B", "3", "2"}));
    EXPECT_EQ("1b,2", storedLevels());
    storeLevels("1,2,1"); // as it may have been written by hand
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\2"}), insertLevel("3"));
    EXPECT_EQ("3,1", storedLevels());
}

TEST_F(CRegComponentTest, ADroppedLevelThatIsNoPlainNameIsLoggedAndHasNoFolder)
{
    m_key.SetMaxLevels(1);
    auttest::LogFile log;
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\2"}), setLevels({"1", "..", "..\\..\\Windows", "a/b", "C:", "", "2"}));
    EXPECT_EQ("1", storedLevels());
    EXPECT_EQ(5u, log.events().size());
    EXPECT_TRUE(log.has("Error", "CRegComponent::SetMostRecentLevels - level .. of component Comp refused: no folder "
                                 "of its own"));

    CRegComponent nested("Comp\\..", false);
    StringList levels;
    StringList removed;
    fill(levels, {"1", "2"});
    nested.SetMostRecentLevels(levels, removed);
    EXPECT_TRUE(removed.IsEmpty());
}

// Windows drops points and blanks at the end: the folder to be removed would be that of level 1, which stays.
TEST_F(CRegComponentTest, ADroppedLevelThatIsAnotherOnesFolderIsLoggedAndHasNone)
{
    m_key.SetMaxLevels(1);
    auttest::LogFile log;
    EXPECT_EQ((Texts{"C:\\AU\\Components\\Comp\\2"}), setLevels({"1", "1.", "1. .", "NUL", "com1", "2"}));
    EXPECT_EQ("1", storedLevels());
    EXPECT_EQ(4u, log.events().size());
    EXPECT_TRUE(log.has("Error", "CRegComponent::SetMostRecentLevels - level 1. of component Comp refused: no folder "
                                 "of its own"));
}

TEST_F(CRegComponentTest, DropsNothingWhenTheProductsCannotBeRead)
{
    m_key.SetMaxLevels(1);
    storeLevels("1,2");
    m_registry.createKey("Components\\Comp\\A");
    ASSERT_TRUE(m_key.Open(auttest::clientKey(kComponent).c_str(), KEY_SET_VALUE)); // subkeys cannot be enumerated
    EXPECT_EQ((Texts{}), setLevels({"3", "2"}));
    EXPECT_EQ("1,2", storedLevels());
}

TEST_F(CRegComponentTest, WritesLevelsOfAnyLength)
{
    const std::string level(10000, '1');
    EXPECT_EQ((Texts{}), setLevels({level, "2"}));
    EXPECT_EQ(level + ",2", storedLevels());
}

TEST_F(CRegComponentTest, WithoutMemoryNoOtherFolderIsGivenUp)
{
    m_registry.write(kRoot, "Max_Levels", 1u);
    m_registry.write(std::string(kComponent) + "\\Product", "ComponentVersion", "1.1");
    m_registry.write(std::string(kComponent) + "\\Product", "Language", "EN");
    const Texts dropped{"C:\\AU\\Components\\Comp\\1.1", "C:\\AU\\Components\\Comp\\1.0"};
    bool met = true;
    for (int number = 1; met; ++number)
    {
        storeLevels("before");
        StringList levels;
        StringList removed;
        fill(levels, {"1.2", "1.1", "1.1_EN", "1.0"});
        {
            const auttest::NoMemoryOnce once(number);
            m_key.SetMostRecentLevels(levels, removed);
            met = once.wasMet();
        }
        for (const std::string& folder : textsOf(removed))
            EXPECT_EQ(1, std::count(dropped.begin(), dropped.end(), folder)) << folder << " at request " << number;
        const std::string stored = storedLevels().value_or("(none)");
        EXPECT_TRUE(stored == "1.2,1.1_EN" || stored == "before") << stored << " at request " << number;
        EXPECT_TRUE(stored != "before" || removed.IsEmpty()) << "at request " << number;
        EXPECT_TRUE(met || textsOf(removed) == dropped); // undisturbed
    }
}
