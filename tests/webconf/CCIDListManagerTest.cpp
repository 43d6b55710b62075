#include "tests/webconf/CIDManager.h"

#include "tests/support/Certificates.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LocalServer.h"
#include "tests/support/OpenHandles.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <objbase.h>

#include <cstdlib>
#include <new>
#include <thread>

using auttest::InstalledCertificate;
using auttest::Store;

namespace
{
using CIDListManager = CIDTest;

void expectUnusable(CCIDListManager& manager)
{
    EXPECT_EQ(0, manager.GetCIDsCount());
    EXPECT_EQ(1, manager.IsEndOfTheListReached());
    EXPECT_STREQ("", manager.GetNextCID());
    EXPECT_EQ(nullptr, manager.FindCIDInList("FIRST0000001"));
}

// --- Gathering ---------------------------------------------------------------------------------------------------

TEST_F(CIDListManager, AFreshOneHasNoList)
{
    m_manager.InitCIDLoop();
    expectUnusable(m_manager);
    EXPECT_EQ(0, m_manager.IsTestCIDSet(0));
    EXPECT_EQ(0, m_manager.IsDeploymentCIDSet());
}

TEST_F(CIDListManager, EmptyModeYieldsExactlyOneEmptyCID)
{
    EXPECT_EQ(1, m_manager.InitManager(true));
    EXPECT_EQ(1, m_manager.GetCIDsCount());
    EXPECT_EQ((CIDs{""}), walk(m_manager));
    EXPECT_EQ(Events{}, m_log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(CIDListManager, WithoutAnySourceThereIsNoList)
{
    EXPECT_EQ(0, m_manager.InitManager(false));
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"},
                      {"Warning", "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered"},
                      {"Info", "Call to GetCIDListFromHWID()"},
                      {"Warning", "GetLarkspurCIDs: 'AutoUpdateSRV.dll' is not registered"},
                      {"Info", "HWID not available - Getting Local CID"},
                      {"Warning", "No explorer processfound for impersonation"},
                      {"Info", "CIDs List corrected with local CIDs: "},
                      {"Warning", "No valid Velmora Certificate found"}}),
              m_log.events());
    expectEmptyListRecorded("GetLocalCIDList");
    expectUnusable(m_manager);
}

TEST_F(CIDListManager, HybridModeIsLogged)
{
    m_registry.write("Config", "CIDHybridMode", 1);
    m_manager.InitManager(false);
    EXPECT_TRUE(m_log.has("Info", "Hybrid Mode - Looking for CID added after migration"));
    EXPECT_FALSE(m_log.has("Info", "HWID not available - Getting Local CID"));
}

TEST_F(CIDListManager, AllSourcesAreGatheredInTheirOrder)
{
    const auttest::LocalServer server;
    webconf_sample::WebConfigurator web;
    web.addRule("page=wcfgGetCidListFromHWID1.asp, body=<r><Data><CIDList><CID>SFdJRC1DSUQx</CID><CID master=\"True\">"
                "SFdJRC1DSUQy</CID></CIDList></Data></r>");
    m_registry.write("Config", "WebServer", web.host());
    server.settings().write("", "HWID", 4711);
    server.settings().write("", "CIDs", "TE9DQUwtQ0lE;SFdJRC1DSUQy");
    const InstalledCertificate machine(Store::machine, {"Workstation", "B", "C", "Velmora", "TUFDSElORS1D"});
    const InstalledCertificate user(Store::user, {"User", "B", "C", "Velmora", "VVNFUi1DSUQw"});
    m_registry.write("Config\\Cache\\User\\anna", "QU5OQS0wMDAx", "");
    m_registry.write("Config\\Cache\\User\\anna", "TUFDSElORS1D", "");

    EXPECT_NE(0, m_manager.InitManager(false));
    EXPECT_EQ((CIDs{"SFdJRC1DSUQx", "SFdJRC1DSUQy", "TE9DQUwtQ0lE", "TUFDSElORS1D", "VVNFUi1DSUQw", "QU5OQS0wMDAx"}),
              walk(m_manager));
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"},
                      {"Info", "KxGetHWIDForDeployment returned HWID = 4711"},
                      {"Info", "Getting CID associated with HWID 4711"},
                      {"Info", "GetXMLCIDListFromHWID: adding MASTER CID = SFdJRC1DSUQy"},
                      {"Info", "associated CID = SFdJRC1DSUQx"},
                      {"Info", "associated CID = SFdJRC1DSUQy"},
                      {"Info", "CID List from HWID : SFdJRC1DSUQx, SFdJRC1DSUQy"},
                      {"Info", "Call to GetCIDListFromHWID()"},
                      {"Info", "GetCIDListFromHWID: local CID List = TE9DQUwtQ0lE;SFdJRC1DSUQy"},
                      {"Info", "HWID not available - Getting Local CID"},
                      {"Info", "Physical CID added = TUFDSElORS1D"},
                      {"Warning", "No explorer processfound for impersonation"},
                      {"Info", "Physical CID added = VVNFUi1DSUQw"},
                      {"Info", "CIDs List corrected with local CIDs: SFdJRC1DSUQx, SFdJRC1DSUQy, TE9DQUwtQ0lE, "
                               "TUFDSElORS1D, VVNFUi1DSUQw"},
                      {"Info", "nb of valid Velmora Certificates: 6"}}),
              m_log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(CIDListManager, CertificatesAloneAreEnough)
{
    const InstalledCertificate machine(Store::machine, {"Workstation", "B", "C", "Velmora", "TUFDSElORS1D"});
    EXPECT_NE(0, m_manager.InitManager(false));
    EXPECT_EQ((CIDs{"TUFDSElORS1D"}), walk(m_manager));
    EXPECT_EQ((auttest::LogEvent{"Info", "nb of valid Velmora Certificates: 1"}), m_log.events().back());
    EXPECT_STREQ("GetCIDListFromHWID", result->GetFunction()) << "the list was empty until then";
}

