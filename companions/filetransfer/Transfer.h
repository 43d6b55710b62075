#ifndef AUTOOLS_FILETRANSFER_TRANSFER_H
#define AUTOOLS_FILETRANSFER_TRANSFER_H

#include "filetransfer/BodyBuffer.h"
#include "filetransfer/FileTransfer.h"
#include "filetransfer/Source.h"

#include <memory>
#include <string_view>

namespace filetransfer
{
/// The library's side of a transfer: attempts one after another until one brings the whole body, the retries are used
/// up or a failure is one that lasts. What was received before is dropped with its attempt.
class Transfer final : public FileTransfer
{
public:
    /// Throws std::bad_alloc. `params` null: the defaults.
    Transfer(std::string_view url, std::string_view user, std::string_view password, const ConnectionParams* params,
             bool useProxy);

    /// One step. @return what `Download` returns.
    int step();
    /// Ends the transfer with this status.
    int fail(const Outcome& outcome) noexcept;

private:
    Outcome openAttempt();
    /// `ended` is set once the body is whole.
    Outcome readPacket(bool& ended);
    int finish() noexcept;
    bool tryAgain(const Outcome& outcome, bool askedOtherwise) noexcept;
    /// Whether this attempt is made in another way than the first one.
    bool asksOtherwise() const noexcept { return m_request.direct || m_request.avoidChunks; }

    Request m_request;
    BodyBuffer m_body;
    std::unique_ptr<Source> m_source; // null between attempts
    int m_status = kRunning;
    int m_retriesLeft;
    bool m_pauseBeforeAttempt = false;
};
} // namespace filetransfer

#endif
