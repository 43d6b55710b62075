// autools_guard.dll: puts guarded blocks in the place of the C runtime's for every module of a test program.
//
// The modules themselves are the ordinary ones. As soon as this library is loaded, before any constructor of a module
// that imports it, the addresses of malloc and its relatives are exchanged in the import tables of all modules that are
// loaded and of each that will be. C++'s operators new and delete, strdup and the compiler's helpers come down to these
// functions, wherever they are linked. Windows' own libraries keep the C runtime's; so does the C runtime itself, whose
// blocks are known by their addresses and given back to it.
//
// A fault ends the program with the exit status of an access violation, after a line on the error stream that says
// which block it was and who was at it.
#include "Guard.h"
#include "GuardedBlocks.h"

#include <windows.h>

#include <psapi.h>

#include <cerrno>
#include <cstring>

namespace
{
using Malloc = void*(__cdecl*)(std::size_t);
using Calloc = void*(__cdecl*)(std::size_t, std::size_t);
using Realloc = void*(__cdecl*)(void*, std::size_t);
using Free = void(__cdecl*)(void*);
using Msize = std::size_t(__cdecl*)(void*);
using AlignedMalloc = void*(__cdecl*)(std::size_t, std::size_t);

Malloc g_malloc;
Calloc g_calloc;
Realloc g_realloc;
Free g_free;
Msize g_msize;
AlignedMalloc g_alignedMalloc;
Free g_alignedFree;

// --- What is said about a fault

class Line
{
public:
    Line& operator<<(const char* text)
    {
        for (; *text != '\0' && m_length < sizeof m_text - 1; ++text)
            m_text[m_length++] = *text;
        return *this;
    }
    Line& operator<<(unsigned long long number) { return print(number, 10); }
    Line& operator<<(const void* address)
    {
        return (*this << "0x").print(reinterpret_cast<std::uintptr_t>(address), 16);
    }
    void write(HANDLE to = ::GetStdHandle(STD_ERROR_HANDLE))
    {
        DWORD written = 0;
        m_text[m_length++] = '\n';
        ::WriteFile(to, m_text, static_cast<DWORD>(m_length), &written, nullptr);
    }

private:
    Line& print(unsigned long long number, unsigned base)
    {
        char digits[24];
        std::size_t at = sizeof digits - 1;
        digits[at] = '\0';
        do
        {
            digits[--at] = "0123456789abcdef"[number % base];
            number /= base;
        } while (number != 0);
        return *this << digits + at;
    }

    char m_text[512];
    std::size_t m_length = 0;
};

void sayWho()
{
    void* frames[24];
    const USHORT count = ::CaptureStackBackTrace(1, 24, frames, nullptr);
    for (USHORT i = 0; i < count; ++i)
    {
        HMODULE module = nullptr;
        char path[MAX_PATH] = "?";
        if (::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                 static_cast<const char*>(frames[i]), &module))
            ::GetModuleFileNameA(module, path, MAX_PATH);
        const char* const name = std::strrchr(path, '\\');
        Line line;
        line << "guard:   " << (name != nullptr ? name + 1 : path) << " + "
             << reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(frames[i]) -
                                              reinterpret_cast<std::uintptr_t>(module));
        line.write();
    }
}

[[noreturn]] void die(const char* what, const void* block)
{
    Line line;
    line << "guard: " << what << ": " << block;
    std::size_t size = 0;
    const void* start = nullptr;
    bool freed = false;
    if (guard::describe(block, size, start, freed))
        line << ", at " << start << " there " << (freed ? "was" : "is") << " a block of " << size << " bytes";
    line.write();
    sayWho();
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(EXCEPTION_ACCESS_VIOLATION));
    for (;;)
    {
    }
}

/// An access beyond a block ends the program by itself; this only adds the line.
LONG CALLBACK sayWhatHappened(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    const auto* const address = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
    std::size_t size = 0;
    const void* start = nullptr;
    bool freed = false;
    if (!guard::describe(address, size, start, freed))
        return EXCEPTION_CONTINUE_SEARCH;
    Line line;
    line << "guard: " << (record.ExceptionInformation[0] != 0 ? "write to " : "read of ") << address << ", "
         << (freed ? "in or behind a freed block of " : "behind the block of ") << size << " bytes at " << start;
    line.write();
    sayWho();
    return EXCEPTION_CONTINUE_SEARCH;
}

