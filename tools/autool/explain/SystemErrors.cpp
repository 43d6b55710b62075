#include "explain/SystemErrors.h"

#include "common/Text.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace autool
{
namespace
{
std::string textOfSystem(DWORD number)
{
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                              FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                          nullptr, number, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string found = fromWide({text, text != nullptr ? length : 0});
    ::LocalFree(text);
    found.erase(found.find_last_not_of(" \r\n") + 1);
    return found;
}
} // namespace

std::optional<unsigned long> parseCode(std::string_view code)
{
    const std::string text = lowerCase(code);
    const bool isNegative = !text.empty() && text[0] == '-';
    const std::string digits = isNegative ? text.substr(1) : text;
    const bool isHex = digits.rfind("0x", 0) == 0;
    const char* const allowed = isHex ? "0123456789abcdef" : "0123456789";
    const std::string plain = isHex ? digits.substr(2) : digits;
    if (plain.empty() || plain.size() > 10 || plain.find_first_not_of(allowed) != std::string::npos)
        return std::nullopt;
    const unsigned long long value = std::strtoull(plain.c_str(), nullptr, isHex ? 16 : 10);
    if (value > (isNegative ? 0x80000000ULL : 0xffffffffULL))
        return std::nullopt;
    return static_cast<unsigned long>(isNegative ? 0x100000000ULL - value : value);
}

std::optional<SystemError> findSystemError(std::string_view code)
{
    const std::optional<unsigned long> number = parseCode(code);
    if (!number)
        return std::nullopt;
    const std::string text = textOfSystem(*number);
    if (text.empty())
        return std::nullopt;
    char shown[16];
    std::snprintf(shown, sizeof shown, *number > 0x7fffffff ? "0x%08lX" : "%lu", *number);
    return SystemError{*number, shown, text};
}
} // namespace autool
