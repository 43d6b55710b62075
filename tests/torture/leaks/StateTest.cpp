// The state of the calling thread and of the process is as before after every call that does not say otherwise.

#include "tests/support/ImportPatch.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"
#include "webconf/Network.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <wininet.h>

#include <clocale>
#include <optional>
#include <string>
#include <vector>

namespace
{
bool hasThreadToken()
{
    HANDLE token = nullptr;
    if (::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &token) == FALSE)
        return false;
    ::CloseHandle(token);
    return true;
}

/// In its long form: ExecCommand comes back to the short one, which is the same directory.
std::string currentDirectory()
{
    char path[MAX_PATH] = "";
    ::GetCurrentDirectoryA(MAX_PATH, path);
    char whole[MAX_PATH] = "";
    ::GetLongPathNameA(path, whole, MAX_PATH);
    return whole;
}

std::wstring environment()
{
    wchar_t* const block = ::GetEnvironmentStringsW();
    const wchar_t* end = block;
    while (end[0] != L'\0' || end[1] != L'\0')
        ++end;
    const std::wstring all(block, static_cast<std::size_t>(end - block));
    ::FreeEnvironmentStringsW(block);
    return all;
}

/// All that a caller may rely on to stay.
struct State
{
    bool token = hasThreadToken();
    std::string directory = currentDirectory();
    std::string locale = std::setlocale(LC_ALL, nullptr);
    LCID threadLocale = ::GetThreadLocale();
    UINT errorMode = ::GetErrorMode();
    DWORD threadErrorMode = ::GetThreadErrorMode();
    int priority = ::GetThreadPriority(::GetCurrentThread());
    DWORD priorityClass = ::GetPriorityClass(::GetCurrentProcess());
    std::wstring variables = environment();

    void expectSame(const std::string& call) const
    {
        const State now;
        EXPECT_EQ(token, now.token) << call << ": the thread's token";
        EXPECT_EQ(directory, now.directory) << call << ": the current directory";
        EXPECT_EQ(locale, now.locale) << call << ": the locale";
        EXPECT_EQ(threadLocale, now.threadLocale) << call << ": the thread's locale";
        EXPECT_EQ(errorMode, now.errorMode) << call << ": the error mode";
        EXPECT_EQ(threadErrorMode, now.threadErrorMode) << call << ": the thread's error mode";
        EXPECT_EQ(priority, now.priority) << call << ": the thread's priority";
        EXPECT_EQ(priorityClass, now.priorityClass) << call << ": the process's priority";
        EXPECT_EQ(variables, now.variables) << call << ": the environment";
    }
};

/// How the calling thread has initialised COM: not at all, or once with this model.
using Model = std::optional<DWORD>;

std::string modelName(const Model& model)
{
    if (!model)
        return "without COM";
    return *model == COINIT_MULTITHREADED ? "multithreaded" : "apartment";
}

/// Whether COM is initialised on this thread exactly as often as the model says. It is afterwards not at all.
bool isBalanced(const Model& model)
{
    if (model)
    {
        // One of them is ours, so that another one of the same model must be a second one.
        if (::CoInitializeEx(nullptr, *model) != S_FALSE)
            return false;
        ::CoUninitialize();
        ::CoUninitialize();
    }
    // Initialised once too often, the thread would refuse one of the two models.
    for (const DWORD other : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED})
    {
        if (::CoInitializeEx(nullptr, other) != S_OK)
            return false;
        ::CoUninitialize();
    }
    return true;
}

struct Outcome
{
    bool balanced = false;
    bool same = false;
};

/// Makes a call on a thread of its own, whose state is then compared.
Outcome callOnThread(const torture::Call& call, const Model& model)
{
    struct Task
    {
        const torture::Call& call;
        Model model;
        Outcome outcome;
    } task{call, model, {}};
    const HANDLE thread = ::CreateThread(
        nullptr, 0,
        [](void* argument) -> DWORD
        {
            Task& job = *static_cast<Task*>(argument);
            if (job.model)
                ::CoInitializeEx(nullptr, *job.model);
            const State before;
            job.call.make();
            const bool failed = ::testing::Test::HasFailure();
            before.expectSame(job.call.name + ", " + modelName(job.model));
            job.outcome.same = failed || !::testing::Test::HasFailure();
            job.outcome.balanced = isBalanced(job.model);
            return 0;
        },
        &task, 0, nullptr);
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);
    return task.outcome;
}

// Stand-ins for WinInet, for each way in which the question for the proxy ends.
BOOL WINAPI noSize(HINTERNET, DWORD, void*, DWORD* size)
{
    *size = 0;
    ::SetLastError(ERROR_INTERNET_INTERNAL_ERROR);
    return FALSE;
}
BOOL WINAPI sizeOnly(HINTERNET, DWORD, void* buffer, DWORD* size)
{
    static_cast<void>(buffer);
    *size = sizeof(INTERNET_PROXY_INFO);
    return FALSE;
}
void* noMemory(std::size_t, std::size_t) { return nullptr; }
} // namespace

TEST(State, IsAsBeforeAfterEveryCall)
{
    const torture::ClientInstallation client;
    const torture::Calls calls = torture::allCalls(client);
    ASSERT_TRUE(::SetCurrentDirectoryA(client.folder().path().c_str()));
    int next = 0;
    int unbalanced = 0;
    int changed = 0;
    for (const torture::Call& call : calls)
        for (const Model& model : {Model(), Model(COINIT_APARTMENTTHREADED), Model(COINIT_MULTITHREADED)})
        {
            if (call.cost != torture::Cost::light && model != Model() && !torture::isLong() && next++ % 4 != 0)
                continue;
            const Outcome outcome = callOnThread(call, model);
            EXPECT_TRUE(outcome.balanced) << call.name << ", " << modelName(model) << ": COM";
            unbalanced += outcome.balanced ? 0 : 1;
            changed += outcome.same ? 0 : 1;
        }
    ::SetCurrentDirectoryA("C:\\");
    const std::string what = std::to_string(calls.size()) + " calls on threads without COM and with either model";
    torture::count(what + " that leave COM otherwise", unbalanced, 0);
    torture::count(what + " that leave anything else otherwise", changed, 0);
}

TEST(State, DetectProxySettingsImpersonatesNobodyAfterAnyExit)
{
    const auttest::ClientRegistry registry;
    char proxy[2064];
    char bypass[2064];
    int left = 0;
    const auto exit = [&](const char* what)
    {
        DetectProxySettings(proxy, bypass);
        EXPECT_FALSE(hasThreadToken()) << what;
        left += hasThreadToken() ? 1 : 0;
        ::RevertToSelf();
    };
    exit("success");
    DetectProxySettings(nullptr, bypass);
    DetectProxySettings(proxy, nullptr);
    EXPECT_FALSE(hasThreadToken());
    {
        const auttest::ImportPatch patch("InternetQueryOptionA", noSize);
        exit("no size");
    }
    {
        const auttest::ImportPatch patch("InternetQueryOptionA", sizeOnly);
        exit("no settings");
    }
    {
        const auttest::ImportPatch patch("calloc", noMemory);
        exit("no memory");
    }
    {
        // Whoever the caller impersonates stays.
        ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
        const auttest::ImportPatch patch("InternetQueryOptionA", sizeOnly);
        DetectProxySettings(proxy, bypass);
        EXPECT_TRUE(hasThreadToken());
        ::RevertToSelf();
    }
    torture::count("exits of DetectProxySettings that leave the thread impersonating", left, 0);
}
