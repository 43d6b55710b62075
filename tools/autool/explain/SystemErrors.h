#ifndef AUTOOL_EXPLAIN_SYSTEMERRORS_H
#define AUTOOL_EXPLAIN_SYSTEMERRORS_H

#include <optional>
#include <string>
#include <string_view>

namespace autool
{
/// One of the system's own error codes, with the system's own text.
struct SystemError
{
    unsigned long number = 0;
    std::string code; ///< "5", or "0x80040154" for what is an HRESULT
    std::string name; ///< "ERROR_ACCESS_DENIED"; "" for one that is not in our list
    std::string text; ///< in the system's language; "" when the system has none
};

/// Decimal (also negative, as an HRESULT is often printed), "0x" hexadecimal, or eight hexadecimal digits as status 470
/// shows them.
std::optional<unsigned long> parseCode(std::string_view code);
/// The number of an error's name, in any case.
std::optional<unsigned long> codeOfName(std::string_view name);
/// Nothing for a number that neither the system nor our list knows.
std::optional<SystemError> findSystemError(unsigned long number);
} // namespace autool

#endif
