// What a file object asks of the system where the outcome cannot be seen from outside on every system the suite runs
// on: access lists and attributes that the file system does not keep, attributes that the owner of a file may always
// change, a library that is never missing.
//
// The program's own import pointers are defined here, so that the linker takes them instead of the import library's.

#include "fileops/CFileVersion.h"
#include "fileops/RT_File.h"
#include "foundation/RT_RESULT.h"
#include "tests/fileops/FileProbe.h"
#include "tests/fileops/VersionedFile.h"
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
DWORD g_attributes = 0;                  ///< those that were to be set last
bool g_withoutVersionLibrary = false;

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
    g_attributes = attributes;
    if (g_attributesError != ERROR_SUCCESS)
    {
        ::SetLastError(g_attributesError);
        return FALSE;
    }
    static const auto setFileAttributes = kernelFunction<decltype(&failingSetFileAttributes)>("SetFileAttributesA");
    return setFileAttributes(path, attributes);
}

HMODULE WINAPI refusingLoadLibrary(const char* name)
{
    if (g_withoutVersionLibrary && ::lstrcmpiA(name, "Version.dll") == 0)
    {
        ::SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    static const auto loadLibrary = kernelFunction<decltype(&refusingLoadLibrary)>("LoadLibraryA");
    return loadLibrary(name);
}
} // namespace

extern "C"
{
    extern decltype(&recordedCreateFile) const __imp_CreateFileA;
    extern decltype(&failingSetFileAttributes) const __imp_SetFileAttributesA;
    extern decltype(&refusingLoadLibrary) const __imp_LoadLibraryA;
    decltype(&recordedCreateFile) const __imp_CreateFileA = &recordedCreateFile;
    decltype(&failingSetFileAttributes) const __imp_SetFileAttributesA = &failingSetFileAttributes;
    decltype(&refusingLoadLibrary) const __imp_LoadLibraryA = &refusingLoadLibrary;
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

TEST(RT_FileSystemCalls, AReadOnlyFileGetsNormalAttributes)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    EXPECT_TRUE(FileProbe(path.c_str()).RemoveReadOnlyAttribIfAny());
    EXPECT_EQ(static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL), g_attributes);
    g_attributes = 0;
    EXPECT_TRUE(FileProbe(path.c_str()).RemoveReadOnlyAttribIfAny());
    EXPECT_EQ(0u, g_attributes) << "a file that is not read-only is left alone";
}

TEST(RT_FileSystemCalls, WithoutTheVersionLibraryNoFileHasAVersion)
{
    g_withoutVersionLibrary = true;
    {
        CFileVersion version;
        EXPECT_EQ(0, version.Open(auttest::compiledLibrary().c_str()));
        EXPECT_STREQ("", version.QueryValue("CompanyName", 0));
        EXPECT_STREQ("", version.GetFixedFileVersion());
        EXPECT_STREQ("", version.GetFixedProductVersion());
        VS_FIXEDFILEINFO info{};
        EXPECT_EQ(0, version.GetFixedInfo(info));
        version.Close();
    }
    g_withoutVersionLibrary = false;
    EXPECT_EQ(1, CFileVersion().Open(auttest::compiledLibrary().c_str()));
}
} // namespace
