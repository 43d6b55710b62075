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
    char line[kLogEscapedSize + 160]; // all tags, the date and the longest type name take less than 160
    // The full stop between minutes and seconds is what the log's readers expect.
    formatText(line, sizeof line,
               "<LogEvent><Date>%02d/%02d/%02d %02d:%02d.%02d</Date><Type>%s</Type><Event>%s</Event></LogEvent>\n",
               local.wYear % 100, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond,
               logTypeName(type), escaped);
    return line;
}

std::string withStoredLineEnds(const std::string& text)
{
    std::string stored;
    stored.reserve(text.size() + 16);
    for (const char c : text)
    {
        if (c == '\n')
            stored += '\r';
        stored += c;
    }
    return stored;
}
} // namespace aut
