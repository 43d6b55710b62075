#include "explain/SystemErrors.h"

#include "common/Text.h"
#include "explain/ErrorNames.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace autool
{
namespace
{
std::string messageOf(DWORD number, DWORD source, HMODULE module)
{
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | source | FORMAT_MESSAGE_IGNORE_INSERTS |
                                              FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                          module, number, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string found = fromWide({text, text != nullptr ? length : 0});
    ::LocalFree(text);
    found.erase(found.find_last_not_of(" \r\n") + 1);
    return found;
}

std::string textOfSystem(DWORD number)
{
    const bool isWinInet = number >= 12001 && number <= 12999;
    if (isWinInet)
    {
        const HMODULE library =
            ::LoadLibraryExA("wininet.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
        const std::string text = messageOf(number, FORMAT_MESSAGE_FROM_HMODULE, library);
        if (library != nullptr)
            ::FreeLibrary(library);
        if (!text.empty())
            return text;
    }
    const std::string text = messageOf(number, FORMAT_MESSAGE_FROM_SYSTEM, nullptr);
    if (text.empty() && HRESULT_FACILITY(number) == FACILITY_WIN32 && (number & 0x80000000) != 0)
        return messageOf(HRESULT_CODE(number), FORMAT_MESSAGE_FROM_SYSTEM, nullptr);
    return text;
}
} // namespace

std::optional<unsigned long> parseCode(std::string_view code)
{
    const std::string text = lowerCase(code);
    const bool isNegative = !text.empty() && text[0] == '-';
    const std::string digits = isNegative ? text.substr(1) : text;
    const bool hasPrefix = digits.rfind("0x", 0) == 0;
    const bool isBareHex = digits.size() == 8 && digits.find_first_of("abcdef") != std::string::npos;
    const bool isHex = hasPrefix || isBareHex;
    const std::string plain = hasPrefix ? digits.substr(2) : digits;
    const char* const allowed = isHex ? "0123456789abcdef" : "0123456789";
    if (plain.empty() || plain.size() > 10 || plain.find_first_not_of(allowed) != std::string::npos)
        return std::nullopt;
    const unsigned long long value = std::strtoull(plain.c_str(), nullptr, isHex ? 16 : 10);
    if (value > (isNegative ? 0x80000000ULL : 0xffffffffULL))
        return std::nullopt;
    return static_cast<unsigned long>(isNegative ? 0x100000000ULL - value : value);
}

std::optional<unsigned long> codeOfName(std::string_view name)
{
    const std::string wanted = lowerCase(name);
    for (const ErrorName& row : errorNames())
        if (lowerCase(row.name) == wanted)
            return row.number;
    return std::nullopt;
}

std::optional<SystemError> findSystemError(unsigned long number)
{
    SystemError error;
    error.number = number;
    error.text = textOfSystem(number);
    for (const ErrorName& row : errorNames())
        if (error.name.empty() && row.number == number)
            error.name = row.name;
    if (error.text.empty() && error.name.empty())
        return std::nullopt;
    char shown[16];
    std::snprintf(shown, sizeof shown, number > 0x7fffffff ? "0x%08lX" : "%lu", number);
    error.code = shown;
    return error;
}
} // namespace autool
