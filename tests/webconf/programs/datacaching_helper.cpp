// Another process that asks the Web Configurator, or writes its answers:
//
//   ask HOST CID PRODUCT [COMPONENT]     one request; its outcome is the exit status
//   write HOST CID PRODUCT SIZE ROUNDS   replaces the cache file so many times, in turn with this many bytes of each
//                                        letter
//
// The client's settings are those of the registry.

#include "webconf/DataCaching.h"

#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
int ask(char** arguments, int count)
{
    ::CoInitialize(nullptr);
    int outcome = 0;
    {
        DataCaching request;
        std::snprintf(request.m_host, sizeof request.m_host, "%s", arguments[0]);
        std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "%s", arguments[1]);
        std::snprintf(request.m_productName, sizeof request.m_productName, "%s", arguments[2]);
        std::snprintf(request.m_componentName, sizeof request.m_componentName, "%s", count > 3 ? arguments[3] : "");
        outcome = request.TransmitRequestToWebConf();
    }
    ::CoUninitialize();
    return outcome;
}

int write(char** arguments)
{
    const auto size = static_cast<std::size_t>(std::atoi(arguments[3]));
    const int rounds = std::atoi(arguments[4]);
    for (int round = 0; round < rounds; ++round)
    {
        const std::string content(size, static_cast<char>('A' + round % 26));
        SetDataInCache(arguments[0], arguments[1], arguments[2], "", content.c_str());
    }
    return 0;
}
} // namespace

int main(int count, char** arguments)
{
    if (count >= 5 && std::strcmp(arguments[1], "ask") == 0)
        return ask(arguments + 2, count - 2);
    if (count == 7 && std::strcmp(arguments[1], "write") == 0)
        return write(arguments + 2);
    return 255;
}
