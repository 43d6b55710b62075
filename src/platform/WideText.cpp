#include "platform/WideText.h"

#include <windows.h>

std::wstring aut::widened(std::string_view text)
{
    const int size = static_cast<int>(text.size());
    const int length = size == 0 ? 0 : ::MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), length);
    return wide;
}

std::optional<std::string> aut::narrowed(std::wstring_view text)
{
    const int size = static_cast<int>(text.size());
    const int length =
        size == 0 ? 0 : ::WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
    // And back: which characters were replaced cannot be asked for in every code page.
    if (widened(narrow) != text)
        return std::nullopt;
    return narrow;
}
