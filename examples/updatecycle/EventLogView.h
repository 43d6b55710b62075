#ifndef AUTOOLS_UPDATECYCLE_EVENTLOGVIEW_H
#define AUTOOLS_UPDATECYCLE_EVENTLOGVIEW_H

#include <string>
#include <vector>

namespace updatecycle
{
/// What the library's event log receives from the construction of this object on.
class EventLogView
{
public:
    EventLogView();
    const std::string& path() const { return m_path; }
    void print() const;

private:
    std::vector<std::string> eventLines() const;

    std::string m_path;
    std::size_t m_seen;
};
} // namespace updatecycle

#endif
