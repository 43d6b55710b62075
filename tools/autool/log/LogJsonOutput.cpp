#include "common/Json.h"
#include "log/LogOutput.h"

namespace autool
{
namespace
{
Json jsonTime(std::optional<LogTime> time)
{
    if (!time)
        return nullptr;
    std::string text = shownTime(*time);
    text[10] = 'T';
    return text;
}

Json jsonEvent(const LogEvent& event, const LogPart& part)
{
    Json json;
    json["time"] = jsonTime(event.time);
    json["type"] = event.type;
    json["text"] = event.text;
    json["file"] = part.name;
    json["damaged"] = event.isDamaged;
    json["shortened"] = event.isShortened;
    return json;
}

class JsonLinesOutput : public LogOutput
{
public:
    explicit JsonLinesOutput(Console& console) : m_console(console) {}
    void begin(const std::string&, const std::vector<LogPart>&) override {}
    void event(const LogEvent& event, const LogPart& part) override
    {
        m_console.line(jsonLine(jsonEvent(event, part)));
    }
    void end(const LogStudy&) override {}

private:
    Console& m_console;
};

/// One document, written as it comes: a log may be larger than the memory.
class JsonOutput : public LogOutput
{
public:
    explicit JsonOutput(Console& console) : m_console(console) {}

    void begin(const std::string& folder, const std::vector<LogPart>& parts) override
    {
        Json files = Json::array();
        for (const LogPart& part : parts)
        {
            Json file;
            file["name"] = part.name;
            file["bytes"] = part.size;
            files.push_back(file);
        }
        m_console.line("{\n\"folder\": " + jsonLine(Json(folder)) + ",\n\"files\": " + jsonLine(files) + ",");
        m_console.print("\"events\": [");
    }
    void event(const LogEvent& event, const LogPart& part) override
    {
        m_console.print((m_isFirst ? "\n" : ",\n") + jsonLine(jsonEvent(event, part)));
        m_isFirst = false;
    }
    void end(const LogStudy& study) override
    {
        Json summary;
        summary["events"] = study.events();
        summary["first"] = jsonTime(study.first());
        summary["last"] = jsonTime(study.last());
        summary["counts"] = Json::object();
        for (const auto& [type, count] : study.counts())
            summary["counts"][type] = count;
        summary["phases"] = Json::array();
        for (const PhaseRun& run : study.phases())
        {
            Json phase;
            phase["phase"] = run.phase;
            phase["start"] = jsonTime(run.start);
            phase["end"] = jsonTime(run.end);
            summary["phases"].push_back(phase);
        }
        Json findings = Json::array();
        for (const Finding& finding : study.findings())
        {
            Json json;
            json["kind"] = finding.kind;
            json["text"] = finding.text;
            json["time"] = jsonTime(finding.time);
            json["file"] = finding.file;
            findings.push_back(json);
        }
        m_console.line("\n],\n\"summary\": " + jsonLine(summary) + ",\n\"findings\": " + jsonLine(findings) + "\n}");
    }

private:
    Console& m_console;
    bool m_isFirst = true;
};
} // namespace

std::unique_ptr<LogOutput> makeJsonOutput(Console& console) { return std::make_unique<JsonOutput>(console); }
std::unique_ptr<LogOutput> makeJsonLinesOutput(Console& console) { return std::make_unique<JsonLinesOutput>(console); }
} // namespace autool
