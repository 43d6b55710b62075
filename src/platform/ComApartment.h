#ifndef AUTOOLS_PLATFORM_COMAPARTMENT_H
#define AUTOOLS_PLATFORM_COMAPARTMENT_H

#include <windows.h>

#include <objbase.h>

namespace aut
{
/// COM for the calling thread, however its owner initialised it or not, until the end of the block.
///
/// A thread without COM joins the multithreaded apartment, in which nobody need pump messages while it waits. One that
/// is in an apartment already stays there: when it is of another kind, COM refuses to change it and works nevertheless.
/// Declare it before whatever points to COM objects, so that they are released first.
class ComApartment
{
public:
    /// `kind` is what a thread without COM joins, for code that wants a single-threaded apartment.
    explicit ComApartment(DWORD kind = COINIT_MULTITHREADED) noexcept
        : m_entered(SUCCEEDED(::CoInitializeEx(nullptr, kind)))
    {
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment()
    {
        if (m_entered)
            ::CoUninitialize();
    }

private:
    bool m_entered;
};
} // namespace aut

#endif
