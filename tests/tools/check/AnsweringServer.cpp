#include "tests/tools/check/AnsweringServer.h"

#include <winsock2.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>

namespace auttest
{
AnsweringServer::AnsweringServer(std::string answer) : m_answer(std::move(answer)), m_listener(INVALID_SOCKET)
{
    WSADATA data{};
    EXPECT_EQ(0, ::WSAStartup(MAKEWORD(2, 2), &data));
    m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(0, ::bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    int size = sizeof address;
    EXPECT_EQ(0, ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size));
    m_port = ntohs(address.sin_port);
    EXPECT_EQ(0, ::listen(m_listener, 5));
    m_thread = std::thread([this] { serve(); });
}

AnsweringServer::~AnsweringServer()
{
    ::shutdown(m_listener, SD_BOTH);
    ::closesocket(m_listener); // ends the wait for a connection
    m_thread.join();
    ::WSACleanup();
}

std::string AnsweringServer::host() const { return "127.0.0.1:" + std::to_string(m_port); }

std::string AnsweringServer::lastRequestLine() const
{
    const std::lock_guard<std::mutex> lock(m_lock);
    return m_requestLine;
}

void AnsweringServer::serve()
{
    for (;;)
    {
        const SOCKET connection = ::accept(m_listener, nullptr, nullptr);
        if (connection == INVALID_SOCKET)
            return;
        std::string request;
        char buffer[1024];
        while (request.find("\r\n\r\n") == std::string::npos)
        {
            const int received = ::recv(connection, buffer, sizeof buffer, 0);
            if (received <= 0)
                break;
            request.append(buffer, static_cast<std::size_t>(received));
        }
        {
            const std::lock_guard<std::mutex> lock(m_lock);
            m_requestLine = request.substr(0, request.find("\r\n"));
        }
        ::send(connection, m_answer.data(), static_cast<int>(m_answer.size()), 0);
        ::shutdown(connection, SD_SEND);
        ::closesocket(connection);
    }
}

std::string httpDateNow()
{
    static const char* const kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    SYSTEMTIME now{};
    ::GetSystemTime(&now);
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02u %s %u %02u:%02u:%02u GMT", kDays[now.wDayOfWeek], now.wDay,
                  kMonths[now.wMonth - 1], now.wYear, now.wHour, now.wMinute, now.wSecond);
    return text;
}
} // namespace auttest
