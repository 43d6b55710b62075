#ifndef AUTOOLS_SYSTEM_CINTERRUPTIONEVENT_H
#define AUTOOLS_SYSTEM_CINTERRUPTIONEVENT_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <atomic>
#include <windows.h>

/// A named, manually resetting event that a thread of this object watches, so that an update can be interrupted.
///
/// The name is used as it is given, without a session prefix. The layout is part of the exported interface; what
/// both threads touch is held in atomics of the size of plain members, so that no lock is needed.
/// All members but the flag readers belong to one owner thread, which must not be the watching thread.
class AUTOOLS_API CInterruptionEvent
{
public:
    CInterruptionEvent();
    CInterruptionEvent(const CInterruptionEvent&) = delete;
    CInterruptionEvent& operator=(const CInterruptionEvent&) = delete;
    /// Stops the watching thread and closes the event.
    virtual ~CInterruptionEvent();

    /// Opens the event of that name, or creates it not signalled. 0 for an empty name or on failure.
    int Create(String& name);
    /// Stops watching and closes the event held under an earlier name.
    void SetName(String& name);

    /// Starts the watching thread, once; 1 when it runs or the flag is already raised.
    int StartPooling();
    /// Stops it and waits for its end; always 1.
    int StopPooling();
    /// Sets the event; 1 when there is one.
    int RaiseIT();
    /// The raised flag; when it is set the event is reset, the flag stays until `ResetFlag`.
    int IsITRaised();
    /// Resets the event and clears the flag.
    void ResetFlag();
    /// Sets the flag without touching the event.
    void SetFlag();
    /// Clears the request to stop.
    void SetStopDone();
    /// Stays owned by the object.
    HANDLE GetEventHandle();

private:
#if defined(_MSC_VER)
#pragma warning(push)
#pragma warning(disable : 4251) // the private atomics are used inside the library only
#endif
    template <typename T> friend struct aut::LayoutOf;

    static unsigned long __stdcall PollingThread(void* self);
    void Poll();
    void CloseEvent();

    std::atomic<int> m_raised;
    String m_name;
    std::atomic<int> m_stopRequest;
    std::atomic<HANDLE> m_event;
    unsigned long m_threadId;
    HANDLE m_thread;
    SECURITY_ATTRIBUTES m_attributes;
    SECURITY_DESCRIPTOR m_descriptor;
    int m_descriptorPending;
#if defined(_MSC_VER)
#pragma warning(pop)
#endif
};

#endif
