#include "foundation/LogText.h"

#include "platform/BoundedText.h"

#include <cstring>

namespace aut
{
namespace
{
const char* const kTypeNames[] = {"Info",         "Warning",      "Error",        "Phase1_Start",
                                  "Phase2_Start", "Phase3_Start", "Phase1_End",   "Phase2_End",
                                  "Phase3_End",   "Send_Reports", "Reports_Sent", "Main_Window_Creation"};

constexpr std::size_t kTagsSize = 160; ///< all tags of an event, the date and the longest type name take less

void appendTwoDigits(std::string& text, unsigned int number)
{
    if (number > 99)
    {
        text += std::to_string(number);
        return;
    }
    text += static_cast<char>('0' + number / 10);
    text += static_cast<char>('0' + number % 10);
}

/// The entity for a character, null when it stands for itself.
const char* entityFor(char c)
{
    switch (c)
    {
    case '"':
        return "&quot;";
    case '&':
        return "&amp;";
    case '\'':
        return "&apos;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return nullptr;
    }
}
} // namespace

const char* logTypeName(unsigned int type) noexcept
{
    return type < sizeof kTypeNames / sizeof *kTypeNames ? kTypeNames[type] : "";
}

void escapeXml(char* out, std::size_t size, const char* text) noexcept
{
    std::size_t used = 0;
    for (text = orEmpty(text); *text != '\0'; ++text)
    {
        const char* const entity = entityFor(*text);
        const std::size_t length = entity != nullptr ? std::strlen(entity) : 1;
        if (used + length >= size)
            break;
        std::memcpy(out + used, entity != nullptr ? entity : text, length);
        used += length;
    }
    out[used] = '\0';
}

std::string logEventLine(const SYSTEMTIME& local, unsigned int type, const char* escaped)
{
    // Appended, not formatted: most of an event's own time went into formatting.
    const std::size_t length = std::strlen(escaped);
    std::string line;
    line.reserve(length + kTagsSize);
    line += "<LogEvent><Date>";
    appendTwoDigits(line, local.wYear % 100);
    line += '/';
    appendTwoDigits(line, local.wMonth);
    line += '/';
    appendTwoDigits(line, local.wDay);
    line += ' ';
    appendTwoDigits(line, local.wHour);
    line += ':';
    appendTwoDigits(line, local.wMinute);
    line += '.'; // which is what the log's readers expect
    appendTwoDigits(line, local.wSecond);
    line += "</Date><Type>";
    line += logTypeName(type);
    line += "</Type><Event>";
    line.append(escaped, length);
    line += "</Event></LogEvent>\n";
    return line;
}

std::string withStoredLineEnds(const std::string& text)
{
    std::string stored;
    stored.reserve(text.size() + 16);
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin))
    {
        stored.append(text, begin, end - begin);
        stored += "\r\n";
        begin = end + 1;
    }
    return stored.append(text, begin, std::string::npos);
}
} // namespace aut
