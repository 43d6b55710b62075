#ifndef AUTOOLS_SYSTEM_SHAREDMEMORY_H
#define AUTOOLS_SYSTEM_SHAREDMEMORY_H

#include "foundation/Export.h"

#include <windows.h>

/// A small named block of memory shared between processes of every account.
///
/// From Windows 2000 on the name is prefixed with "Global\" when the `ServiceInstalled` flag is set and with "Local\"
/// otherwise. The destructor releases nothing: the owner calls `Close`. An object that creates or opens a block again
/// without `Close` forgets the former view and handle, which stay until the process ends. Not thread-safe.
class AUTOOLS_API SharedMemory
{
public:
    /// The whole name, prefix included, is cut to 64 characters.
    SharedMemory(const char* name);
    /// A generated name, from a process-wide counter that wraps after 65,536 objects.
    SharedMemory();

    /// Creates (or opens) the block with `size` bytes and maps it; null on failure.
    void* Create(unsigned long size);
    /// Maps an existing block; null on failure. Its mapping handle is deliberately not kept, so one handle a call
    /// stays open until the process ends.
    void* Open();
    /// Unmaps the view and closes the handle that `Create` made.
    void Close();

private:
    template <typename T> friend struct aut::LayoutOf;

    char m_name[64 + 1];
    HANDLE m_mapping;
    void* m_view;
};

#endif