TEST_F(CIDListManager, TheUsersCIDsAloneAreNotEnough)
{
    m_registry.write("Config\\Cache\\User\\anna", "QU5OQS0wMDAx", "");
    EXPECT_EQ(0, m_manager.InitManager(false));
    EXPECT_EQ(CIDs{}, Steps::list(m_manager));
}

TEST_F(CIDListManager, GatheringAgainBeginsWithAnEmptyList)
{
    m_manager.InitManager(true);
    {
        const InstalledCertificate machine(Store::machine, {"Workstation", "B", "C", "Velmora", "TUFDSElORS1D"});
        EXPECT_NE(0, m_manager.InitManager(false));
        EXPECT_NE(0, m_manager.InitManager(false));
        EXPECT_EQ((CIDs{"TUFDSElORS1D"}), walk(m_manager));
    }
    EXPECT_EQ(0, m_manager.InitManager(false));
    expectUnusable(m_manager);
    EXPECT_EQ(1, m_manager.InitManager(true));
    EXPECT_EQ((CIDs{""}), walk(m_manager));
}

TEST_F(CIDListManager, AWalkBeginsAtTheHeadAfterGathering)
{
    m_manager.InitManager(true);
    m_manager.GetNextCID();
    m_manager.InitManager(true);
    EXPECT_EQ(0, m_manager.IsEndOfTheListReached());
    m_manager.GetNextCID();
    EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
}

void* noMemory(std::size_t, const std::nothrow_t&) noexcept { return nullptr; }
void* noMemoryThrown(std::size_t) { throw std::bad_alloc(); }
/// Fails for texts as long as the certificate IDs below, with their terminator.
void* noMemoryForCIDs(std::size_t size) { return size == 13 ? nullptr : std::malloc(size); }

TEST_F(CIDListManager, AListThatCannotBeMadeIsLogged)
{
    {
        const auttest::ImportPatch patch("_ZnwyRKSt9nothrow_t", noMemory);
        EXPECT_EQ(0, m_manager.InitManager(true));
    }
    EXPECT_EQ((Events{{"Error", "CCIDListManager::InitManager : CIDs List creation failed"}}), m_log.events());
    expectUnusable(m_manager);
    EXPECT_EQ(1, m_manager.InitManager(true));
}

TEST_F(CIDListManager, NoExceptionComesOutWhenMemoryRunsOut)
{
    Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002"});
    CCIDListManager copy(m_manager);
    m_registry.write("Config", "TestCID", "SECOND000002");
    {
        const auttest::ImportPatch patch("_Znwy", noMemoryThrown);
        EXPECT_EQ(0, m_manager.IsTestCIDSet(0));
        copy = m_manager;
        EXPECT_EQ((CIDs{"FIRST0000001", "SECOND000002"}), walk(m_manager)) << "as it was";
        EXPECT_EQ(0, m_manager.InitManager(true));
    }
    expectUnusable(copy);
    expectUnusable(m_manager);
}

