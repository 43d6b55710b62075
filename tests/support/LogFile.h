#ifndef AUTOOLS_TESTS_SUPPORT_LOGFILE_H
#define AUTOOLS_TESTS_SUPPORT_LOGFILE_H

#include <ostream>
#include <string>
#include <vector>

namespace auttest
{
/// One event of the event log: type name and message, the message without its XML escapes.
struct LogEvent
{
    std::string type;
    std::string text;

    bool operator==(const LogEvent& other) const { return type == other.type && text == other.text; }
};
void PrintTo(const LogEvent& event, std::ostream* out);

/// What the event log received since the mark, which is set on construction:
///
///     auttest::LogFile log;
///     EXPECT_FALSE(file.Delete());
///     EXPECT_THAT... or EXPECT_EQ((std::vector<auttest::LogEvent>{{"Error", "..."}}), log.events());
///
/// The mark is a place in the file, and only what lies behind it is read: what earlier tests logged costs nothing. So a
/// log that is rotated or deleted in between must be read with a new LogFile.
class LogFile
{
public:
    /// The log of this process: the current user's own.
    LogFile();
    /// The log of a service process, or of a test with a file of its own.
    explicit LogFile(std::string path);

    const std::string& path() const { return m_path; }
    /// The file's bytes; "" when there is none.
    std::string content() const;
    /// The events since the mark, oldest first. Fails the running test when the file is not whole (closing tag last).
    std::vector<LogEvent> events() const;
    /// Whether one of them is exactly this.
    bool has(const std::string& type, const std::string& text) const;
    /// Forgets what has been written until now.
    void mark();

    /// The path of this process's log.
    static std::string ownPath();

private:
    /// The file's bytes without its closing tag. Fails the running test when that is missing.
    std::string contentBeforeEnd() const;

    std::string m_path;
    std::size_t m_seen = 0; ///< bytes
};
} // namespace auttest

#endif