// --- The functions that stand in for the C runtime's

void* orUnguarded(void* block)
{
    if (block != nullptr)
        guard::countUnguarded();
    return block;
}

void* __cdecl guardedMalloc(std::size_t size)
{
    void* const block = guard::allocate(size);
    return block != nullptr ? block : orUnguarded(g_malloc(size));
}

void* __cdecl guardedCalloc(std::size_t count, std::size_t each)
{
    std::size_t size = 0;
    if (__builtin_mul_overflow(count, each, &size))
    {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = guard::allocate(size);
    return block != nullptr ? std::memset(block, 0, size) : orUnguarded(g_calloc(count, each));
}

void __cdecl guardedFree(void* block)
{
    if (block == nullptr)
        return;
    if (!guard::isGuarded(block))
        return g_free(block);
    switch (guard::release(block))
    {
    case guard::Fault::none:
        return;
    case guard::Fault::notABlock:
        die("freed, but no block starts there", block);
    case guard::Fault::freedBefore:
        die("freed twice", block);
    case guard::Fault::damaged:
        die("bytes beside the block were overwritten", block);
    }
}

std::size_t sizeOf(void* block) { return guard::isGuarded(block) ? guard::sizeOf(block) : g_msize(block); }

/// Moves always, so that nobody gets away with the old address.
void* __cdecl guardedRealloc(void* block, std::size_t size)
{
    if (block == nullptr)
        return guardedMalloc(size);
    if (size == 0)
    {
        guardedFree(block);
        return nullptr;
    }
    if (!guard::isGuarded(block))
        return g_realloc(block, size);
    void* const moved = guardedMalloc(size);
    if (moved == nullptr)
        return nullptr;
    const std::size_t old = guard::sizeOf(block);
    std::memcpy(moved, block, old < size ? old : size);
    guardedFree(block);
    return moved;
}

char* __cdecl guardedStrdup(const char* text)
{
    if (text == nullptr)
        return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    void* const copy = guardedMalloc(size);
    return copy != nullptr ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

wchar_t* __cdecl guardedWcsdup(const wchar_t* text)
{
    if (text == nullptr)
        return nullptr;
    const std::size_t size = (::wcslen(text) + 1) * sizeof(wchar_t);
    void* const copy = guardedMalloc(size);
    return copy != nullptr ? static_cast<wchar_t*>(std::memcpy(copy, text, size)) : nullptr;
}

std::size_t __cdecl guardedMsize(void* block) { return sizeOf(block); }

void* __cdecl guardedAlignedMalloc(std::size_t size, std::size_t alignment)
{
    void* const block = guard::allocate(size, alignment);
    if (block != nullptr)
        return block;
    return orUnguarded(g_alignedMalloc(size, alignment));
}

void __cdecl guardedAlignedFree(void* block)
{
    if (block != nullptr && guard::isGuarded(block))
        guardedFree(block);
    else
        g_alignedFree(block);
}

// --- Import tables

struct Replacement
{
    const char* name;
    void* with;
    void* original;
};

Replacement g_replacements[] = {
    {"malloc", reinterpret_cast<void*>(guardedMalloc), nullptr},
    {"calloc", reinterpret_cast<void*>(guardedCalloc), nullptr},
    {"realloc", reinterpret_cast<void*>(guardedRealloc), nullptr},
    {"free", reinterpret_cast<void*>(guardedFree), nullptr},
    {"_strdup", reinterpret_cast<void*>(guardedStrdup), nullptr},
    {"_wcsdup", reinterpret_cast<void*>(guardedWcsdup), nullptr},
    {"_msize", reinterpret_cast<void*>(guardedMsize), nullptr},
    {"_aligned_malloc", reinterpret_cast<void*>(guardedAlignedMalloc), nullptr},
    {"_aligned_free", reinterpret_cast<void*>(guardedAlignedFree), nullptr},
};

HMODULE g_self;
char g_windows[MAX_PATH];
std::size_t g_windowsLength;

void redirectSlot(IMAGE_THUNK_DATA& slot)
{
    for (const Replacement& replacement : g_replacements)
    {
        if (reinterpret_cast<void*>(slot.u1.Function) != replacement.original)
            continue;
        DWORD protection = 0;
        ::VirtualProtect(&slot, sizeof slot, PAGE_READWRITE, &protection);
        slot.u1.Function = reinterpret_cast<ULONGLONG>(replacement.with);
        ::VirtualProtect(&slot, sizeof slot, protection, &protection);
        return;
    }
}

void redirect(HMODULE module)
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(module, path, MAX_PATH);
    if (module == g_self || ::_strnicmp(path, g_windows, g_windowsLength) == 0)
        return;
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const IMAGE_DATA_DIRECTORY& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.VirtualAddress == 0)
        return;
    for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress); from->Name != 0;
         ++from)
        for (auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + from->FirstThunk); slot->u1.Function != 0; ++slot)
            redirectSlot(*slot);
}

