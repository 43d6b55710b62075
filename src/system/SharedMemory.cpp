#include "system/SharedMemory.h"

#include "platform/BoundedText.h"
#include "platform/KernelObjectSecurity.h"
#include "platform/Layout.h"
#include "platform/UniqueResource.h"
#include "system/SharedNames.h"

#include <atomic>
#include <cstdint>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<SharedMemory>
{
    static_assert(offsetof(SharedMemory, m_name) == 0);
    static_assert(offsetof(SharedMemory, m_mapping) == 72);
    static_assert(offsetof(SharedMemory, m_view) == 80);
    static_assert(sizeof(SharedMemory) == 88);
};
AUT_LAYOUT_END

namespace
{
constexpr DWORD kReadAndWrite = FILE_MAP_READ | FILE_MAP_WRITE;

std::uint16_t nextNumber()
{
    static std::atomic<std::uint16_t> counter{0};
    return counter++; // wraps from 65535 to 0
}
} // namespace

SharedMemory::SharedMemory(const char* name) : m_name{}, m_mapping(nullptr), m_view(nullptr)
{
    aut::formatText(m_name, sizeof m_name, "%s%s", aut::sharedNamePrefix(), aut::orEmpty(name));
}

SharedMemory::SharedMemory() : m_name{}, m_mapping(nullptr), m_view(nullptr)
{
    aut::formatText(m_name, sizeof m_name, "%ssharedMemory_%d", aut::sharedNamePrefix(), nextNumber());
}

void* SharedMemory::Create(unsigned long size)
{
    aut::OpenToEveryone security{true};
    m_view = nullptr;
    m_mapping = ::CreateFileMappingA(INVALID_HANDLE_VALUE, security.get(), PAGE_READWRITE, 0, size, m_name);
    if (m_mapping != nullptr)
        m_view = ::MapViewOfFile(m_mapping, kReadAndWrite, 0, 0, 0);
    return m_view;
}

void* SharedMemory::Open()
{
    m_view = nullptr;
    aut::UniqueHandle mapping{::OpenFileMappingA(FILE_MAP_WRITE, TRUE, m_name)};
    if (mapping)
        m_view = ::MapViewOfFile(mapping.get(), kReadAndWrite, 0, 0, 0);
    if (m_view != nullptr)
        static_cast<void>(mapping.release()); // required: it stays open beside its view, and `Close` does not know it
    return m_view;
}

void SharedMemory::Close()
{
    if (m_view != nullptr)
        ::UnmapViewOfFile(m_view);
    m_view = nullptr;
    aut::UniqueHandle{m_mapping}.reset();
    m_mapping = nullptr;
}
