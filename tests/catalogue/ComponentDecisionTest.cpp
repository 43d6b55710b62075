#include "catalogue/ComponentDecision.h"

#include "catalogue/CRelease.h"
#include "tests/catalogue/DecisionFixture.h"

#include <gtest/gtest.h>

#include <optional>

namespace
{
using auttest::Entry;

constexpr int kUntouched = 7;

/// One component asked for, and what of it is installed.
struct Decision
{
    const char* name;
    std::vector<int> actions;
    const char* version;
    const char* build;
    const char* language;
    std::optional<Entry> installed;
    int expected;
};
void PrintTo(const Decision& decision, std::ostream* out) { *out << decision.name; }

class ComponentDecision : public ::testing::TestWithParam<Decision>
{
protected:
    const auttest::ClientRegistry m_registry;
    const CRelease m_release{1, "", "", "Product", "1.0", "", "EN", 0, 0, 1};
};

int decide(CComponent& component, const CRelease* release)
{
    component.SetUpdateStatus(kUntouched);
    return IsComponentUpdateNecessary(&component, release);
}

TEST_P(ComponentDecision, ComparesWhatIsAskedForWithWhatIsInstalled)
{
    const Decision& row = GetParam();
    if (row.installed)
        auttest::writeEntry(m_registry, "Components\\Comp\\Product", *row.installed);
    const auto before = auttest::snapshot(m_registry);
    for (const int action : row.actions)
    {
        CComponent component(1, "Comp", row.version, row.build, row.language, action, "");
        EXPECT_EQ(row.expected, decide(component, &m_release)) << "action " << action;
        EXPECT_EQ(row.expected, component.GetUpdateStatus()) << "action " << action;
    }
    EXPECT_EQ(before, auttest::snapshot(m_registry));
}

const Decision kInstall[] = {
    {"the same", {0, 2}, "3.3.302", "B1", "EN", Entry{"3.3.302B1", "EN"}, 0},
    {"the same in another case", {0, 2}, "3.3.302", "b1", "en", Entry{"3.3.302B1", "EN"}, 0},
    {"the same, divided elsewhere", {0, 2}, "3.3", ".302B1", "EN", Entry{"3.3.302B1", "EN"}, 0},
    {"the same without build and language", {0, 2}, "3.3.302", "", "", Entry{"3.3.302", ""}, 0},
    {"another version", {0, 2}, "3.3.303", "B1", "EN", Entry{"3.3.302B1", "EN"}, 1},
    {"an older version", {0, 2}, "3.3.301", "B1", "EN", Entry{"3.3.302B1", "EN"}, 1},
    {"another build", {0, 2}, "3.3.302", "B2", "EN", Entry{"3.3.302B1", "EN"}, 1},
    {"no build", {0, 2}, "3.3.302", "", "EN", Entry{"3.3.302B1", "EN"}, 1},
    {"another language", {0, 2}, "3.3.302", "B1", "SV", Entry{"3.3.302B1", "EN"}, 1},
    {"no language", {0, 2}, "3.3.302", "B1", "", Entry{"3.3.302B1", "EN"}, 1},
    {"a disabled one", {0, 2}, "3.3.302", "B1", "EN", Entry{"3.3.302B1", "EN", false}, 1},
    {"none", {0, 2}, "3.3.302", "B1", "EN", std::nullopt, 1},
};
INSTANTIATE_TEST_SUITE_P(Install, ComponentDecision, ::testing::ValuesIn(kInstall));

const Decision kOther[] = {
    {"remove the same", {1}, "3.3.302", "b1", "EN", Entry{"3.3.302B1", "EN"}, 1},
    {"remove the same in another language", {1}, "3.3.302", "B1", "SV", Entry{"3.3.302B1", "EN"}, 1},
    {"remove the same, disabled", {1}, "3.3.302", "B1", "EN", Entry{"3.3.302B1", "EN", false}, 1},
    {"remove another version", {1}, "3.3.303", "B1", "EN", Entry{"3.3.302B1", "EN"}, 0},
    {"remove another build", {1}, "3.3.302", "B2", "EN", Entry{"3.3.302B1", "EN"}, 0},
    {"remove none", {1}, "3.3.302", "B1", "EN", std::nullopt, 0},
    {"disable an enabled one", {3}, "9.9", "", "SV", Entry{"3.3.302B1", "EN"}, 1},
    {"disable a disabled one", {3}, "3.3.302", "B1", "EN", Entry{"3.3.302B1", "EN", false}, 0},
    {"disable none", {3}, "3.3.302", "B1", "EN", std::nullopt, 0},
    {"no action known", {4, -1, 99}, "9.9", "B2", "SV", Entry{"3.3.302B1", "EN"}, 0},
    {"no action known, none", {4, -1, 99}, "3.3.302", "B1", "EN", std::nullopt, 0},
};
INSTANTIATE_TEST_SUITE_P(RemoveAndDisable, ComponentDecision, ::testing::ValuesIn(kOther));

using ComponentDecisionAlone = ComponentDecision;

TEST_F(ComponentDecisionAlone, IsThatOfTheReleasesProduct)
{
    auttest::writeEntry(m_registry, "Components\\Comp\\Other", {"3.3.302B1", "EN"});
    CComponent component(1, "Comp", "3.3.302", "B1", "EN", 0, "");
    EXPECT_EQ(1, decide(component, &m_release));
}

TEST_F(ComponentDecisionAlone, OfASharedComponentReadsTheCommonEntry)
{
    auttest::writeEntry(m_registry, "Components\\Comp\\Product", {"1.0", "SV", false});
    auttest::writeShared(m_registry, "Comp", {"3.3.302B1", "EN"}, {"Product"});
    CComponent component(1, "Comp", "3.3.302", "B1", "EN", 0, "");
    EXPECT_EQ(0, decide(component, &m_release));
}

TEST_F(ComponentDecisionAlone, WithoutAReleaseIsAlwaysToActAndStoresNothing)
{
    CComponent component(1, "Comp", "3.3.302", "B1", "EN", 99, "");
    EXPECT_EQ(1, decide(component, nullptr));
    EXPECT_EQ(kUntouched, component.GetUpdateStatus());
    EXPECT_EQ(1, IsComponentUpdateNecessary(nullptr, nullptr));
}

TEST_F(ComponentDecisionAlone, WithoutAComponentIsNotToAct)
{
    EXPECT_EQ(0, IsComponentUpdateNecessary(nullptr, &m_release));
}

TEST_F(ComponentDecisionAlone, TakesLongTextsAsAWhole)
{
    const std::string version(259, '1');
    const std::string build(259, '2');
    auttest::writeEntry(m_registry, "Components\\Comp\\Product", {version.c_str(), "EN"});
    CComponent same(1, "Comp", version.c_str(), "", "EN", 1, "");
    EXPECT_EQ(1, decide(same, &m_release));
    CComponent longer(1, "Comp", version.c_str(), build.c_str(), "EN", 1, "");
    EXPECT_EQ(0, decide(longer, &m_release)); // although its first 259 characters are the same
}

TEST_F(ComponentDecisionAlone, OddNamesHaveNothingInstalled)
{
    const std::string longName(259, 'n');
    for (const char* const name : {"", "..", "..\\..\\Config", "a\\b\\c", "C:", "%s%n", longName.c_str()})
    {
        CComponent component(1, name, "1.0", "", "EN", 0, "");
        EXPECT_EQ(1, decide(component, &m_release)) << name;
        const CRelease release(1, "", "", name, "1.0", "", "EN", 0, 0, 1);
        CComponent ofRelease(1, "Comp", "1.0", "", "EN", 3, "");
        EXPECT_EQ(0, decide(ofRelease, &release)) << name;
    }
    EXPECT_EQ(std::vector<std::string>{""}, auttest::snapshot(m_registry));
}
} // namespace
