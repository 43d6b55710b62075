#include "webconf/ConfigElements.h"

#include "platform/Layout.h"

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CTimerElement>
{
    static_assert(offsetof(CTimerElement, m_id) == 8);
    static_assert(offsetof(CTimerElement, m_value) == 12);
    static_assert(sizeof(CTimerElement) == 16);
};
template <> struct aut::LayoutOf<CHotKeyElement>
{
    static_assert(offsetof(CHotKeyElement, m_id) == 8);
    static_assert(offsetof(CHotKeyElement, m_key) == 12);
    static_assert(offsetof(CHotKeyElement, m_modifiers) == 14);
    static_assert(sizeof(CHotKeyElement) == 16);
};
template <> struct aut::LayoutOf<CErrorTableMember>
{
    static_assert(offsetof(CErrorTableMember, m_delay) == 8);
    static_assert(offsetof(CErrorTableMember, MaxRetries) == 24);
    static_assert(offsetof(CErrorTableMember, m_index) == 28);
    static_assert(sizeof(CErrorTableMember) == 32);
};
AUT_LAYOUT_END

CTimerElement::CTimerElement() : m_id(0), m_value(0) {}
CTimerElement::CTimerElement(const CTimerElement& other) = default;
CTimerElement& CTimerElement::operator=(const CTimerElement& other) = default;
CTimerElement::~CTimerElement() = default;

int CTimerElement::GetTimerID() { return m_id; }

void CTimerElement::SetTimerID(int id) { m_id = id; }

int CTimerElement::GetTimerValue() { return m_value; }

void CTimerElement::SetTimerValue(int seconds) { m_value = seconds; }

CHotKeyElement::CHotKeyElement() : m_id(0), m_key('\0'), m_modifiers(0) {}
CHotKeyElement::CHotKeyElement(const CHotKeyElement& other) = default;
CHotKeyElement& CHotKeyElement::operator=(const CHotKeyElement& other) = default;
CHotKeyElement::~CHotKeyElement() = default;

CErrorTableMember::CErrorTableMember() : MaxRetries(0), m_index(0) {}
CErrorTableMember::CErrorTableMember(const CErrorTableMember& other) = default;
CErrorTableMember& CErrorTableMember::operator=(const CErrorTableMember& other) = default;
CErrorTableMember::~CErrorTableMember() = default;
