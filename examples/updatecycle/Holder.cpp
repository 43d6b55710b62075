#include "Holder.h"

#include <7xAutoUpdateTools.h>

#include <cstdio>

namespace updatecycle
{
ExitCode holdFile(const std::string& path)
{
    RT_File file(path.c_str());
    if (file.Open(0x20) == 0) // for reading; others may read
    {
        std::printf("%s cannot be opened\n", path.c_str());
        return kUnexpected;
    }
    std::printf("holding %s\n", file.GetFullPath());
    std::fflush(stdout);
    while (std::getchar() != EOF)
    {
    }
    return kDone;
}
} // namespace updatecycle
