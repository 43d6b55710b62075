#ifndef AUTOOLS_TESTS_WEBCONF_CIDMANAGER_H
#define AUTOOLS_TESTS_WEBCONF_CIDMANAGER_H

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"
#include "webconf/CCIDListManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using CIDs = std::vector<std::string>;
using Events = std::vector<auttest::LogEvent>;

/// The manager's private steps, one by one.
template <> struct aut::LayoutOf<struct CIDManagerSteps>
{
    static int fromHWID(CCIDListManager& manager, long hwid) { return manager.GetCIDListFromHWID(hwid); }
    static int fromServer(CCIDListManager& manager) { return manager.GetLarkspurCIDs(); }
    static int fromCertificates(CCIDListManager& manager) { return manager.GetLocalCIDList(); }
    static void search(CCIDListManager& manager, int machine) { manager.SearchCIDCertificates(machine); }
    static void appendUsers(CCIDListManager& manager) { manager.AppendLocalUserCIDs(); }
    static std::string valid(CCIDListManager& manager, const std::string& subject)
    {
        return static_cast<const char*>(manager.GetValidCIDFromSubject(String(subject.c_str())));
    }

    /// What the list holds, whether it may be used or not.
    static CIDs list(const CCIDListManager& manager)
    {
        CIDs cids;
        for (POSITION position = manager.m_list->GetHeadPosition(); position != nullptr;)
            cids.emplace_back(manager.m_list->GetNext(position));
        return cids;
    }
    /// A list that is being gathered.
    static void startList(CCIDListManager& manager, const CIDs& cids = {})
    {
        manager.InitManager(true);
        manager.m_list->RemoveAll();
        manager.m_initialised = 0;
        manager.m_emptyCID = false;
        for (const std::string& text : cids)
        {
            String cid(text.c_str());
            manager.m_list->AddTail(cid);
        }
    }
    /// A list that has been gathered.
    static void fillList(CCIDListManager& manager, const CIDs& cids)
    {
        startList(manager, cids);
        manager.m_initialised = 1;
        manager.InitCIDLoop();
    }
};
using Steps = aut::LayoutOf<CIDManagerSteps>;

/// What a caller sees who walks the list from its head.
inline CIDs walk(CCIDListManager& manager)
{
    CIDs cids;
    for (manager.InitCIDLoop(); manager.IsEndOfTheListReached() == 0;)
        cids.emplace_back(manager.GetNextCID());
    return cids;
}

/// An empty registry, nobody logged on, and a result record that says nothing of certificate IDs.
class CIDTest : public ::testing::Test
{
protected:
    CIDTest()
    {
        auttest::endAllShells();
        result->Set(0, "", "", "");
        m_log.mark();
    }
    ~CIDTest() override { logDetails(0); }

    /// The log reads its detail level at every tenth call.
    void logDetails(DWORD level) const
    {
        m_registry.write("Config", "TestEnv", level);
        for (int call = 0; call < 10; ++call)
            Log(0xFFFF0000, "never written");
    }
    void revoke(const std::string& cid) const
    {
        m_registry.write("Config\\Cache\\Certificates\\" + cid, "Status", "Revoked");
    }
    static void expectEmptyListRecorded(const char* function)
    {
        EXPECT_EQ(301, result->GetStatusCode());
        EXPECT_STREQ("Empty CID list", result->GetAction());
        EXPECT_STREQ(function, result->GetFunction());
        EXPECT_STREQ("cids", result->GetObjectA());
    }

    auttest::ClientRegistry m_registry;
    auttest::LogFile m_log;
    CCIDListManager m_manager;
};

#endif
