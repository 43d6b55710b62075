#include "plan/Decision.h"

#include "tests/catalogue/DecisionFixture.h"
#include "tests/support/ClientRegistry.h"

#include <7xAutoUpdateTools.h>

#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <random>

using autool::AskedComponent;
using autool::AskedRelease;
using autool::Conditions;
using autool::Installed;
using autool::ReleaseDecision;
using autool::Verb;

namespace
{
int hourOf(__int64 time)
{
    std::tm local{};
    ::_localtime64_s(&local, &time);
    return local.tm_hour;
}

/// What the client would decide on right now.
Conditions conditionsNow()
{
    Conditions conditions;
    conditions.time = ::_time64(nullptr);
    conditions.serverTime = LocalTimeToWebConfTime(conditions.time);
    conditions.hour = hourOf(conditions.time);
    conditions.anyHour = CRegConfig(true).GetFlag("BFU9K");
    conditions.phase = CRegInProgress(true).GetPhase();
    return conditions;
}

AskedComponent asked(const CComponent& component)
{
    AskedComponent record;
    record.id = component.GetId();
    record.name = component.GetName();
    record.version = component.GetVersion();
    record.build = component.GetBuild();
    record.language = component.GetLanguage();
    record.fullVersion = component.GetFullVersion();
    record.action = component.GetAction();
    record.shared = component.IsShared() != 0;
    return record;
}

AskedRelease asked(const CRelease& release)
{
    AskedRelease record;
    record.name = release.GetName();
    record.version = release.GetVersion();
    record.build = release.GetBuild();
    record.language = release.GetLanguage();
    record.fullVersion = release.GetFullVersion();
    record.action = release.GetAction();
    record.enabled = release.IsEnabled() != 0;
    record.activationDate = release.GetActivationDate();
    record.preInstallOnly = release.IsPreInstallOnly() != 0;
    record.noDownload = release.IsNoDownload() != 0;
    record.startHour = release.GetInstallationStartHour();
    record.endHour = release.GetInstallationEndHour();
    const auto& components = release.GetComponentList();
    for (POSITION at = components.GetHeadPosition(); at != nullptr;)
        record.components.push_back(asked(*components.GetNext(at)));
    return record;
}

/// Draws states of a workstation and product lists for it, from few texts, so that they often meet.
class Lottery
{
public:
    explicit Lottery(unsigned seed) : m_random(seed) {}

    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    bool chance(int percent) { return number(1, 100) <= percent; }
    template <std::size_t N> const char* oneOf(const char* const (&texts)[N])
    {
        return texts[static_cast<std::size_t>(number(0, static_cast<int>(N) - 1))];
    }

    const char* version() { return oneOf({"1.0.1", "1.0.2", "1.0.10", "2.0.0", ""}); }
    const char* build() { return oneOf({"B1", "B2", "_B1", "P3", "b1", ""}); }
    const char* language() { return oneOf({"EN", "FR", "en", ""}); }
    const char* product() { return oneOf({"Ledger", "Reports", "Words", "ledger", "Shared"}); }
    const char* component() { return oneOf({"Core", "Server", "core", "Kernel", "Wordlist", "In\\Side", ""}); }
    int action() { return chance(5) ? number(-1, 9) : number(0, 3); }

    std::unique_ptr<CRelease> release()
    {
        const __int64 now = ::_time64(nullptr);
        const __int64 dates[] = {0, now - 100'000, now + 100'000};
        auto drawn = std::make_unique<CRelease>();
        drawn->InitValues(1, "", "", product(), version(), build(), language(), action(),
                          dates[chance(80) ? number(0, 1) : 2], number(0, 1), number(0, 24), number(0, 48), false,
                          false, false);
        drawn->SetPreInstallOnly(chance(10) ? 1 : 0);
        drawn->SetNoDownload(chance(10) ? 1 : 0);
        for (int count = number(0, 4); count > 0; --count)
        {
            auto* const part = new CComponent(7, component(), version(), build(), language(), action(), "x");
            part->SetShared(number(0, 1));
            drawn->GetComponentList().AddTail(part);
        }
        return drawn;
    }

