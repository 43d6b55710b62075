#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#ifdef AUTOOLS_FUZZ_GUIDED
#include "fileops/PathSplitting.h"
#else
#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"
#endif

#include <string>
#include <vector>

namespace
{
using torture::Differences;
using torture::Generator;
namespace model = torture::model;

const torture::Words kWords = {"C:",
                               "c:/Data//Sub/x.dll",
                               "\\\\server\\share\\f.txt",
                               "\\\\\\server\\x",
                               "dir\\f.txt",
                               "\\",
                               "/",
                               "\\\\",
                               "//",
                               ":",
                               "D:\\a b\\",
                               "x.dll",
                               ".",
                               "..",
                               "\\..\\",
                               "\\\\?\\C:\\",
                               "Program Files",
                               "\\\\s",
                               "?:",
                               "C:x",
                               "ab:c"};

/// A path taken apart, or what was there before when it is refused.
struct Path
{
    std::string drive;
    std::string server;
    std::string directory; ///< with its root
    std::string name;
    std::string full;
};

/// The components between backslashes; several of those are one, and those at the ends are none.
std::vector<std::string> components(const std::string& text)
{
    std::vector<std::string> kept;
    for (const std::string& component : model::split(text, '\\'))
        if (!component.empty())
            kept.push_back(component);
    return kept;
}

bool takeRoot(Path& path, const std::string& given, std::vector<std::string>& rest)
{
    const std::string text = model::replaced(given, '/', '\\');
    const std::size_t colon = text.find(':');
    if (colon == 1)
    {
        rest = components(text.substr(2));
        path.drive = text.substr(0, 2);
        path.server.clear();
        return true;
    }
    if (colon != std::string::npos || text.size() < 3 || text.substr(0, 2) != "\\\\" || text[2] == '\\')
        return false;
    rest = components(text);
    path.drive.clear();
    path.server = "\\\\" + rest.front();
    rest.erase(rest.begin());
    return true;
}

/// Root, components and name with one backslash between them. A root alone has no directory.
void rebuild(Path& path, const std::vector<std::string>& rest)
{
    std::vector<std::string> all = {path.drive + path.server};
    all.insert(all.end(), rest.begin(), rest.end());
    path.directory = model::join(all, "\\");
    if (!path.name.empty())
        all.push_back(path.name);
    path.full = model::join(all, "\\");
    if (all.size() == 1)
        path.directory.clear();
}

void setWhole(Path& path, const std::string& text)
{
    std::vector<std::string> rest;
    if (!takeRoot(path, text, rest))
        return;
    path.name.clear();
    if (!rest.empty())
    {
        path.name = rest.back();
        rest.pop_back();
    }
    rebuild(path, rest);
}

void setParts(Path& path, const std::string& directory, const std::string& name)
{
    path.name = name;
    std::vector<std::string> rest;
    if (takeRoot(path, directory, rest))
        rebuild(path, rest);
}

/// The five texts, in the order of the members of files and directories.
using Texts = std::vector<std::string>;

template <typename... Strings> Texts textsOf(const Strings&... texts)
{
    return {std::string(static_cast<const char*>(texts))...};
}

#ifdef AUTOOLS_FUZZ_GUIDED

/// The steps in which files and directories take a path apart; the rest of both needs the system.
class Steps
{
public:
    void setWhole(const char* text)
    {
        if (!aut::splitRoot(text, m_drive, m_server, m_path))
            return;
        aut::splitLastComponent(m_path, m_name);
        aut::joinPath(m_drive, m_server, m_path, m_name, m_full);
    }
    void setParts(const char* directory, const char* name)
    {
        m_name = name;
        if (aut::splitRoot(directory, m_drive, m_server, m_path))
            aut::joinPath(m_drive, m_server, m_path, m_name, m_full);
    }
    Texts texts() const { return textsOf(m_drive, m_server, m_path, m_name, m_full); }

private:
    String m_drive, m_server, m_path, m_name, m_full;
};

#else

struct File : RT_File
{
    void setWhole(const char* text) { SetFullPath(text); }
    void setParts(const char* directory, const char* name) { SetFullPath(directory, name); }
    Texts texts() const { return textsOf(m_drive, m_server, m_path, m_fileName, m_fullPath); }
};

struct Directory : RT_Dir
{
    Directory() : RT_Dir(String()) {}
    void setWhole(const char* text) { RT_Dir::SetFullPath(text); }
    void setParts(const char* directory, const char* name) { RT_Dir::SetFullPath(directory, name); }
    Texts texts() const { return textsOf(m_drive, m_server, m_path, m_dirName, m_fullPath); }
};

#endif

template <typename Subject> void checkPathOf(Generator& input, Differences& differences)
{
    Path path;
    Subject subject;
    for (int left = input.number(1, 3); left > 0; --left) // one that is refused leaves the one before
    {
        const std::string text = input.text(kWords);
        if (input.oneIn(3))
        {
            const std::string name = input.text(kWords, 300);
            setParts(path, text, name);
            subject.setParts(text.c_str(), name.c_str());
        }
        else
        {
            setWhole(path, text);
            subject.setWhole(text.c_str());
        }
        const Texts got = subject.texts();
        differences.expect("drive", path.drive, got[0]);
        differences.expect("server", path.server, got[1]);
        differences.expect("directory", path.directory, got[2]);
        differences.expect("name", path.name, got[3]);
        differences.expect("full path", path.full, got[4]);
    }
}

void checkPath(Generator& input, Differences& differences)
{
#ifdef AUTOOLS_FUZZ_GUIDED
    checkPathOf<Steps>(input, differences);
#else
    input.oneIn(2) ? checkPathOf<File>(input, differences) : checkPathOf<Directory>(input, differences);
#endif
}
} // namespace

AUTOOLS_FUZZ_TARGET(Paths, "path splitting", checkPath)