TEST_F(CIDListManager, NoCIDBecomesAnEmptyOneWhenMemoryRunsOutForItsText)
{
    Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002"});
    CCIDListManager copy;
    m_registry.write("Config", "TestCID", "SECOND000002");
    {
        const auttest::ImportPatch patch("malloc", noMemoryForCIDs);
        copy = m_manager;
        EXPECT_EQ(0, m_manager.IsTestCIDSet(0));
    }
    expectUnusable(copy);
    EXPECT_EQ((CIDs{"FIRST0000001", "SECOND000002"}), Steps::list(m_manager)) << "as it was";
}

TEST_F(CIDListManager, ATestCIDIsNotOverlookedWhenMemoryRunsOutForItsText)
{
    Steps::fillList(m_manager, {"FIRST0000001"});
    m_registry.write("Config", "TestCID", "ABSENT000009");
    {
        const auttest::ImportPatch patch("malloc", noMemoryForCIDs);
        EXPECT_EQ(0, m_manager.IsTestCIDSet(0));
    }
    expectUnusable(m_manager);
}

// --- COM ---------------------------------------------------------------------------------------------------------

/// Gathers on a thread of its own in that state of COM: 0, or the flag of CoInitializeEx plus one.
template <typename After> void gatherOnThread(CCIDListManager& manager, DWORD state, After after)
{
    std::thread(
        [&]
        {
            if (state != 0)
            {
                ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, state - 1));
            }
            EXPECT_NE(0, manager.InitManager(false));
            after();
            if (state != 0)
                ::CoUninitialize();
            // Had anything been left behind, this would be S_FALSE or a refusal.
            EXPECT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
            ::CoUninitialize();
        })
        .join();
}

TEST_F(CIDListManager, TheThreadsCOMIsLeftAsItWas)
{
    const auttest::LocalServer server;
    server.settings().write("", "CIDs", "TE9DQUwtQ0lE");
    gatherOnThread(m_manager, 0, [] {});
    EXPECT_EQ((CIDs{"TE9DQUwtQ0lE"}), walk(m_manager));
    gatherOnThread(m_manager, COINIT_APARTMENTTHREADED + 1,
                   [] { EXPECT_EQ(RPC_E_CHANGED_MODE, ::CoInitializeEx(nullptr, COINIT_MULTITHREADED)); });
    EXPECT_EQ((CIDs{"TE9DQUwtQ0lE"}), walk(m_manager));
    gatherOnThread(m_manager, COINIT_MULTITHREADED + 1,
                   [] { EXPECT_EQ(RPC_E_CHANGED_MODE, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); });
    EXPECT_EQ((CIDs{"TE9DQUwtQ0lE"}), walk(m_manager));
}

// --- The walk ----------------------------------------------------------------------------------------------------

TEST_F(CIDListManager, TheWalkGivesOneAfterAnother)
{
    Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002"});
    EXPECT_EQ(2, m_manager.GetCIDsCount());
    m_manager.InitCIDLoop();
    EXPECT_EQ(0, m_manager.IsEndOfTheListReached());
    EXPECT_STREQ("FIRST0000001", m_manager.GetNextCID());
    EXPECT_EQ(0, m_manager.IsEndOfTheListReached());
    EXPECT_STREQ("SECOND000002", m_manager.GetNextCID());
    EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
    EXPECT_STREQ("", m_manager.GetNextCID());
    EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
    m_manager.InitCIDLoop();
    EXPECT_EQ(0, m_manager.IsEndOfTheListReached());
    EXPECT_STREQ("FIRST0000001", m_manager.GetNextCID());
}

TEST_F(CIDListManager, AnEmptyListIsAtItsEnd)
{
    Steps::fillList(m_manager, {});
    m_manager.InitCIDLoop();
    EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
    EXPECT_STREQ("", m_manager.GetNextCID());
}

TEST_F(CIDListManager, AListThatMayNotBeUsedIsHidden)
{
    Steps::startList(m_manager, {"FIRST0000001"});
    m_manager.InitCIDLoop();
    expectUnusable(m_manager);
}

TEST_F(CIDListManager, CIDsAreFoundInAnyCase)
{
    Steps::fillList(m_manager, {"FIRST0000001", "Second000002"});
    EXPECT_NE(nullptr, m_manager.FindCIDInList("FIRST0000001"));
    EXPECT_NE(nullptr, m_manager.FindCIDInList("sECOND000002"));
    EXPECT_NE(m_manager.FindCIDInList("FIRST0000001"), m_manager.FindCIDInList("Second000002"));
    EXPECT_EQ(nullptr, m_manager.FindCIDInList("FIRST000000"));
    EXPECT_EQ(nullptr, m_manager.FindCIDInList(""));
}

