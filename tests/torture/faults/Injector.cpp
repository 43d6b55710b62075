#include "tests/torture/faults/Injector.h"

#include <psapi.h>
#include <winternl.h>

#include <cstring>
#include <cwchar>
#include <map>
#include <mutex>

namespace faults
{
volatile long g_progress = 0;

namespace
{
constexpr NTSTATUS kAccessDenied = static_cast<NTSTATUS>(0xC0000022);
constexpr NTSTATUS kSharingViolation = static_cast<NTSTATUS>(0xC0000043);
constexpr NTSTATUS kDiskFull = static_cast<NTSTATUS>(0xC000007F);

struct State
{
    std::mutex lock;
    bool armed = false;
    bool withLog = false;
    Effect effect = Effect::None;
    int at = 0;
    int count = 0;
    bool hit = false;
    std::string call;
    std::map<HANDLE, std::wstring> paths; ///< of the files that are open, or were
};

State& state()
{
    static State state;
    return state;
}

void die() { ::TerminateProcess(::GetCurrentProcess(), kDied + static_cast<DWORD>(g_progress)); }

std::string narrow(const std::wstring& text)
{
    std::string narrowed;
    for (const wchar_t c : text)
        narrowed += c < 128 ? static_cast<char>(c) : '?';
    return narrowed;
}

bool isLog(const std::wstring& path) { return path.find(L"7xAutoupdateLog") != std::wstring::npos; }

/// What happens to one call.
struct Verdict
{
    Effect effect = Effect::None;
    NTSTATUS status() const
    {
        return effect == Effect::Denied ? kAccessDenied : effect == Effect::Full ? kDiskFull : kSharingViolation;
    }
    bool fails() const { return effect == Effect::Denied || effect == Effect::Full || effect == Effect::Shared; }
};

Verdict judge(const char* function, const std::wstring& object, bool isWrite)
{
    State& now = state();
    const std::lock_guard<std::mutex> lock(now.lock);
    Verdict verdict;
    if (!now.armed || (!now.withLog && isLog(object)) || ++now.count != now.at)
        return verdict;
    if (now.effect == Effect::Short && !isWrite)
        return verdict;
    verdict.effect = now.effect;
    now.hit = true;
    now.call = function + (" " + narrow(object));
    return verdict;
}

template <typename Original> NTSTATUS perform(const Verdict& verdict, Original original)
{
    if (verdict.effect == Effect::DieBefore)
        die();
    if (verdict.fails())
        return verdict.status();
    const NTSTATUS status = original();
    if (verdict.effect == Effect::DieAfter)
        die();
    return status;
}

std::wstring pathOf(HANDLE file)
{
    State& now = state();
    const std::lock_guard<std::mutex> lock(now.lock);
    const auto found = now.paths.find(file);
    return found != now.paths.end() ? found->second : std::wstring();
}

void remember(HANDLE file, const std::wstring& path)
{
    State& now = state();
    const std::lock_guard<std::mutex> lock(now.lock);
    if (now.armed)
        now.paths[file] = path;
}

std::wstring nameOf(const OBJECT_ATTRIBUTES* object)
{
    if (object == nullptr || object->ObjectName == nullptr || object->ObjectName->Buffer == nullptr)
        return std::wstring();
    return std::wstring(object->ObjectName->Buffer, object->ObjectName->Length / sizeof(wchar_t));
}

std::wstring textOf(const UNICODE_STRING* text)
{
    return text != nullptr && text->Buffer != nullptr ? std::wstring(text->Buffer, text->Length / sizeof(wchar_t))
                                                      : std::wstring();
}

/// A path on a drive; everything else is a device, a pipe or a socket.
bool isOnDisk(const std::wstring& path)
{
    return path.size() > 6 && path.compare(0, 4, L"\\??\\") == 0 && path[5] == L':';
}

bool changes(ACCESS_MASK access, ULONG disposition, ULONG options)
{
    constexpr ACCESS_MASK kWriting = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_ATTRIBUTES | FILE_WRITE_EA |
                                     DELETE | GENERIC_WRITE | GENERIC_ALL;
    constexpr ULONG kOpenExisting = 1;
    constexpr ULONG kDeleteOnClose = 0x1000;
    return (access & kWriting) != 0 || disposition != kOpenExisting || (options & kDeleteOnClose) != 0;
}

// The calls themselves, as ntdll declares them.

using CreateFileCall = NTSTATUS(NTAPI*)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*, IO_STATUS_BLOCK*, LARGE_INTEGER*,
                                        ULONG, ULONG, ULONG, ULONG, void*, ULONG);
using OpenFileCall = NTSTATUS(NTAPI*)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*, IO_STATUS_BLOCK*, ULONG, ULONG);
using WriteFileCall = NTSTATUS(NTAPI*)(HANDLE, HANDLE, void*, void*, IO_STATUS_BLOCK*, const void*, ULONG,
                                       LARGE_INTEGER*, ULONG*);