void redirectLoadedModules()
{
    HMODULE modules[512];
    DWORD bytes = 0;
    if (!::EnumProcessModules(::GetCurrentProcess(), modules, sizeof modules, &bytes))
        return;
    for (DWORD i = 0; i < bytes / sizeof(HMODULE) && i < 512; ++i)
        redirect(modules[i]);
}

/// What Windows tells of a library that is being loaded, before its own code runs.
struct LoadedLibrary
{
    ULONG flags;
    const void* fullName;
    const void* baseName;
    void* base;
    ULONG imageBytes;
};

void CALLBACK libraryLoaded(ULONG reason, const LoadedLibrary* library, void*)
{
    constexpr ULONG kLoaded = 1;
    if (reason == kLoaded)
        redirect(static_cast<HMODULE>(library->base));
}

template <typename Function> Function exported(HMODULE module, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

bool start()
{
    const HMODULE runtime = ::GetModuleHandleA("msvcrt.dll");
    for (Replacement& replacement : g_replacements)
    {
        replacement.original = exported<void*>(runtime, replacement.name);
        if (replacement.original == nullptr)
            return false;
    }
    g_malloc = exported<Malloc>(runtime, "malloc");
    g_calloc = exported<Calloc>(runtime, "calloc");
    g_realloc = exported<Realloc>(runtime, "realloc");
    g_free = exported<Free>(runtime, "free");
    g_msize = exported<Msize>(runtime, "_msize");
    g_alignedMalloc = exported<AlignedMalloc>(runtime, "_aligned_malloc");
    g_alignedFree = exported<Free>(runtime, "_aligned_free");
    g_windowsLength = ::GetWindowsDirectoryA(g_windows, MAX_PATH);

    using Notify = LONG(WINAPI*)(ULONG, void(CALLBACK*)(ULONG, const LoadedLibrary*, void*), void*, void**);
    void* cookie = nullptr;
    const auto notify = exported<Notify>(::GetModuleHandleA("ntdll.dll"), "LdrRegisterDllNotification");
    if (notify == nullptr || notify(0, libraryLoaded, nullptr, &cookie) != 0)
        return false;
    ::AddVectoredExceptionHandler(0, sayWhatHappened);
    redirectLoadedModules();
    return true;
}

/// One line a process in the file that AUTOOLS_GUARD_REPORT names: program, guarded blocks, unguarded blocks.
void report()
{
    char path[MAX_PATH];
    const DWORD length = ::GetEnvironmentVariableA("AUTOOLS_GUARD_REPORT", path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return;
    const HANDLE file =
        ::CreateFileA(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    char program[MAX_PATH] = "?";
    ::GetModuleFileNameA(nullptr, program, MAX_PATH);
    const char* const name = std::strrchr(program, '\\');
    const guard::Figures figures = guard::figures();
    Line line;
    line << (name != nullptr ? name + 1 : program) << " " << figures.guarded << " " << figures.unguarded;
    line.write(file);
    ::CloseHandle(file);
}
} // namespace

extern "C" void autoolsGuardFigures(AutoolsGuardFigures* out)
{
    const guard::Figures figures = guard::figures();
    *out = {figures.guarded, figures.unguarded, figures.alive};
}

/// A program that cannot be guarded does not start: nobody shall believe that it was.
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        g_self = instance;
        return start() ? TRUE : FALSE;
    }
    if (reason == DLL_PROCESS_DETACH)
        report();
    return TRUE;
}
