// A small program that uses the library from a process of its own. The tests start it under different names.
//
//   log <code> <message>            writes one event
//   burst <tag> <count> [<event>]   writes the events "<tag> 0", "<tag> 1", ...; sets the named event behind the first
//   long <tag> <count>              the same, with a thousand characters each
//   threads <threads> <count>       so many threads write events "t0 0 ...", "t1 0 ...", of three hundred characters
//   forever                         writes events until it is killed
//   archive                         moves the machine-wide log aside
//   system <file>                   writes "value|name|version|service pack|64-bit" of this system, twice, into a file

#include "foundation/EventLog.h"
#include "platform/UniqueResource.h"
#include "system/COperatingSystem.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace
{
void burst(const std::string& tag, int count, const std::string& tail)
{
    for (int i = 0; i < count; ++i)
        Log(0, "%s %d%s", tag.c_str(), i, tail.c_str());
}

void burstAndTell(const std::string& tag, int count, const std::string& event)
{
    const aut::UniqueHandle begun(::OpenEventA(EVENT_MODIFY_STATE, FALSE, event.c_str()));
    for (int i = 0; i < count; ++i)
    {
        Log(0, "%s %d", tag.c_str(), i);
        if (i == 0 && begun)
            ::SetEvent(begun.get());
    }
}

void describeSystem(std::ofstream& out)
{
    COperatingSystem* const system = COperatingSystem::GetInstance();
    String version("untouched");
    String servicePack("untouched");
    const COperatingSystem::OS value = system->GetOSValue(version, servicePack);
    out << static_cast<int>(value) << '|' << static_cast<const char*>(system->OSValueToString(value)) << '|'
        << static_cast<const char*>(version) << '|' << static_cast<const char*>(servicePack) << '|' << system->IsOSx64()
        << '\n';
}
} // namespace

int main(int argc, char** argv)
{
    const auto argument = [&](int i) { return std::string(i < argc ? argv[i] : ""); };
    const std::string command = argument(1);
    if (command == "log")
    {
        Log(std::strtoul(argument(2).c_str(), nullptr, 0), "%s", argument(3).c_str());
    }
    else if (command == "burst")
    {
        burstAndTell(argument(2), std::atoi(argument(3).c_str()), argument(4));
    }
    else if (command == "long")
    {
        burst(argument(2), std::atoi(argument(3).c_str()), " " + std::string(980, 'x'));
    }
    else if (command == "threads")
    {
        const int count = std::atoi(argument(3).c_str());
        std::vector<std::thread> threads;
        for (int i = 0; i < std::atoi(argument(2).c_str()); ++i)
            threads.emplace_back(burst, "t" + std::to_string(i), count, " " + std::string(300, 'x'));
        for (std::thread& thread : threads)
            thread.join();
    }
    else if (command == "forever")
    {
        for (int i = 0;; ++i)
            Log(0, "event %d of a process that will be killed", i);
    }
    else if (command == "archive")
    {
        ArchiveCurrentLog();
    }
    else if (command == "system")
    {
        std::ofstream out(argument(2));
        describeSystem(out);
        describeSystem(out);
        COperatingSystem::FreeInstance();
        describeSystem(out);
    }
    else
    {
        return 2;
    }
    return 0;
}
