#include "tests/torture/leaks/HeapUse.h"

#include <windows.h>

#include <array>

namespace torture
{
HeapUse heapUse()
{
    HeapUse use;
    std::array<HANDLE, 64> heaps{};
    const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (DWORD i = 0; i < count && i < heaps.size(); ++i)
    {
        ::HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry{};
        while (::HeapWalk(heaps[i], &entry) != FALSE)
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
            {
                ++use.blocks;
                use.bytes += entry.cbData;
            }
        ::HeapUnlock(heaps[i]);
    }
    // Page by page: not every system fills in the counter of private bytes.
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; ::VirtualQuery(at, &region, sizeof region) != 0;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize)
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            use.committed += static_cast<long long>(region.RegionSize);
    return use;
}
} // namespace torture
