#include "tests/torture/AllocationBalance.h"

#include "tests/torture/Figure.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace torture
{
namespace
{
std::atomic<long long> balance{0};

void* countedMalloc(std::size_t size)
{
    void* const block = std::malloc(size);
    balance += block != nullptr ? 1 : 0;
    return block;
}

void* countedCalloc(std::size_t count, std::size_t size)
{
    void* const block = std::calloc(count, size);
    balance += block != nullptr ? 1 : 0;
    return block;
}

void* countedRealloc(void* block, std::size_t size)
{
    void* const grown = std::realloc(block, size);
    balance += block == nullptr && grown != nullptr ? 1 : 0;
    balance -= block != nullptr && size == 0 ? 1 : 0;
    return grown;
}

char* countedStrdup(const char* text)
{
    char* const copy = ::_strdup(text);
    balance += copy != nullptr ? 1 : 0;
    return copy;
}

void countedFree(void* block)
{
    balance -= block != nullptr ? 1 : 0;
    std::free(block);
}

/// Calls `found` with each place where a module keeps the address of an imported function of that name.
template <typename Found> void forEachSlot(HMODULE module, const char* function, Found found)
{
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const DWORD directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory); from->Name != 0; ++from)
    {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + from->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + from->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots)
        {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
                continue;
            const auto* const import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), function) == 0)
                found(reinterpret_cast<void**>(&slots->u1.Function));
        }
    }
}

bool isGuarded() { return ::GetModuleHandleA("autools_guard.dll") != nullptr; }
} // namespace

AllocationBalance::AllocationBalance()
{
    if (isGuarded())
        return;
    // Not this program: what is called above is imported by it, and must be the real one.
    m_slots.reserve(32);
    for (const char* module : {"7xAutoUpdateTools.dll", "libstdc++-6.dll"})
    {
        patch(module, "malloc", reinterpret_cast<void*>(&countedMalloc));
        patch(module, "calloc", reinterpret_cast<void*>(&countedCalloc));
        patch(module, "realloc", reinterpret_cast<void*>(&countedRealloc));
        patch(module, "_strdup", reinterpret_cast<void*>(&countedStrdup));
        patch(module, "free", reinterpret_cast<void*>(&countedFree));
    }
    balance = 0;
}

AllocationBalance::~AllocationBalance()
{
    for (const Slot& slot : m_slots)
        write(slot.place, slot.original);
}

long long AllocationBalance::blocks() const { return balance; }

void AllocationBalance::report(const std::string& what, long long left)
{
    if (!isGuarded())
        count(what + ": blocks left allocated", left, 0);
}

void AllocationBalance::patch(const char* module, const char* function, void* replacement)
{
    const HMODULE loaded = ::GetModuleHandleA(module);
    if (loaded == nullptr)
        return;
    forEachSlot(loaded, function,
                [this, replacement](void** place)
                {
                    m_slots.push_back({place, *place});
                    write(place, replacement);
                });
}

void AllocationBalance::write(void** place, void* function)
{
    DWORD protection = 0;
    ::VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection);
    *place = function;
    ::VirtualProtect(place, sizeof *place, protection, &protection);
}
} // namespace torture
