// Memory stays flat. Measured in the busy blocks of all heaps, walked one by one: what was allocated and not freed
// shows to the byte, and what the heap keeps for later does not.

#include "7xAutoUpdateTools.h"
#include "tests/support/LocalServer.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"
#include "tests/torture/leaks/HeapUse.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace
{
std::string productList(int products)
{
    std::string xml = "<r><Data><NewData><ModifCounter>5</ModifCounter><ProductList>";
    for (int i = 0; i < products; ++i)
    {
        const std::string n = std::to_string(i);
        xml += "<Product><ProductReleaseID>" + n + "</ProductReleaseID><Name>Product" + n +
               "</Name><Language>EN</Language><Version>1.0</Version><Build>B1</Build><Action>INSTALL</Action>"
               "<ComponentList><Component><ComponentReleaseID>" +
               n + "</ComponentReleaseID><Name>Comp" + n +
               "</Name><Language>EN</Language><Version>1.0</Version><Build>B1</Build><URL>http://server/" + n +
               "</URL></Component></ComponentList></Product>";
    }
    return xml + "</ProductList></NewData></Data></r>";
}

/// Fetches, parses and frees one list; how many releases it had.
int parse(const char* url)
{
    auto* list = new RT_List<CRelease*, CRelease*>;
    int count = 0;
    {
        phase1xml document(url);
        if (document.GetXMLDoc(nullptr) == 1 && document.ParseXMLDocument(list, "") == 1)
            count = list->GetCount();
    }
    FreeReleaseList(list);
    delete list;
    return count;
}

/// Grows by how much, from the end of the first `warmUp` rounds to that of `rounds` more?
torture::HeapUse growth(int warmUp, int rounds, const std::function<void()>& round)
{
    for (int i = 0; i < warmUp; ++i)
        round();
    ::Sleep(20); // threads of the last one end
    const torture::HeapUse before = torture::heapUse();
    for (int i = 0; i < rounds; ++i)
        round();
    torture::HeapUse after = torture::heapUse();
    for (int i = 0; i < 50 && after.bytes > before.bytes; ++i) // a server's thread may still be ending
    {
        ::Sleep(20);
        after = torture::heapUse();
    }
    std::printf("%d rounds: %lld blocks and %lld bytes before, %lld and %lld after; committed %lld and %lld\n", rounds,
                before.blocks, before.bytes, after.blocks, after.bytes, before.committed, after.committed);
    return {after.blocks - before.blocks, after.bytes - before.bytes, after.committed - before.committed};
}

/// Less than a byte of each parse, or a few of each cycle: the smallest block that a round leaks is more.
void expectFlat(const std::string& what, const torture::HeapUse& grown, long long bytes)
{
    torture::figure("bytes more in use after " + what, std::to_string(grown.bytes), "<= " + std::to_string(bytes),
                    grown.bytes <= bytes);
    constexpr long long kCommitted = 8 << 20;
    torture::figure("bytes more committed after " + what, std::to_string(grown.committed),
                    "<= " + std::to_string(kCommitted), grown.committed <= kCommitted);
}

class Memory : public ::testing::Test
{
protected:
    Memory() { ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    ~Memory() override { ::CoUninitialize(); }

    torture::ClientInstallation m_client;
};
} // namespace

// What the others rely on.
TEST(HeapUse, SeesOneLostBlock)
{
    const torture::HeapUse before = torture::heapUse();
    void* volatile small = std::malloc(24); // volatile: a compiler may leave out what nobody uses
    const torture::HeapUse withSmall = torture::heapUse();
    EXPECT_EQ(before.blocks + 1, withSmall.blocks);
    EXPECT_LE(before.bytes + 24, withSmall.bytes);
    void* volatile large = std::malloc(64 << 20); // the heap hands such blocks to the system
    EXPECT_LE(before.committed + (64 << 20), torture::heapUse().committed);
    std::free(large);
    std::free(small);
    const torture::HeapUse after = torture::heapUse();
    EXPECT_GT(before.blocks + 1, after.blocks);
    EXPECT_GT(before.bytes + 24, after.bytes);
}

TEST_F(Memory, IsFlatOverManyParses)
{
    webconf_sample::Rule rule;
    rule.page = "list.asp";
    rule.answer.body = productList(5000);
    m_client.server().addRule(rule);
    const std::string url = m_client.server().url("list.asp");
    const int rounds = torture::rounds(2, 1000);
    int read = 0;
    const torture::HeapUse grown = growth(2, rounds,
                                          [&]
                                          {
                                              read += parse(url.c_str());
                                              m_client.server().clearRequests();
                                          });
    torture::count("releases read by the parses", read, 5000LL * (rounds + 2));
    expectFlat(std::to_string(rounds) + " parses of 5,000 products", grown, 16384);
}

TEST_F(Memory, IsFlatOverWholeCycles)
{
    const auttest::LocalServer local;
    local.settings().write("", "CIDs", m_client.kCid);
    const std::string host = m_client.server().host();
    const std::string url =
        m_client.server().url("wcfgGetProductList.asp", std::string("CertificateID=") + m_client.kCid);
    int updates = 0;
    int releases = 0;
    const auto cycle = [&]
    {
        DataCaching caching;
        updates += caching.GetAUData(host.c_str()) ? 1 : 0;
        CConfig config;
        config.GetValues();
        auto* list = new RT_List<CRelease*, CRelease*>;
        {
            phase1xml document(url.c_str(), m_client.kCid);
            if (document.GetXMLDoc(&config) == 1)
            {
                document.IsNewConfiguration(list, m_client.kCid);
                document.ParseXMLDocument(list, m_client.kCid);
            }
            document.GetPreviousXMLDoc();
        }
        releases += list->GetCount();
        for (POSITION at = list->GetHeadPosition(); at != nullptr;)
        {
            CRelease* const release = list->GetNext(at);
            SaveConfigFile(release);
            release->IsUpdateNecessary();
            UpdateCertificatesForInstalledProduct(release, true);
        }
        FreeReleaseList(list);
        delete list;
        RT_File((m_client.folder() / "files\\a.txt").c_str())
            .CopyTo((m_client.folder() / "target").c_str(), WHEN_ALWAYS);
        m_client.server().clearRequests();
    };
    const int rounds = torture::rounds(8, 2000);
    const torture::HeapUse grown = growth(4, rounds, cycle);
    torture::count("cycles that brought a configuration", updates, rounds + 4);
    torture::figure("releases that the cycles brought", std::to_string(releases), ">= one a cycle", releases >= rounds);
    expectFlat(std::to_string(rounds) + " whole cycles", grown, 16384);
}

TEST_F(Memory, IsFlatOverEveryCall)
{
    long long worst = 0;
    const torture::Calls calls = torture::allCalls(m_client);
    for (const torture::Call& call : calls)
    {
        // A server's threads come and go: only over many rounds does a block a round stand out.
        const bool isHeavy = call.cost != torture::Cost::light;
        if (isHeavy && !torture::isLong())
            continue;
        const int rounds = isHeavy ? 300 : torture::rounds(10, 3000);
        const torture::HeapUse grown = growth(isHeavy ? 1 : 3, rounds,
                                              [&]
                                              {
                                                  call.make();
                                                  m_client.server().clearRequests();
                                              });
        // The smallest leak is a block of one byte each round; a block is rounded up to 16.
        const bool isFlat = grown.bytes < 16LL * rounds || grown.blocks < rounds;
        EXPECT_TRUE(isFlat) << call.name << ": " << grown.blocks << " blocks, " << grown.bytes << " bytes";
        worst += isFlat ? 0 : 1;
    }
    torture::count("calls of " + std::to_string(calls.size()) + " that leave a block a round", worst, 0);
}
