// Copying and removing 10,000 small files in their folders, against the plain system calls that do the same.

#include "bench/Ratio.h"

#include "7xAutoUpdateTools.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{
// In twenty parts, each of which is measured several times: what else the machine does meets single rounds of a part.
constexpr int kParts = 20;
constexpr int kFolders = 5;
constexpr int kFilesEach = 100;
constexpr int kRounds = 3;

void require(bool done, const char* what)
{
    if (done)
        return;
    std::printf("%s failed, error %lu\n", what, ::GetLastError());
    std::exit(1);
}

void makeTree(const std::string& root)
{
    require(::CreateDirectoryA(root.c_str(), nullptr), "making the tree");
    for (int folder = 0; folder < kFolders; ++folder)
    {
        const std::string path = root + "\\folder " + std::to_string(folder);
        require(::CreateDirectoryA(path.c_str(), nullptr), "making a folder");
        for (int i = 0; i < kFilesEach; ++i)
        {
            std::FILE* const file = std::fopen((path + "\\component " + std::to_string(i) + ".dll").c_str(), "wb");
            require(file != nullptr, "making a file");
            std::fputs("a small file of the kind that settings are kept in", file);
            std::fclose(file);
        }
    }
}

/// One walk with the plain calls; `file` and `folder` are what is done to each entry, parents before (after) children.
template <typename File, typename Before, typename After>
void walk(const std::string& path, const File& file, const Before& before, const After& after)
{
    before(path);
    WIN32_FIND_DATAA entry;
    const HANDLE search = ::FindFirstFileA((path + "\\*.*").c_str(), &entry);
    require(search != INVALID_HANDLE_VALUE, "listing");
    do
    {
        const std::string name = entry.cFileName;
        if (name == "." || name == "..")
            continue;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            walk(path + "\\" + name, file, before, after);
        else
            file(path + "\\" + name);
    } while (::FindNextFileA(search, &entry));
    ::FindClose(search);
    after(path);
}

void plainCopy(const std::string& from, const std::string& to)
{
    walk(
        from,
        [&](const std::string& file)
        { require(::CopyFileA(file.c_str(), (to + file.substr(from.size())).c_str(), FALSE), "CopyFile"); },
        [&](const std::string& folder)
        { require(::CreateDirectoryA((to + folder.substr(from.size())).c_str(), nullptr), "CreateDirectory"); },
        [](const std::string&) {});
}

void plainRemove(const std::string& path)
{
    walk(
        path, [](const std::string& file) { require(::DeleteFileA(file.c_str()), "DeleteFile"); },
        [](const std::string&) {},
        [](const std::string& folder) { require(::RemoveDirectoryA(folder.c_str()), "RemoveDirectory"); });
}

struct Times
{
    double copy = 1e9;
    double remove = 1e9;
};

template <typename Copy, typename Remove> void measure(Times& best, const Copy& copy, const Remove& remove)
{
    best.copy = std::min(best.copy, bench::seconds(copy, 1));
    best.remove = std::min(best.remove, bench::seconds(remove, 1));
}
/// One part, with ours and the plain calls in turns.
void addPart(const std::string& from, const std::string& to, Times& ours, Times& plain)
{
    const std::string copy = to + "\\part";
    Times bestOurs;
    Times bestPlain;
    for (int round = 0; round < kRounds; ++round)
    {
        measure(
            bestOurs,
            [&]
            { require(RT_Dir(String(from.c_str())).CopyTo(String(to.c_str()), OVERWRITE_AT_REBOOT) == 1, "CopyTo"); },
            [&] { require(RT_Dir(String(copy.c_str())).Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE) == 1, "Remove"); });
        measure(
            bestPlain, [&] { plainCopy(from, copy); }, [&] { plainRemove(copy); });
    }
    ours.copy += bestOurs.copy;
    ours.remove += bestOurs.remove;
    plain.copy += bestPlain.copy;
    plain.remove += bestPlain.remove;
}
} // namespace

int main()
{
    char folder[MAX_PATH];
    require(::GetTempPathA(sizeof folder, folder) != 0, "finding the temp path");
    const std::string root = std::string(folder) + "tree bench";
    const std::string to = root + "\\copy";
    require(RT_Dir(String(root.c_str())).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE) == 1, "clearing");
    require(RT_Dir(String(to.c_str())).Create() == 1, "making the folder");

    Times ours{0, 0};
    Times plain{0, 0};
    for (int part = 0; part < kParts; ++part)
    {
        makeTree(root + "\\part");
        addPart(root + "\\part", to, ours, plain);
        plainRemove(root + "\\part");
    }
    plainRemove(root);
    bool kept = bench::ratio("CopyTo, 10,000 files in trees of 500", ours.copy, "CopyFile and CreateDirectory of each",
                             plain.copy, 1.3);
    kept =
        bench::ratio("Remove of the same", ours.remove, "DeleteFile and RemoveDirectory of each", plain.remove, 1.3) &&
        kept;
    return kept ? 0 : 1;
}
