// What is opened is closed: the handles of this process before and after every call, many times.

#include "tests/support/LocalServer.h"
#include "tests/support/OpenHandles.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <string>

namespace
{
/// Handles that go a moment after the call that had them: a server's connections, a thread that has just ended.
long long handlesAfterRest(std::size_t expected)
{
    std::size_t now = auttest::openHandles();
    for (int i = 0; i < 100 && now > expected; ++i)
    {
        ::Sleep(20);
        now = auttest::openHandles();
    }
    return static_cast<long long>(now);
}
} // namespace

TEST(Handles, EveryCallClosesWhatItOpens)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const torture::ClientInstallation client;
    const auttest::LocalServer local; // Wine leaves two handles open when a local server is not registered
    local.settings().write("", "HWID", 4711);
    local.settings().write("", "CIDs", torture::ClientInstallation::kCid);
    long long lost = 0;
    long long kept = 0;
    long long keptByContract = 0;
    long long rounds = 0;
    const torture::Calls calls = torture::allCalls(client);
    for (const torture::Call& call : calls)
    {
        for (int i = 0; i < 2; ++i) // what is loaded and made once
            call.make();
        const bool isHeavy = call.cost != torture::Cost::light;
        const int count = isHeavy ? torture::rounds(2, 500) : torture::rounds(10, 10000);
        client.server().clearRequests();
        const std::size_t before = auttest::openHandles();
        const ULONGLONG start = ::GetTickCount64();
        for (int i = 0; i < count; ++i)
        {
            call.make();
            if (i % 100 == 0)
                client.server().clearRequests();
        }
        const ULONGLONG took = ::GetTickCount64() - start;
        const long long expected = static_cast<long long>(count) * call.handles;
        const long long after = handlesAfterRest(before + static_cast<std::size_t>(expected));
        const long long difference = after - static_cast<long long>(before) - expected;
        std::printf("%-70s %6d rounds %8llu ms %6lld handles\n", call.name.c_str(), count, took, difference);
        // COM and the sockets of a transfer keep a pool that comes and goes: a leak would be one a round.
        const bool isClosed = isHeavy ? difference < count : difference <= 0;
        EXPECT_TRUE(isClosed) << call.name << " leaves " << difference << " handles after " << count << " rounds";
        lost += isClosed ? 0 : difference;
        kept += call.handles != 0 ? difference + expected : 0;
        keptByContract += expected;
        rounds += count;
    }
    torture::count(
        "handles left by " + std::to_string(rounds) + " rounds of " + std::to_string(calls.size()) + " calls", lost, 0);
    torture::count("handles of SharedMemory::Open, one a call", kept, keptByContract);
    ::CoUninitialize();
}
