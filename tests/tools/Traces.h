#ifndef AUTOOLS_TESTS_TOOLS_TRACES_H
#define AUTOOLS_TESTS_TOOLS_TRACES_H

#include <string>
#include <vector>

namespace auttest
{
/// All that a program could leave on the machine: the client's whole registry tree and Windows' own keys that the
/// library writes, in both views, and the files of some folders with times and content.
class Traces
{
public:
    explicit Traces(const std::vector<std::string>& folders);
    /// The first line that is not the same; "" when there is none.
    std::string differenceTo(const Traces& other) const;

private:
    std::vector<std::string> m_lines;
};

/// The user's application data, where the log of this user's programs is.
std::string userFolder();
} // namespace auttest

#endif
