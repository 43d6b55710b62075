#include "tests/environment/FakeControlCache.h"

#include "platform/EntryPoint.h"

#include <gtest/gtest.h>

#include <cstring>

namespace auttest
{
namespace
{
std::string standInFolder(const std::string& name)
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program = path;
    return program.substr(0, program.rfind('\\')) + "\\occache\\" + name;
}

HANDLE handleOf(std::size_t number) { return reinterpret_cast<HANDLE>(number); }

// Handles are numbers that are neither null nor those of one another.
const HANDLE kWalk = handleOf(0x7000);
constexpr std::size_t kFirstControl = 0x100;

std::size_t indexOf(HANDLE control) { return reinterpret_cast<std::size_t>(control) - kFirstControl; }
} // namespace

FakeControlCache::FakeControlCache(const std::string& name)
{
    EXPECT_EQ(nullptr, ::GetModuleHandleA("OCCACHE.DLL"));
    EXPECT_TRUE(::SetDllDirectoryA(standInFolder(name).c_str()));
    m_library.reset(::LoadLibraryA("OCCACHE.DLL"));
    const auto use = aut::entryPoint<UseControlCacheHost>(m_library.get(), "useControlCacheHost");
    EXPECT_NE(nullptr, use);
    if (use != nullptr)
        use(this);
}

FakeControlCache::~FakeControlCache()
{
    EXPECT_EQ(0, m_openWalks) << "a walk was not closed";
    for (std::size_t i = 0; i < m_open.size(); ++i)
        EXPECT_FALSE(m_open[i]) << "control " << i << " was not released";
    m_library.reset();
    EXPECT_EQ(nullptr, ::GetModuleHandleA("OCCACHE.DLL")) << "still loaded";
    ::SetDllDirectoryA(nullptr);
}

LONG FakeControlCache::find(HANDLE* control)
{
    for (const bool open : m_open)
        EXPECT_FALSE(open) << "a control before this one was not released";
    *control = nullptr;
    if (m_next == controls.size())
        return endOfWalk;
    *control = handleOf(kFirstControl + m_next);
    m_open.resize(m_next + 1);
    m_open[m_next++] = true;
    return ERROR_SUCCESS;
}

LONG FakeControlCache::findFirst(HANDLE* walk, HANDLE* control, const char* cacheFolder)
{
    EXPECT_EQ(nullptr, cacheFolder) << "the browser's own";
    EXPECT_EQ(0, m_openWalks);
    steps.push_back("first");
    m_next = 0;
    m_open.clear();
    const LONG status = find(control);
    *walk = nullptr;
    if (status == ERROR_SUCCESS)
    {
        *walk = kWalk;
        ++m_openWalks;
    }
    return status;
}

LONG FakeControlCache::findNext(HANDLE* walk, HANDLE* control)
{
    EXPECT_EQ(kWalk, *walk);
    EXPECT_EQ(1, m_openWalks);
    steps.push_back("next");
    return find(control);
}

LONG FakeControlCache::getInfo(HANDLE control, UINT kind, DWORD* number, char* text, int textChars)
{
    const std::size_t index = indexOf(control);
    EXPECT_TRUE(index < m_open.size() && m_open[index]) << "no open handle";
    if (index >= controls.size())
        return ERROR_INVALID_HANDLE;
    const Control& asked = controls[index];
    steps.push_back(std::to_string(kind) + " of " + std::to_string(index));
    if (kind == asked.unreadable)
        return ERROR_BAD_FORMAT;
    if (kind == 9)
    {
        *number = asked.isDistributionUnit;
        return ERROR_SUCCESS;
    }
    EXPECT_EQ(260, textChars);
    const std::string& answer = kind == 2 ? asked.file : kind == 3 ? asked.classId : asked.typeLibraryId;
    EXPECT_TRUE(kind == 2 || kind == 3 || kind == 4) << kind;
    if (unterminated)
        std::strncpy(text, answer.c_str(), static_cast<std::size_t>(textChars));
    else
        ::lstrcpynA(text, answer.c_str(), textChars);
    return ERROR_SUCCESS;
}

HRESULT FakeControlCache::removeByName(const char* file, const char* classId, const char* typeLibraryId, BOOL force,
                                       DWORD isDistributionUnit)
{
    steps.push_back("remove");
    removed.push_back(std::string(file) + "|" + classId + "|" + typeLibraryId + "|" + std::to_string(force) + "|" +
                      std::to_string(isDistributionUnit));
    return removal;
}

BOOL FakeControlCache::releaseHandle(HANDLE control)
{
    const std::size_t index = indexOf(control);
    EXPECT_TRUE(index < m_open.size() && m_open[index]) << "no open handle";
    steps.push_back("release " + std::to_string(index));
    if (index < m_open.size())
        m_open[index] = false;
    return TRUE;
}

LONG FakeControlCache::findClose(HANDLE walk)
{
    EXPECT_EQ(kWalk, walk);
    steps.push_back("close");
    --m_openWalks;
    return ERROR_SUCCESS;
}
} // namespace auttest
