#include "tests/webconf/CIDManager.h"

#include "platform/ComApartment.h"
#include "tests/support/LocalServer.h"

namespace
{
class CIDSourceServer : public CIDTest
{
protected:
    int get(const CIDs& list = {})
    {
        Steps::startList(m_manager, list);
        m_log.mark();
        return Steps::fromServer(m_manager);
    }
    int getFrom(const std::string& text, const CIDs& list = {})
    {
        m_server.settings().write("", "CIDs", text);
        return get(list);
    }
    CIDs list() const { return Steps::list(m_manager); }

    aut::ComApartment m_com;
    auttest::LocalServer m_server;
};

TEST_F(CIDSourceServer, ItsCIDsAreAdded)
{
    EXPECT_NE(0, getFrom("QUFBLUNJRC0x;QkJCLUNJRC0y", {"BEFORE000001"}));
    EXPECT_EQ((CIDs{"BEFORE000001", "QUFBLUNJRC0x", "QkJCLUNJRC0y"}), list());
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID()"},
                      {"Info", "GetCIDListFromHWID: local CID List = QUFBLUNJRC0x;QkJCLUNJRC0y"}}),
              m_log.events());
    EXPECT_EQ(1UL, m_server.calls("CIDs"));
    EXPECT_EQ(0UL, m_server.calls("HWID"));
}

TEST_F(CIDSourceServer, WithoutTheServerThatIsLogged)
{
    m_server.unregister();
    EXPECT_EQ(0, get({"BEFORE000001"}));
    EXPECT_EQ((CIDs{"BEFORE000001"}), list());
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID()"},
                      {"Warning", "GetLarkspurCIDs: 'AutoUpdateSRV.dll' is not registered"}}),
              m_log.events());
}

TEST_F(CIDSourceServer, AFailureIsLogged)
{
    m_server.settings().write("", "CIDsStatus", static_cast<DWORD>(E_FAIL));
    EXPECT_EQ(0, getFrom("QUFBLUNJRC0x"));
    EXPECT_EQ(CIDs{}, list());
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID()"},
                      {"Warning", "GetCIDListFromHWID: FAILED to retrive local CID List"}}),
              m_log.events());
    EXPECT_EQ(1UL, m_server.calls("CIDs"));
}

TEST_F(CIDSourceServer, AServerThatDiesInTheCallFails)
{
    m_server.settings().write("", "DieIn", "CIDs");
    EXPECT_EQ(0, getFrom("QUFBLUNJRC0x"));
    EXPECT_EQ((auttest::LogEvent{"Warning", "GetCIDListFromHWID: FAILED to retrive local CID List"}),
              m_log.events().back());
    m_server.settings().removeValue("", "DieIn");
    EXPECT_NE(0, get()) << "it is started again";
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x"}), list());
}

TEST_F(CIDSourceServer, NoTextAtAllIsAnEmptyList)
{
    EXPECT_NE(0, get());
    EXPECT_EQ(CIDs{}, list());
    EXPECT_EQ((auttest::LogEvent{"Info", "GetCIDListFromHWID: local CID List = "}), m_log.events().back());
}

TEST_F(CIDSourceServer, SeparatorsAndBlanksAroundCIDsDoNotCount)
{
    EXPECT_NE(0, getFrom(";; QUFBLUNJRC0x ;\r\n\tQkJCLUNJRC0y\r\n; ;"));
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), list());
    EXPECT_NE(0, getFrom(";"));
    EXPECT_EQ(CIDs{}, list());
}

TEST_F(CIDSourceServer, OnlyWellFormedOnesAreTaken)
{
    EXPECT_NE(0, getFrom("1234567890;12345678901;ABC-123456789;QUJD+EVGR0g/Zm8=;QUFB LUNJRC0x;\xC4QUFBLUNJRC0x"));
    EXPECT_EQ((CIDs{"12345678901", "QUJD+EVGR0g/Zm8="}), list());
}

TEST_F(CIDSourceServer, OneThatTheListHasInAnyCaseIsNotAddedAgain)
{
    EXPECT_NE(0, getFrom("before000001;QUFBLUNJRC0x;qufblunjrc0x", {"BEFORE000001"}));
    EXPECT_EQ((CIDs{"BEFORE000001", "QUFBLUNJRC0x"}), list());
}

TEST_F(CIDSourceServer, ARevokedOneIsLeftOutAndLogged)
{
    revoke("QUFBLUNJRC0x");
    EXPECT_NE(0, getFrom("QUFBLUNJRC0x;QkJCLUNJRC0y"));
    EXPECT_EQ((CIDs{"QkJCLUNJRC0y"}), list());
    EXPECT_EQ((auttest::LogEvent{"Info", "CID QUFBLUNJRC0x revoked or expired"}), m_log.events().back());
}

TEST_F(CIDSourceServer, AListOfAnyLengthIsTakenWhole)
{
    std::string text;
    CIDs cids;
    for (int i = 0; i < 3000; ++i)
    {
        cids.push_back("TUFOWS1DSURT" + std::to_string(i) + "=");
        text += cids.back() + ";";
    }
    EXPECT_NE(0, getFrom(text));
    EXPECT_EQ(cids, list());
}
} // namespace
