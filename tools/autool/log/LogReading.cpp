#include "log/LogReading.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

namespace autool
{
namespace
{
constexpr std::size_t kPieceBytes = 1024 * 1024;
// A writer replaces the closing tag at the end by its event and a new tag. So the end of a piece that reaches nearly to
// the end of the file is read again with what follows it.
constexpr std::size_t kTailBytes = 64;
// A file that does not end whole may be read in the very moment of a write.
constexpr int kTries = 4;
constexpr DWORD kBetweenTriesMs = 40;
constexpr std::size_t kFingerprintBytes = 64;

std::string bytesBefore(LogPart& part, std::uint64_t offset)
{
    const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(offset, kFingerprintBytes));
    std::string bytes;
    readPart(part, offset - length, length, bytes);
    return bytes;
}
} // namespace

PartOutcome scanPart(LogPart& part, std::uint64_t from, bool isFinal, const LogScanner::Sink& sink,
                     const std::function<void(std::uint64_t)>& progress)
{
    PartOutcome outcome;
    outcome.consumed = from;
    for (int attempt = 1;; ++attempt)
    {
        LogScanner scanner(sink, outcome.consumed);
        std::uint64_t offset = outcome.consumed;
        std::string bytes;
        for (;;)
        {
            outcome.isReadable = readPart(part, offset, kPieceBytes, bytes);
            const bool isEnd = bytes.size() < kPieceBytes;
            if (!isEnd)
                bytes.resize(kPieceBytes - kTailBytes);
            scanner.feed(bytes);
            offset += bytes.size();
            if (progress)
                progress(offset);
            if (isEnd)
                break;
        }
        outcome.consumed = std::max(outcome.consumed, scanner.consumed());
        const bool mayBeWritten = isFinal && part.isCurrent() && outcome.isReadable && !scanner.endsWhole();
        if (mayBeWritten && attempt < kTries)
        {
            ::Sleep(kBetweenTriesMs);
            continue; // from behind the last whole event
        }
        if (isFinal)
        {
            scanner.finish();
            outcome.consumed = std::max(outcome.consumed, scanner.consumed());
        }
        outcome.endsWhole = scanner.endsWhole();
        outcome.strayBytes = scanner.strayBytes();
        return outcome;
    }
}

LogFollower::LogFollower(std::string folder, std::string fileName, std::optional<LogPart> last, std::uint64_t consumed)
    : m_folder(std::move(folder)), m_fileName(std::move(fileName)), m_part(std::move(last)), m_consumed(consumed)
{
    if (m_part)
        m_before = bytesBefore(*m_part, m_consumed);
    remember(logParts(m_folder, m_fileName));
}

void LogFollower::remember(const std::vector<LogPart>& parts)
{
    m_archives.clear();
    std::copy_if(parts.begin(), parts.end(), std::back_inserter(m_archives),
                 [](const LogPart& part) { return !part.isCurrent(); });
}

/// Nobody writes to an archive any more.
bool LogFollower::isKnown(const LogPart& part) const
{
    return std::any_of(m_archives.begin(), m_archives.end(),
                       [&part](const LogPart& archive)
                       { return archive.identity == part.identity && archive.size == part.size; });
}

bool LogFollower::isUnchanged(const LogPart& now)
{
    return m_part && now.identity == m_part->identity && now.size >= m_consumed &&
           bytesBefore(*m_part, m_consumed) == m_before;
}

void LogFollower::readOn(LogPart part, std::uint64_t from, bool isFinal, const Sink& sink)
{
    const PartOutcome outcome =
        scanPart(part, from, isFinal, [&sink, &part](const LogEvent& event) { sink(event, part); });
    m_part = std::move(part);
    m_consumed = outcome.consumed;
    m_before = bytesBefore(*m_part, m_consumed);
}

bool LogFollower::poll(const Sink& sink)
{
    const std::optional<LogPart> current = logPart(m_folder + "\\" + m_fileName);
    if (current && isUnchanged(*current))
    {
        readOn(*m_part, m_consumed, false, sink);
        return false;
    }
    if (!current && m_part && !m_part->isCurrent())
        return false; // moved aside, and nobody has begun a new one
    std::vector<LogPart> parts = logParts(m_folder, m_fileName);
    // What was read last has become an archive: its rest comes first, then every file that is newer.
    auto next = parts.begin();
    bool isGap = false;
    if (m_part)
    {
        const auto last = std::find_if(parts.begin(), parts.end(),
                                       [this](const LogPart& part) { return part.identity == m_part->identity; });
        const bool isSame = last != parts.end() && bytesBefore(*last, m_consumed) == m_before;
        if (isSame)
            readOn(*last, m_consumed, !last->isCurrent(), sink);
        isGap = !isSame && !parts.empty();
        next = isSame ? last + 1 : parts.begin();
    }
    for (; next != parts.end(); ++next)
        if (!isGap || !isKnown(*next))
            readOn(*next, 0, !next->isCurrent(), sink);
    remember(parts);
    return isGap;
}
} // namespace autool
