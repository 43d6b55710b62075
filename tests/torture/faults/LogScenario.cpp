#include "tests/torture/faults/Scenario.h"

#include "tests/foundation/ChildProgram.h"
#include "tests/torture/faults/Injector.h"

#include <windows.h>

// A service process that logs: the second event takes the file past its limit, and four archives move up.

namespace faults
{
namespace
{
std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

/// A log file of this size that holds one event.
std::string logFile(const std::string& event, std::size_t size)
{
    std::string text = "<LogAutoUpdate>\r\n<LogEvent><Event>" + event + "</Event></LogEvent>\r\n<!--";
    const std::string end = "-->\r\n</LogAutoUpdate>\r\n";
    text.append(size - text.size() - end.size(), 'x');
    return text + end;
}

bool isWhole(const std::string& log)
{
    const std::string end = "</LogAutoUpdate>\r\n";
    return log.compare(0, 17, "<LogAutoUpdate>\r\n") == 0 && countOf(log, "<LogAutoUpdate>") == 1 &&
           countOf(log, end) == 1 && log.size() > end.size() &&
           log.compare(log.size() - end.size(), end.size(), end) == 0 &&
           countOf(log, "<LogEvent>") == countOf(log, "</LogEvent>\r\n") && countOf(log, "<Environment>") <= 1;
}

class LogRotation : public Scenario
{
public:
    void prepare() override
    {
        Scenario::prepare();
        m_progress = 0;
        m_registry.write("", "LastAndMaxIndex", 0x00040004);
        m_folder->writeFile("data\\7xAutoupdateLog.xml", logFile("current", 511850));
        for (int i = 1; i <= 4; ++i)
            m_folder->writeFile(archive(i), logFile("archive " + std::to_string(i), 300));
        ::CopyFileA((programFolder() + "\\victim_program.exe").c_str(), program().c_str(), FALSE);
    }
    Job job() const override { return {"log", m_folder->path(), "victim"}; }
    std::string program() const override { return path("AutoUpdate.exe"); }
    void died(int progress) override { m_progress = progress; }
    void failed() override
    {
        Scenario::failed();
        m_progress = 4;
    }
    void intact(Problems& problems) override
    {
        // Before the next event the file may be there without a byte: opening creates it.
        const std::string log = read("data\\7xAutoupdateLog.xml");
        problems.expect(log.empty() || isWhole(log), "the log is not well formed");
        expectEvents(problems, m_progress);
    }
    bool isDone() override { return true; }
    void retry(Problems& problems) override
    {
        const DWORD status = auttest::runProgram(program(), "log \"" + m_folder->path() + "\" next never 0");
        problems.expect(status == 1, "the next process ends with " + std::to_string(status));
    }
    void complete(Problems& problems) override
    {
        Scenario::complete(problems);
        problems.expect(isWhole(read("data\\7xAutoupdateLog.xml")), "the log is not well formed after the next start");
        for (int i = 1; i <= 4; ++i)
        {
            const std::string one = read(archive(i));
            problems.expect(one.empty() || isWhole(one), archive(i) + " is not well formed");
        }
        expectEvents(problems, m_progress);
        for (int i = 0; i < 4; ++i)
            problems.expect(countOf(all(), ">next " + std::to_string(i) + "<") == 1, "an event of the next process");
    }

private:
    static std::string archive(int i) { return "data\\7xAutoupdateLog_0" + std::to_string(i) + ".xml"; }
    std::string all() const
    {
        std::string text = read("data\\7xAutoupdateLog.xml");
        for (int i = 1; i <= 4; ++i)
            text += read(archive(i));
        return text;
    }
    /// The rotation takes the oldest archive; one that is cut short leaves a gap, and the next begins with the oldest
    /// again, which costs one archive more. Everything else is there once.
    void expectEvents(Problems& problems, int logged) const
    {
        const std::string text = all();
        for (const char* const event : {"current", "archive 1", "archive 2"})
            problems.expect(countOf(text, std::string(">") + event + "<") == 1, std::string("not once: ") + event);
        for (const char* const event : {"archive 3", "archive 4"})
            problems.expect(countOf(text, std::string(">") + event + "<") <= 1, std::string("twice: ") + event);
        int lost = 0;
        for (int i = 0; i < 4; ++i)
        {
            const std::size_t found = countOf(text, ">victim " + std::to_string(i) + "<");
            const bool isLost = m_failed && found == 0; // the event in flight
            lost += isLost ? 1 : 0;
            problems.expect(isLost || (i < logged ? found == 1 : found <= (i == logged ? 1U : 0U)),
                            "event " + std::to_string(i) + " is there " + std::to_string(found) + " times");
        }
        problems.expect(lost <= 1, std::to_string(lost) + " events are lost to one failure");
    }

    int m_progress = 0;
};
} // namespace

std::unique_ptr<Scenario> makeLog() { return std::make_unique<LogRotation>(); }
} // namespace faults
