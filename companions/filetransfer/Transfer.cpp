#include "filetransfer/Transfer.h"

#include <windows.h>

#include <algorithm>

namespace filetransfer
{
namespace
{
constexpr std::int32_t kLongestPauseMs = 10000;
constexpr std::int32_t kLongestTimeOutSeconds = 600;
constexpr std::int32_t kMostRetries = 100;

std::int32_t orDefault(std::int32_t value, std::int32_t fallback) { return value > 0 ? value : fallback; }

/// The record as it is used: out-of-range values become what the header promises.
ConnectionParams bounded(const ConnectionParams* given)
{
    constexpr ConnectionParams defaults;
    ConnectionParams params = given != nullptr ? *given : defaults;
    params.maximumPacketSize = orDefault(params.maximumPacketSize, defaults.maximumPacketSize);
    params.packetSize = std::min(orDefault(params.packetSize, defaults.packetSize), params.maximumPacketSize);
    params.packetPauseMs = std::clamp(params.packetPauseMs, 0, kLongestPauseMs);
    params.maximumLength = std::min(orDefault(params.maximumLength, kMaximumLength), kMaximumLength);
    params.connectionRetries = std::clamp(params.connectionRetries, 0, kMostRetries);
    params.retryPauseMs = std::clamp(params.retryPauseMs, 0, kLongestPauseMs);
    params.timeOut = std::min(orDefault(params.timeOut, defaults.timeOut), kLongestTimeOutSeconds);
    params.connectTimeOut = std::min(orDefault(params.connectTimeOut, params.timeOut), kLongestTimeOutSeconds);
    return params;
}

void pause(std::int32_t pauseMs)
{
    if (pauseMs > 0)
        ::Sleep(static_cast<DWORD>(pauseMs));
}
} // namespace

Transfer::Transfer(std::string_view url, std::string_view user, std::string_view password,
                   const ConnectionParams* params, bool useProxy)
    : FileTransfer(), m_request{Url(), bounded(params), useProxy, std::nullopt, false},
      m_retriesLeft(m_request.params.connectionRetries)
{
    if (const int status = parseUrl(url, m_request.url); status != 0)
    {
        fail({status, 0, false});
        return;
    }
    if (!user.empty())
    {
        m_request.url.user = user;
        m_request.url.password = password;
    }
}

int Transfer::step()
{
    if (m_status != kRunning)
        return m_status;
    const bool askedOtherwise = asksOtherwise();
    bool ended = false;
    const Outcome outcome = m_source ? readPacket(ended) : openAttempt();
    if (!outcome.good())
        return tryAgain(outcome, askedOtherwise) ? kRunning : fail(outcome);
    return ended ? finish() : kRunning;
}

Outcome Transfer::openAttempt()
{
    if (m_pauseBeforeAttempt)
        pause(m_request.params.retryPauseMs);
    m_body.clear();
    m_source = makeSource(m_request);
    const Outcome outcome = m_source->open();
    httpStatus = m_source->httpStatus();
    if (!outcome.good())
        return outcome;
    const auto limit = static_cast<std::size_t>(m_request.params.maximumLength);
    if (m_source->announcedLength().value_or(0) > limit)
        return {kBodyTooLong, 0, false};
    // One packet more than allowed, so that a body of unknown length is seen to be too long.
    if (!m_body.reserve(limit + static_cast<std::size_t>(m_request.params.packetSize)))
        return {kOutOfMemory, ERROR_NOT_ENOUGH_MEMORY, false};
    return {};
}

Outcome Transfer::readPacket(bool& ended)
{
    const auto packetSize = static_cast<std::uint32_t>(m_request.params.packetSize);
    char* const into = m_body.room(packetSize);
    if (into == nullptr)
        return {kOutOfMemory, ERROR_NOT_ENOUGH_MEMORY, false};
    std::uint32_t got = 0;
    const Outcome outcome = m_source->read(into, packetSize, got);
    if (!outcome.good())
        return outcome;
    m_body.grow(got);
    if (m_body.length() > static_cast<std::size_t>(m_request.params.maximumLength))
        return {kBodyTooLong, 0, false};
    ended = got == 0;
    if (ended)
        return m_source->confirmWhole(m_body.length());
    pause(m_request.params.packetPauseMs);
    return {};
}

bool Transfer::tryAgain(const Outcome& outcome, bool askedOtherwise) noexcept
{
    // The first body without a length leads to one attempt more, in another way, that costs no retry and no pause.
    const bool otherwise = asksOtherwise() && !askedOtherwise;
    if (!outcome.mayPass || (!otherwise && m_retriesLeft == 0))
        return false;
    if (!otherwise)
        --m_retriesLeft;
    m_pauseBeforeAttempt = !otherwise;
    m_source.reset();
    return true;
}

int Transfer::finish() noexcept
{
    m_source.reset();
    data = m_body.data();
    length = m_body.length();
    systemError = 0;
    m_status = kFinished;
    return m_status;
}

int Transfer::fail(const Outcome& outcome) noexcept
{
    m_source.reset();
    systemError = outcome.systemError;
    m_status = outcome.status;
    return m_status;
}
} // namespace filetransfer