using SetInformationCall = NTSTATUS(NTAPI*)(HANDLE, IO_STATUS_BLOCK*, void*, ULONG, ULONG);
using FlushFileCall = NTSTATUS(NTAPI*)(HANDLE, IO_STATUS_BLOCK*);
using CreateKeyCall = NTSTATUS(NTAPI*)(HANDLE*, ACCESS_MASK, const OBJECT_ATTRIBUTES*, ULONG, const UNICODE_STRING*,
                                       ULONG, ULONG*);
using SetValueCall = NTSTATUS(NTAPI*)(HANDLE, const UNICODE_STRING*, ULONG, ULONG, const void*, ULONG);
using DeleteValueCall = NTSTATUS(NTAPI*)(HANDLE, const UNICODE_STRING*);
using KeyCall = NTSTATUS(NTAPI*)(HANDLE);

CreateFileCall g_createFile;
OpenFileCall g_openFile;
WriteFileCall g_writeFile;
SetInformationCall g_setInformation;
FlushFileCall g_flushFile;
CreateKeyCall g_createKey;
SetValueCall g_setValue;
DeleteValueCall g_deleteValue;
KeyCall g_deleteKey;
KeyCall g_flushKey;

NTSTATUS NTAPI createFile(HANDLE* file, ACCESS_MASK access, OBJECT_ATTRIBUTES* object, IO_STATUS_BLOCK* io,
                          LARGE_INTEGER* size, ULONG attributes, ULONG sharing, ULONG disposition, ULONG options,
                          void* extended, ULONG extendedSize)
{
    const auto original = [&]
    {
        return g_createFile(file, access, object, io, size, attributes, sharing, disposition, options, extended,
                            extendedSize);
    };
    const std::wstring path = nameOf(object);
    if (!isOnDisk(path))
        return original();
    const Verdict verdict = changes(access, disposition, options) ? judge("NtCreateFile", path, false) : Verdict();
    const NTSTATUS status = perform(verdict, original);
    if (status >= 0)
        remember(*file, path);
    return status;
}

NTSTATUS NTAPI openFile(HANDLE* file, ACCESS_MASK access, OBJECT_ATTRIBUTES* object, IO_STATUS_BLOCK* io, ULONG sharing,
                        ULONG options)
{
    const auto original = [&] { return g_openFile(file, access, object, io, sharing, options); };
    const std::wstring path = nameOf(object);
    if (!isOnDisk(path))
        return original();
    const Verdict verdict = changes(access, 1, options) ? judge("NtOpenFile", path, false) : Verdict();
    const NTSTATUS status = perform(verdict, original);
    if (status >= 0)
        remember(*file, path);
    return status;
}

NTSTATUS NTAPI writeFile(HANDLE file, HANDLE event, void* routine, void* context, IO_STATUS_BLOCK* io, const void* data,
                         ULONG size, LARGE_INTEGER* offset, ULONG* key)
{
    const bool isFile = ::GetFileType(file) == FILE_TYPE_DISK;
    const Verdict verdict = isFile ? judge("NtWriteFile", pathOf(file), true) : Verdict();
    const ULONG taken = verdict.effect == Effect::Short ? size / 2 : size;
    return perform(verdict, [&] { return g_writeFile(file, event, routine, context, io, data, taken, offset, key); });
}

NTSTATUS NTAPI setInformation(HANDLE file, IO_STATUS_BLOCK* io, void* data, ULONG size, ULONG what)
{
    bool isChange = false;
    for (const ULONG one : {4UL, 10UL, 11UL, 13UL, 19UL, 20UL, 64UL, 65UL}) // basic, rename, link, delete, sizes
        isChange = isChange || what == one;
    const Verdict verdict = isChange ? judge("NtSetInformationFile", pathOf(file), false) : Verdict();
    return perform(verdict, [&] { return g_setInformation(file, io, data, size, what); });
}

NTSTATUS NTAPI flushFile(HANDLE file, IO_STATUS_BLOCK* io)
{
    return perform(judge("NtFlushBuffersFile", pathOf(file), false), [&] { return g_flushFile(file, io); });
}