    void fill(const auttest::Registry& registry)
    {
        registry.removeKey("Products");
        registry.removeKey("Components");
        registry.write("IN_PROGRESS", "Phase", chance(70) ? 3u : 0u);
        registry.write("Config", "BFU9K", chance(10) ? 1u : 0u);
        const __int64 offset = number(-200'000, 200'000);
        registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD,
                          {reinterpret_cast<const char*>(&offset), sizeof offset});
        for (const char* const name : {"Ledger", "Reports", "Words"})
            if (chance(60))
            {
                const std::string key = std::string("Products\\") + name;
                if (chance(80))
                    registry.write(key, "Version", std::string(version()) + build());
                if (chance(80))
                    registry.write(key, "Language", language());
                if (chance(80))
                    registry.write(key, "Enable", static_cast<DWORD>(number(0, 1)));
            }
        for (const char* const name : {"Core", "Server", "Wordlist", "In\\Side"})
            for (const char* const user : {"Ledger", "Reports", "Words", "Shared"})
                if (chance(50))
                    fillEntry(registry, auttest::entryKey(name, user));
    }

private:
    void fillEntry(const auttest::Registry& registry, const std::string& key)
    {
        registry.createKey(key);
        if (chance(75))
            registry.write(key, "ComponentVersion", std::string(version()) + build());
        if (chance(75))
            registry.write(key, "Language", language());
        if (chance(75))
            registry.write(key, "Path", oneOf({"C:\\One", "C:\\Two", ""}));
        if (chance(75))
            registry.write(key, "Enable", static_cast<DWORD>(number(0, 1)));
        if (chance(40))
            registry.write(key, "Shared", static_cast<DWORD>(number(0, 1)));
    }

    std::mt19937 m_random;
};

std::vector<std::string> componentsOf(const CRelease& release, bool withStatus)
{
    std::vector<std::string> lines;
    const auto& components = release.GetComponentList();
    for (POSITION at = components.GetHeadPosition(); at != nullptr;)
    {
        const CComponent* const component = components.GetNext(at);
        lines.push_back(std::string(component->GetName()) + " " + component->GetFullVersion() +
                        (withStatus ? (component->GetUpdateStatus() != 0 ? ": act" : ": leave") : ""));
    }
    return lines;
}

std::vector<std::string> componentsOf(const ReleaseDecision& decision, bool withStatus)
{
    std::vector<std::string> lines;
    for (const autool::ComponentDecision& component : decision.components)
        lines.push_back(component.asked.name + " " + component.asked.fullVersion +
                        (withStatus ? (component.necessary ? ": act" : ": leave") : ""));
    return lines;
}

std::string entryText(const autool::InstalledComponent& entry)
{
    return entry.version + "|" + entry.language + "|" + entry.path + "|" + (entry.enabled ? "enabled" : "") + "|" +
           (entry.shared ? "shared" : "");
}

/// The verb must say what the library's answer means.
void expectVerbFits(const ReleaseDecision& decision)
{
    const bool goesAhead = decision.verb != Verb::hold && decision.verb != Verb::nothing;
    const bool installs = decision.asked.action == autool::kInstall || decision.asked.action == autool::kForceReinstall;
    const bool waits = decision.asked.preInstallOnly && installs;
    EXPECT_EQ(decision.necessary && !waits, goesAhead) << decision.rule;
    EXPECT_FALSE(decision.rule.empty());
    EXPECT_TRUE(!decision.pending || decision.verb == Verb::hold);
    for (const autool::ComponentDecision& component : decision.components)
        EXPECT_FALSE(component.rule.empty());
}

constexpr unsigned kSeed = 20261122;
constexpr int kRounds = 250;
constexpr int kDecisions = 1500; ///< at least, of some 2000

