#ifndef AUTOOLS_TESTS_SUPPORT_FTPSERVER_H
#define AUTOOLS_TESTS_SUPPORT_FTPSERVER_H

#include "examples/webconfigurator/Socket.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace auttest
{
/// How an FtpServer behaves; the defaults are those of a good one.
struct FtpBehaviour
{
    std::map<std::string, std::string> files; ///< by the name that RETR gives
    bool knowsSize = true;
    std::string user = "anonymous"; ///< who may log on
    std::string password;           ///< empty: any
    std::optional<std::size_t> cut; ///< the data connection is closed after so many bytes
    bool stalls = false;            ///< instead, the data connection brings nothing more
    int lastReply = 226;            ///< to a transfer that has ended
    bool dies = false;              ///< after the data, both connections are closed without that reply
    std::string retrReply;          ///< instead of a transfer: "450 busy"
    int retrReplyTimes = -1;        ///< for so many RETRs; -1: all
    bool hangsUp = false;           ///< closes the connection instead of its greeting
};

/// A small FTP server on the loopback, for passive retrieval: one control connection at a time. Runs on a thread of its
/// own from construction to destruction.
class FtpServer
{
public:
    explicit FtpServer(FtpBehaviour behaviour);
    ~FtpServer();
    FtpServer(const FtpServer&) = delete;
    FtpServer& operator=(const FtpServer&) = delete;

    unsigned short port() const noexcept { return m_port; }
    std::string url(const std::string& path) const { return "ftp://127.0.0.1:" + std::to_string(m_port) + "/" + path; }
    /// What clients sent, passwords included, in order.
    std::vector<std::string> commands() const;
    std::size_t count(const std::string& command) const;

private:
    void serveAll();
    void serve(const webconf_sample::Socket& control);
    /// False ends the session.
    bool answer(const webconf_sample::Socket& control, const std::string& command);
    std::string passive();
    bool retrieve(const webconf_sample::Socket& control, const std::string& name);

    FtpBehaviour m_behaviour;
    webconf_sample::StopSignal m_stop;
    mutable std::mutex m_mutex; // guards m_commands
    std::vector<std::string> m_commands;
    std::string m_user;
    webconf_sample::Socket m_data; // listens for the next data connection
    webconf_sample::Socket m_listener;
    unsigned short m_port;
    std::thread m_thread;
};
} // namespace auttest

#endif
