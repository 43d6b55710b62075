#include "tests/support/FtpServer.h"

#include <algorithm>
#include <string_view>

namespace auttest
{
using webconf_sample::Socket;

FtpServer::FtpServer(FtpBehaviour behaviour)
    : m_behaviour(std::move(behaviour)), m_listener(Socket::listen(0, &m_stop)), m_port(m_listener.port()),
      m_thread([this] { serveAll(); })
{
}

FtpServer::~FtpServer()
{
    m_stop.raise();
    m_thread.join();
}

std::vector<std::string> FtpServer::commands() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_commands;
}

std::size_t FtpServer::count(const std::string& command) const
{
    const std::vector<std::string> all = commands();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), command));
}

void FtpServer::serveAll()
{
    while (!m_stop.raised())
        if (const Socket control = m_listener.accept(); control && !m_behaviour.hangsUp)
            serve(control);
}

void FtpServer::serve(const Socket& control)
{
    control.send("220 sample depot\r\n");
    std::string unread;
    for (bool open = true; open;)
    {
        const std::size_t end = unread.find("\r\n");
        if (end == std::string::npos)
        {
            const std::string more = control.receive(1024);
            unread += more;
            open = !more.empty();
            continue;
        }
        const std::string command = unread.substr(0, end);
        unread.erase(0, end + 2);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_commands.push_back(command);
        }
        open = answer(control, command);
    }
}

bool FtpServer::answer(const Socket& control, const std::string& command)
{
    const std::string verb = command.substr(0, command.find(' '));
    const std::string argument = command.size() > verb.size() ? command.substr(verb.size() + 1) : std::string();
    const auto file = m_behaviour.files.find(argument);
    const bool loggedOn = m_user == m_behaviour.user;

    if (verb == "USER")
    {
        m_user = argument;
        return control.send("331 password please\r\n");
    }
    if (verb == "PASS")
    {
        const bool welcome = loggedOn && (m_behaviour.password.empty() || m_behaviour.password == argument);
        return control.send(welcome ? "230 welcome\r\n" : "530 not you\r\n");
    }
    if (verb == "TYPE")
        return control.send("200 fine\r\n");
    if (verb == "SIZE" && m_behaviour.knowsSize)
        return control.send(file == m_behaviour.files.end() ? "550 no such file\r\n"
                                                            : "213 " + std::to_string(file->second.size()) + "\r\n");
    if (verb == "PASV")
        return control.send(passive());
    if (verb == "RETR")
        return retrieve(control, argument);
    if (verb == "QUIT")
    {
        control.send("221 bye\r\n");
        return false;
    }
    return control.send("502 not here\r\n");
}

std::string FtpServer::passive()
{
    m_data = Socket::listen(0, &m_stop);
    const unsigned port = m_data.port();
    return "227 Entering Passive Mode (127,0,0,1," + std::to_string(port / 256) + "," + std::to_string(port % 256) +
           ")\r\n";
}

bool FtpServer::retrieve(const Socket& control, const std::string& name)
{
    const auto file = m_behaviour.files.find(name);
    if (!m_behaviour.retrReply.empty() && m_behaviour.retrReplyTimes != 0)
    {
        if (m_behaviour.retrReplyTimes > 0)
            --m_behaviour.retrReplyTimes;
        return control.send(m_behaviour.retrReply + "\r\n");
    }
    if (file == m_behaviour.files.end() || !m_data)
        return control.send("550 no such file\r\n");
    control.send("150 here it comes\r\n");
    Socket data = m_data.accept();
    m_data.close();
    data.send(std::string_view(file->second).substr(0, m_behaviour.cut.value_or(std::string::npos)));
    if (m_behaviour.stalls)
        data.drain();
    data.closeGently();
    return !m_behaviour.dies && control.send(std::to_string(m_behaviour.lastReply) + " that was it\r\n");
}
} // namespace auttest
