#ifndef AUTOOL_MACHINE_TEXT_H
#define AUTOOL_MACHINE_TEXT_H

#include <string>
#include <string_view>

namespace autool
{
/// Text in the system's code page, as the library makes it of what it reads in XML: what has no place in it becomes
/// "?", never a character that merely looks alike.
std::string systemFromWide(std::wstring_view text);

/// Whether two texts of the system's code page are the same as the client compares them: without regard to case.
bool isSameText(const std::string& left, const std::string& right);
/// In lower case, to find names that Windows does not tell apart.
std::wstring lowered(std::wstring text);
std::string loweredSystem(std::string text);
} // namespace autool

#endif
