#include "foundation/CVersion.h"

#include "foundation/NumberScan.h"
#include "platform/Layout.h"

#include <algorithm>
#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CVersion>
{
    static_assert(offsetof(CVersion, m_count) == 8);
    static_assert(offsetof(CVersion, m_parts) == 16);
    static_assert(offsetof(CVersion, m_full) == 24);
    static_assert(offsetof(CVersion, m_short) == 28);
    static_assert(sizeof(CVersion) == 32);
};
AUT_LAYOUT_END

using aut::scanCharacter;
using aut::scanLiteral;
using aut::scanNumber;

CVersion::CVersion() : m_count(kPartCount), m_full(0), m_short(0) {}

CVersion::~CVersion() = default;

bool CVersion::parse(const char* text)
{
    if (!m_parts)
        m_parts.reset(new (std::nothrow) int[kPartCount]);
    clear();
    if (text == nullptr || !m_parts)
        return false;
    m_full = scanFull(text) == 7;
    if (m_full)
        return true;
    const int items = scanShort(text);
    m_short = items == 4;
    if (items == 4 || items == 5)
        return true;
    clear();
    return false;
}

/// scanf's "%d.%d%c%d", with which both forms begin: how many items were read; `text` is moved behind them.
int CVersion::scanBase(const char*& text)
{
    int* const part = m_parts.get();
    if (!scanNumber(text, part[0]))
        return 0;
    if (!scanLiteral(text, '.') || !scanNumber(text, part[1]))
        return 1;
    if (!scanCharacter(text, part[2]))
        return 2;
    return scanNumber(text, part[3]) ? 4 : 3;
}

/// scanf's "%d.%d%c%d%c%d.%d": how many items were read.
int CVersion::scanFull(const char* text)
{
    int* const part = m_parts.get();
    const int items = scanBase(text);
    if (items < 4 || !scanCharacter(text, part[4]))
        return items;
    if (!scanNumber(text, part[5]))
        return 5;
    return scanLiteral(text, '.') && scanNumber(text, part[6]) ? 7 : 6;
}

/// scanf's "%d.%d%c%d.%d_": how many items were read.
int CVersion::scanShort(const char* text)
{
    int* const part = m_parts.get();
    const int items = scanBase(text);
    return items == 4 && scanLiteral(text, '.') && scanNumber(text, part[4]) ? 5 : items;
}

void CVersion::clear()
{
    m_full = 0;
    m_short = 0;
    if (m_parts)
        std::fill_n(m_parts.get(), kPartCount, 0);
}
