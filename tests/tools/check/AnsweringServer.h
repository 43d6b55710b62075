#ifndef AUTOOLS_TESTS_TOOLS_CHECK_ANSWERINGSERVER_H
#define AUTOOLS_TESTS_TOOLS_CHECK_ANSWERINGSERVER_H

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace auttest
{
/// Listens on the loopback and gives every connection the same bytes, be they an HTTP answer or not.
class AnsweringServer
{
public:
    explicit AnsweringServer(std::string answer);
    ~AnsweringServer();
    AnsweringServer(const AnsweringServer&) = delete;
    AnsweringServer& operator=(const AnsweringServer&) = delete;

    /// "127.0.0.1:port"
    std::string host() const;
    std::string lastRequestLine() const;

private:
    void serve();

    const std::string m_answer;
    unsigned __int64 m_listener;
    unsigned short m_port = 0;
    mutable std::mutex m_lock;
    std::string m_requestLine;
    std::thread m_thread;
};

/// "Sun, 22 Nov 2026 01:20:00 GMT"
std::string httpDateNow();
} // namespace auttest

#endif
