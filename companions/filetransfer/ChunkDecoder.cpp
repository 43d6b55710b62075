#include "filetransfer/ChunkDecoder.h"

#include <algorithm>
#include <cstring>

namespace filetransfer
{
namespace
{
constexpr std::size_t kMostSizeDigits = 15;
/// No server has that much to say beside the body.
constexpr std::size_t kMostFramingBytes = std::size_t{64} * 1024;

int hexValue(char c) noexcept
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}
} // namespace

ChunkDecoder::Step ChunkDecoder::decode(const char* in, std::size_t inBytes, char* out, std::size_t outBytes) noexcept
{
    Step step;
    while (step.used < inBytes && !complete() && !broken())
    {
        if (m_state != State::data)
        {
            takeFraming(in[step.used++]);
            continue;
        }
        const std::size_t room = std::min(inBytes - step.used, outBytes - step.decoded);
        const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(room, m_left));
        if (bytes == 0)
            break;
        std::memcpy(out + step.decoded, in + step.used, bytes);
        step.used += bytes;
        step.decoded += bytes;
        m_left -= bytes;
        if (m_left == 0)
            m_state = State::dataEnd;
    }
    return step;
}

void ChunkDecoder::takeFraming(char c) noexcept
{
    if (++m_framingBytes > kMostFramingBytes)
    {
        m_state = State::broken;
        return;
    }
    if (m_state == State::size)
        takeSizeCharacter(c);
    else if (m_state == State::extension)
    {
        if (c == '\n')
            endSizeLine();
    }
    else if (m_state == State::trailer)
        takeTrailerCharacter(c);
    else if (c == '\n') // behind the data
    {
        m_state = State::size;
        m_digits = 0;
        m_framingBytes = 0;
    }
    else if (c != '\r')
        m_state = State::broken;
}

void ChunkDecoder::takeSizeCharacter(char c) noexcept
{
    const int digit = hexValue(c);
    if (digit >= 0 && m_digits < kMostSizeDigits)
    {
        ++m_digits;
        m_left = m_left * 16 + static_cast<std::uint64_t>(digit);
    }
    else if (c == '\n' && m_digits != 0)
        endSizeLine();
    else if ((c == ';' || c == ' ' || c == '\t' || c == '\r') && m_digits != 0)
        m_state = State::extension;
    else
        m_state = State::broken;
}

void ChunkDecoder::endSizeLine() noexcept
{
    m_state = m_left != 0 ? State::data : State::trailer; // a size of 0 is the last chunk
    m_lineBytes = 0;
}

void ChunkDecoder::takeTrailerCharacter(char c) noexcept
{
    if (c == '\n' && m_lineBytes == 0)
        m_state = State::complete;
    else if (c == '\n')
        m_lineBytes = 0;
    else if (c != '\r')
        ++m_lineBytes;
}
} // namespace filetransfer
