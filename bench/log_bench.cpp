// Log events: what one costs when the file is small and large, and when the detail level drops it.

#include "bench/Ratio.h"

#include "7xAutoUpdateTools.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace
{
std::string logPath()
{
    String folder;
    GetAUDataPath(folder, 1);
    return std::string(folder) + "\\7xAutoupdateLog.xml";
}

long fileSize(const std::string& path)
{
    long size = 0;
    if (FILE* const file = std::fopen(path.c_str(), "rb"))
    {
        std::fseek(file, 0, SEEK_END);
        size = std::ftell(file);
        std::fclose(file);
    }
    return size;
}

void growTo(long size)
{
    const std::string filler(900, 'x');
    while (fileSize(logPath()) < size)
        Log(0, "%s", filler.c_str());
}

constexpr int kEvents = 40;

double logSome()
{
    return bench::seconds(
        []
        {
            for (int i = 0; i < kEvents; ++i)
                Log(0, "Component %s: %d of %d", "Kernel", i, kEvents);
        },
        5);
}

/// The least that an event needs that must be in the file when the process dies: open, append, close.
double appendSome(const std::string& path)
{
    return bench::seconds(
        [&]
        {
            for (int i = 0; i < kEvents; ++i)
                if (FILE* const file = std::fopen(path.c_str(), "ab"))
                {
                    std::fprintf(file, "<LogEvent>Component %s: %d of %d</LogEvent>\r\n", "Kernel", i, kEvents);
                    std::fclose(file);
                }
        },
        5);
}
} // namespace

int main()
{
    std::remove(logPath().c_str());
    Log(0, "first");
    const double small = logSome();
    const std::string plain = logPath() + ".plain";
    const double appended = appendSome(plain);
    std::remove(plain.c_str());
    growTo(460000);
    const double large = logSome();
    const double dropped = bench::seconds(
        []
        {
            for (int i = 0; i < kEvents; ++i)
                Log(0x50000, "Component %s: %d of %d", "Kernel", i, kEvents);
        });

    bool kept = bench::ratio("40 events at 460 KB", large, "40 events at 5 KB", small, 1.5);
    kept = bench::ratio("40 events", small, "40 x open, append, close", appended) && kept;
    kept = bench::ratio("40 events above the detail level", dropped, "40 events", small, 0.1) && kept;
    return kept ? 0 : 1;
}