TEST(PlanDecision, AnswersAsTheLibraryDoesInRandomStates)
{
    const auttest::ClientRegistry registry;
    Lottery lottery(kSeed);
    int decided = 0;
    int acted = 0;
    int held = 0;
    int substituted = 0;
    for (int round = 0; round < kRounds && !::testing::Test::HasFailure(); ++round)
    {
        SCOPED_TRACE("round " + std::to_string(round));
        lottery.fill(registry);
        std::vector<std::unique_ptr<CRelease>> releases;
        for (int count = lottery.number(4, 12); count > 0; --count)
            releases.push_back(lottery.release());

        const Conditions conditions = conditionsNow();
        Installed installed;
        std::vector<ReleaseDecision> decisions;
        const bool isLookedAt = round % 10 == 0; // the slowest part
        const auto before = isLookedAt ? auttest::snapshot(registry) : std::vector<std::string>();
        for (const auto& release : releases)
            decisions.push_back(decide(asked(*release), installed, conditions));
        if (isLookedAt)
        {
            EXPECT_EQ(before, auttest::snapshot(registry)) << "planning changed the registry";
        }

        for (std::size_t i = 0; i < releases.size(); ++i)
        {
            CRelease& release = *releases[i];
            const ReleaseDecision& decision = decisions[i];
            SCOPED_TRACE("release " + std::to_string(i) + " " + release.GetName() + ": " + decision.rule);
            const bool necessary = release.IsUpdateNecessary() != 0;
            if (hourOf(::_time64(nullptr)) != conditions.hour)
                break; // between the two the hour has changed
            EXPECT_EQ(necessary, decision.necessary);
            EXPECT_EQ(release.IsPending(), decision.pending);
            const bool evaluates =
                (release.GetAction() == 0 || release.GetAction() == 2) && release.IsActivationDateReached() != 0;
            EXPECT_EQ(componentsOf(release, evaluates), componentsOf(decision, evaluates));
            expectVerbFits(decision);
            ++decided;
            acted += decision.necessary ? 1 : 0;
            held += decision.verb == Verb::hold ? 1 : 0;
            for (const autool::ComponentDecision& component : decision.components)
                substituted += component.asked.replaces.empty() ? 0 : 1;
        }
        // What was moved in memory is what the library has moved in the registry.
        Installed now;
        for (const char* const name : {"Core", "Server", "Wordlist"})
            for (const char* const user : {"Ledger", "Reports", "Words"})
                EXPECT_EQ(entryText(now.component(name, user)), entryText(installed.component(name, user)))
                    << name << " of " << user;
    }
    // The draw must have met every kind of answer.
    EXPECT_GT(decided, kDecisions);
    EXPECT_GT(acted, decided / 10);
    EXPECT_GT(held, decided / 10);
    EXPECT_GT(substituted, 10);
    RecordProperty("decided", decided);
    RecordProperty("substituted", substituted);
    std::printf("%d decisions: %d act, %d hold, %d components replaced by the shared version\n", decided, acted, held,
                substituted);
}

/// "Ledger" 7.0.12 B1 EN with "Core" in the same version.
class PlanRule : public ::testing::Test
{
protected:
    PlanRule()
    {
        release.name = "Ledger";
        release.version = "7.0.12";
        release.build = "_B1"; // as the registry writes it
        release.language = "EN";
        release.fullVersion = "7.0.12_B1_EN";
        release.startHour = 0;
        release.endHour = 0;
        AskedComponent core;
        core.name = "Core";
        core.version = "7.0.12";
        core.build = "B1";
        core.language = "EN";
        core.fullVersion = "7.0.12B1_EN";
        release.components = {core};
        conditions = conditionsNow();
        conditions.phase = 3;
    }
    void install(const char* version = "7.0.12_B1", const char* core = "7.0.12B1")
    {
        registry.write("Products\\Ledger", "Version", version);
        registry.write("Products\\Ledger", "Language", "EN");
        registry.write("Products\\Ledger", "Enable", 1u);
        auttest::writeEntry(registry, "Components\\Core\\Ledger", {core, "EN"});
    }
    ReleaseDecision decision()
    {
        Installed installed;
        return decide(release, installed, conditions);
    }
    void expect(Verb verb, const std::string& rule)
    {
        const ReleaseDecision decided = decision();
        EXPECT_STREQ(verbName(verb), verbName(decided.verb));
        EXPECT_EQ(rule, decided.rule);
    }

    auttest::ClientRegistry registry;
    AskedRelease release;
    Conditions conditions;
};

TEST_F(PlanRule, WhatIsNotInstalledIsInstalled) { expect(Verb::install, "not installed"); }

TEST_F(PlanRule, AnotherVersionIsNamedWithBothTexts)
{
    install("6.9_B1");
    expect(Verb::install, "installed 6.9_B1_EN, asked 7.0.12_B1_EN");
}

TEST_F(PlanRule, NothingIsDoneForWhatIsInstalled)
{
    install();
    expect(Verb::nothing, "installed 7.0.12_B1_EN is what is asked for, with its components");
}

TEST_F(PlanRule, AComponentThatDiffersIsTheReason)
{
    install("7.0.12_B1", "7.0.12B0");
    const ReleaseDecision decided = decision();
    EXPECT_EQ(Verb::install, decided.verb);
    EXPECT_EQ("installed 7.0.12_B1_EN is what is asked for, but not all its components", decided.rule);
    ASSERT_EQ(1u, decided.components.size());
    EXPECT_EQ(Verb::install, decided.components[0].verb);
    EXPECT_EQ("installed 7.0.12B0, asked 7.0.12B1", decided.components[0].rule);
}

