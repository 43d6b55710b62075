#ifndef AUTOOLS_FILETRANSFER_CHUNKDECODER_H
#define AUTOOLS_FILETRANSFER_CHUNKDECODER_H

#include <cstddef>
#include <cstdint>

namespace filetransfer
{
/// Takes the body out of the "chunked" transfer coding, piece by piece, and knows whether its last chunk has come.
class ChunkDecoder
{
public:
    struct Step
    {
        std::size_t used = 0;    ///< bytes taken from the input
        std::size_t decoded = 0; ///< bytes written to the output
    };

    /// Goes on until the input is used up, the output is full, the body is complete or the coding is broken.
    Step decode(const char* in, std::size_t inBytes, char* out, std::size_t outBytes) noexcept;

    bool complete() const noexcept { return m_state == State::complete; }
    bool broken() const noexcept { return m_state == State::broken; }

private:
    enum class State
    {
        size,      // hexadecimal digits, perhaps ";extension", LF
        extension, // the rest of that line
        data,
        dataEnd, // CR LF behind the data
        trailer, // lines up to an empty one
        complete,
        broken
    };
    void takeFraming(char c) noexcept;
    void takeSizeCharacter(char c) noexcept;
    void endSizeLine() noexcept;
    void takeTrailerCharacter(char c) noexcept;

    State m_state = State::size;
    std::uint64_t m_left = 0;       // of the chunk's data
    std::size_t m_digits = 0;       // of the chunk's size
    std::size_t m_lineBytes = 0;    // of the current trailer line, its end aside
    std::size_t m_framingBytes = 0; // of the current size line, or of all trailers
};
} // namespace filetransfer

#endif
