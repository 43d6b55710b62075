#ifndef AUTOOLS_PLATFORM_ENTRYPOINT_H
#define AUTOOLS_PLATFORM_ENTRYPOINT_H

#include <windows.h>

namespace aut
{
/// The function `name` of a library loaded at run time; null when the library is null or has none of that name.
/// `Function` is a pointer type, which nothing can check against the library.
template <typename Function> Function entryPoint(HMODULE library, const char* name) noexcept
{
    if (library == nullptr)
        return nullptr;
    // By way of void*, because compilers warn about a cast between two unlike function types.
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}
} // namespace aut

#endif
