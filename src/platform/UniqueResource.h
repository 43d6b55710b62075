#ifndef AUTOOLS_PLATFORM_UNIQUERESOURCE_H
#define AUTOOLS_PLATFORM_UNIQUERESOURCE_H

#include <cstdio>
#include <utility>
#include <windows.h>

namespace aut
{
/// Owns one resource of the system and releases it once. `Traits` says what "nothing" is and how to release.
template <typename Traits> class UniqueResource
{
public:
    using Type = typename Traits::Type;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Type owned) noexcept : m_raw(owned) {}
    UniqueResource(UniqueResource&& other) noexcept : m_raw(other.release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~UniqueResource() { reset(); }

    Type get() const noexcept { return m_raw; }
    explicit operator bool() const noexcept { return m_raw != Traits::none(); }
    [[nodiscard]] Type release() noexcept { return std::exchange(m_raw, Traits::none()); }
    /// For out parameters: drops what is held.
    Type* put() noexcept
    {
        reset();
        return &m_raw;
    }
    void reset(Type owned = Traits::none()) noexcept
    {
        const Type old = std::exchange(m_raw, owned);
        if (old == Traits::none())
            return;
        const DWORD saved = ::GetLastError(); // releasing must not hide the error the caller is leaving with
        Traits::close(old);
        ::SetLastError(saved);
    }

private:
    Type m_raw = Traits::none();
};

/// CreateFile and FindFirstFile fail with INVALID_HANDLE_VALUE, everything else with null.
struct FileHandleTraits
{
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) noexcept { ::CloseHandle(handle); }
};
struct FindHandleTraits
{
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) noexcept { ::FindClose(handle); }
};
/// Events, threads, processes, tokens and mappings.
struct KernelHandleTraits
{
    using Type = HANDLE;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { ::CloseHandle(handle); }
};
struct KeyTraits
{
    using Type = HKEY;
    static Type none() noexcept { return nullptr; }
    static void close(Type key) noexcept { ::RegCloseKey(key); }
};
struct ModuleTraits
{
    using Type = HMODULE;
    static Type none() noexcept { return nullptr; }
    static void close(Type module) noexcept { ::FreeLibrary(module); }
};
struct StdioTraits
{
    using Type = FILE*;
    static Type none() noexcept { return nullptr; }
    static void close(Type file) noexcept { std::fclose(file); }
};

using UniqueFile = UniqueResource<FileHandleTraits>;
using UniqueFind = UniqueResource<FindHandleTraits>;
using UniqueHandle = UniqueResource<KernelHandleTraits>;
using UniqueKey = UniqueResource<KeyTraits>;
using UniqueModule = UniqueResource<ModuleTraits>;
using UniqueStdio = UniqueResource<StdioTraits>;
} // namespace aut

#endif
