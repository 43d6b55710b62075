#include "foundation/EventLog.h"

#include "environment/ClientFolders.h"
#include "foundation/EventLogger.h"
#include "foundation/LogArchives.h"
#include "foundation/LogText.h"
#include "foundation/String.h"
#include "platform/BoundedText.h"

#include <cstdarg>

namespace
{
/// Null before the logger is constructed and after it is destroyed: logging is harmless at all times.
std::atomic<aut::EventLogger*> g_logger{nullptr};

/// Makes the logger when the library is loaded and withdraws it when it is unloaded.
class LoggerLifetime
{
public:
    LoggerLifetime() { g_logger.store(&m_logger); }
    LoggerLifetime(const LoggerLifetime&) = delete;
    LoggerLifetime& operator=(const LoggerLifetime&) = delete;
    ~LoggerLifetime() { g_logger.store(nullptr); }

private:
    aut::EventLogger m_logger;
};

LoggerLifetime g_lifetime;

/// Callers log what failed before they are done with the error code.
class KeepsLastError
{
public:
    KeepsLastError() : m_error(::GetLastError()) {}
    KeepsLastError(const KeepsLastError&) = delete;
    KeepsLastError& operator=(const KeepsLastError&) = delete;
    ~KeepsLastError() { ::SetLastError(m_error); }

private:
    DWORD m_error;
};
} // namespace

void Log(unsigned long code, const char* format, ...)
{
    const KeepsLastError lastError;
    aut::EventLogger* const logger = g_logger.load(std::memory_order_acquire);
    // Asked before the message is formatted, because most calls carry a detail level that is not wanted.
    if (logger == nullptr || !logger->wants(code))
        return;
    char message[aut::kLogMessageSize];
    std::va_list arguments{};
    va_start(arguments, format);
    aut::formatTextV(message, sizeof message, format, arguments);
    va_end(arguments);
    try
    {
        logger->write(code, message);
    }
    catch (...)
    {
        // Out of memory: the event is lost, as for every other reason that keeps it from being written.
    }
}

void ArchiveCurrentLog(void)
{
    String directory;
    GetAUDataPath(directory, 0);
    if (directory.IsEmpty())
        return;
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    char current[MAX_PATH];
    char archive[MAX_PATH];
    if (aut::logFilePath(current, directory) && aut::timedArchivePath(archive, directory, now))
        ::MoveFileA(current, archive);
}
