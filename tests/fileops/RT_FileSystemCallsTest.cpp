// What a file object asks of the system where the outcome cannot be seen from outside on every system the suite runs
// on: access lists that the file system does not keep, attributes that the owner of a file may always change.
//
// The program's own import pointers are defined here, so that the linker takes them instead of the import library's.

#include "fileops/RT_File.h"
#include "foundation/RT_RESULT.h"
#include "tests/fileops/FileProbe.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

using auttest::FileProbe;

namespace
{
struct CreateFileCall
{
    DWORD access;
    DWORD sharing;
    bool inheritable;
    bool nullAccessList;
    DWORD creation;
    DWORD attributes;
};
CreateFileCall g_lastCall;
DWORD g_attributesError = ERROR_SUCCESS; ///< when set, setting attributes fails with it

bool hasNullAccessList(const SECURITY_ATTRIBUTES* security)
{
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL list = nullptr;
    return security != nullptr && security->nLength == sizeof *security &&
           ::GetSecurityDescriptorDacl(security->lpSecurityDescriptor, &present, &list, &defaulted) && present &&
           list == nullptr;
}

template <typename Function> Function kernelFunction(const char* name)
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("kernel32.dll"), name)));
}

HANDLE WINAPI recordedCreateFile(const char* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                                 DWORD creation, DWORD attributes, HANDLE model)
{
    g_lastCall = {access,   sharing,   security != nullptr && security->bInheritHandle, hasNullAccessList(security),
                  creation, attributes};
    static const auto createFile = kernelFunction<decltype(&recordedCreateFile)>("CreateFileA");
    return createFile(path, access, sharing, security, creation, attributes, model);
}

BOOL WINAPI failingSetFileAttributes(const char* path, DWORD attributes)
{
    if (g_attributesError != ERROR_SUCCESS)
    {
        ::SetLastError(g_attributesError);
        return FALSE;
    }
    static const auto setFileAttributes = kernelFunction<decltype(&failingSetFileAttributes)>("SetFileAttributesA");
    return setFileAttributes(path, attributes);
}
} // namespace

extern "C"
{
    extern decltype(&recordedCreateFile) const __imp_CreateFileA;
    extern decltype(&failingSetFileAttributes) const __imp_SetFileAttributesA;
    decltype(&recordedCreateFile) const __imp_CreateFileA = &recordedCreateFile;
    decltype(&failingSetFileAttributes) const __imp_SetFileAttributesA = &failingSetFileAttributes;
}

namespace
{
struct OpenCall
{
    unsigned int flags;
    DWORD access;
    DWORD sharing;
    bool inheritable;
    DWORD creation;
};

TEST(RT_FileSystemCalls, OpenIsOpenToEveryoneWithNormalAttributes)
{
    const auttest::TestFolder folder;
    constexpr DWORD kBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
    for (const OpenCall& row : {
             OpenCall{0x0000, GENERIC_READ, 0, true, OPEN_EXISTING},
             OpenCall{0x0020, GENERIC_READ, FILE_SHARE_READ, true, OPEN_EXISTING},
             OpenCall{0x00A0, GENERIC_READ, FILE_SHARE_READ, false, OPEN_EXISTING},
             OpenCall{0x0031, GENERIC_WRITE, FILE_SHARE_WRITE, true, OPEN_EXISTING},
             OpenCall{0x1041, GENERIC_WRITE, kBoth, true, CREATE_ALWAYS},
             OpenCall{0x3002, GENERIC_READ | GENERIC_WRITE, 0, true, OPEN_ALWAYS},
             OpenCall{0x2012, GENERIC_READ | GENERIC_WRITE, 0, true, OPEN_EXISTING},
         })
    {
        SCOPED_TRACE(row.flags);
        RT_File file(folder.writeFile("a.txt", "text").c_str());
        g_lastCall = {};
        EXPECT_NE(0, file.Open(row.flags));
        EXPECT_EQ(row.access, g_lastCall.access);
        EXPECT_EQ(row.sharing, g_lastCall.sharing);
        EXPECT_EQ(row.inheritable, g_lastCall.inheritable);
        EXPECT_EQ(row.creation, g_lastCall.creation);
        EXPECT_EQ(static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL), g_lastCall.attributes);
        EXPECT_TRUE(g_lastCall.nullAccessList);
    }
}

TEST(RT_FileSystemCalls, TheTrialForALockIsAnInheritableWriterWithoutSharing)
{
    const auttest::TestFolder folder;
    g_lastCall = {};
    EXPECT_FALSE(FileProbe(folder.writeFile("a.txt", "text").c_str()).IsFileLocked());
    EXPECT_EQ(static_cast<DWORD>(GENERIC_WRITE), g_lastCall.access);
    EXPECT_EQ(0u, g_lastCall.sharing);
    EXPECT_EQ(static_cast<DWORD>(OPEN_EXISTING), g_lastCall.creation);
    EXPECT_TRUE(g_lastCall.inheritable);
    EXPECT_TRUE(g_lastCall.nullAccessList);
}

TEST(RT_FileSystemCalls, TimesAreComparedWithSharingForReaders)
{
    const auttest::TestFolder folder;
    FileProbe file(folder.writeFile("a.txt", "text").c_str());
    COMPFLAG flag = COMP_OTHER_NEWER;
    g_lastCall = {};
    EXPECT_FALSE(file.IsDifferentByLastModTime(file, WHEN_NEWER, flag));
    EXPECT_EQ(COMP_SAME, flag);
    EXPECT_EQ(static_cast<DWORD>(GENERIC_READ), g_lastCall.access);
    EXPECT_EQ(static_cast<DWORD>(FILE_SHARE_READ), g_lastCall.sharing);
    EXPECT_TRUE(g_lastCall.nullAccessList);
}

TEST(RT_FileSystemCalls, AReadOnlyAttributeThatStaysIsRecordedAsStatus460)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    *result = RT_RESULT(7);
    g_attributesError = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(FileProbe(path.c_str()).RemoveReadOnlyAttribIfAny());
    EXPECT_FALSE(FileProbe(path.c_str()).IsOverWriteable());
    g_attributesError = ERROR_SUCCESS;
    EXPECT_EQ("0,460,5,7,Unable to set file attributes," + path + ",RT_File::RemoveReadOnlyAttribIfAny,,",
              std::string(static_cast<const char*>(result->GetErrorString())));
}
} // namespace