TEST_F(PlanRule, ADisabledComponentIsNamedSo)
{
    install();
    registry.write("Components\\Core\\Ledger", "Enable", DWORD{0});
    const ReleaseDecision decided = decision();
    ASSERT_EQ(1u, decided.components.size());
    EXPECT_EQ("installed 7.0.12B1 is what is asked for, but disabled", decided.components[0].rule);
}

TEST_F(PlanRule, WithoutALanguageAReleaseIsNeverInstalled)
{
    install();
    release.language = "";
    release.fullVersion = "7.0.12_B1";
    expect(Verb::install, "installed 7.0.12_B1_EN, asked 7.0.12_B1: without a language it never counts as installed");
}

TEST_F(PlanRule, AForcedReinstallationTakesItsComponentsAlong)
{
    install();
    release.action = autool::kForceReinstall;
    const ReleaseDecision decided = decision();
    EXPECT_EQ(Verb::reinstall, decided.verb);
    ASSERT_EQ(1u, decided.components.size());
    EXPECT_EQ(Verb::reinstall, decided.components[0].verb);
    EXPECT_FALSE(decided.components[0].necessary);
}

TEST_F(PlanRule, OnlyTheInstalledReleaseIsRemoved)
{
    release.action = autool::kRemove;
    expect(Verb::nothing, "to be removed, but not installed");
    install("6.9_B1");
    expect(Verb::nothing, "installed 6.9_B1_EN, not 7.0.12_B1_EN, which is to be removed");
    install();
    expect(Verb::remove, "installed 7.0.12_B1_EN is the one to remove");
}

TEST_F(PlanRule, OnlyWhatIsEnabledIsDisabled)
{
    release.action = autool::kDisable;
    expect(Verb::nothing, "to be disabled, but not enabled");
    install();
    expect(Verb::disable, "enabled, to be disabled");
}

TEST_F(PlanRule, ADateInServerTimeHoldsTheRelease)
{
    conditions.serverTime = 1'790'000'000;
    release.activationDate = conditions.serverTime + 1;
    const ReleaseDecision decided = decision();
    EXPECT_EQ(Verb::hold, decided.verb);
    EXPECT_EQ(0u, decided.rule.find("not active before ")) << decided.rule;
    release.activationDate = conditions.serverTime;
    EXPECT_EQ(Verb::install, decision().verb);
}

TEST_F(PlanRule, OutsideTheHoursTheNextPermittedOneIsNamed)
{
    std::tm noon{};
    noon.tm_year = 126;
    noon.tm_mon = 5;
    noon.tm_mday = 10;
    noon.tm_hour = 12;
    noon.tm_min = 34;
    noon.tm_isdst = -1;
    conditions.time = ::_mktime64(&noon);
    conditions.hour = 12;
    release.startHour = 22;
    release.endHour = 30;
    expect(Verb::hold, "installed only 22-6 o'clock, next 2026-06-10 22:00:00 (not installed)");
    conditions.anyHour = true;
    EXPECT_EQ(Verb::install, decision().verb);
}

TEST_F(PlanRule, AnHourThatNeverComesIsSaidSo)
{
    conditions.hour = 12;
    release.startHour = 10; // an end before the start is the next day's only above 24
    release.endHour = 5;
    EXPECT_NE(std::string::npos, decision().rule.find("next never")) << decision().rule;
}

TEST_F(PlanRule, APreInstallationBringsFilesOnly)
{
    release.preInstallOnly = true;
    const ReleaseDecision decided = decision();
    EXPECT_EQ(Verb::hold, decided.verb);
    EXPECT_TRUE(decided.necessary);
    EXPECT_EQ("pre-install only: its files are brought, nothing is installed yet (not installed)", decided.rule);
}

TEST_F(PlanRule, TheSharedVersionTakesThePlaceOfAnOlderOne)
{
    auttest::writeShared(registry, "Core", {"7.0.13B2", "EN"}, {"Reports"});
    release.components[0].shared = true;
    const ReleaseDecision decided = decision();
    ASSERT_EQ(1u, decided.components.size());
    EXPECT_EQ("7.0.13B2_EN", decided.components[0].asked.fullVersion);
    EXPECT_EQ("7.0.12B1_EN", decided.components[0].asked.replaces);
    EXPECT_NE(std::string::npos, decided.components[0].rule.find("newer than the 7.0.12B1_EN that was asked for"));
}

TEST_F(PlanRule, AnUnknownActionAsksForNothing)
{
    release.action = 8;
    expect(Verb::nothing, "action 8 is one that the client does not know");
}
} // namespace
