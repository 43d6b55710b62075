#include "log/LogOptions.h"

#include "common/Text.h"

#include <algorithm>

namespace autool
{
LogFilter::LogFilter(const LogOptions& options) : m_since(options.since), m_text(lowerCase(options.text))
{
    for (const std::string& type : options.types)
        m_types.push_back(lowerCase(type));
}

bool LogFilter::isLater(const LogEvent& event)
{
    if (event.time)
        m_isLater = !m_since || *event.time >= *m_since;
    return m_isLater || !m_since;
}

bool LogFilter::wants(const LogEvent& event) const
{
    if (!m_types.empty() && std::find(m_types.begin(), m_types.end(), lowerCase(event.type)) == m_types.end())
        return false;
    return m_text.empty() || containsIgnoringCase(event.text, m_text);
}
} // namespace autool
