// What calls of Log do before the logger is made and after it is gone: nothing.

#include "foundation/EventLog.h"

#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace
{
constexpr int kSurvived = 42;
bool g_endsLate = false;

/// Constructed before every object of ordinary priority, the logger among them, and so destroyed after it.
class Outliving
{
public:
    Outliving() { Log(0, "before the logger"); }
    ~Outliving()
    {
        if (!g_endsLate)
            return;
        Log(2, "after the logger %d", 1);
        ArchiveCurrentLog();
        std::_Exit(kSurvived);
    }
};

#if defined(__GNUC__)
__attribute__((init_priority(101)))
#endif
Outliving g_outliving;
} // namespace

TEST(LogShutdownDeathTest, LoggingOutsideOfTheLoggersLifeIsHarmless)
{
#if !defined(__GNUC__)
    GTEST_SKIP() << "needs an object that is constructed before the logger";
#endif
    const auttest::LogFile log;
    EXPECT_EXIT(
        {
            g_endsLate = true;
            std::exit(0);
        },
        ::testing::ExitedWithCode(kSurvived), "");
    EXPECT_FALSE(log.has("Error", "after the logger 1"));
    EXPECT_FALSE(auttest::LogFile().content().find("before the logger") != std::string::npos);
}
