#ifndef AUTOOL_LOG_LOGSCANNER_H
#define AUTOOL_LOG_LOGSCANNER_H

#include "log/LogEvent.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace autool
{
/// Takes a log file apart, in pieces of any size. An XML parser refuses a file that a crash cut off; this shows what
/// there is. It needs no more memory than one event may have, however large or broken the file is.
///
/// Only the log's own tags count; any other "<" is text. An event that is followed by another one before its end is
/// damaged, not lost.
class LogScanner
{
public:
    using Sink = std::function<void(const LogEvent&)>;
    /// What is kept of one event's text. The library itself writes at most 2 KB.
    static constexpr std::size_t kMaxEventBytes = 64 * 1024;

    /// `offset` is where in the file the first piece begins.
    explicit LogScanner(Sink sink, std::uint64_t offset = 0) : m_sink(std::move(sink)), m_base(offset) {}

    void feed(std::string_view piece);
    /// There is no more. What was begun is handed out as damaged.
    void finish();

    /// Behind the last event that was handed out: what comes later is read from there.
    std::uint64_t consumed() const { return m_consumed; }
    /// Whether the closing tag was the last thing, which is how a whole file ends.
    bool endsWhole() const { return m_endsWhole; }
    bool hasHead() const { return m_hasHead; }
    /// Bytes that belong to nothing: rests of events, zeros after a power failure.
    std::uint64_t strayBytes() const { return m_strayBytes; }

private:
    enum class Inside
    {
        Nothing,
        Event,
        Environment
    };
    struct Tag;

    void scan(bool isLast);
    bool step(bool isLast);
    bool stepOutside(bool isLast);
    bool stepInside(bool isLast);
    const Tag* nextTag(std::size_t& at) const;
    void countStray(std::string_view bytes);
    void drop(std::size_t length);
    void keepBody(std::size_t length);
    void handOut(bool isDamaged);

    Sink m_sink;
    std::string m_buffer;
    std::size_t m_at = 0; ///< what comes before it in the buffer is done
    std::uint64_t m_base; ///< where in the file that is
    std::uint64_t m_consumed = 0;
    Inside m_inside = Inside::Nothing;
    std::string m_body; ///< of the element that is being read
    bool m_isShortened = false;
    bool m_endsWhole = false;
    bool m_hasHead = false;
    std::uint64_t m_strayBytes = 0;
};

/// Without the five entities that the log knows; anything else with an ampersand stays.
std::string unescaped(std::string_view text);
} // namespace autool

#endif
