#ifndef AUTOOLS_TESTS_EXAMPLES_RAWCLIENT_H
#define AUTOOLS_TESTS_EXAMPLES_RAWCLIENT_H

#include "examples/webconfigurator/Socket.h"

#include <string>

namespace auttest
{
/// Sends `request` and returns everything up to the connection's end.
inline std::string ask(unsigned short port, const std::string& request)
{
    const auto connection = webconf_sample::Socket::connect(port);
    connection.send(request);
    std::string all;
    for (std::string part = connection.receive(65536); !part.empty(); part = connection.receive(65536))
        all += part;
    return all;
}

/// The answer to a GET whose connection ends with it.
inline std::string getPage(unsigned short port, const std::string& target, const std::string& version = "HTTP/1.1")
{
    return ask(port, "GET " + target + " " + version + "\r\nConnection: close\r\n\r\n");
}

inline std::string bodyOf(const std::string& answer)
{
    const std::size_t end = answer.find("\r\n\r\n");
    return end != std::string::npos ? answer.substr(end + 4) : std::string();
}
} // namespace auttest

#endif
