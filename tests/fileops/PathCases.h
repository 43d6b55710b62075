#ifndef AUTOOLS_TESTS_FILEOPS_PATHCASES_H
#define AUTOOLS_TESTS_FILEOPS_PATHCASES_H

namespace auttest
{
/// How a path is taken apart, by files and directories alike.
struct PathCase
{
    const char* given;
    const char* drive;
    const char* server;
    const char* path;
    const char* name;
    const char* fullPath;
};

constexpr PathCase kPathCases[] = {
    {"c:/Data//Sub/x.dll", "c:", "", "c:\\Data\\Sub", "x.dll", "c:\\Data\\Sub\\x.dll"},
    {"C:\\x.dll", "C:", "", "C:", "x.dll", "C:\\x.dll"},
    {"C:x.dll", "C:", "", "C:", "x.dll", "C:\\x.dll"},
    {"C:\\\\\\a\\\\\\b\\\\", "C:", "", "C:\\a", "b", "C:\\a\\b"},
    {"C:\\a/", "C:", "", "C:", "a", "C:\\a"},
    {"C:\\a:b", "C:", "", "C:", "a:b", "C:\\a:b"},
    {"%:\\a b\\.", "%:", "", "%:\\a b", ".", "%:\\a b\\."},
    {"C:", "C:", "", "", "", "C:"},
    {"C:\\/\\", "C:", "", "", "", "C:"},
    {"\\\\server\\share\\f.txt", "", "\\\\server", "\\\\server\\share", "f.txt", "\\\\server\\share\\f.txt"},
    {"//server//share///f.txt/", "", "\\\\server", "\\\\server\\share", "f.txt", "\\\\server\\share\\f.txt"},
    {"\\\\server\\f.txt", "", "\\\\server", "\\\\server", "f.txt", "\\\\server\\f.txt"},
    {"\\\\server", "", "\\\\server", "", "", "\\\\server"},
    {"\\\\server\\\\", "", "\\\\server", "", "", "\\\\server"},
    {"\\\\s", "", "\\\\s", "", "", "\\\\s"},
};

/// Neither a drive nor a share.
constexpr const char* kRefusedPaths[] = {
    "\\\\\\server\\x", "dir\\f.txt", "f.txt",           "\\f.txt",          "\\\\", "\\", "/", "", " C:\\f.txt", ":",
    ":\\f.txt",        "ab:c",       "\\\\server\\a:b", "\\\\?\\C:\\f.txt",
};
} // namespace auttest

#endif