// --- Copies ------------------------------------------------------------------------------------------------------

TEST_F(CIDListManager, ACopyHasAListOfItsOwn)
{
    Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002"});
    m_registry.write("Config", "TestCID", "SECOND000002");
    CCIDListManager copy(m_manager);
    EXPECT_EQ(1, m_manager.IsTestCIDSet(1));
    EXPECT_EQ((CIDs{"SECOND000002"}), walk(m_manager));
    EXPECT_EQ((CIDs{"FIRST0000001", "SECOND000002"}), walk(copy));
    m_manager.InitManager(true);
    EXPECT_EQ((CIDs{"FIRST0000001", "SECOND000002"}), walk(copy));
}

TEST_F(CIDListManager, ACopyOutlivesWhatItIsACopyOf)
{
    CCIDListManager copy;
    {
        CCIDListManager first;
        Steps::fillList(first, {"FIRST0000001"});
        copy = first;
    }
    EXPECT_EQ((CIDs{"FIRST0000001"}), walk(copy));
}

TEST_F(CIDListManager, ACopyGoesOnInTheMiddleOfTheWalk)
{
    Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002", "THIRD0000003"});
    m_manager.GetNextCID();
    CCIDListManager copy(m_manager);
    EXPECT_STREQ("SECOND000002", copy.GetNextCID());
    EXPECT_EQ(0, copy.IsEndOfTheListReached());
    EXPECT_STREQ("THIRD0000003", copy.GetNextCID());
    EXPECT_EQ(1, copy.IsEndOfTheListReached());
    EXPECT_STREQ("SECOND000002", m_manager.GetNextCID()) << "a walk of its own";
    m_manager.GetNextCID();
    CCIDListManager atTheEnd(m_manager);
    EXPECT_EQ(1, atTheEnd.IsEndOfTheListReached());
    EXPECT_STREQ("", atTheEnd.GetNextCID());
}

TEST_F(CIDListManager, AssigningReplacesWhatWasThere)
{
    CCIDListManager other;
    Steps::fillList(other, {"OTHER0000001"});
    Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002"});
    EXPECT_EQ(&m_manager, &(m_manager = other));
    EXPECT_EQ((CIDs{"OTHER0000001"}), walk(m_manager));
    const CCIDListManager fresh;
    m_manager = fresh;
    expectUnusable(m_manager);
    EXPECT_EQ(1, m_manager.InitManager(true));
}

TEST_F(CIDListManager, AssigningToItselfChangesNothing)
{
    Steps::fillList(m_manager, {"FIRST0000001"});
    CCIDListManager& self = m_manager;
    m_manager = self;
    EXPECT_EQ((CIDs{"FIRST0000001"}), walk(m_manager));
}

TEST_F(CIDListManager, ACopyKeepsTheEmptyMode)
{
    m_registry.write("Config", "TestCID", "FIRST0000001");
    m_manager.InitManager(true);
    CCIDListManager copy(m_manager);
    EXPECT_EQ(0, copy.IsTestCIDSet(0));
    EXPECT_EQ(1, copy.GetCIDsCount());
}

// --- Test and deployment -----------------------------------------------------------------------------------------

/// What both settings have in common.
struct Setting
{
    const char* name;
    int (*ask)(CCIDListManager&);
    const char* message;
};
const Setting kSettings[] = {
    {"TestCID", [](CCIDListManager& manager) { return manager.IsTestCIDSet(0); },
     "testCID ABSENT000009 configured but not valid"},
    {"DeploymentCID", [](CCIDListManager& manager) { return manager.IsDeploymentCIDSet(); },
     "DeploymentCID ABSENT000009 configured but not valid"},
};

