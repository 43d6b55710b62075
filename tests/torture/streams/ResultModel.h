#ifndef AUTOOLS_TORTURE_RESULTMODEL_H
#define AUTOOLS_TORTURE_RESULTMODEL_H

#include "foundation/RT_RESULT.h"

#include <cstdint>
#include <string>

namespace torture
{
/// What the rules make of a stored result: a date, a phase and five words, separated by white space. A number that is
/// none or outside of its type, or a missing word, makes everything behind it fail, and texts that failed are empty.
class ResultModel
{
public:
    explicit ResultModel(RT_RESULT& record);

    void read(const std::string& text);
    std::string written() const;
    std::string told() const;
    bool operator==(const ResultModel& other) const { return told() == other.told(); }
    bool ended() const { return m_ended; }
    bool failed() const { return m_failed; }

    std::int64_t date = 0;
    std::uint32_t phase = 0;
    std::string texts[5]; ///< action, object, function and the two arguments

private:
    /// The next number's digits; fails when there are none.
    std::string digits(const std::string& text, bool& negative);

    /// The text ends where a number should stand.
    void fail();

    std::size_t m_at = 0;
    bool m_missing = false;
    bool m_ended = false;
    bool m_failed = false;
};
} // namespace torture

#endif