NTSTATUS NTAPI createKey(HANDLE* key, ACCESS_MASK access, const OBJECT_ATTRIBUTES* object, ULONG index,
                         const UNICODE_STRING* name, ULONG options, ULONG* disposition)
{
    // Asked for reading only, the call opens one of the predefined keys.
    constexpr ACCESS_MASK kWriting = KEY_SET_VALUE | KEY_CREATE_SUB_KEY | GENERIC_WRITE | GENERIC_ALL | MAXIMUM_ALLOWED;
    const std::wstring path = nameOf(object);
    const Verdict verdict = (access & kWriting) != 0 ? judge("NtCreateKey", path, false) : Verdict();
    return perform(verdict, [&] { return g_createKey(key, access, object, index, name, options, disposition); });
}

NTSTATUS NTAPI setValue(HANDLE key, const UNICODE_STRING* name, ULONG index, ULONG type, const void* data, ULONG size)
{
    return perform(judge("NtSetValueKey", textOf(name), false),
                   [&] { return g_setValue(key, name, index, type, data, size); });
}

NTSTATUS NTAPI deleteValue(HANDLE key, const UNICODE_STRING* name)
{
    return perform(judge("NtDeleteValueKey", textOf(name), false), [&] { return g_deleteValue(key, name); });
}

NTSTATUS NTAPI deleteKey(HANDLE key)
{
    return perform(judge("NtDeleteKey", L"", false), [&] { return g_deleteKey(key); });
}

NTSTATUS NTAPI flushKey(HANDLE key)
{
    return perform(judge("NtFlushKey", L"", false), [&] { return g_flushKey(key); });
}

struct Hook
{
    const char* name;
    void* replacement;
    void** original;
};

template <typename Function> Hook hook(const char* name, Function replacement, Function& original)
{
    return {name, reinterpret_cast<void*>(replacement), reinterpret_cast<void**>(&original)};
}

const Hook (&hooks())[10]
{
    static const Hook kHooks[] = {hook<CreateFileCall>("NtCreateFile", createFile, g_createFile),
                                  hook<OpenFileCall>("NtOpenFile", openFile, g_openFile),
                                  hook<WriteFileCall>("NtWriteFile", writeFile, g_writeFile),
                                  hook<SetInformationCall>("NtSetInformationFile", setInformation, g_setInformation),
                                  hook<FlushFileCall>("NtFlushBuffersFile", flushFile, g_flushFile),
                                  hook<CreateKeyCall>("NtCreateKey", createKey, g_createKey),
                                  hook<SetValueCall>("NtSetValueKey", setValue, g_setValue),
                                  hook<DeleteValueCall>("NtDeleteValueKey", deleteValue, g_deleteValue),
                                  hook<KeyCall>("NtDeleteKey", deleteKey, g_deleteKey),
                                  hook<KeyCall>("NtFlushKey", flushKey, g_flushKey)};
    return kHooks;
}

void patchSlot(void** slot, void* function)
{
    DWORD protection = 0;
    if (!::VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection))
        return;
    *slot = function;
    ::VirtualProtect(slot, sizeof *slot, protection, &protection);
}

void patchModule(HMODULE module)
{
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const DWORD directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (directory == 0)
        return;
    for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory); from->Name != 0; ++from)
    {
        if (::_stricmp(reinterpret_cast<const char*>(base + from->Name), "ntdll.dll") != 0)
            continue;
        for (auto* slot = reinterpret_cast<void**>(base + from->FirstThunk); *slot != nullptr; ++slot)
        {
            for (const Hook& one : hooks())
            {
                if (*slot == *one.original)
                    patchSlot(slot, one.replacement);
            }
        }
    }
}
} // namespace

void install()
{
    const HMODULE system = ::GetModuleHandleA("ntdll.dll");
    for (const Hook& one : hooks())
        *one.original = reinterpret_cast<void*>(reinterpret_cast<void (*)()>(::GetProcAddress(system, one.name)));
    HMODULE modules[512];
    DWORD bytes = 0;
    if (!::EnumProcessModules(::GetCurrentProcess(), modules, sizeof modules, &bytes))
        return;
    for (DWORD i = 0; i < bytes / sizeof modules[0]; ++i)
    {
        if (modules[i] != system)
            patchModule(modules[i]);
    }
}

void arm(Effect effect, int at, bool withLog)
{
    State& now = state();
    const std::lock_guard<std::mutex> lock(now.lock);
    now.armed = true;
    now.withLog = withLog;
    now.effect = effect;
    now.at = at;
    now.count = 0;
    now.hit = false;
    now.call.clear();
    now.paths.clear();
}

int disarm()
{
    State& now = state();
    const std::lock_guard<std::mutex> lock(now.lock);
    now.armed = false;
    return now.count;
}

bool wasHit() { return state().hit; }

std::string hitCall() { return state().call; }
} // namespace faults
