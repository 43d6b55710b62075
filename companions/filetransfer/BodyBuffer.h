#ifndef AUTOOLS_FILETRANSFER_BODYBUFFER_H
#define AUTOOLS_FILETRANSFER_BODYBUFFER_H

#include <cstddef>

namespace filetransfer
{
/// The bytes received so far, in pages of the system's own: addresses for the longest body are reserved at once and
/// memory is committed as the body grows, doubling. Nothing is ever copied, and no heap lock is held if the thread is
/// terminated in between.
class BodyBuffer
{
public:
    BodyBuffer() noexcept = default;
    BodyBuffer(const BodyBuffer&) = delete;
    BodyBuffer& operator=(const BodyBuffer&) = delete;
    ~BodyBuffer();

    /// @param limitBytes  The most that the buffer will ever hold, the terminating zero aside.
    [[nodiscard]] bool reserve(std::size_t limitBytes) noexcept;
    /// Room for `bytes` more behind what is held; null without memory or beyond the limit.
    [[nodiscard]] char* room(std::size_t bytes) noexcept;
    /// Takes over `bytes` that were written into the last room().
    void grow(std::size_t bytes) noexcept;
    /// Forgets the bytes, keeps the memory.
    void clear() noexcept { m_length = 0; }

    /// Zero-terminated by grow() and by the system's fresh pages.
    const char* data() const noexcept { return m_base; }
    std::size_t length() const noexcept { return m_length; }

private:
    char* m_base = nullptr;
    std::size_t m_reserved = 0;
    std::size_t m_committed = 0;
    std::size_t m_length = 0;
};
} // namespace filetransfer

#endif
