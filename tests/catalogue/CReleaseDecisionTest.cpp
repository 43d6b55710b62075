#include "catalogue/CRelease.h"

#include "tests/catalogue/DecisionFixture.h"
#include "tests/catalogue/ReleaseFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <ctime>

using auttest::entryKey;
using auttest::LogEvent;
using auttest::snapshot;
using auttest::writeEntry;

namespace
{
constexpr int kUntouched = 7;
constexpr __int64 kNoDate = 0;

__int64 g_now = 0;
__int64 now(__int64* out)
{
    if (out != nullptr)
        *out = g_now;
    return g_now;
}

/// The library's clock stands still while this lives.
class StoppedClock
{
public:
    explicit StoppedClock(__int64 time) : m_patch("_time64", &now) { g_now = time; }

private:
    const auttest::ImportPatch m_patch;
};

/// Within that hour of local time, on a day on which no clock is changed.
__int64 timeAt(int hour)
{
    std::tm local{};
    local.tm_year = 2026 - 1900;
    local.tm_mon = 0;
    local.tm_mday = 14;
    local.tm_hour = hour;
    local.tm_min = 59;
    local.tm_sec = 59;
    local.tm_isdst = -1;
    return ::_mktime64(&local);
}

/// "Product" 3.3 B1 EN with the components "A" and "B", all 1.0 B1 EN; nothing is installed yet.
class ReleaseDecision : public ::testing::Test
{
protected:
    void init(int action, __int64 date = kNoDate, int start = 0, int end = 24, bool pending = false)
    {
        m_release.InitValues(1, "", "", "Product", "3.3", "_B1", "EN", action, date, 1, start, end, pending, false,
                             false);
        for (CComponent* const component : auttest::componentsOf(m_release))
            component->SetUpdateStatus(kUntouched);
    }
    CComponent* addComponent(const char* name, const char* build = "B1")
    {
        auto* const component = new CComponent(1, name, "1.0", build, "EN", 0, "");
        component->SetUpdateStatus(kUntouched);
        m_release.GetComponentList().AddTail(component);
        return component;
    }
    std::vector<int> statuses() const
    {
        std::vector<int> found;
        for (const CComponent* const component : auttest::componentsOf(m_release))
            found.push_back(component->GetUpdateStatus());
        return found;
    }
    /// The registry joins version and language with "_", which stands within the release's version here.
    void installProduct(const char* version = "3.3_B1", const char* language = "EN") const
    {
        m_registry.write("Products\\Product", "Version", version);
        m_registry.write("Products\\Product", "Language", language);
    }
    void installComponents() const
    {
        writeEntry(m_registry, entryKey("A", "Product"), {"1.0B1", "EN"});
        writeEntry(m_registry, entryKey("B", "Product"), {"1.0B1", "EN"});
    }
    /// The decision, which must be the one that is kept, and leave the registry alone.
    int decide()
    {
        const auto before = snapshot(m_registry);
        const int necessary = m_release.IsUpdateNecessary();
        EXPECT_EQ(necessary, m_release.m_updateNecessary);
        EXPECT_EQ(before, snapshot(m_registry));
        return necessary;
    }