class CIDSetting : public CIDTest, public ::testing::WithParamInterface<Setting>
{
protected:
    CIDSetting() { Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002", "THIRD0000003"}); }
    void configure(const std::string& cid) const { m_registry.write("Config", GetParam().name, cid); }
    int ask() { return GetParam().ask(m_manager); }
    const CIDs m_all{"FIRST0000001", "SECOND000002", "THIRD0000003"};
};

TEST_P(CIDSetting, NothingConfiguredChangesNothing)
{
    EXPECT_EQ(0, ask());
    configure("");
    EXPECT_EQ(0, ask());
    EXPECT_EQ(m_all, walk(m_manager));
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_P(CIDSetting, OneInTheListMovesToTheHead)
{
    configure("SECOND000002");
    EXPECT_EQ(1, ask());
    EXPECT_EQ((CIDs{"SECOND000002", "FIRST0000001", "THIRD0000003"}), walk(m_manager));
    configure("THIRD0000003");
    EXPECT_EQ(1, ask());
    EXPECT_EQ((CIDs{"THIRD0000003", "SECOND000002", "FIRST0000001"}), walk(m_manager));
    EXPECT_EQ(1, ask());
    EXPECT_EQ((CIDs{"THIRD0000003", "SECOND000002", "FIRST0000001"}), walk(m_manager));
    EXPECT_EQ(3, m_manager.GetCIDsCount());
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_P(CIDSetting, TheListKeepsItsOwnSpelling)
{
    configure("second000002");
    EXPECT_EQ(1, ask());
    EXPECT_EQ((CIDs{"SECOND000002", "FIRST0000001", "THIRD0000003"}), walk(m_manager));
}

TEST_P(CIDSetting, OneThatIsAbsentMakesTheManagerUnusable)
{
    configure("ABSENT000009");
    EXPECT_EQ(0, ask());
    EXPECT_EQ((Events{{"Warning", GetParam().message}}), m_log.events());
    expectUnusable(m_manager);
    EXPECT_EQ(0, ask()) << "not asked again";
    EXPECT_EQ(1U, m_log.events().size());
}

TEST_P(CIDSetting, ItDoesNotCountInEmptyMode)
{
    configure("ABSENT000009");
    m_manager.InitManager(true);
    EXPECT_EQ(0, ask());
    EXPECT_EQ((CIDs{""}), walk(m_manager));
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_P(CIDSetting, ItDoesNotCountForAListThatMayNotBeUsed)
{
    configure("SECOND000002");
    Steps::startList(m_manager, m_all);
    EXPECT_EQ(0, ask());
    EXPECT_EQ(m_all, Steps::list(m_manager));
}

TEST_P(CIDSetting, OneTooLongForASettingIsNone)
{
    configure(std::string(10000, 'A'));
    EXPECT_EQ(0, ask());
    EXPECT_EQ(m_all, walk(m_manager));
}

TEST_P(CIDSetting, AWalkUnderWayBeginsAgain)
{
    configure("SECOND000002");
    m_manager.InitCIDLoop();
    m_manager.GetNextCID();
    EXPECT_EQ(1, ask());
    EXPECT_STREQ("SECOND000002", m_manager.GetNextCID());
    EXPECT_STREQ("FIRST0000001", m_manager.GetNextCID());
}

INSTANTIATE_TEST_SUITE_P(Both, CIDSetting, ::testing::ValuesIn(kSettings),
                         [](const auto& row) { return row.param.name; });

TEST_F(CIDListManager, TheTestCIDCanStandAlone)
{
    for (const char* cid : {"FIRST0000001", "second000002", "THIRD0000003"})
    {
        Steps::fillList(m_manager, {"FIRST0000001", "SECOND000002", "THIRD0000003"});
        m_registry.write("Config", "TestCID", cid);
        EXPECT_EQ(1, m_manager.IsTestCIDSet(-1));
        EXPECT_EQ(1, m_manager.GetCIDsCount());
        EXPECT_EQ(String(cid), m_manager.GetNextCID()); // in any case
        EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
    }
}

TEST_F(CIDListManager, ATestCIDThatIsAbsentIsNoneToStandAlone)
{
    Steps::fillList(m_manager, {"FIRST0000001"});
    m_registry.write("Config", "TestCID", "ABSENT000009");
    EXPECT_EQ(0, m_manager.IsTestCIDSet(1));
    EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
}

// --- Leaks -------------------------------------------------------------------------------------------------------

TEST_F(CIDListManager, NothingStaysOpen)
{
    const auttest::LocalServer server;
    server.settings().write("", "HWID", 4711);
    server.settings().write("", "CIDs", "TE9DQUwtQ0lE");
    const InstalledCertificate machine(Store::machine, {"Workstation", "B", "C", "Velmora", "TUFDSElORS1D"});
    const auto gather = []
    {
        CCIDListManager manager;
        EXPECT_NE(0, manager.InitManager(false));
        const CCIDListManager copy(manager);
    };
    ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    gather();
    gather();
    const std::size_t handles = auttest::openHandles();
    for (int round = 0; round < 10; ++round)
        gather();
    EXPECT_LE(auttest::openHandles(), handles + 4);
    ::CoUninitialize();
}
} // namespace
