// What the platform's own terminal services say. Cases that it lacks: CWTSApiWrapperSessionsTest.cpp.
#include "system/CWTSApiWrapper.h"

#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace auttest;

namespace
{
using Events = std::vector<LogEvent>;

DWORD ownSession()
{
    DWORD session = 0;
    EXPECT_TRUE(::ProcessIdToSessionId(::GetCurrentProcessId(), &session));
    return session;
}

class CWTSApiWrapperTest : public ::testing::Test
{
protected:
    CWTSApiWrapperTest()
    {
        CWTSApiWrapper::FreeInstance();
        m_log.mark();
    }
    ~CWTSApiWrapperTest() override { CWTSApiWrapper::FreeInstance(); }

    ClientRegistry m_registry;
    LogFile m_log;
};
} // namespace

TEST_F(CWTSApiWrapperTest, IsOneForTheProcess)
{
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    ASSERT_NE(nullptr, wrapper);
    EXPECT_EQ(wrapper, CWTSApiWrapper::GetInstance());
}

TEST_F(CWTSApiWrapperTest, CanBeFreedTwiceAndMadeAnew)
{
    ASSERT_NE(nullptr, CWTSApiWrapper::GetInstance());
    CWTSApiWrapper::FreeInstance();
    CWTSApiWrapper::FreeInstance();
    ASSERT_NE(nullptr, CWTSApiWrapper::GetInstance());
    EXPECT_NE(0xFFFFFFFF, CWTSApiWrapper::GetInstance()->GetWTSActiveConsoleSessionId());
}

