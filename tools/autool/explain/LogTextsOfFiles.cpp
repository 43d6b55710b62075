#include "explain/Tables.h"

namespace autool
{
ExplanationRows fileLogRows()
{
    return {
        logText(
            "Warning", "RT_File::FlushFile : open failed (%s)", "FlushFile",
            "A file that was just written could not be opened to bring it safely to the disk. Its contents are there.",
            "Nothing, unless it repeats: then a program (a virus scanner) holds new files."),
        logText(
            "Error", "RT_File::CopyTo : Attribute modification of %s - failed", "RT_File::CopyTo",
            "The target is read-only and stays so: it was not replaced. A warning when only newer files are copied.",
            "Correct the rights on the file, or close the program that holds it."),
        logText("Error", "RT_File::CopyTo : copy of %s - failed", "RT_File::CopyTo",
                "The file was neither copied nor registered for the next start of Windows. Named is the source when "
                "everything is "
                "copied, else the target.",
                "Look at the status code and the system error of the result record; mostly rights or a full disk."),
        logText("Info (detail 4)", "MoveFileEx %s->%s", "RT_File",
                "The move is registered for the next start of Windows; NULL stands for a deletion."),
        logText("Warning", "Reboot Needed: %s", "RT_File",
                "The file is in use and is replaced or removed when Windows starts next.",
                "Restart Windows to complete the update."),
        logText("Error", "Unable to load the DLL %s", "LoadDLL",
                "A companion library was not found or cannot be loaded. Said once as long as it is the same path.",
                "Reinstall the client; look whether the install path in its settings is right."),
    };
}
} // namespace autool
