// The objects that every account may open have a null access list, and nothing else that the library makes has one.

#include "7xAutoUpdateTools.h"
#include "tests/support/ImportPatch.h"
#include "tests/system/Processes.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace
{
/// What the library asked for when it made something.
struct Made
{
    std::string function;
    bool attributes = false;   ///< security attributes at all
    bool nullList = false;     ///< with a descriptor whose access list is present and null, and that holds nothing else
    bool nullOnObject = false; ///< an event or mapping whose list, asked of the system, is null
};

std::mutex g_lock;
std::vector<Made> g_made;

Made noted(const char* function, const SECURITY_ATTRIBUTES* attributes)
{
    Made made;
    made.function = function;
    if (attributes != nullptr && attributes->lpSecurityDescriptor != nullptr)
    {
        made.attributes = true;
        BOOL present = FALSE;
        BOOL defaulted = TRUE;
        ACL* list = nullptr;
        PSID owner = nullptr;
        PSID group = nullptr;
        BOOL ignored = FALSE;
        BOOL auditing = TRUE;
        ACL* audit = nullptr;
        auto* const descriptor = attributes->lpSecurityDescriptor;
        made.nullList = ::GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted) != FALSE &&
                        present != FALSE && list == nullptr &&
                        ::GetSecurityDescriptorOwner(descriptor, &owner, &ignored) != FALSE && owner == nullptr &&
                        ::GetSecurityDescriptorGroup(descriptor, &group, &ignored) != FALSE && group == nullptr &&
                        ::GetSecurityDescriptorSacl(descriptor, &auditing, &audit, &ignored) != FALSE &&
                        auditing == FALSE;
    }
    return made;
}

void keep(const Made& made)
{
    const DWORD error = ::GetLastError();
    {
        const std::lock_guard<std::mutex> lock(g_lock);
        g_made.push_back(made);
    }
    ::SetLastError(error);
}

HANDLE WINAPI createFile(const char* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes,
                         DWORD disposition, DWORD flags, HANDLE pattern)
{
    keep(noted("CreateFile", attributes));
    return ::CreateFileA(name, access, share, attributes, disposition, flags, pattern);
}
HANDLE WINAPI createEvent(SECURITY_ATTRIBUTES* attributes, BOOL manual, BOOL signalled, const char* name)
{
    const HANDLE event = ::CreateEventA(attributes, manual, signalled, name);
    const DWORD error = ::GetLastError();
    Made made = noted("CreateEvent", attributes);
    made.nullOnObject = event != nullptr && auttest::hasNullAccessList(event);
    ::SetLastError(error);
    keep(made);
    return event;
}
HANDLE WINAPI createMapping(HANDLE file, SECURITY_ATTRIBUTES* attributes, DWORD protection, DWORD high, DWORD low,
                            const char* name)
{
    const HANDLE mapping = ::CreateFileMappingA(file, attributes, protection, high, low, name);
    const DWORD error = ::GetLastError();
    Made made = noted("CreateFileMapping", attributes);
    made.nullOnObject = mapping != nullptr && auttest::hasNullAccessList(mapping);
    ::SetLastError(error);
    keep(made);
    return mapping;
}
BOOL WINAPI createDirectory(const char* path, SECURITY_ATTRIBUTES* attributes)
{
    keep(noted("CreateDirectory", attributes));
    return ::CreateDirectoryA(path, attributes);
}
LSTATUS WINAPI createKey(HKEY root, const char* path, DWORD reserved, char* type, DWORD options, REGSAM access,
                         SECURITY_ATTRIBUTES* attributes, HKEY* key, DWORD* disposition)
{
    keep(noted("RegCreateKeyEx", attributes));
    return ::RegCreateKeyExA(root, path, reserved, type, options, access, attributes, key, disposition);
}
HANDLE WINAPI createThread(SECURITY_ATTRIBUTES* attributes, SIZE_T stack, LPTHREAD_START_ROUTINE start, void* argument,
                           DWORD flags, DWORD* id)
{
    keep(noted("CreateThread", attributes));
    return ::CreateThread(attributes, stack, start, argument, flags, id);
}

/// Whether a file that this call opens is to be open to everyone: those that RT_File opens for its caller, and the
/// trial whether one is locked.
bool mayShareFiles(const std::string& call) { return call.find("RT_File") == 0 || call.find("RT_Dir") == 0; }
} // namespace

TEST(Security, OnlyWhatEveryAccountMayOpenHasANullAccessList)
{
    const torture::ClientInstallation client;
    const torture::Calls calls = torture::allCalls(client);
    const auttest::ImportPatch files("CreateFileA", createFile);
    const auttest::ImportPatch events("CreateEventA", createEvent);
    const auttest::ImportPatch mappings("CreateFileMappingA", createMapping);
    const auttest::ImportPatch folders("CreateDirectoryA", createDirectory);
    const auttest::ImportPatch keys("RegCreateKeyExA", createKey);
    const auttest::ImportPatch threads("CreateThread", createThread);

    int missing = 0;
    int wrong = 0;
    int surplus = 0;
    std::set<std::string> withList;
    long long made = 0;
    for (const torture::Call& call : calls)
    {
        g_made.clear();
        call.make();
        for (const Made& each : g_made)
        {
            ++made;
            const bool isObject = each.function == "CreateEvent" || each.function == "CreateFileMapping";
            const bool isOpened = each.function == "CreateFile" && call.name.find("RT_File::Open") == 0;
            if (isObject || isOpened)
            {
                EXPECT_TRUE(each.nullList) << call.name << ": " << each.function;
                missing += each.nullList ? 0 : 1;
            }
            if (isObject)
            {
                EXPECT_TRUE(each.nullOnObject)
                    << call.name << ": the list of the object that " << each.function << " made";
                missing += each.nullOnObject ? 0 : 1;
            }
            EXPECT_EQ(each.attributes, each.nullList) << call.name << ": " << each.function << ", another descriptor";
            wrong += each.attributes == each.nullList ? 0 : 1;
            const bool mayHave = isObject || (each.function == "CreateFile" && mayShareFiles(call.name));
            EXPECT_TRUE(mayHave || !each.attributes) << call.name << ": " << each.function;
            surplus += mayHave || !each.attributes ? 0 : 1;
            if (each.attributes)
                withList.insert(each.function);
        }
    }
    EXPECT_EQ((std::set<std::string>{"CreateEvent", "CreateFile", "CreateFileMapping"}), withList);
    torture::count("events, mappings and opened files without a null access list", missing, 0);
    torture::count("security descriptors that hold anything else", wrong, 0);
    torture::count("null access lists on anything else", surplus, 0);
    torture::figure("objects, files, folders, keys and threads looked at", std::to_string(made), ">= 80", made >= 80);
}
