#include "foundation/EventLogger.h"

#include "environment/ClientFolders.h"
#include "fileops/RT_Dir.h"
#include "foundation/LogEnvironment.h"
#include "foundation/LogFile.h"
#include "foundation/LogText.h"
#include "foundation/String.h"
#include "platform/BoundedText.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/CRegConfig.h"
#include "system/CProcessListManager.h"

#include <cstring>

namespace aut
{
namespace
{
constexpr std::uint64_t kMaxFileBytes = 512000;
constexpr unsigned long kCallsPerLevelRead = 10;

// How long one event waits for another process that is writing. Writers hold the file for a millisecond or so. A
// program that keeps it open for writing must not make each event wait this long: after one was lost in vain, the next
// ones hardly wait until one gets through.
constexpr unsigned int kPatienceMs = 2000;
constexpr unsigned int kPatienceAfterLossMs = 20;

/// The service's own programs log into the machine-wide folder; all others into their user's.
bool isServiceProcess()
{
    CProcessListManager processes;
    String name;
    processes.GetProcessNameFromPID(::GetCurrentProcessId(), name);
    return name == "AutoUpdate.exe" || name == "ReloadAutoUpdate.exe";
}

class Locked
{
public:
    explicit Locked(CRITICAL_SECTION& lock) : m_lock(lock) { ::EnterCriticalSection(&m_lock); }
    ~Locked() { ::LeaveCriticalSection(&m_lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    CRITICAL_SECTION& m_lock;
};

/// Sets a flag for the time of a block.
class Raised
{
public:
    explicit Raised(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Raised() { m_flag = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    bool& m_flag;
};
} // namespace

EventLogger::EventLogger() : m_patienceMs(kPatienceMs)
{
    ::InitializeCriticalSection(&m_lock);
    initialise();
}

EventLogger::~EventLogger() { ::DeleteCriticalSection(&m_lock); }

void EventLogger::initialise()
{
    if (isServiceProcess())
    {
        unsigned long lastAndMax = 0;
        CRegAutoUpdate(false).QueryValue("LastAndMaxIndex", lastAndMax);
        m_archives = archiveCountsFromRegistry(lastAndMax);
        m_perUser = false;
    }
    String directory;
    GetAUDataPath(directory, m_perUser ? 1 : 0);
    if (directory.IsEmpty())
        return;
    RT_Dir folder(directory);
    if (folder.IsExisting() == 0)
        folder.Create();
    copyText(m_directory, directory);
    logFilePath(m_path, directory);
    readDetailLevel();
    m_initialised = true;
}

void EventLogger::readDetailLevel() noexcept
{
    m_detailLevel.store(CRegConfig(true).GetTestEnvValue(), std::memory_order_relaxed);
}

bool EventLogger::wants(unsigned long code) noexcept
{
    if (!m_initialised)
        return false;
    const unsigned long calls = m_calls.fetch_add(1, std::memory_order_relaxed) + 1;
    if (calls % kCallsPerLevelRead == 0)
        readDetailLevel();
    return HIWORD(code) <= m_detailLevel.load(std::memory_order_relaxed);
}

void EventLogger::write(unsigned long code, const char* message)
{
    char escaped[kLogEscapedSize];
    escapeXml(escaped, message);
    const Locked lock(m_lock);
    const std::string line = storedLine(code, escaped);
    // Rotating calls functions that log themselves when they fail. Their events must neither be lost nor start a
    // second rotation inside of the first: they go into the file together with the event that is being written.
    if (m_writing)
    {
        m_deferred += line;
        return;
    }
    const Raised writing(m_writing);
    insert(line);
    m_deferred.clear();
}

const std::string& EventLogger::environment()
{
    if (m_environment.empty())
        m_environment = withStoredLineEnds(logEnvironmentBlock());
    return m_environment;
}

std::string EventLogger::storedLine(unsigned long code, const char* escaped)
{
    if (std::strcmp(escaped, "System Information") == 0)
        return environment();
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return withStoredLineEnds(logEventLine(now, LOWORD(code), escaped));
}

bool EventLogger::open(LogFile& file)
{
    const bool opened = m_path[0] != '\0' && file.open(m_path, m_patienceMs);
    m_patienceMs = opened ? kPatienceMs : kPatienceAfterLossMs;
    return opened;
}

void EventLogger::insert(const std::string& line)
{
    LogFile file;
    if (!open(file))
        return;
    if (file.size() + line.size() > kMaxFileBytes)
    {
        rotateLog(file, m_directory, m_archives);
        if (!file.isOpen() && !open(file))
            return;
    }
    const std::string head = file.size() == 0 ? "<LogAutoUpdate>\r\n" + environment() : std::string();
    file.insert(head + m_deferred + line);
}
} // namespace aut
