#ifndef AUTOOL_MACHINE_REBOOTQUEUE_H
#define AUTOOL_MACHINE_REBOOTQUEUE_H

#include <string>
#include <vector>

namespace autool
{
/// One thing that Windows does when it starts the next time.
struct RebootEntry
{
    std::string queue;  ///< "PendingFileRenameOperations", "WinInit.ini" or "RunServicesOnce"
    std::string source; ///< the file that is moved or deleted; for a command the command line. UTF-8, as all of it.
    std::string target; ///< "" for a deletion or a command
    bool isOurs = false;
    std::string why;      ///< what makes it the client's; "" for one that is not
    bool isStale = false; ///< its source is not there (any more), so that nothing will happen
    bool isDamaged = false;
};

/// Which entries are the client's own.
///
/// A move is the client's when its target lies below one of the client's folders or below a path that is recorded for a
/// product or component, or when its source is a temporary file of the library's replacement: in the root of a drive,
/// named like the target with "_0" to "_9" and ".tmp" in place of the extension. A deletion is the client's when the
/// file that goes lies below one of those folders.
class RebootOwnership
{
public:
    /// Takes the folders from the registry, read-only.
    static RebootOwnership ofClient();
    void add(const std::string& folder, std::string what);
    void judge(RebootEntry& entry) const;

private:
    struct Folder
    {
        std::wstring path;
        std::string what;
    };
    std::vector<Folder> m_folders;
};

/// Both lists of the registry, the [Rename] section of WinInit.ini and the commands that run once, judged.
std::vector<RebootEntry> readRebootQueue(const RebootOwnership& ownership);

/// The pairs in the data of a rename list; the last one is marked when it was cut off.
std::vector<RebootEntry> parseRenames(const std::wstring& data);
} // namespace autool

#endif
