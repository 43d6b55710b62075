#include "tests/webconf/ConfigFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using auttest::kHotKeys;
using auttest::kNoTypes;
using auttest::kTimers;
using auttest::server;
using auttest::servers;

namespace
{
using ConfigLists = auttest::ConfigFixture;

TEST_F(ConfigLists, TheErrorTableHasOneMemberForEachChild)
{
    EXPECT_TRUE(load("<ErrorSettings><E><MaxRetries>1</MaxRetries><MinDelay>2</MinDelay><MaxDelay>3</MaxDelay>"
                     "<wcfgIndex>4</wcfgIndex></E><!-- no member --><Any/></ErrorSettings>"));
    ASSERT_EQ(2, m_config.m_errorTable.GetCount());
    POSITION pos = m_config.m_errorTable.GetHeadPosition();
    const CErrorTableMember* const first = m_config.m_errorTable.GetNext(pos);
    EXPECT_EQ(1, first->MaxRetries);
    EXPECT_EQ(2, first->m_delay.m_lower);
    EXPECT_EQ(3, first->m_delay.m_upper);
    EXPECT_EQ(4, first->m_index);
    const CErrorTableMember* const second = m_config.m_errorTable.GetNext(pos);
    EXPECT_EQ(0, second->MaxRetries);
    EXPECT_EQ(0, second->m_delay.m_upper);
    EXPECT_EQ(0, second->m_index);
}

TEST_F(ConfigLists, TimersKeepSecondsDownToMinusOne)
{
    EXPECT_TRUE(load(kTimers));
    ASSERT_EQ(3, m_config.m_timers.GetCount());
    EXPECT_EQ(60, m_config.GetTimerByID(1)->GetTimerValue());
    EXPECT_EQ(-1, m_config.GetTimerByID(2)->GetTimerValue());
    EXPECT_EQ(0, m_config.GetTimerByID(3)->GetTimerValue());
}

TEST_F(ConfigLists, AnUnknownTimerIsTheLastOne)
{
    EXPECT_EQ(nullptr, m_config.GetTimerByID(1));
    EXPECT_TRUE(load(kTimers));
    EXPECT_EQ(3, m_config.GetTimerByID(99)->GetTimerID());
}

TEST_F(ConfigLists, HotKeysHaveAKeyAndModifiers)
{
    EXPECT_FALSE(m_config.IsHotKeyAvailable());
    EXPECT_TRUE(load(kHotKeys));
    EXPECT_TRUE(m_config.IsHotKeyAvailable());
    ASSERT_EQ(3, m_config.m_hotKeys.GetCount());
    EXPECT_EQ('U', m_config.GetHotKeyByID(1)->m_key);
    EXPECT_EQ(1 | 2, m_config.GetHotKeyByID(1)->m_modifiers);
    EXPECT_EQ('x', m_config.GetHotKeyByID(2)->m_key);
    EXPECT_EQ(4 | 8, m_config.GetHotKeyByID(2)->m_modifiers);
    EXPECT_EQ('\0', m_config.GetHotKeyByID(0)->m_key);
    EXPECT_EQ(0, m_config.GetHotKeyByID(0)->m_modifiers);
}

TEST_F(ConfigLists, AnUnknownHotKeyIsTheLastOne)
{
    EXPECT_EQ(nullptr, m_config.GetHotKeyByID(1));
    EXPECT_TRUE(load(kHotKeys));
    EXPECT_EQ(0, m_config.GetHotKeyByID(99)->m_id);
}

TEST_F(ConfigLists, TheFirstOfSeveralWithOneNumberIsFound)
{
    EXPECT_TRUE(load("<TimersList><T><wcfgIndex>1</wcfgIndex><SecondsNumber>5</SecondsNumber></T>"
                     "<T><wcfgIndex>1</wcfgIndex><SecondsNumber>6</SecondsNumber></T></TimersList>"
                     "<HotKeysList><K><wcfgIndex>1</wcfgIndex><KeyValue>a</KeyValue></K>"
                     "<K><wcfgIndex>1</wcfgIndex><KeyValue>b</KeyValue></K></HotKeysList>"));
    EXPECT_EQ(5, m_config.GetTimerByID(1)->GetTimerValue());
    EXPECT_EQ('a', m_config.GetHotKeyByID(1)->m_key);
}

TEST_F(ConfigLists, LoadingAgainReplacesEveryList)
{
    const std::string all = std::string(kTimers) + kHotKeys +
                            "<ErrorSettings><E/></ErrorSettings>"
                            "<AuthorizedDownloadServerTypes><HTTPServer>1</HTTPServer></AuthorizedDownloadServerTypes>"
                            "<DownloadServers><S><URL>a</URL><DownloadServerType>HTTP</DownloadServerType></S>"
                            "</DownloadServers>";
    EXPECT_TRUE(load(all));
    EXPECT_TRUE(load(all));
    EXPECT_EQ(3, m_config.m_timers.GetCount());
    EXPECT_EQ(3, m_config.m_hotKeys.GetCount());
    EXPECT_EQ(1, m_config.m_errorTable.GetCount());
    EXPECT_EQ(1, m_config.m_servers.GetCount());
    EXPECT_TRUE(load(""));
    EXPECT_EQ(0, m_config.m_timers.GetCount());
    EXPECT_FALSE(m_config.IsHotKeyAvailable());
    EXPECT_EQ(0, m_config.m_errorTable.GetCount());
    EXPECT_EQ(0, m_config.m_servers.GetCount());
}

TEST_F(ConfigLists, ServersOfAuthorizedTypesAreKeptInOrder)
{
    EXPECT_TRUE(
        load(servers("<HTTPServer>1</HTTPServer><FTPServer>0</FTPServer><FILEServer>1</FILEServer>",
                     server("http://one/a", "HTTP") + server("ftp://two", "FTP") + server("file://x/y", "FILE") +
                         server("three", "http") + server("", "HTTP") + server("four:81", "HTTP"))));
    EXPECT_EQ((std::vector<std::string>{"HTTP HTTP://one:80/a", "FILE FILE://x/y", "HTTP HTTP://four:81"}),
              m_config.serverUrls());
    EXPECT_EQ(0u, timesLogged("Warning", kNoTypes));
    EXPECT_EQ(3u, m_log.events().size()); // the file and the two missing transfer settings: none for dropped servers
}

TEST_F(ConfigLists, ATypeIsTheNameBeforeTheFirstServer)
{
    EXPECT_TRUE(load(servers("<ServerServer>1</ServerServer><LAN>1</LAN><MyServerTypeServer>1</MyServerTypeServer>",
                             server("a", "") + server("b", "LAN") + server("c", "My") + server("d", "MyServerType"))));
    EXPECT_EQ((std::vector<std::string>{" HTTP://a:80", "LAN HTTP://b:80", "My HTTP://c:80"}), m_config.serverUrls());
}

TEST_F(ConfigLists, WithoutAuthorizedTypesNoServerIsKept)
{
    for (const char* authorized : {"", "<HTTPServer>0</HTTPServer>"})
    {
        EXPECT_TRUE(load(servers(authorized, server("a", "HTTP"))));
        EXPECT_EQ(0, m_config.m_servers.GetCount());
        EXPECT_EQ(1u, timesLogged("Warning", kNoTypes));
    }
}

TEST_F(ConfigLists, LoadServerListLoadsTheFileForANullNode)
{
    EXPECT_FALSE(m_config.LoadServerList(nullptr));
    m_folder.writeFile("AUKernelData.xml",
                       auttest::kernelData(servers("<HTTPServer>1</HTTPServer>", server("a", "HTTP"))));
    EXPECT_TRUE(m_config.LoadServerList(nullptr));
    EXPECT_EQ(1, m_config.m_servers.GetCount());
    m_folder.writeFile("AUKernelData.xml", "<a/>");
    EXPECT_FALSE(m_config.LoadServerList(nullptr));
    EXPECT_EQ(1, m_config.m_servers.GetCount());
}

TEST_F(ConfigLists, LongUrlsAreCutAt259Characters)
{
    EXPECT_TRUE(load(servers("<HTTPServer>1</HTTPServer>", server(std::string(100'000, 'u').c_str(), "HTTP"))));
    EXPECT_EQ((std::vector<std::string>{"HTTP HTTP://" + std::string(259, 'u') + ":80"}), m_config.serverUrls());
}

TEST_F(ConfigLists, ManyServersOfManyTypesAreLoaded)
{
    constexpr int kCount = 100;
    std::string types;
    std::string list;
    for (int i = 0; i < kCount; ++i)
    {
        const std::string type = "T" + std::to_string(i);
        types += "<" + type + "Server>1</" + type + "Server>";
        list += server("host", type.c_str());
    }
    EXPECT_TRUE(load(servers(types, list)));
    EXPECT_EQ(kCount, m_config.m_servers.GetCount());
}

} // namespace
