// Copying and removing a folder of 2,000 files, against nothing but CopyFileA and DeleteFileA of the same names.

#include "bench/Figures.h"

#include "7xAutoUpdateTools.h"

#include <cstdio>
#include <string>
#include <vector>

namespace
{
constexpr int kFiles = 2000;

void makeTree(const std::string& root, const std::vector<std::string>& names)
{
    bench::require(::CreateDirectoryA(root.c_str(), nullptr), "making the folder");
    const std::string contents(1000, 's');
    for (const std::string& name : names)
    {
        std::FILE* const file = std::fopen((root + "\\" + name).c_str(), "wb");
        bench::require(file != nullptr, "making a file");
        std::fwrite(contents.data(), 1, contents.size(), file);
        std::fclose(file);
    }
}

void plainCopy(const std::string& from, const std::string& to, const std::vector<std::string>& names)
{
    bench::require(::CreateDirectoryA(to.c_str(), nullptr), "CreateDirectory");
    for (const std::string& name : names)
        bench::require(::CopyFileA((from + "\\" + name).c_str(), (to + "\\" + name).c_str(), FALSE), "CopyFile");
}

void plainRemove(const std::string& path, const std::vector<std::string>& names)
{
    for (const std::string& name : names)
        bench::require(::DeleteFileA((path + "\\" + name).c_str()), "DeleteFile");
    bench::require(::RemoveDirectoryA(path.c_str()), "RemoveDirectory");
}
} // namespace

int main()
{
    char folder[MAX_PATH];
    ::GetTempPathA(sizeof folder, folder);
    const std::string root = std::string(folder) + "tree bench";
    const std::string from = root + "\\part";
    const std::string to = root + "\\copy";
    const std::string copy = to + "\\part";
    bench::require(RT_Dir(String(root.c_str())).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE) == 1, "clearing");
    bench::require(RT_Dir(String(to.c_str())).Create() == 1, "making the folder");
    std::vector<std::string> names;
    for (int i = 0; i < kFiles; ++i)
        names.push_back("component " + std::to_string(i) + ".dll");
    makeTree(from, names);

    bench::Times copying;
    bench::Times removing;
    for (int round = 0; round < bench::rounds(); ++round)
    {
        copying.ours = std::min(
            copying.ours, bench::secondsOf(
                              [&]
                              {
                                  const int done =
                                      RT_Dir(String(from.c_str())).CopyTo(String(to.c_str()), OVERWRITE_AT_REBOOT);
                                  bench::require(done == 1, "CopyTo");
                              }));
        removing.ours =
            std::min(removing.ours, bench::secondsOf(
                                        [&]
                                        {
                                            const int done =
                                                RT_Dir(String(copy.c_str())).Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE);
                                            bench::require(done == 1, "Remove");
                                        }));
        copying.theirs = std::min(copying.theirs, bench::secondsOf([&] { plainCopy(from, copy, names); }));
        removing.theirs = std::min(removing.theirs, bench::secondsOf([&] { plainRemove(copy, names); }));
    }
    plainRemove(from, names);
    ::RemoveDirectoryA(to.c_str());
    ::RemoveDirectoryA(root.c_str());
    bench::atMost("RT_Dir::CopyTo, 2,000 files; bare CopyFileA", copying, 1.2);
    bench::atMost("RT_Dir::Remove, 2,000 files; bare DeleteFileA", removing, 1.2);
    return bench::status();
}
