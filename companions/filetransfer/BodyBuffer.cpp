#include "filetransfer/BodyBuffer.h"

#include <windows.h>

#include <algorithm>

namespace filetransfer
{
namespace
{
constexpr std::size_t kFirstCommitBytes = std::size_t{64} * 1024;
} // namespace

BodyBuffer::~BodyBuffer()
{
    if (m_base != nullptr)
        ::VirtualFree(m_base, 0, MEM_RELEASE);
}

bool BodyBuffer::reserve(std::size_t limitBytes) noexcept
{
    if (m_base != nullptr)
        return true;
    m_base = static_cast<char*>(::VirtualAlloc(nullptr, limitBytes + 1, MEM_RESERVE, PAGE_READWRITE));
    m_reserved = m_base != nullptr ? limitBytes + 1 : 0;
    return m_base != nullptr;
}

char* BodyBuffer::room(std::size_t bytes) noexcept
{
    if (m_base == nullptr || bytes >= m_reserved - m_length)
        return nullptr;
    const std::size_t needed = m_length + bytes + 1; // the zero behind the last byte
    if (needed > m_committed)
    {
        const std::size_t wanted = std::min(m_reserved, std::max({needed, 2 * m_committed, kFirstCommitBytes}));
        if (::VirtualAlloc(m_base + m_committed, wanted - m_committed, MEM_COMMIT, PAGE_READWRITE) == nullptr)
            return nullptr;
        m_committed = wanted;
    }
    return m_base + m_length;
}

void BodyBuffer::grow(std::size_t bytes) noexcept
{
    m_length += bytes;
    m_base[m_length] = '\0';
}
} // namespace filetransfer
