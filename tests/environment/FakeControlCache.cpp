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
    expectAllReleased();
    m_library.reset();
    EXPECT_EQ(nullptr, ::GetModuleHandleA("OCCACHE.DLL")) << "still loaded";
    ::SetDllDirectoryA(nullptr);
}

// A control's handle is its place in the list, the walk's the cache itself: no two are alike.
std::size_t FakeControlCache::indexOf(HANDLE control) const
{
    std::size_t index = 0;
    while (index < controls.size() && control != &controls[index])
        ++index;
    return index;
}

void FakeControlCache::expectAllReleased() const
{
    for (std::size_t i = 0; i < m_open.size(); ++i)
        EXPECT_FALSE(m_open[i]) << "control " << i << " was not released";
}

LONG FakeControlCache::find(HANDLE* control)
{
    expectAllReleased();
    *control = nullptr;
    if (m_next == controls.size())
        return endOfWalk;
    *control = &controls[m_next];
    m_open.resize(m_next + 1);
    m_open[m_next++] = true;
    return ERROR_SUCCESS;
}

LONG FakeControlCache::findFirst(HANDLE* walk, HANDLE* control, const char* cacheFolder)
{
    EXPECT_EQ(nullptr, cacheFolder) << "the browser's own";
    EXPECT_EQ(0, m_openWalks);
    expectAllReleased();
    steps.push_back("first");
    m_next = 0;
    m_open.clear();
    const LONG status = find(control);
    *walk = nullptr;
    if (status == ERROR_SUCCESS)
    {
        *walk = this;
        ++m_openWalks;
    }
    return status;
}

LONG FakeControlCache::findNext(HANDLE* walk, HANDLE* control)
{
    EXPECT_EQ(this, *walk);
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
    EXPECT_EQ(this, walk);
    steps.push_back("close");
    --m_openWalks;
    return ERROR_SUCCESS;
}
} // namespace auttest
