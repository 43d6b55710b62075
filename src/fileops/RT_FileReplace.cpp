#include "fileops/RT_File.h"

#include "fileops/FileState.h"
#include "fileops/RT_Dir.h"
#include "fileops/WholeCopy.h"
#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "foundation/WholeText.h"

#include <windows.h>

namespace
{
/// Empty when memory runs out.
String targetIn(const char* directory, const String& fileName) { return aut::wholeText({directory, "\\", fileName}); }

bool copyToDisk(const char* source, const char* target, const aut::FileStamp& before)
{
    // Half a target would look newer than its source, and no later copy would replace it.
    if (!aut::copyAside(source, target, before))
        return false;
    FlushFile(target);
    return true;
}

/// Leaves the failure that GetLastError() tells.
bool failed(int code, const char* action, const char* function, const char* target, const String& object)
{
    const long error = static_cast<long>(::GetLastError());
    result->Set(code, action, function, target, "", error, object);
    return false;
}
} // namespace

bool RT_File::CopyTo(const char* directory, WHEN when)
{
    if (directory == nullptr)
        return false; // and never into the root of whatever drive is current
    const String target = targetIn(directory, m_fileName);
    if (target.IsEmpty())
    {
        Log(2, "RT_File::CopyTo : copy of %s - failed", static_cast<const char*>(m_fullPath));
        return false;
    }
    RT_Dir targetDirectory(directory);
    if (!targetDirectory.IsExisting())
        targetDirectory.Create(); // when it fails, so does the copy

    if (!IsFileExisting(m_path))
    {
        result->Set(463, "Source File does not exist", "RT_File::CopyTo", "", "", m_fullPath);
        return false;
    }

    const bool targetExists = aut::pathExists(target);
    const aut::FileStamp before = targetExists ? aut::FileStamp(target) : aut::FileStamp();
    RT_File targetFile(target);
    switch (when)
    {
    case WHEN_ALWAYS:
        if (targetExists && !targetFile.RemoveReadOnlyAttribIfAny())
        {
            Log(2, "RT_File::CopyTo : Attribute modification of %s - failed", static_cast<const char*>(target));
            return false;
        }
        if (aut::copyWhole(m_fullPath, target, before) || CopyFileAtNextReboot(target)) // deliberately without flushing
            return true;
        // The source, where the branch below names the target: a deliberate asymmetry.
        Log(2, "RT_File::CopyTo : copy of %s - failed", static_cast<const char*>(m_fullPath));
        return false;

    case WHEN_DIFFERENT:
    case WHEN_NEWER:
        if (!targetExists)
        {
            if (copyToDisk(m_fullPath, target, before))
                return true;
            // Deliberately not tried again at the next start of Windows: nothing is in use here.
            result->Set(462, "CopyTo", "RT_File::CopyFile", target, "", m_fullPath);
            return false;
        }
        if (!IsDifferent(targetFile, when))
            return true;
        if (!targetFile.RemoveReadOnlyAttribIfAny())
        {
            Log(1, "RT_File::CopyTo : Attribute modification of %s - failed", static_cast<const char*>(target));
            return false;
        }
        if (copyToDisk(m_fullPath, target, before) || CopyFileAtNextReboot(target))
            return true;
        Log(2, "RT_File::CopyTo : copy of %s - failed", static_cast<const char*>(target));
        return false;

    default:
        return true;
    }
}

bool RT_File::MoveTo(const char* directory, OVERWRITEFLAG flag)
{
    if (directory == nullptr)
        return false;
    const String target = targetIn(directory, m_fileName);
    if (target.IsEmpty())
    {
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failed(465, "Unable to move file", "RT_File::MoveTo", directory, m_fullPath);
    }
    if (!IsFileExisting(nullptr))
    {
        result->Set(463, "Source File does not exist", "RT_File::MoveTo", "", "", m_fullPath);
        return false;
    }
    if (!aut::pathExists(target))
    {
        if (!::MoveFileA(m_fullPath, target))
            return failed(465, "Unable to move file", "RT_File::MoveTo", target, m_fullPath);
        FlushFile(target);
        return true;
    }

    RT_File targetFile(target);
    if (!targetFile.RemoveReadOnlyAttribIfAny())
        return false;
    if (targetFile.IsOverWriteable())
    {
        return ::MoveFileExA(m_fullPath, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED) ||
               failed(465, "MoveFileEx", "RT_File::MoveTo", target, m_fullPath);
    }
    if (flag == OVERWRITE_AT_REBOOT)
        return OverWriteFileAtNextReboot(target, OVERWRITE_REPLACE);
    return failed(465, "MoveFileEx (2)", "RT_File::MoveTo", target, m_fullPath);
}

bool RT_File::Remove(OVERWRITEFLAG flag)
{
    // Asking only after a failure has the same outcome, and whole trees go this way.
    if (::DeleteFileA(m_fullPath) || !IsFileExisting(nullptr))
        return true;
    if (IsOverWriteable()) // which clears a read-only attribute, so it is worth another try
    {
        return ::DeleteFileA(m_fullPath) || failed(466, "Unable to remove file", "RT_File::Remove", "", m_fullPath);
    }
    if (flag == OVERWRITE_AT_REBOOT)
        return OverWriteFileAtNextReboot(m_fullPath, OVERWRITE_DELETE);
    failed(466, "Unable to remove file (2)", "RT_File::Remove", "", m_fullPath);
    return true; // deliberately, although the file stays: callers read the record
}
