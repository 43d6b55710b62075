// Replaces files in a process that may see another Windows version: `fileops_helper.exe <command> [arguments]` prints
// what came of it, each on a line: what was returned, whether a restart is needed, the system's class, the record.
#include "tests/fileops/FileProbe.h"

#include "foundation/RT_RESULT.h"
#include "system/OsFamily.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>
#include <vector>

using auttest::FileProbe;

namespace
{
using Arguments = std::vector<const char*>;

template <typename Flag> Flag flag(const char* text) { return static_cast<Flag>(std::atoi(text)); }

bool copy(const Arguments& given) { return FileProbe(given[0]).CopyTo(given[1], flag<WHEN>(given[2])); }
bool move(const Arguments& given) { return FileProbe(given[0]).MoveTo(given[1], flag<OVERWRITEFLAG>(given[2])); }
bool remove(const Arguments& given) { return FileProbe(given[0]).Remove(flag<OVERWRITEFLAG>(given[1])); }
bool overwrite(const Arguments& given)
{
    return FileProbe(given[0]).OverWriteFileAtNextReboot(given[1], flag<OVERWRITE>(given[2]));
}
bool copyLater(const Arguments& given) { return FileProbe(given[0]).CopyFileAtNextReboot(given[1]); }

/// Both calls that seed, none of which draws a number here.
void seedByOverwriting() { FileProbe("C:\\s.txt").OverWriteFileAtNextReboot("C:\\t.txt", flag<OVERWRITE>("2")); }
void seedByCopying() { FileProbe("C:\\s.txt").CopyFileAtNextReboot(""); }

int firstNumber(unsigned seed)
{
    std::srand(seed);
    return std::rand();
}

/// Whether the first call seeds with the current time and later ones, of either kind, do not seed again.
bool seed(const Arguments& given)
{
    std::srand(1);
    const std::time_t before = std::time(nullptr);
    std::strcmp(given[0], "copy") == 0 ? seedByCopying() : seedByOverwriting();
    const std::time_t after = std::time(nullptr);
    const int drawn = std::rand();
    bool seeded = false;
    for (std::time_t time = before; time <= after; ++time)
        seeded = seeded || drawn == firstNumber(static_cast<unsigned>(time));

    std::srand(5);
    seedByCopying();
    seedByOverwriting();
    const int next = std::rand();
    return seeded && next == firstNumber(5);
}

/// Whether one of many threads seeds, and no other: each has the generator's state to itself.
bool seedThreads(const Arguments&)
{
    constexpr int kThreads = 16;
    int drawn[kThreads] = {};
    std::vector<std::thread> threads;
    for (int& number : drawn)
    {
        threads.emplace_back(
            [&number]
            {
                seedByCopying();
                number = std::rand();
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    int seeded = 0;
    for (const int number : drawn)
        seeded += number != firstNumber(1) ? 1 : 0;
    return seeded == 1;
}

struct Command
{
    const char* name;
    std::size_t arguments;
    bool (*run)(const Arguments&);
};
constexpr Command kCommands[] = {{"copy", 3, copy},           {"move", 3, move},       {"remove", 2, remove},
                                 {"overwrite", 3, overwrite}, {"later", 2, copyLater}, {"seed", 1, seed},
                                 {"threads", 0, seedThreads}};
} // namespace

int main(int argc, char** argv)
{
    const Arguments arguments(argv + (argc > 1 ? 2 : 1), argv + argc);
    for (const Command& command : kCommands)
    {
        if (argc < 2 || std::strcmp(argv[1], command.name) != 0 || arguments.size() != command.arguments)
            continue;
        const bool returned = command.run(arguments);
        std::printf("%s\n%s\nsystem %d\n%s\n", returned ? "true" : "false",
                    bRebootNeeded ? "restart needed" : "no restart", static_cast<int>(aut::osValue()),
                    static_cast<const char*>(result->GetErrorString()));
        return 0;
    }
    std::printf("unknown command\n");
    return 2;
}
