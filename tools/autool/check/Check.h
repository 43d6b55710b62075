#ifndef AUTOOL_CHECK_CHECK_H
#define AUTOOL_CHECK_CHECK_H

#include <functional>
#include <string>
#include <vector>

namespace autool
{
enum class Verdict
{
    pass,
    warn,
    fail
};
const char* verdictName(Verdict verdict);

struct CheckAnswer
{
    std::string code; ///< stable: scripts rely on it
    Verdict verdict = Verdict::pass;
    std::string sentence; ///< in UTF-8
};

/// Collects the answers of all checks, and says what is being looked at.
class CheckList
{
public:
    explicit CheckList(std::function<void(const std::string&)> progress) : m_progress(std::move(progress)) {}
    void begin(const std::string& what) { m_progress(what); }
    void add(std::string code, Verdict verdict, std::string sentence)
    {
        m_answers.push_back({std::move(code), verdict, std::move(sentence)});
    }
    const std::vector<CheckAnswer>& answers() const { return m_answers; }

private:
    std::function<void(const std::string&)> m_progress;
    std::vector<CheckAnswer> m_answers;
};

/// Looks at everything that the client needs. Changes nothing: whether a folder is writable is tried with a file that
/// goes with its handle. The thread must be in a COM apartment.
std::vector<CheckAnswer> checkMachine(const std::function<void(const std::string&)>& progress);

// The checks by topic.
void checkClient(CheckList& list);
void checkFolders(CheckList& list);
void checkLogs(CheckList& list);
void checkLibraries(CheckList& list);
void checkServer(CheckList& list);
void checkCertificates(CheckList& list);
void checkMarks(CheckList& list);
void checkReboot(CheckList& list);

/// Whether files can be made in a folder; `why` receives the reason when not. Leaves neither a file nor another time of
/// change behind.
bool isWritable(const std::string& folder, std::string& why);
} // namespace autool

#endif
