#ifndef AUTOOLS_SYSTEM_CAUEVENT_H
#define AUTOOLS_SYSTEM_CAUEVENT_H

#include "foundation/Export.h"

#include <windows.h>

/// A named, automatically resetting event that every account and, from Windows 2000 on, every session can open.
///
/// Copies deliberately share the handle. Not thread-safe.
class AUTOOLS_API CAUEvent
{
public:
    CAUEvent();
    CAUEvent(const CAUEvent& other);
    CAUEvent& operator=(const CAUEvent& other);
    virtual ~CAUEvent();

    /// Opens the event of that name, or creates it not signalled; an empty name is replaced by a generated one. Names
    /// are cut to 128 characters. 1 on success.
    int Create(const char* name);
    /// Sets the event; 0 when there is no handle.
    int SignalEvent();
    /// Stays owned by the object.
    HANDLE GetHandle() const;
    /// The name with its prefix when `full` is non-zero, without it otherwise; null while there is none.
    char* GetName(int full);

protected:
    template <typename T> friend struct aut::LayoutOf;

    void SetName(const char* name);
    void CreateSecurityDescriptor();

    char m_shortName[128 + 1];
    char m_prefix[20 + 1];
    char m_fullName[148 + 1];
    HANDLE m_event;
    SECURITY_ATTRIBUTES m_attributes;
    SECURITY_DESCRIPTOR m_descriptor;
};

#endif
