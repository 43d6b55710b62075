#ifndef AUTOOLS_TESTS_FILEOPS_TREETEST_H
#define AUTOOLS_TESTS_FILEOPS_TREETEST_H

#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"
#include "foundation/RT_RESULT.h"
#include "platform/UniqueResource.h"
#include "tests/fileops/DirectoryLink.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace auttest
{
/// The calls of the library that a patched import has seen in this test.
struct SeenCalls
{
    std::vector<std::string> listed;  ///< patterns of FindFirstFile
    std::vector<std::string> removed; ///< paths of RemoveDirectory
    std::vector<std::string> moved;   ///< "from -> to, flags" of MoveFileEx
};
inline SeenCalls g_seen;

inline HANDLE WINAPI seenFindFirstFile(const char* pattern, WIN32_FIND_DATAA* entry)
{
    g_seen.listed.emplace_back(pattern);
    return ::FindFirstFileA(pattern, entry);
}

inline BOOL WINAPI seenRemoveDirectory(const char* path)
{
    g_seen.removed.emplace_back(path);
    return ::RemoveDirectoryA(path);
}

/// What Windows does with a link, and Wine does not.
inline BOOL WINAPI seenRemoveDirectoryOrLink(const char* path)
{
    g_seen.removed.emplace_back(path);
    const DWORD attributes = ::GetFileAttributesA(path);
    const bool isLink = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return isLink ? removeLink(path) : ::RemoveDirectoryA(path);
}

inline std::string describeMove(const char* from, const char* to, DWORD flags)
{
    return std::string(from) + " -> " + (to != nullptr ? to : "null") + ", " + std::to_string(flags);
}

inline BOOL WINAPI seenMoveFileEx(const char* from, const char* to, DWORD flags)
{
    g_seen.moved.push_back(describeMove(from, to, flags));
    return ::MoveFileExA(from, to, flags);
}

inline BOOL WINAPI refusedMoveFileEx(const char* from, const char* to, DWORD flags)
{
    g_seen.moved.push_back(describeMove(from, to, flags));
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

inline BOOL WINAPI refusedRemoveDirectory(const char* path)
{
    g_seen.removed.emplace_back(path);
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

inline HANDLE WINAPI refusedFindFirstFile(const char*, WIN32_FIND_DATAA*)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

/// A value that callers may pass, as a number: everything but 1 means the same as 0.
template <typename Flag> Flag flag(int number)
{
    volatile int value = number; // not a constant expression, in which the enumeration's range would be checked
    return static_cast<Flag>(value);
}

/// A fresh folder, nothing that waits for the next start of Windows, and a marked result record.
class TreeTest : public ::testing::Test
{
protected:
    TreeTest()
    {
        g_seen = {};
        dropPendingMoves();
        result->Set(12345, "untouched", "", "", "", "");
    }
    ~TreeTest() override
    {
        dropPendingMoves();
        bRebootNeeded = false;
    }

    RT_Dir dir(std::string_view name) const { return RT_Dir(String((folder / name).c_str())); }
    String path(std::string_view name) const { return String((folder / name).c_str()); }

    /// The names in a directory of the test's folder, links included, as "sub\" or "file".
    std::vector<std::string> names(std::string_view name) const
    {
        std::vector<std::string> names;
        WIN32_FIND_DATAA entry{};
        const aut::UniqueFind search(::FindFirstFileA((folder / name).append("\\*").c_str(), &entry));
        if (!search)
            return names;
        do
        {
            const std::string found = entry.cFileName;
            if (found != "." && found != "..")
                names.push_back(found + ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? "\\" : ""));
        } while (::FindNextFileA(search.get(), &entry));
        std::sort(names.begin(), names.end());
        return names;
    }

    /// Held like this, a file is in use: nobody else can read, write or delete it.
    aut::UniqueFile lock(std::string_view name) const
    {
        aut::UniqueFile held(::CreateFileA((folder / name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(held) << "cannot lock " << name;
        return held;
    }

    /// Directories "d" in each other, as deep as Windows makes them; gives the path of the deepest.
    std::string makeDeepTree(std::string_view name) const
    {
        constexpr std::size_t kLongestDirectoryChars = 247;
        std::string deepest = folder.makeFolder(name);
        while (deepest.size() + 2 <= kLongestDirectoryChars && ::CreateDirectoryA((deepest + "\\d").c_str(), nullptr))
            deepest += "\\d";
        return deepest;
    }

    /// What waits for the next start of Windows: source and target (empty for a deletion) in turns, without the
    /// system's prefixes.
    static std::vector<std::string> pendingMoves()
    {
        aut::UniqueKey key(openSessionManager());
        std::vector<char> data(1 << 20);
        auto size = static_cast<DWORD>(data.size());
        std::vector<std::string> texts;
        if (::RegQueryValueExA(key.get(), kPendingMoves, nullptr, nullptr, reinterpret_cast<BYTE*>(data.data()),
                               &size) != ERROR_SUCCESS)
            return texts;
        for (const char* at = data.data(); at < data.data() + size - 1; at += texts.back().size() + 1)
            texts.emplace_back(at);
        for (std::string& text : texts)
            for (const char* prefix : {"!", "\\??\\"})
                if (text.rfind(prefix, 0) == 0)
                    text.erase(0, std::string(prefix).size());
        return texts;
    }

    /// By count, because RT_Dir itself must leave nothing there.
    static void expectNoRecord() { EXPECT_EQ(12345, result->GetStatusCode()) << result->GetErrorString(); }

    const TestFolder folder;

private:
    static constexpr const char* kPendingMoves = "PendingFileRenameOperations";

    static HKEY openSessionManager()
    {
        HKEY key = nullptr;
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Control\\Session Manager", 0,
                                  KEY_READ | KEY_WRITE, &key));
        return key;
    }
    static void dropPendingMoves() { ::RegDeleteValueA(aut::UniqueKey(openSessionManager()).get(), kPendingMoves); }
};
} // namespace auttest

#endif
