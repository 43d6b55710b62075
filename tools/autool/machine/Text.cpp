#include "machine/Text.h"

#include <windows.h>

#include <cctype>
#include <cstring>

namespace autool
{
std::string systemFromWide(std::wstring_view text)
{
    const int size = static_cast<int>(text.size());
    const auto convert = [&](char* out, int room)
    { return ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), size, out, room, nullptr, nullptr); };
    std::string converted(static_cast<std::size_t>(size > 0 ? convert(nullptr, 0) : 0), '\0');
    if (!converted.empty())
        convert(converted.data(), static_cast<int>(converted.size()));
    return converted;
}

bool isSameText(const std::string& left, const std::string& right)
{
    return ::_stricmp(left.c_str(), right.c_str()) == 0;
}

std::wstring lowered(std::wstring text)
{
    ::CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

std::string loweredSystem(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}
} // namespace autool
