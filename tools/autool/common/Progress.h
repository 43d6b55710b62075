#ifndef AUTOOL_COMMON_PROGRESS_H
#define AUTOOL_COMMON_PROGRESS_H

#include "common/Console.h"

#include <cstdint>
#include <string>

namespace autool
{
/// Says on the error stream, if that is a terminal, how far something is that takes more than a second. It leaves no
/// trace behind.
class Progress
{
public:
    Progress(Console& console, std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `total` 0 is "not known". Cheap enough to be called often.
    void update(std::uint64_t done, std::uint64_t total = 0);
    /// Replaces what is being done.
    void update(const std::string& what);

private:
    void show(const std::string& text);

    Console& m_console;
    std::string m_what;
    std::uint64_t m_start;
    std::uint64_t m_shownAt = 0;
    std::size_t m_shownWidth = 0;
};
} // namespace autool

#endif
