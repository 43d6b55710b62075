#ifndef AUTOOLS_TESTS_SUPPORT_DETAILEDLOG_H
#define AUTOOLS_TESTS_SUPPORT_DETAILEDLOG_H

#include "foundation/EventLog.h"
#include "tests/support/ClientRegistry.h"

namespace auttest
{
/// While it lives, the events up to this detail level are written: all of them unless a test says otherwise.
class DetailedLog
{
public:
    explicit DetailedLog(DWORD level = 5) { set(level); }
    DetailedLog(const DetailedLog&) = delete;
    DetailedLog& operator=(const DetailedLog&) = delete;
    ~DetailedLog() { set(0); }

private:
    void set(DWORD level) const
    {
        m_registry.write("Config", "TestEnv", level);
        for (int i = 0; i < 10; ++i) // the level is read again after so many calls
            Log(0xFFFF0000, "never written");
    }

    const ClientRegistry m_registry;
};
} // namespace auttest

#endif
