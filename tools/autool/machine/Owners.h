#ifndef AUTOOL_MACHINE_OWNERS_H
#define AUTOOL_MACHINE_OWNERS_H

#include <windows.h>

#include <utility>

namespace autool
{
/// Owns one Windows resource and gives it back; `Close` is called for what is neither `nullptr` nor -1, the two values
/// with which Windows says "none". Not copied.
template <typename Type, auto Close> class Owner
{
public:
    Owner() = default;
    explicit Owner(Type owned) : m_raw(owned) {}
    Owner(Owner&& other) noexcept : m_raw(std::exchange(other.m_raw, Type())) {}
    Owner& operator=(Owner&& other) noexcept
    {
        std::swap(m_raw, other.m_raw);
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner()
    {
        if (*this)
            Close(m_raw);
    }

    Type get() const { return m_raw; }
    Type* put() { return &m_raw; } ///< for an out parameter of an empty owner
    explicit operator bool() const
    {
        return m_raw != Type() && reinterpret_cast<LONG_PTR>(m_raw) != -1; // -1 is INVALID_HANDLE_VALUE
    }

private:
    Type m_raw = Type();
};

inline void closeHandle(HANDLE handle) { ::CloseHandle(handle); }
inline void closeFind(HANDLE handle) { ::FindClose(handle); }
inline void closeKey(HKEY key) { ::RegCloseKey(key); }
inline void freeLibrary(HMODULE module) { ::FreeLibrary(module); }

using Handle = Owner<HANDLE, closeHandle>;
using FindHandle = Owner<HANDLE, closeFind>;
using Key = Owner<HKEY, closeKey>;
using Module = Owner<HMODULE, freeLibrary>;
} // namespace autool

#endif