TEST_F(CWTSApiWrapperTest, LogsNothingWhereEverythingIsThere)
{
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    wrapper->GetWTSActiveConsoleSessionId();
    wrapper->IsWTSSession();
    wrapper->GetWTSAccountFromSessionId(ownSession());
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(CWTSApiWrapperTest, TheConsolesSessionIsTheSystemsAnswer)
{
    EXPECT_EQ(::WTSGetActiveConsoleSessionId(), CWTSApiWrapper::GetInstance()->GetWTSActiveConsoleSessionId());
}

TEST_F(CWTSApiWrapperTest, TheOwnSessionsAccountIsTheOwnUser)
{
    EXPECT_STRCASEEQ(ownUser().c_str(), CWTSApiWrapper::GetInstance()->GetWTSAccountFromSessionId(ownSession()));
}

TEST_F(CWTSApiWrapperTest, TheConsolesSessionIsNotRemote)
{
    EXPECT_EQ(0, CWTSApiWrapper::GetInstance()->IsWTSSession());
}

TEST_F(CWTSApiWrapperTest, NoThreadGetsTheInstanceBeforeItIsInitialised)
{
    static aut::UniqueHandle initialising;
    static aut::UniqueHandle handedOut;
    static DWORD meanwhile;
    initialising.reset(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
    handedOut.reset(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
    meanwhile = WAIT_FAILED;
    using Load = HMODULE WINAPI(const char*);
    Load* const load = [](const char* name) -> HMODULE
    {
        if (std::strcmp(name, "Kernel32.dll") == 0)
        {
            ::SetEvent(initialising.get());
            meanwhile = ::WaitForSingleObject(handedOut.get(), 100);
        }
        return ::LoadLibraryA(name);
    };
    const ImportPatch loading("LoadLibraryA", load);
    std::thread second(
        []
        {
            ::WaitForSingleObject(initialising.get(), 10000);
            CWTSApiWrapper::GetInstance();
            ::SetEvent(handedOut.get());
        });
    CWTSApiWrapper::GetInstance();
    second.join();
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, meanwhile);
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, ::WaitForSingleObject(handedOut.get(), 0));
}

TEST_F(CWTSApiWrapperTest, ThreadsThatInitialiseItOnceMoreLoadTheLibraryOnce)
{
    static aut::UniqueHandle loadingNow;
    static aut::UniqueHandle loadingTwice;
    static std::atomic<int> loads;
    loadingNow.reset(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
    loadingTwice.reset(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
    loads = -1;
    using Load = HMODULE WINAPI(const char*);
    Load* const load = [](const char* name) -> HMODULE
    {
        if (std::strcmp(name, "WtsApi32.dll") != 0)
            return ::LoadLibraryA(name);
        const int before = loads++;
        if (before < 0)
            return nullptr; // when the instance is made
        ::SetEvent(before == 0 ? loadingNow.get() : loadingTwice.get());
        ::WaitForSingleObject(loadingTwice.get(), 100);
        return ::LoadLibraryA(name);
    };
    const ImportPatch loading("LoadLibraryA", load);
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    std::thread second(
        [wrapper]
        {
            ::WaitForSingleObject(loadingNow.get(), 10000);
            wrapper->IsWTSSession();
        });
    wrapper->IsWTSSession();
    second.join();
    EXPECT_EQ(1, loads);
}

TEST_F(CWTSApiWrapperTest, UnloadsWhatItLoaded)
{
    // Counts what stays loaded, whoever else has it loaded too.
    static int loaded;
    loaded = 0;
    using Load = HMODULE WINAPI(const char*);
    using Free = BOOL WINAPI(HMODULE);
    Load* const load = [](const char* name) -> HMODULE
    {
        ++loaded;
        return ::LoadLibraryA(name);
    };
    Free* const free = [](HMODULE module) -> BOOL
    {
        --loaded;
        return ::FreeLibrary(module);
    };
    const ImportPatch loading("LoadLibraryA", load);
    const ImportPatch freeing("FreeLibrary", free);
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    wrapper->IsWTSSession();
    wrapper->GetWTSActiveConsoleSessionId();
    EXPECT_EQ(2, loaded);
    CWTSApiWrapper::FreeInstance();
    EXPECT_EQ(0, loaded);
}

TEST_F(CWTSApiWrapperTest, WithoutTheConsoleFunctionThereIsNoConsoleSessionWhichEachCallLogs)
{
    using Resolve = FARPROC WINAPI(HMODULE, const char*);
    Resolve* const resolve = [](HMODULE module, const char* name) -> FARPROC
    { return std::strcmp(name, "WTSGetActiveConsoleSessionId") == 0 ? nullptr : ::GetProcAddress(module, name); };
    const ImportPatch patch("GetProcAddress", resolve);
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    EXPECT_EQ((Events{{"Warning", "WTSGetActiveSessionId procedure not found"}}), m_log.events());

    m_log.mark();
    EXPECT_EQ(0xFFFFFFFF, wrapper->GetWTSActiveConsoleSessionId());
    EXPECT_EQ(0xFFFFFFFF, wrapper->GetWTSActiveConsoleSessionId());
    EXPECT_EQ((Events{{"Warning", "WTSGetActiveSessionId procedure not initialized"},
                      {"Warning", "WTSGetActiveSessionId procedure not initialized"}}),
              m_log.events());

    m_log.mark();
    EXPECT_STRCASEEQ(ownUser().c_str(), wrapper->GetWTSAccountFromSessionId(ownSession()));
    EXPECT_EQ(Events(), m_log.events()) << "it is initialised all the same";
}

TEST_F(CWTSApiWrapperTest, WithoutTheKernelThereIsNoConsoleSession)
{
    using Load = HMODULE WINAPI(const char*);
    Load* const load = [](const char* name) -> HMODULE
    { return std::strcmp(name, "Kernel32.dll") == 0 ? nullptr : ::LoadLibraryA(name); };
    const ImportPatch patch("LoadLibraryA", load);
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    EXPECT_EQ((Events{{"Error", "CWTSApiWrapper Kernel32.dll load FAILED"},
                      {"Warning", "WTSGetActiveSessionId procedure not found"}}),
              m_log.events());
    EXPECT_EQ(0xFFFFFFFF, wrapper->GetWTSActiveConsoleSessionId());
    EXPECT_STRCASEEQ(ownUser().c_str(), wrapper->GetWTSAccountFromSessionId(ownSession()));
}

TEST_F(CWTSApiWrapperTest, WhatCannotBeLoadedIsLoggedInTheOrderOfLoadingAtEachTry)
{
    using Load = HMODULE WINAPI(const char*);
    Load* const load = [](const char*) -> HMODULE { return nullptr; };
    const ImportPatch patch("LoadLibraryA", load);
    const Events failed{{"Error", "CWTSApiWrapper Kernel32.dll load FAILED"},
                        {"Warning", "WTSGetActiveSessionId procedure not found"},
                        {"Error", "CWTSApiWrapper WtsApi32.dll load FAILED"}};
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    EXPECT_EQ(failed, m_log.events());
    m_log.mark();
    EXPECT_EQ(0, wrapper->IsWTSSession());
    EXPECT_EQ(failed, m_log.events());
}

TEST(IsCitrixEnvironment, IsAlwaysFalse) { EXPECT_FALSE(IsCitrixEnvironment()); }
