#include "system/CInterruptionEvent.h"

#include "foundation/EventLog.h"
#include "platform/KernelObjectSecurity.h"
#include "platform/Layout.h"
#include "platform/UniqueResource.h"

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CInterruptionEvent>
{
    static_assert(sizeof(std::atomic<int>) == sizeof(int) && sizeof(std::atomic<HANDLE>) == sizeof(HANDLE));
    static_assert(offsetof(CInterruptionEvent, m_raised) == 8);
    static_assert(offsetof(CInterruptionEvent, m_name) == 16);
    static_assert(offsetof(CInterruptionEvent, m_stopRequest) == 32);
    static_assert(offsetof(CInterruptionEvent, m_event) == 40);
    static_assert(offsetof(CInterruptionEvent, m_threadId) == 48);
    static_assert(offsetof(CInterruptionEvent, m_thread) == 56);
    static_assert(offsetof(CInterruptionEvent, m_attributes) == 64);
    static_assert(offsetof(CInterruptionEvent, m_descriptor) == 88);
    static_assert(offsetof(CInterruptionEvent, m_descriptorPending) == 128);
    static_assert(sizeof(CInterruptionEvent) == 136);
};
AUT_LAYOUT_END

namespace
{
constexpr DWORD kPollMs = 100;
/// Pause after a wait that came back at once, so that an event left signalled does not keep a processor busy.
constexpr DWORD kSignalledPauseMs = 10;
} // namespace

// Every catalogue record holds one of these, most of them unused: nothing is created or allocated here.
CInterruptionEvent::CInterruptionEvent()
    : m_raised(0), m_stopRequest(0), m_event(nullptr), m_threadId(0), m_thread(nullptr), m_attributes{}, m_descriptor{},
      m_descriptorPending(1)
{
}

CInterruptionEvent::~CInterruptionEvent()
{
    StopPooling();
    CloseEvent();
}

int CInterruptionEvent::Create(String& name)
{
    SetName(name);
    if (m_name.IsEmpty())
        return 0;

    m_event = ::OpenEventA(EVENT_ALL_ACCESS, FALSE, m_name);
    if (m_event != nullptr)
        return 1;

    if (m_descriptorPending != 0 && aut::makeOpenToEveryone(m_descriptor, m_attributes, true))
        m_descriptorPending = 0;
    m_event = ::CreateEventA(&m_attributes, TRUE, FALSE, m_name);
    return m_event != nullptr ? 1 : 0;
}

void CInterruptionEvent::SetName(String& name)
{
    if (!m_name.IsEmpty())
    {
        StopPooling();
        m_raised = 0;
        m_stopRequest = 0;
        CloseEvent();
    }
    m_name = name;
}

int CInterruptionEvent::StartPooling()
{
    if (m_thread != nullptr || m_raised != 0)
        return 1;
    m_thread = ::CreateThread(nullptr, 0, &CInterruptionEvent::PollingThread, this, 0, &m_threadId);
    return m_thread != nullptr ? 1 : 0;
}

int CInterruptionEvent::StopPooling()
{
    if (m_thread == nullptr)
        return 1;

    m_stopRequest = 1;
    DWORD exitCode = 0;
    while (::GetExitCodeThread(m_thread, &exitCode) && exitCode == STILL_ACTIVE)
    {
        if (::WaitForSingleObject(m_thread, kPollMs) == WAIT_OBJECT_0)
            break;
    }
    // A thread that found no event ended without seeing the request, which would end the next thread too early.
    m_stopRequest = 0;

    aut::UniqueHandle{m_thread}.reset();
    m_thread = nullptr;
    m_threadId = 0;
    return 1;
}

int CInterruptionEvent::RaiseIT()
{
    const HANDLE event = m_event;
    if (event == nullptr)
        return 0;
    ::SetEvent(event);
    return 1;
}

int CInterruptionEvent::IsITRaised()
{
    const int raised = m_raised;
    if (raised != 0)
        ::ResetEvent(m_event);
    return raised;
}

void CInterruptionEvent::ResetFlag()
{
    // In this order: the other way round, the watching thread would see the old signal and raise the flag again.
    ::ResetEvent(m_event);
    m_raised = 0;
}

void CInterruptionEvent::SetFlag() { m_raised = 1; }

void CInterruptionEvent::SetStopDone() { m_stopRequest = 0; }

HANDLE CInterruptionEvent::GetEventHandle() { return m_event; }

unsigned long __stdcall CInterruptionEvent::PollingThread(void* self)
{
    auto* const event = static_cast<CInterruptionEvent*>(self);
    if (event == nullptr || event->m_event == nullptr)
        Log(2, "Cancel Update unavailable");
    else
        event->Poll();
    return 0;
}

void CInterruptionEvent::Poll()
{
    // The owner replaces the event only after this thread has ended.
    const HANDLE event = m_event;
    bool stopping = false;
    do
    {
        // Looked at before the event, which is looked at once more after the request: so a signal from before it is
        // never missed.
        stopping = m_stopRequest != 0;
        switch (::WaitForSingleObject(event, stopping ? 0 : kPollMs))
        {
        case WAIT_OBJECT_0:
            m_raised = 1;
            if (!stopping)
                ::Sleep(kSignalledPauseMs);
            break;
        case WAIT_FAILED:
            // Deliberately the wait's own failure value, not the system's error code.
            Log(2, "Wait for Cancel failed: 0x%x error code for (0x%x thread)", static_cast<unsigned>(WAIT_FAILED),
                static_cast<unsigned>(::GetCurrentThreadId()));
            if (!stopping)
                ::Sleep(kPollMs); // a failed wait comes back at once, again and again: do not fill the log with it
            break;
        default:
            break;
        }
    } while (!stopping);
    m_stopRequest = 0;
}

void CInterruptionEvent::CloseEvent() { aut::UniqueHandle{m_event.exchange(nullptr)}.reset(); }
