#include "fileops/RT_File.h"

#include "fileops/StartupRenames.h"
#include "fileops/WholeCopy.h"
#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/BoundedText.h"
#include "system/OsFamily.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>

bool bRebootNeeded = false;

namespace
{
std::atomic<bool> g_seedNeeded{true};

/// Once per process, although the generator's state belongs to the calling thread: another thread draws the same
/// numbers in every process, so whoever draws one asks whether it is still free.
void seedOnce()
{
    if (g_seedNeeded.exchange(false))
        std::srand(static_cast<unsigned>(std::time(nullptr)));
}

/// What the NT family offers: the system carries the move (without a target: the deletion) out at its next start.
bool moveDelayed(const char* source, const char* target)
{
    Log(0x40000, "MoveFileEx %s->%s", source, target != nullptr ? target : "NULL");
    return ::MoveFileExA(source, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_DELAY_UNTIL_REBOOT) != FALSE;
}

bool announceReboot(const char* target)
{
    bRebootNeeded = true;
    Log(1, "Reboot Needed: %s", target);
    return true;
}
} // namespace

bool RT_File::OverWriteFileAtNextReboot(const char* target, OVERWRITE mode)
{
    seedOnce();
    target = aut::orEmpty(target);
    const bool ntFamily = aut::isNtFamily(aut::osValue());

    bool registered = true; // any other mode has nothing to register
    if (mode == OVERWRITE_REPLACE)
        registered = ntFamily ? moveDelayed(m_fullPath, target) : aut::replaceAtStartup(target, m_fullPath, m_fileName);
    else if (mode == OVERWRITE_DELETE)
        registered = ntFamily ? moveDelayed(m_fullPath, nullptr) : aut::deleteAtStartup(m_fullPath);

    if (!registered)
    {
        const long error = static_cast<long>(::GetLastError());
        result->Set(465, "Unable to move file", "RT_File::OverWriteFileAtNextReboot", target, "", error, m_fullPath);
        return false;
    }
    return announceReboot(target);
}

bool RT_File::CopyFileAtNextReboot(const char* target)
{
    seedOnce();
    target = aut::orEmpty(target);
    const auto failed = [](int code, const char* action, const char* path, const char* object)
    {
        const long error = static_cast<long>(::GetLastError());
        result->Set(code, action, "RT_File::CopyFileAtNextReboot", path, "", error, object);
        return false;
    };

    String temporary(target);
    if (!GetTemporaryFilePath(temporary))
        return failed(462, "Error during temporary file copy", temporary, m_fullPath);
    // An earlier replacement may wait for a file of this name: half of the new one would be put in place.
    if (!aut::copyAside(m_fullPath, temporary, aut::FileStamp(temporary)))
        return failed(462, "Error during file copy", temporary, m_fullPath);

    const bool registered = aut::isNtFamily(aut::osValue()) ? moveDelayed(temporary, target)
                                                            : aut::replaceAtStartup(target, temporary, m_fileName);
    if (!registered)
    {
        failed(465, "Error during file move", target, temporary);
        ::DeleteFileA(temporary);
        return false;
    }
    return announceReboot(target);
}

bool RT_File::GetTemporaryFilePath(String& path)
{
    if (path.IsEmpty())
        return false;
    const String prefix = path.Left(2); // the drive: a move at the next start of Windows cannot cross volumes
    const int point = m_fileName.ReverseFind('.');
    const String base = point >= 0 ? m_fileName.Left(point) : m_fileName;
    if (prefix.GetLength() != std::min(path.GetLength(), 2) ||
        base.GetLength() != (point >= 0 ? point : m_fileName.GetLength()))
        return false; // without memory: it would be another volume's root, or another file's copy
    for (unsigned int n = 0; n < 10; ++n)
    {
        String candidate;
        candidate.Format("%s\\%s_%u.tmp", static_cast<const char*>(prefix), static_cast<const char*>(base), n);
        // Deliberately asks for this file in a folder of that name, so that practically the first candidate is taken.
        if (!candidate.IsEmpty() && !IsFileExisting(candidate))
        {
            path = candidate;
            return path.GetLength() == candidate.GetLength();
        }
    }
    return false;
}
