#ifndef AUTOOLS_FOUNDATION_LOGFILE_H
#define AUTOOLS_FOUNDATION_LOGFILE_H

#include "platform/UniqueResource.h"

#include <cstdint>
#include <string>
#include <windows.h>

namespace aut
{
/// The log file while it is open for one event.
///
/// While it is open, no other process can write to it; all can read it, and it may be renamed. Processes share the
/// file through nothing but this, so that it is opened, written and closed for each event.
class LogFile
{
public:
    /// Opens the file, creating it empty when it is missing. While another writer holds it, tries again for at most
    /// `patienceMs`. False also for a file that cannot be opened or created at all, at once then.
    bool open(const char* path, unsigned int patienceMs);
    bool isOpen() const { return static_cast<bool>(m_file); }
    void close() { m_file.reset(); }

    /// In bytes, as it was when the file was opened: nobody else can change it since.
    std::uint64_t size() const { return m_size; }

    /// Puts `lines` (as stored) before the closing tag, in one write with the tag itself, so that the file is well
    /// formed whenever the process ends. Into an empty file the caller puts the head too.
    /// False when the end of the file cannot be read, which leaves it as it is, and when the disk takes only a part:
    /// the file is then put back to what it was.
    bool insert(std::string lines);

private:
    struct Tail;

    DWORD tryOpen(const char* path);
    /// False when the end of a file that is not empty cannot be read.
    bool readTail(Tail& tail) const;
    bool writeAt(std::uint64_t offset, const char* data, std::size_t length);
    void restore(const Tail& tail);

    UniqueFile m_file;
    std::uint64_t m_size = 0;
};

/// What every log file ends with, as stored.
constexpr char kLogClosingTag[] = "</LogAutoUpdate>\r\n";
} // namespace aut

#endif
