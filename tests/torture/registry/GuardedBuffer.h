#ifndef AUTOOLS_TORTURE_GUARDEDBUFFER_H
#define AUTOOLS_TORTURE_GUARDEDBUFFER_H

#include <cstring>
#include <string>

namespace torture
{
/// A caller's buffer of 260 bytes between bytes that nobody may touch, full of something that is no text.
class GuardedBuffer
{
public:
    GuardedBuffer() { std::memset(this, kFill, sizeof *this); }
    operator char*() { return m_text; }

    /// What the buffer holds; an overrun or a missing terminator is told instead.
    std::string text() const
    {
        for (std::size_t i = 0; i < kGuard; ++i)
            if (m_before[i] != kFill || m_after[i] != kFill)
                return "OVERRUN";
        const void* const end = std::memchr(m_text, '\0', sizeof m_text);
        return end != nullptr ? std::string(m_text) : "NOT TERMINATED";
    }

private:
    static constexpr char kFill = '\x5A';
    static constexpr std::size_t kGuard = 64;

    char m_before[kGuard];
    char m_text[260];
    char m_after[kGuard];
};
} // namespace torture

#endif
