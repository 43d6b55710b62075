#ifndef AUTOOLS_WEBCONFIGURATOR_ANSWERWRITER_H
#define AUTOOLS_WEBCONFIGURATOR_ANSWERWRITER_H

#include "webconfigurator/Rule.h"
#include "webconfigurator/Socket.h"

namespace webconf_sample
{
enum class AfterAnswer
{
    keep, ///< the connection may bring another request
    close,
    reset
};

/// Writes one answer, with the faults it states. Used for one request; borrows everything.
class AnswerWriter
{
public:
    AnswerWriter(const Socket& socket, const HttpRequest& request, const Answer& answer, const StopSignal& stop);

    /// @param body  Nothing: there is no such page.
    AfterAnswer write(std::optional<std::string> body);

private:
    std::string head(std::size_t bodyBytes, int status) const;
    /// False when the client is gone or the server ends.
    bool sendBody(std::string_view body) const;
    AfterAnswer broken() const;
    bool keepsConnection() const;

    const Socket& m_socket;
    const HttpRequest& m_request;
    const Answer& m_answer;
    const StopSignal& m_stop;
    bool m_chunked;
    bool m_untilClose;
};
} // namespace webconf_sample

#endif
