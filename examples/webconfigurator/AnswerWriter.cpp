#include "webconfigurator/AnswerWriter.h"

#include <algorithm>
#include <cstdio>

namespace webconf_sample
{
namespace
{
constexpr std::size_t kDefaultPieceBytes = 1024;
constexpr std::size_t kChunkBytes = std::size_t{16} * 1024;
constexpr std::size_t kSendBytes = std::size_t{64} * 1024;

const char* reasonOf(int status)
{
    switch (status)
    {
    case 200:
        return "OK";
    case 302:
        return "Found";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    default:
        return "As Asked";
    }
}

std::string chunk(std::string_view bytes)
{
    char size[24];
    std::snprintf(size, sizeof(size), "%lx\r\n", static_cast<unsigned long>(bytes.size()));
    return size + std::string(bytes) + "\r\n";
}
} // namespace

AnswerWriter::AnswerWriter(const Socket& socket, const HttpRequest& request, const Answer& answer,
                           const StopSignal& stop)
    : m_socket(socket), m_request(request), m_answer(answer), m_stop(stop)
{
    const Framing framing = answer.framing.value_or(Framing::length);
    const bool oldClient = request.version == "HTTP/1.0";
    m_chunked = framing == Framing::alwaysChunked || (framing == Framing::chunked && !oldClient);
    m_untilClose = framing == Framing::untilClose || (framing == Framing::chunked && oldClient);
}

bool AnswerWriter::keepsConnection() const
{
    const std::string wish =
        m_request.header("Connection") + m_request.header("Proxy-Connection"); // a proxy's client names it so
    const bool wished = m_request.version == "HTTP/1.0" ? equalIgnoringCase(wish, "keep-alive")
                                                        : !equalIgnoringCase(wish.substr(0, 5), "close");
    return wished && !m_answer.close.value_or(false) && !m_untilClose;
}

AfterAnswer AnswerWriter::broken() const
{
    return m_answer.reset.value_or(false) ? AfterAnswer::reset : AfterAnswer::close;
}

AfterAnswer AnswerWriter::write(std::optional<std::string> body)
{
    if (m_answer.delay && !m_stop.wait(*m_answer.delay))
        return AfterAnswer::close;
    if (m_answer.silent.value_or(false))
    {
        m_socket.drain();
        return AfterAnswer::close;
    }
    if (m_answer.hangUp.value_or(false))
        return broken();
    if (m_answer.raw)
    {
        m_socket.send(*m_answer.raw);
        return broken();
    }

    int status = m_answer.location ? 302 : 200;
    // A rule that states how to answer states a page, if only an empty one.
    if (!body && !m_answer.status && !m_answer.location)
        status = 404;
    status = m_answer.status.value_or(status);
    const std::string bytes = body.value_or(std::string());
    const bool wantsBody = m_request.method != "HEAD" && status != 204 && status != 304;
    if (!m_socket.send(head(bytes.size(), status)) || (wantsBody && !sendBody(bytes)))
        return broken();
    return keepsConnection() && !m_answer.lie ? AfterAnswer::keep : AfterAnswer::close;
}

std::string AnswerWriter::head(std::size_t bodyBytes, int status) const
{
    std::string head = "HTTP/1.1 " + std::to_string(status) + " " + reasonOf(status) + "\r\n";
    head += "Content-Type: " + m_answer.type.value_or("text/xml") + "\r\n";
    if (m_answer.location)
        head += "Location: " + *m_answer.location + "\r\n";
    if (m_chunked)
        head += "Transfer-Encoding: chunked\r\n";
    else if (!m_untilClose)
        head +=
            "Content-Length: " + std::to_string(static_cast<long long>(bodyBytes) + m_answer.lie.value_or(0)) + "\r\n";
    head += keepsConnection() ? "Connection: keep-alive\r\n" : "Connection: close\r\n";
    return head + m_answer.headers.value_or(std::string()) + "\r\n";
}

bool AnswerWriter::sendBody(std::string_view body) const
{
    const std::size_t stop = std::min(m_answer.cut.value_or(body.size()), m_answer.stall.value_or(body.size()));
    const std::string_view sent = body.substr(0, stop);
    const std::size_t asked = m_answer.pieceDelay ? m_answer.piece.value_or(kDefaultPieceBytes)
                                                  : m_answer.piece.value_or(m_chunked ? kChunkBytes : kSendBytes);
    const std::size_t pieceBytes = std::max<std::size_t>(asked, 1);
    std::string unsent;
    for (std::size_t at = 0; at < sent.size(); at += pieceBytes)
    {
        const std::string_view piece = sent.substr(at, pieceBytes);
        unsent += m_chunked ? chunk(piece) : std::string(piece);
        if (!m_answer.pieceDelay && unsent.size() < kSendBytes)
            continue;
        if (m_answer.pieceDelay && !m_stop.wait(*m_answer.pieceDelay))
            return false;
        if (!m_socket.send(unsent))
            return false;
        unsent.clear();
    }
    if (!m_socket.send(unsent))
        return false;
    if (m_answer.stall)
    {
        m_socket.drain();
        return false;
    }
    if (m_answer.cut)
        return false;
    return !m_chunked || m_socket.send("0\r\n\r\n");
}
} // namespace webconf_sample
