#include "tests/support/OpenHandles.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

namespace auttest
{
namespace
{
struct SystemHandle
{
    void* object;
    ULONG_PTR pid;
    ULONG_PTR handle;
    ULONG access;
    USHORT traceIndex;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};
struct SystemHandles
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    SystemHandle handles[1];
};
} // namespace

std::size_t openHandles()
{
    // Asked by number: not every SDK names this class of information.
    constexpr ULONG kExtendedHandleInformation = 64;
    using Query = LONG(NTAPI*)(ULONG, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void (*)()>(::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<std::size_t> buffer(1 << 17);
    ULONG size = 0;
    EXPECT_EQ(0, query(kExtendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size() * sizeof buffer[0]),
                       &size));
    const auto* const all = reinterpret_cast<const SystemHandles*>(buffer.data());
    std::size_t own = 0;
    for (ULONG_PTR i = 0; i < all->count; ++i)
        own += all->handles[i].pid == ::GetCurrentProcessId() ? 1U : 0U;
    EXPECT_GT(own, 0U);
    return own;
}
} // namespace auttest
