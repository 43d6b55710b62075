#ifndef AUTOOLS_TESTS_ENVIRONMENT_FAKECONTROLCACHE_H
#define AUTOOLS_TESTS_ENVIRONMENT_FAKECONTROLCACHE_H

#include "platform/UniqueResource.h"
#include "tests/environment/occache/ControlCacheHost.h"

#include <string>
#include <vector>

namespace auttest
{
/// The browser's control cache as a test wants it, behind a stand-in library that lies where libraries are searched
/// for, while this lives. Fails the running test when a handle is used that is not open, or a text buffer is not of 260
/// characters.
class FakeControlCache final : public ControlCacheHost
{
public:
    struct Control
    {
        std::string classId;
        std::string file = {};
        std::string typeLibraryId = {};
        DWORD isDistributionUnit = 0;
        UINT unreadable = 0; ///< the kind of information that cannot be read
    };

    /// `name` tells which stand-in: "without_" and the function that it lacks.
    explicit FakeControlCache(const std::string& name = "without_nothing");
    /// Fails the running test when anything was left open or loaded.
    ~FakeControlCache();
    FakeControlCache(const FakeControlCache&) = delete;
    FakeControlCache& operator=(const FakeControlCache&) = delete;

    std::vector<Control> controls;
    LONG endOfWalk = ERROR_NO_MORE_ITEMS;
    HRESULT removal = S_OK;
    bool unterminated = false; ///< texts that fill the buffer have no NUL

    /// What was called, in order: "first", "3 of 0" (a kind of information), "release 0", "next", "remove", "close".
    std::vector<std::string> steps;
    /// What was removed: "file|class ID|type-library ID|force|is distribution unit".
    std::vector<std::string> removed;

    LONG findFirst(HANDLE* walk, HANDLE* control, const char* cacheFolder) override;
    LONG findNext(HANDLE* walk, HANDLE* control) override;
    LONG getInfo(HANDLE control, UINT kind, DWORD* number, char* text, int textChars) override;
    HRESULT removeByName(const char* file, const char* classId, const char* typeLibraryId, BOOL force,
                         DWORD isDistributionUnit) override;
    BOOL releaseHandle(HANDLE control) override;
    LONG findClose(HANDLE walk) override;

private:
    std::size_t indexOf(HANDLE control) const;
    void expectAllReleased() const;
    LONG find(HANDLE* control);

    aut::UniqueModule m_library;
    std::size_t m_next = 0;
    int m_openWalks = 0;
    std::vector<bool> m_open; ///< for each control that was found, whether its handle is open
};
} // namespace auttest

#endif
