#include "system/CRange.h"

#include "foundation/CText.h"
#include "foundation/NumberScan.h"
#include "foundation/String.h"
#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CRange>
{
    static_assert(offsetof(CRange, m_upper) == 8);
    static_assert(offsetof(CRange, m_lower) == 12);
    static_assert(sizeof(CRange) == 16);
};
AUT_LAYOUT_END

namespace
{
/// What atoi reads, but defined for a number that does not fit: the nearest that does.
int decimal(const char* text)
{
    int value = 0;
    aut::scanNumber(text, value);
    return value;
}
} // namespace

CRange::CRange() : m_upper(0), m_lower(0) { std::srand(static_cast<unsigned>(std::time(nullptr))); }

CRange::CRange(const CRange& other) = default;
CRange& CRange::operator=(const CRange& other) = default;
CRange::~CRange() = default;

void CRange::SetRange(const char* text)
{
    m_lower = 0;
    m_upper = 0;
    String copy(text);
    char* const whole = copy.GetBuffer();
    if (whole == nullptr)
        return;
    char* upper = whole;
    if (char* const dash = std::strchr(whole, '-'))
    {
        *dash = '\0';
        m_lower = decimal(Trim(whole));
        upper = dash + 1;
    }
    m_upper = decimal(Trim(upper));
}

int CRange::Random()
{
    if (m_upper == m_lower)
        return m_lower;
    // 64 bits, because the distance of two arbitrary bounds need not fit into 32.
    const auto distance = static_cast<long long>(m_upper) - m_lower;
    return static_cast<int>(std::rand() % distance + m_lower);
}
