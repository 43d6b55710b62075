#include "common/Json.h"

#include "common/Text.h"

namespace autool
{
Json jsonText(std::string_view systemText) { return fromSystem(systemText); }

std::string jsonLine(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

void printJson(Console& console, const Json& json)
{
    console.line(json.dump(2, ' ', false, Json::error_handler_t::replace));
}
} // namespace autool
