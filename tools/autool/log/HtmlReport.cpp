#include "log/HtmlParts.h"
#include "log/LogOutput.h"

#include <7xAutoUpdateTools.h>

#include "common/Text.h"

#include <windows.h>

#include <wincrypt.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace autool
{
namespace
{
// What the table holds at most; a browser has to lay all of it out.
constexpr std::size_t kMaxRows = 20000;
constexpr std::size_t kMaxRowBytes = 16 * 1024 * 1024;

/// As a content security policy names a script or style that may run.
std::string hashOf(const char* text)
{
    HCRYPTPROV provider = 0;
    HCRYPTHASH hash = 0;
    unsigned char digest[32] = {};
    DWORD size = sizeof digest;
    const bool ok =
        ::CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) != FALSE &&
        ::CryptCreateHash(provider, CALG_SHA_256, 0, 0, &hash) != FALSE &&
        ::CryptHashData(hash, reinterpret_cast<const BYTE*>(text), static_cast<DWORD>(std::strlen(text)), 0) != FALSE &&
        ::CryptGetHashParam(hash, HP_HASHVAL, digest, &size, 0) != FALSE;
    if (hash != 0)
        ::CryptDestroyHash(hash);
    if (provider != 0)
        ::CryptReleaseContext(provider, 0);
    if (!ok)
        throw std::runtime_error("the system's SHA-256 failed");
    Base64Coder coder;
    coder.Encode(digest, sizeof digest);
    return std::string("'sha256-") + coder.EncodedMessage() + "'";
}

std::string policy()
{
    return "default-src 'none'; base-uri 'none'; form-action 'none'; style-src " + hashOf(kHtmlStyle) +
           "; script-src " + hashOf(kHtmlScript);
}

/// A type as a class of the style: what is no plain name gets none.
std::string classOf(const std::string& type)
{
    const bool isKnown = type == "Error" || type == "Warning" || type == kEnvironmentType;
    return isKnown ? " class=\"" + type + "\"" : std::string();
}

std::string countsList(const LogStudy& study)
{
    std::string html = "<ul class=\"counts\">\n";
    for (const auto& [type, count] : study.counts())
        html += "<li" + classOf(type) + ">" + std::to_string(count) + " " +
                escapedHtml(type.empty() ? "(no type)" : type) + "</li>\n";
    return html + "</ul>\n";
}

std::string findingsList(const LogStudy& study)
{
    if (study.findings().empty())
        return "<p>None.</p>\n";
    std::string html = "<ul class=\"findings\">\n";
    for (const Finding& finding : study.findings())
        html += "<li><b>" + escapedHtml(finding.kind) + "</b> " + escapedHtml(finding.text) + "</li>\n";
    return html + "</ul>\n";
}

std::string filterForm(const LogStudy& study, std::size_t rows)
{
    std::string html = "<form id=\"filter\"><label>Type <select id=\"type\"><option value=\"\">all</option>";
    for (const auto& [type, count] : study.counts())
        if (!type.empty())
            html += "<option>" + escapedHtml(type) + "</option>";
    return html +
           "</select></label> <input id=\"text\" type=\"search\" placeholder=\"Text\" aria-label=\"Text\"> "
           "<output id=\"shown\">" +
           std::to_string(rows) + "</output></form>\n";
}

std::string tableRow(const HtmlEvent& row)
{
    const LogEvent& event = row.event;
    std::string text = escapedHtml(event.text);
    if (event.isDamaged)
        text += " <span class=\"cut\">[cut off here]</span>";
    if (event.isShortened)
        text += " <span class=\"cut\">[shortened]</span>";
    return "<tr" + classOf(event.type) + "><td title=\"" + escapedHtml(row.file) + "\">" +
           escapedHtml(event.time ? shownTime(*event.time) : event.dateText) + "</td><td>" + escapedHtml(event.type) +
           "</td><td>" + text + "</td></tr>\n";
}

class HtmlOutput : public LogOutput
{
public:
    HtmlOutput(Console& console, std::string file) : m_console(console), m_file(std::move(file)) {}

    void begin(const std::string& folder, const std::vector<LogPart>& parts) override
    {
        m_folder = folder;
        m_parts = parts;
        const std::optional<LogPart> target = logPart(m_file);
        for (const LogPart& part : parts)
            if (target && target->identity == part.identity)
                throw std::runtime_error(m_file + " is a file of the log itself");
    }
    void event(const LogEvent& event, const LogPart& part) override
    {
        m_events.push_back({event, part.name});
        m_bytes += event.text.size();
        while (m_events.size() > kMaxRows || (m_bytes > kMaxRowBytes && m_events.size() > 1))
        {
            m_bytes -= m_events.front().event.text.size();
            m_events.pop_front();
        }
    }
    void end(const LogStudy& study) override
    {
        write(htmlReport(m_folder, m_parts, m_events, study));
        m_console.line("Written: " + printable(m_file) + " (" + std::to_string(study.events()) + " events, " +
                       std::to_string(study.findings().size()) + " findings)");
    }

private:
    void write(const std::string& html) const
    {
        const HANDLE file = ::CreateFileW(toWide(m_file).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            throw std::runtime_error(m_file + " cannot be written, error " + std::to_string(::GetLastError()));
        DWORD written = 0;
        const bool ok = ::WriteFile(file, html.data(), static_cast<DWORD>(html.size()), &written, nullptr) != FALSE &&
                        written == html.size();
        ::CloseHandle(file);
        if (!ok)
            throw std::runtime_error(m_file + " could not be written to its end");
    }

    Console& m_console;
    std::string m_file;
    std::string m_folder;
    std::vector<LogPart> m_parts;
    std::deque<HtmlEvent> m_events;
    std::size_t m_bytes = 0;
};
} // namespace

std::string escapedHtml(std::string_view text)
{
    std::string html;
    html.reserve(text.size());
    for (const char letter : printable(text, true))
    {
        switch (letter)
        {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += letter;
            break;
        }
    }
    return html;
}

std::string htmlReport(const std::string& folder, const std::vector<LogPart>& parts,
                       const std::deque<HtmlEvent>& events, const LogStudy& study)
{
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"" +
        policy() + "\">\n<meta name=\"viewport\" content=\"width=device-width\">\n<title>Event log</title>\n<style>" +
        kHtmlStyle + "</style>\n</head>\n<body>\n<h1>Event log</h1>\n<p class=\"about\">" + escapedHtml(folder) + ", " +
        std::to_string(parts.size()) + " files";
    if (study.first() && study.last())
        html += ", " + shownTime(*study.first()) + " to " + shownTime(*study.last());
    html += ". Made at " + shownTime(localNow()) + ".</p>\n" + countsList(study);
    html += "<h2>Findings</h2>\n" + findingsList(study);
    html += "<h2>Timeline</h2>\n" + htmlTimeline(study);
    html += "<h2>Events</h2>\n";
    if (events.size() < study.events())
        html += "<p class=\"about\">The last " + std::to_string(events.size()) +
                " of those asked for; counts, findings and timeline are about all " + std::to_string(study.events()) +
                " events.</p>\n";
    html += filterForm(study, events.size());
    html +=
        "<table id=\"events\"><thead><tr><th class=\"d\">Date</th><th class=\"t\">Type</th><th>Event</th></tr></thead>"
        "<tbody>\n";
    for (const HtmlEvent& row : events)
        html += tableRow(row);
    return html + "</tbody></table>\n<script>" + kHtmlScript + "</script>\n</body>\n</html>\n";
}

std::unique_ptr<LogOutput> makeHtmlOutput(Console& console, const std::string& file)
{
    return std::make_unique<HtmlOutput>(console, file);
}
} // namespace autool
