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
    std::string text;
};

/// Decimal (also negative, as an HRESULT is often printed) or "0x" hexadecimal.
std::optional<unsigned long> parseCode(std::string_view code);
/// Nothing for a text that is no number, and for a number that the system does not know.
std::optional<SystemError> findSystemError(std::string_view code);
} // namespace autool

#endif
