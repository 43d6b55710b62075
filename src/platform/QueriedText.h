#ifndef AUTOOLS_PLATFORM_QUERIEDTEXT_H
#define AUTOOLS_PLATFORM_QUERIEDTEXT_H

#include <windows.h>

#include <string>

namespace aut
{
/// A text of any length from one of the system's functions that fill a buffer: they return the length without the NUL,
/// or the size that they need with it, or 0 on failure. `query` is called with buffer and size; "" on failure.
template <typename Char, typename Query> std::basic_string<Char> queriedText(Query query)
{
    std::basic_string<Char> text(MAX_PATH, Char());
    for (;;)
    {
        const DWORD length = query(text.data(), static_cast<DWORD>(text.size()));
        const bool fits = length < text.size();
        text.resize(length); // another thread may have made it longer: ask until it fits
        if (fits)
            return text;
    }
}
} // namespace aut

#endif
