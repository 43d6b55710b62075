#include "system/CAUEvent.h"

#include "platform/BoundedText.h"
#include "platform/KernelObjectSecurity.h"
#include "platform/Layout.h"
#include "platform/UniqueResource.h"
#include "system/OsFamily.h"

#include <cstdlib>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CAUEvent>
{
    static_assert(offsetof(CAUEvent, m_shortName) == 8);
    static_assert(offsetof(CAUEvent, m_prefix) == 137);
    static_assert(offsetof(CAUEvent, m_fullName) == 158);
    static_assert(offsetof(CAUEvent, m_event) == 312);
    static_assert(offsetof(CAUEvent, m_attributes) == 320);
    static_assert(offsetof(CAUEvent, m_descriptor) == 344);
    static_assert(sizeof(CAUEvent) == 384);
};
AUT_LAYOUT_END

CAUEvent::CAUEvent() : m_shortName{}, m_prefix{}, m_fullName{}, m_event(nullptr), m_attributes{}, m_descriptor{}
{
    if (aut::hasSessionNames(aut::osValue()))
        aut::copyText(m_prefix, "Global\\");
}

CAUEvent::CAUEvent(const CAUEvent& other) = default;
CAUEvent& CAUEvent::operator=(const CAUEvent& other) = default;

CAUEvent::~CAUEvent() { aut::UniqueHandle{m_event}.reset(); }

int CAUEvent::Create(const char* name)
{
    SetName(name);
    if (m_fullName[0] == '\0')
        return 0;

    m_event = ::OpenEventA(EVENT_ALL_ACCESS, FALSE, m_fullName);
    if (m_event != nullptr)
        return 1;

    CreateSecurityDescriptor();
    m_event = ::CreateEventA(&m_attributes, FALSE, FALSE, m_fullName);
    return m_event != nullptr ? 1 : 0;
}

int CAUEvent::SignalEvent() { return m_event != nullptr && ::SetEvent(m_event) ? 1 : 0; }

HANDLE CAUEvent::GetHandle() const { return m_event; }

char* CAUEvent::GetName(int full)
{
    char* const name = full != 0 ? m_fullName : m_shortName;
    return name[0] != '\0' ? name : nullptr;
}

void CAUEvent::SetName(const char* name)
{
    char wanted[sizeof m_shortName]; // `name` may be our own text, which the next lines clear
    aut::copyText(wanted, name);

    if (m_event != nullptr)
    {
        aut::UniqueHandle{m_event}.reset();
        m_event = nullptr;
        m_shortName[0] = '\0';
        m_fullName[0] = '\0';
    }

    if (wanted[0] != '\0')
        aut::copyText(m_shortName, wanted);
    else
        aut::formatText(m_shortName, sizeof m_shortName, "AUSynchroEvent_%d", std::rand());
    aut::formatText(m_fullName, sizeof m_fullName, "%s%s", m_prefix, m_shortName);
}

void CAUEvent::CreateSecurityDescriptor() { aut::makeOpenToEveryone(m_descriptor, m_attributes, true); }
