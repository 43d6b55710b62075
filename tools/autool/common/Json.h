#ifndef AUTOOL_COMMON_JSON_H
#define AUTOOL_COMMON_JSON_H

#include "common/Console.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace autool
{
/// Keys come in the order in which they were added, so that two outputs can be compared line by line.
using Json = nlohmann::ordered_json;

/// 8-bit text of the library as a JSON string, always valid.
Json jsonText(std::string_view systemText);
/// One line without line end; what is still invalid in it is replaced, never thrown at.
std::string jsonLine(const Json& json);
/// Indented, with a line end.
void printJson(Console& console, const Json& json);
} // namespace autool

#endif