    const auttest::ClientRegistry m_registry;
    auttest::ReleaseProbe m_release;
};

using Statuses = std::vector<int>;

TEST_F(ReleaseDecision, WithoutADateTheReleaseIsActive)
{
    init(0, 0);
    const StoppedClock clock(-5);
    EXPECT_EQ(1, m_release.IsActivationDateReached());
}

TEST_F(ReleaseDecision, FromItsDateOnTheReleaseIsActive)
{
    constexpr __int64 kDate = 5'000'000'000; // needs more than 32 bits
    init(0, kDate);
    const struct
    {
        __int64 time;
        int expected;
    } rows[] = {{kDate - 1, 0}, {kDate, 1}, {kDate + 1, 1}, {705'032'704, 0}, {9'000'000'000, 1}};
    for (const auto& row : rows)
    {
        const StoppedClock clock(row.time);
        EXPECT_EQ(row.expected, m_release.IsActivationDateReached()) << row.time;
    }
    init(0, -1); // an impossible date
    EXPECT_EQ(1, m_release.IsActivationDateReached());
}

TEST_F(ReleaseDecision, TheDateIsComparedByTheWebConfiguratorsClock)
{
    const __int64 present = ::_time64(nullptr);
    init(0, present + 1000);
    EXPECT_EQ(0, m_release.IsActivationDateReached());
    m_registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD, {"\xD0\x07\0\0\0\0\0\0", 8}); // 2000
    EXPECT_EQ(1, m_release.IsActivationDateReached());

    init(0, present - 1000);
    EXPECT_EQ(1, m_release.IsActivationDateReached());
    m_registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD, {"\x30\xF8\xFF\xFF\xFF\xFF\xFF\xFF", 8}); // -2000
    EXPECT_EQ(0, m_release.IsActivationDateReached());
}

TEST_F(ReleaseDecision, BeforeItsDateNothingIsNecessaryOrEvaluated)
{
    addComponent("Kernel");
    addComponent("A");
    installProduct();
    m_registry.write("Products\\Product", "Enable", 1u);
    m_registry.write("IN_PROGRESS", "Phase", 3u);
    for (const int action : {0, 1, 2, 3, 4})
    {
        init(action, ::_time64(nullptr) + 1000, 24, 25); // hours that are never
        m_release.m_updateNecessary = 1;
        auttest::LogFile log;
        EXPECT_EQ(0, decide()) << action;
        EXPECT_EQ((Statuses{kUntouched, kUntouched}), statuses());
        EXPECT_FALSE(m_release.IsPending());
        EXPECT_EQ(std::vector<LogEvent>{}, log.events());
    }
}

TEST_F(ReleaseDecision, ToInstallWhatMatchesInAllIsNotNecessary)
{
    addComponent("A");
    addComponent("B");
    installProduct();
    installComponents();
    init(0);
    EXPECT_EQ(0, decide());
    EXPECT_EQ((Statuses{0, 0}), statuses());

    installProduct("3.3_b1", "en"); // without regard to case
    EXPECT_EQ(0, decide());
}

TEST_F(ReleaseDecision, ToInstallIsNecessaryWhenOneComponentIs)
{
    for (const char* const other : {"A", "B"})
    {
        installProduct();
        installComponents();
        auttest::ReleaseProbe& release = m_release;
        while (!release.GetComponentList().IsEmpty())
            delete release.GetComponentList().RemoveHead();
        for (const char* const name : {"A", "B"})
            addComponent(name, name == other ? "B2" : "B1");
        init(0);
        EXPECT_EQ(1, decide());
        EXPECT_EQ(*other == 'A' ? (Statuses{1, 0}) : (Statuses{0, 1}), statuses());
    }
}

TEST_F(ReleaseDecision, ToInstallWhatIsNotInstalledIsNecessary)
{
    addComponent("A");
    addComponent("B");
    init(0);
    EXPECT_EQ(1, decide());
    EXPECT_EQ((Statuses{1, 1}), statuses()) << "each is evaluated, whatever those before it gave";
    installComponents();
    EXPECT_EQ(1, decide());
    EXPECT_EQ((Statuses{0, 0}), statuses());
}

TEST_F(ReleaseDecision, ToInstallWithoutComponentsGoesByTheProductAlone)
{
    init(0);
    EXPECT_EQ(1, decide());
    installProduct();
    EXPECT_EQ(0, decide());
}

/// What is installed, and whether installing and removing the release are necessary.
struct Installed
{
    const char* name;
    const char* version;
    const char* language;
    int install;
    int remove;
};
void PrintTo(const Installed& row, std::ostream* out) { *out << row.name; }

class ReleaseDecisionByVersion : public ReleaseDecision, public ::testing::WithParamInterface<Installed>
{
};

TEST_P(ReleaseDecisionByVersion, ComparesTheWholeVersion)
{
    addComponent("A");
    addComponent("B");
    installComponents();
    installProduct(GetParam().version, GetParam().language);
    init(0);
    EXPECT_EQ(GetParam().install, decide());
    init(1);
    EXPECT_EQ(GetParam().remove, decide());
    EXPECT_EQ((Statuses{kUntouched, kUntouched}), statuses()) << "a removal evaluates no component";
}

constexpr Installed kInstalled[] = {
    {"the same", "3.3_B1", "EN", 0, 1},
    {"the same in another case", "3.3_b1", "eN", 0, 1},
    {"another version", "3.4_B1", "EN", 1, 0},
    {"another build", "3.3_B2", "EN", 1, 0},
    {"another language", "3.3_B1", "SV", 1, 0},
    {"no language", "3.3_B1", "", 1, 0},
    {"the language within the version", "3.3_B1_EN", "", 1, 0}, // gives "3.3_B1_EN_"
    {"divided elsewhere", "3.3", "B1_EN", 0, 1},
    {"nothing", "", "EN", 1, 0},
};
INSTANTIATE_TEST_SUITE_P(All, ReleaseDecisionByVersion, ::testing::ValuesIn(kInstalled));

TEST_F(ReleaseDecision, AReleaseWithoutLanguageNeverMatchesAnInstalledOne)
{
    for (const char* const language : {"", "EN"})
    {
        installProduct("2.105", language);
        m_release.InitValues(1, "", "", "Product", "2.1", "05", "", 0, kNoDate, 1, 0, 24, false, false, false);
        EXPECT_STREQ("2.105", m_release.GetFullVersion());
        EXPECT_EQ(1, decide());
        m_release.InitValues(1, "", "", "Product", "2.1", "05", "", 1, kNoDate, 1, 0, 24, false, false, false);
        EXPECT_EQ(0, decide());
    }
}

TEST_F(ReleaseDecision, WhatIsNotInstalledIsNotRemovedButInstalled)
{
    init(1);
    EXPECT_EQ(0, decide());
    // Even when the texts are the same: version "" and language "3.3" give "_3.3".
    installProduct("", "3.3");
    m_release.InitValues(1, "", "", "Product", "", "", "3.3", 1, kNoDate, 1, 0, 24, false, false, false);
    EXPECT_STREQ("_3.3", m_release.GetFullVersion());
    EXPECT_EQ(0, decide());
    m_release.InitValues(1, "", "", "Product", "", "", "3.3", 0, kNoDate, 1, 0, 24, false, false, false);
    EXPECT_EQ(1, decide());
}

TEST_F(ReleaseDecision, AForcedReinstallationIsAlwaysNecessaryAndSetsTheStatuses)
{
    addComponent("A");
    addComponent("B", "B2");
    installProduct();
    installComponents();
    init(2);
    EXPECT_EQ(1, decide());
    EXPECT_EQ((Statuses{0, 1}), statuses());
    delete m_release.GetComponentList().RemoveHead();
    delete m_release.GetComponentList().RemoveHead();
    addComponent("A");
    EXPECT_EQ(1, decide());
    EXPECT_EQ(Statuses{0}, statuses());
}

TEST_F(ReleaseDecision, AnEnabledProductIsToBeDisabled)
{
    addComponent("A");
    init(3);
    EXPECT_EQ(0, decide());
    installProduct("9.9", "SV");
    EXPECT_EQ(0, decide());
    m_registry.write("Products\\Product", "Enable", 1u);
    EXPECT_EQ(1, decide());
    m_registry.write("Products\\Product", "Enable", DWORD{0});
    EXPECT_EQ(0, decide());
    EXPECT_EQ(Statuses{kUntouched}, statuses());
}

TEST_F(ReleaseDecision, OfNoKnownActionNothingIsNecessary)
{
    addComponent("A");
    for (const int action : {-1, 4, 2'000'000'000})
    {
        init(action);
        m_release.m_updateNecessary = 1;
        EXPECT_EQ(0, decide());
        EXPECT_EQ(Statuses{kUntouched}, statuses());
    }
}

TEST_F(ReleaseDecision, RearrangesTheComponentsFirst)
{
    m_registry.write("IN_PROGRESS", "Phase", 3u);
    auttest::writeShared(m_registry, "A", {"2.0.0B1", "EN"}, {"Product"});
    installProduct();
    addComponent("Kernel");
    addComponent("A")->SetShared(1);
    m_release.m_componentCount = 2;
    for (const int action : {0, 1, 2, 3, 4})
    {
        init(action);
        m_release.IsUpdateNecessary();
        ASSERT_EQ(1, m_release.GetComponentList().GetCount()) << "the kernel is gone";
        EXPECT_EQ(1, m_release.m_componentCount);
    }
    const CComponent& substitute = *auttest::componentsOf(m_release)[0];
    EXPECT_STREQ("2.0.0B1_EN", substitute.GetFullVersion());
    init(0);
    EXPECT_EQ(0, m_release.IsUpdateNecessary()) << "what is installed is the substitute's version";
    EXPECT_EQ(0, substitute.GetUpdateStatus());
}

TEST_F(ReleaseDecision, NullPointersAreNoComponents)
{
    m_release.GetComponentList().AddTail(nullptr);
    for (const int action : {0, 1, 2, 3})
    {
        m_release.InitValues(1, "", "", "Product", "3.3", "_B1", "EN", action, kNoDate, 1, 0, 24, false, false, false);
        EXPECT_EQ(action == 0 || action == 2 ? 1 : 0, decide());
    }
    installProduct();
    m_release.InitValues(1, "", "", "Product", "3.3", "_B1", "EN", 0, kNoDate, 1, 0, 24, false, false, false);
    EXPECT_EQ(0, decide());
}

TEST_F(ReleaseDecision, OddNamesHaveNothingInstalled)
{
    m_registry.write("Products", "Version", "3.3_B1"); // of the root, which is no product
    m_registry.write("Products", "Language", "EN");
    const std::string longName(259, 'n');
    for (const char* const name : {"", "..", "a\\b", "C:", "%s%n", longName.c_str(), static_cast<const char*>(nullptr)})
    {
        for (const int action : {0, 1, 2, 3})
        {
            m_release.InitValues(1, "", "", name, "3.3", "_B1", "EN", action, kNoDate, 1, 0, 24, false, false, false);
            EXPECT_EQ(action == 0 || action == 2 ? 1 : 0, decide()) << (name != nullptr ? name : "null");
        }
    }
}

TEST_F(ReleaseDecision, ADamagedVersionCountsAsNone)
{
    init(0);
    m_registry.write("Products\\Product", "Version", std::string(300, '1'));
    EXPECT_EQ(1, decide());
    installProduct();
    m_registry.writeRaw("Products\\Product", "Version", REG_SZ, "3.3_B1"); // without a terminator
    EXPECT_EQ(0, decide());
}

/// Outside its hours an installation waits.
class InstallationHoursOfARelease : public ReleaseDecision
{
protected:
    /// The decision at that hour; when it is not to act, the release must be pending and the log say why.
    int decideAt(int hour, int action, int start, int end, const std::string& logged)
    {
        const StoppedClock clock(timeAt(hour));
        init(action, kNoDate, start, end);
        auttest::LogFile log;
        const int necessary = decide();
        EXPECT_EQ(necessary == 0, m_release.IsPending()) << hour;
        EXPECT_EQ(necessary == 0 ? (std::vector<LogEvent>{{"Warning", logged}}) : std::vector<LogEvent>{},
                  log.events());
        return necessary;
    }
};

TEST_F(InstallationHoursOfARelease, From22To30PermitTheNight)
{
    for (const int action : {0, 2})
    {
        for (int hour = 0; hour < 24; ++hour)
            EXPECT_EQ(hour >= 22 || hour < 6 ? 1 : 0,
                      decideAt(hour, action, 22, 30, "Installation authorized only during 22 and 6 o'clock - Pending"))
                << hour;
    }
}

TEST_F(InstallationHoursOfARelease, WithinADayBeginWithTheFirstAndEndBeforeTheLast)
{
    for (int hour = 0; hour < 24; ++hour)
        EXPECT_EQ(hour >= 8 && hour < 17 ? 1 : 0,
                  decideAt(hour, 0, 8, 17, "Installation authorized only during 8 and 17 o'clock - Pending"))
            << hour;
}

TEST_F(InstallationHoursOfARelease, ThatEndAtMidnightAreLoggedAs0)
{
    EXPECT_EQ(0, decideAt(12, 0, 22, 24, "Installation authorized only during 22 and 0 o'clock - Pending"));
    EXPECT_EQ(0, decideAt(12, 0, 24, 30, "Installation authorized only during 0 and 6 o'clock - Pending"));
}

TEST_F(InstallationHoursOfARelease, OfAWholeDayNeverRestrict)
{
    for (int hour = 0; hour < 24; ++hour)
    {
        EXPECT_EQ(1, decideAt(hour, 0, 0, 24, ""));
        EXPECT_EQ(1, decideAt(hour, 0, 0, 0, ""));
        EXPECT_EQ(1, decideAt(hour, 2, 7, 31, ""));
    }
}

TEST_F(InstallationHoursOfARelease, AreIgnoredWithTheFlag)
{
    m_registry.write("Config", "BFU9K", 1u);
    EXPECT_EQ(1, decideAt(12, 0, 22, 30, ""));
    EXPECT_EQ(1, decideAt(12, 2, 22, 30, ""));
    m_registry.write("Config", "BFU9K", DWORD{0});
    EXPECT_EQ(0, decideAt(12, 0, 22, 30, "Installation authorized only during 22 and 6 o'clock - Pending"));
}

TEST_F(InstallationHoursOfARelease, ConcernInstallationsOnly)
{
    const StoppedClock clock(timeAt(12));
    installProduct();
    m_registry.write("Products\\Product", "Enable", 1u);
    auttest::LogFile log;
    for (const int action : {1, 3})
    {
        init(action, kNoDate, 22, 30);
        EXPECT_EQ(1, decide()) << action;
        EXPECT_FALSE(m_release.IsPending());
    }
    init(0, kNoDate, 22, 30);
    EXPECT_EQ(0, decide()) << "nothing to install";
    EXPECT_FALSE(m_release.IsPending());
    EXPECT_EQ(std::vector<LogEvent>{}, log.events());
}

TEST_F(InstallationHoursOfARelease, DoNotKeepTheStatusesFromBeingSet)
{
    addComponent("A");
    const StoppedClock clock(timeAt(12));
    init(0, kNoDate, 22, 30);
    EXPECT_EQ(0, decide());
    EXPECT_EQ(Statuses{1}, statuses());
}

TEST_F(InstallationHoursOfARelease, DoNotTakeBackThatItWasPending)
{
    const StoppedClock clock(timeAt(23));
    init(0, kNoDate, 22, 30, true);
    EXPECT_EQ(1, decide());
    EXPECT_TRUE(m_release.IsPending());
}

TEST_F(InstallationHoursOfARelease, AreThoseOfTheRealLocalClock)
{
    const auto localHour = []
    {
        const __time64_t present = ::_time64(nullptr);
        return ::_localtime64(&present)->tm_hour;
    };
    const auto decideWithin = [this](int start, int end)
    {
        init(0, kNoDate, start, end);
        return m_release.IsUpdateNecessary();
    };
    bool sameHour = false;
    for (int attempt = 0; attempt < 3 && !sameHour; ++attempt) // again when the hour changes on the way
    {
        const int hour = localHour();
        const std::vector<int> decisions = {
            decideWithin(hour, hour + 1),      decideWithin(hour + 1, hour + 2),
            decideWithin(hour - 1, hour),      decideWithin(hour + 2, hour + 25), // past midnight, with this hour
            decideWithin(hour + 1, hour + 24),                                    // and without
        };
        sameHour = hour == localHour();
        if (sameHour)
        {
            EXPECT_EQ((std::vector<int>{1, 0, 0, 1, 0}), decisions) << hour;
        }
    }
    EXPECT_TRUE(sameHour);
}
} // namespace
