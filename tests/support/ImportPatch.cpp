#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>

namespace auttest
{
namespace
{
/// Where the library keeps the address of an imported function.
void** importSlot(const char* name)
{
    auto* const base = reinterpret_cast<BYTE*>(::GetModuleHandleA("7xAutoUpdateTools.dll"));
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const DWORD directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* module = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory); module->Name != 0; ++module)
    {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + module->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + module->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots)
        {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
                continue;
            const auto* const import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0)
                return reinterpret_cast<void**>(&slots->u1.Function);
        }
    }
    return nullptr;
}
} // namespace

ImportPatch::ImportPatch(const char* name, void* replacement) : m_slot(importSlot(name))
{
    EXPECT_NE(nullptr, m_slot) << "the library does not import " << name;
    if (m_slot == nullptr)
        return;
    m_original = *m_slot;
    write(replacement);
}

ImportPatch::~ImportPatch()
{
    if (m_slot != nullptr)
        write(m_original);
}

void ImportPatch::write(void* function) const
{
    DWORD protection = 0;
    EXPECT_TRUE(::VirtualProtect(m_slot, sizeof *m_slot, PAGE_READWRITE, &protection));
    *m_slot = function;
    ::VirtualProtect(m_slot, sizeof *m_slot, protection, &protection);
}
} // namespace auttest
