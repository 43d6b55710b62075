#include "catalogue/ComponentList.h"

#include "tests/catalogue/ComponentListFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <windows.h>

using auttest::entryKey;
using auttest::snapshot;
using auttest::writeEntry;
using auttest::writeShared;

namespace
{
using IsComponentInListTest = auttest::ComponentListFixture;

TEST_F(IsComponentInListTest, ComparesNameVersionBuildAndLanguageIgnoringCase)
{
    add("Other", "1.0", "B1", 0, false);
    add("Comp", "1.0x", "B1", 0, false);
    const struct
    {
        const char* name;
        const char* version;
        const char* build;
        const char* language;
        bool expected;
    } rows[] = {
        {"Comp", "1.0x", "B1", "EN", true},   {"COMP", "1.0X", "b1", "en", true},  {"Comp2", "1.0x", "B1", "EN", false},
        {"Comp", "1.0", "B1", "EN", false},   {"Comp", "1.0x", "B2", "EN", false}, {"Comp", "1.0x", "B1", "SV", false},
        {"Comp", "1.0", "xB1", "EN", false},  {"Comp", "1.0x", "B1", "", false},   {"", "", "", "", false},
        {"Other", "1.0x", "B1", "EN", false}, {"OTHER", "1.0", "B1", "EN", true},
    };
    for (const auto& row : rows)
    {
        // Everything else differs from the element in the list.
        CComponent component(99, row.name, row.version, row.build, row.language, 3, "elsewhere");
        component.SetShared(1);
        EXPECT_EQ(row.expected, IsComponentInList(m_list, &component))
            << row.name << " " << row.version << " " << row.build << " " << row.language;
    }
}

TEST_F(IsComponentInListTest, AnEmptyListHasNone)
{
    const CComponent component;
    EXPECT_FALSE(IsComponentInList(m_list, &component));
    EXPECT_FALSE(IsComponentInList(m_list, nullptr));
}

TEST_F(IsComponentInListTest, NullPointersAreNoComponents)
{
    m_list.AddTail(nullptr);
    EXPECT_FALSE(IsComponentInList(m_list, nullptr));
    const CComponent empty;
    EXPECT_FALSE(IsComponentInList(m_list, &empty));
    add("Comp", "1.0", "B1", 0, false);
    EXPECT_TRUE(IsComponentInList(m_list, elements()[1]));
}

using UpdateComponentListTest = auttest::ComponentListFixture;

TEST_F(UpdateComponentListTest, WorksInPhase3Only)
{
    add("Kernel", "1.0", "B1", 0, false);
    for (const DWORD phase : {0U, 1U, 2U, 4U, 0xFFFFFFFFU})
    {
        setPhase(phase);
        EXPECT_FALSE(UpdateComponentList(m_list, "P1")) << phase;
    }
    m_registry.removeValue("IN_PROGRESS", "Phase");
    EXPECT_FALSE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(1, m_list.GetCount());
    setPhase(3);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(0, m_list.GetCount());
}

TEST_F(UpdateComponentListTest, OfALocalInstallationGoesByItsOwnPhase)
{
    add("Kernel", "1.0", "B1", 0, false);
    m_registry.write("", "LocalInstall", 1u);
    EXPECT_FALSE(UpdateComponentList(m_list, "P1"));
    m_registry.write("IN_PROGRESS_LOCAL", "Phase", 3u);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(0, m_list.GetCount());
}

TEST_F(UpdateComponentListTest, NeedsAProduct)
{
    EXPECT_FALSE(UpdateComponentList(m_list, nullptr));
    add("Kernel", "1.0", "B1", 0, false);
    EXPECT_FALSE(UpdateComponentList(m_list, nullptr));
    EXPECT_EQ(1, m_list.GetCount());
}

TEST_F(UpdateComponentListTest, OfAnEmptyListIsTrueInPhase3)
{
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    setPhase(0);
    EXPECT_FALSE(UpdateComponentList(m_list, "P1"));
}

TEST_F(UpdateComponentListTest, DeletesTheKernelOfAnyCase)
{
    const auto before = snapshot(m_registry);
    for (const char* const name : {"Kernel", "KERNEL", "A", "kernel", "Kernel2", "kErNeL"})
        add(name, "1.0", "B1", 0, false);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((Texts{"A 1.0B1_EN", "Kernel2 1.0B1_EN"}), texts());
    EXPECT_EQ(4, m_deleted);
    EXPECT_EQ(before, snapshot(m_registry));
}

TEST_F(UpdateComponentListTest, DeletesAKernelThatIsShared)
{
    writeShared(m_registry, "Kernel", {"9.9.9B1", "EN"}, {"P1"});
    const auto before = snapshot(m_registry);
    add("Kernel", "1.0", "B1", 0, true);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_TRUE(m_list.IsEmpty());
    EXPECT_EQ(before, snapshot(m_registry));
}

TEST_F(UpdateComponentListTest, TakesAComponentOutOfTheCommonEntryThatIsNotSharedAnyMore)
{
    writeShared(m_registry, "Comp", {"9.9.9B1", "EN", true, "C:\\common"}, {"P1"});
    CComponent* const component = add("Comp", "1.0.0", "B1", 0, false);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_FALSE(m_registry.keyExists(entryKey("Comp", "Shared")));
    EXPECT_FALSE(m_registry.valueExists(entryKey("Comp", "P1"), "Shared"));
    EXPECT_EQ("9.9.9B1", m_registry.readText(entryKey("Comp", "P1"), "ComponentVersion"));
    EXPECT_EQ("C:\\common", m_registry.readText(entryKey("Comp", "P1"), "Path"));
    EXPECT_EQ(std::vector<CComponent*>{component}, elements()) << "only a shared component is substituted";
}

TEST_F(UpdateComponentListTest, LeavesTheEntriesOfOthersToThem)
{
    writeShared(m_registry, "Comp", {"9.9.9B1", "EN", true, "C:\\common"}, {"P2"});
    writeEntry(m_registry, entryKey("Comp", "P1"), {"1.0.0B1", "EN", true, "C:\\own"});
    const auto before = snapshot(m_registry);
    CComponent* const notShared = add("Comp", "1.0.0", "B1", 0, false);
    CComponent* const notInstalled = add("Comp2", "1.0.0", "B1", 0, false);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((std::vector<CComponent*>{notShared, notInstalled}), elements());
    EXPECT_EQ(before, snapshot(m_registry)) << "nor are entries made by looking";
}

TEST_F(UpdateComponentListTest, MovesAComponentToTheCommonEntryThatIsShared)
{
    writeEntry(m_registry, entryKey("Comp", "P1"), {"1.0.0B1", "EN", true, "C:\\own"});
    CComponent* const component = add("Comp", "1.0.0", "B1", 0, true);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(1u, m_registry.readNumber(entryKey("Comp", "P1"), "Shared"));
    EXPECT_EQ("1.0.0B1", m_registry.readText(entryKey("Comp", "Shared"), "ComponentVersion"));
    EXPECT_EQ("C:\\own", m_registry.readText(entryKey("Comp", "Shared"), "Path"));
    EXPECT_EQ(std::vector<CComponent*>{component}, elements());
}

TEST_F(UpdateComponentListTest, LetsANewProductJoinTheCommonEntry)
{
    writeShared(m_registry, "Comp", {"1.0.0B1", "EN", true, "C:\\common"}, {"P2"});
    add("Comp", "1.0.0", "B1", 0, true);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((Texts{"P1", "P2", "Shared"}), m_registry.subkeys("Components\\Comp"));
    EXPECT_EQ(1u, m_registry.readNumber(entryKey("Comp", "P1"), "Shared"));
    EXPECT_EQ(std::vector<std::string>{"Shared"}, m_registry.valueNames(entryKey("Comp", "P1")));
}

TEST_F(UpdateComponentListTest, LeavesWhatIsSharedAlreadyAsItIs)
{
    writeShared(m_registry, "Comp", {"1.0.0B1", "EN", true, "C:\\common"}, {"P1", "P2"});
    const auto before = snapshot(m_registry);
    CComponent* const component = add("Comp", "1.0.0", "B1", 0, true);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(before, snapshot(m_registry));
    EXPECT_EQ(std::vector<CComponent*>{component}, elements());
    EXPECT_EQ(0, m_deleted);
}

TEST_F(UpdateComponentListTest, NullPointersStayAndCount)
{
    m_list.AddTail(nullptr);
    add("Kernel", "1.0", "B1", 0, false);
    m_list.AddTail(nullptr);
    add("Kernel", "1.0", "B1", 0, false);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((Texts{"null", "null"}), texts());
}

/// A shared component of P1, which shares it with others, and whether the common version takes its place.
struct Substitution
{
    const char* name;
    int action;
    const char* version;
    const char* build;
    const char* common; ///< version in the common entry
    std::vector<std::string> products;
    bool expected;
};
void PrintTo(const Substitution& row, std::ostream* out) { *out << row.name; }

class SubstitutionRule : public auttest::ComponentListFixture, public ::testing::WithParamInterface<Substitution>
{
};

TEST_P(SubstitutionRule, DecidesWhetherTheCommonVersionIsTheOneToActOn)
{
    const Substitution& row = GetParam();
    writeShared(m_registry, "Comp", {row.common, "SV"}, row.products);
    const auto before = snapshot(m_registry);
    CComponent* const component = add("Comp", row.version, row.build, row.action, true);
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    ASSERT_EQ(1, m_list.GetCount());
    EXPECT_EQ(row.expected, elements()[0] != component);
    EXPECT_EQ(0, m_deleted);
    EXPECT_EQ(before, snapshot(m_registry));
}

const std::vector<std::string> kAlone = {"P1"};
const std::vector<std::string> kTwo = {"P1", "P2"};
const Substitution kRules[] = {
    {"install an older version", 0, "3.3.301", "", "3.3.302B1", kAlone, true},
    {"install an older version that two share", 0, "3.3.301", "", "3.3.302B1", kTwo, true},
    {"install a newer version", 0, "3.3.303", "", "3.3.302B1", kAlone, false},
    {"install the same version", 0, "3.3.302", "B1", "3.3.302B1", kAlone, false},
    {"install an older build number", 0, "3.3.302", ".1", "3.3.302.2", kAlone, true}, // version and build as one text
    {"install a newer build number", 0, "3.3.302", ".3", "3.3.302.2", kAlone, false},
    {"install where there is no common version", 0, "3.3.301", "", "", kTwo, false},
    {"reinstall an older version", 2, "3.3.301", "", "3.3.302B1", kTwo, true},
    {"reinstall a newer version", 2, "3.3.303", "", "3.3.302B1", kTwo, false},
    {"remove an older version from its last product", 1, "3.3.301", "", "3.3.302B1", kAlone, true},
    {"remove a newer version from its last product", 1, "3.3.303", "", "3.3.302B1", kAlone, true},
    {"remove from one of two products", 1, "3.3.301", "", "3.3.302B1", kTwo, false},
    {"remove where there is no common version", 1, "3.3.301", "", "", kAlone, false},
    {"disable an older version", 3, "3.3.301", "", "3.3.302B1", kAlone, false},
    {"no action known", 4, "3.3.301", "", "3.3.302B1", kAlone, false},
    {"no action known, negative", -1, "3.3.301", "", "3.3.302B1", kAlone, false},
};
INSTANTIATE_TEST_SUITE_P(All, SubstitutionRule, ::testing::ValuesIn(kRules));

TEST_F(UpdateComponentListTest, WithoutACommonVersionNothingIsSubstituted)
{
    for (const int action : {0, 1, 2, 3})
    {
        // Only P1 has a version; that of P2 lies elsewhere, so nothing is shared.
        writeEntry(m_registry, entryKey("Comp", "P1"), {"3.3.302B1", "EN", true, "C:\\own"});
        writeEntry(m_registry, entryKey("Comp", "P2"), {"", "EN", true, "C:\\other"});
        const auto before = snapshot(m_registry);
        CComponent* const component = add("Comp", "3.3.301", "", action, true);
        EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
        EXPECT_EQ(std::vector<CComponent*>{component}, elements()) << action;
        EXPECT_EQ(before, snapshot(m_registry));
        clear();
    }
}

LSTATUS WINAPI refuseToCreate(HKEY, LPCSTR, DWORD, LPSTR, DWORD, REGSAM, const SECURITY_ATTRIBUTES*, PHKEY, LPDWORD)
{
    return ERROR_ACCESS_DENIED;
}

/// A product that cannot join: nothing may be written below the component.
class UpdateComponentListOfAnOutsider : public auttest::ComponentListFixture
{
protected:
    std::vector<CComponent*> update()
    {
        const auttest::ImportPatch patch("RegCreateKeyExA", &refuseToCreate);
        EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
        return elements();
    }
    void writeCommonOf(const char* product, const char* ownVersion)
    {
        writeShared(m_registry, "Comp", {"3.3.302B1", "EN"}, {});
        if (product != nullptr)
            writeEntry(m_registry, entryKey("Comp", product), {ownVersion, "EN"});
    }
};

TEST_F(UpdateComponentListOfAnOutsider, RemovesOnlyWhatItHas)
{
    writeCommonOf("P2", "3.3.302B1");
    CComponent* const component = add("Comp", "3.3.301", "", 1, true);
    EXPECT_EQ(std::vector<CComponent*>{component}, update());
}

TEST_F(UpdateComponentListOfAnOutsider, InstallsWhatOthersHave)
{
    writeCommonOf("P2", "3.3.302B1");
    CComponent* const component = add("Comp", "3.3.301", "", 0, true);
    EXPECT_NE(std::vector<CComponent*>{component}, update());
    EXPECT_EQ(Texts{"Comp 3.3.302B1_EN"}, texts());
}

TEST_F(UpdateComponentListOfAnOutsider, WhatNoProductHasAVersionOfIsNotSubstituted)
{
    writeCommonOf("P2", "");
    CComponent* const component = add("Comp", "3.3.301", "", 0, true);
    EXPECT_EQ(std::vector<CComponent*>{component}, update());
}

TEST_F(UpdateComponentListOfAnOutsider, WhatNoProductHasIsNotSubstituted)
{
    writeCommonOf(nullptr, nullptr);
    CComponent* const component = add("Comp", "3.3.301", "", 0, true);
    EXPECT_EQ(std::vector<CComponent*>{component}, update());
}

int g_entryOpened = 0;

LSTATUS WINAPI countEntryOpened(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key)
{
    const std::string text(path);
    g_entryOpened += text.size() > 8 && text.compare(text.size() - 8, 8, "\\Comp\\P1") == 0 ? 1 : 0;
    return ::RegOpenKeyExA(root, path, options, access, key);
}

TEST_F(UpdateComponentListTest, DoesNotVisitWhatItAppends)
{
    writeShared(m_registry, "Comp", {"3.3.302B1", "EN"}, {"P1"});
    const auttest::ImportPatch patch("RegOpenKeyExA", &countEntryOpened);
    const auto opened = [this](const char* version)
    {
        clear();
        add("Comp", version, "", 0, true);
        add("Behind", "1.0.0", "", 0, false); // when this one is visited, the substitute stands behind it
        g_entryOpened = 0;
        EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
        return g_entryOpened;
    };
    const int forOneVisit = opened("3.3.303");
    EXPECT_GT(forOneVisit, 0);
    EXPECT_EQ(forOneVisit, opened("3.3.301"));
    EXPECT_EQ((Texts{"Behind 1.0.0_EN", "Comp 3.3.302B1_EN"}), texts());
}

TEST_F(UpdateComponentListTest, NamesWithoutAnEntryOfTheirOwnAreRefused)
{
    writeShared(m_registry, "Comp", {"3.3.302B1", "EN"}, {"P2"});
    const auto before = snapshot(m_registry);
    const struct
    {
        const char* component;
        const char* product;
    } rows[] = {{"", "P1"},         {"Comp", ""},       {"..", "P1"},      {"Comp", ".."},
                {"Comp\\P2", "P1"}, {"Comp", "a\\b"},   {"Comp", "a/b"},   {"C:", "P1"},
                {"Comp", "Shared"}, {"Comp", "sHARED"}, {"..\\Comp", "P1"}};
    for (const auto& row : rows)
    {
        CComponent* const component = add(row.component, "3.3.301", "", 0, true);
        auttest::LogFile log;
        EXPECT_TRUE(UpdateComponentList(m_list, row.product));
        EXPECT_EQ((std::vector<auttest::LogEvent>{{"Error", std::string("UpdateComponentList - component ") +
                                                                row.component + " of product " + row.product +
                                                                " refused: no entry of its own"}}),
                  log.events());
        EXPECT_EQ(std::vector<CComponent*>{component}, elements());
        EXPECT_EQ(before, snapshot(m_registry));
        clear();
    }
    add("Kernel", "1.0", "", 0, false);
    EXPECT_TRUE(UpdateComponentList(m_list, ""));
    EXPECT_TRUE(m_list.IsEmpty()) << "the kernel is dropped all the same";
}

TEST_F(UpdateComponentListTest, PathsThatDoNotFitChangeNothing)
{
    const auto before = snapshot(m_registry);
    CComponent* const longName = add(std::string(259, 'n').c_str(), "3.3.301", "", 0, true);
    CComponent* const component = add("Comp", "3.3.301", "", 0, true);
    EXPECT_TRUE(UpdateComponentList(m_list, std::string(10'000, 'p').c_str()));
    EXPECT_EQ((std::vector<CComponent*>{longName, component}), elements());
    EXPECT_EQ(before, snapshot(m_registry));
}
} // namespace
