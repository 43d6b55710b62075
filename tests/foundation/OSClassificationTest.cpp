#include "system/OSClassification.h"

#include "platform/BoundedText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
struct System
{
    const char* name;
    DWORD platform;
    DWORD major;
    DWORD minor;
    const char* servicePack;
    int value;
};
class OSClassification : public ::testing::TestWithParam<System>
{
};
constexpr DWORD kNT = 2;
constexpr DWORD k9x = 1;
constexpr DWORD kWin32s = 0;
} // namespace

TEST_P(OSClassification, Is)
{
    OSVERSIONINFOA version{};
    version.dwPlatformId = GetParam().platform;
    version.dwMajorVersion = GetParam().major;
    version.dwMinorVersion = GetParam().minor;
    aut::copyText(version.szCSDVersion, GetParam().servicePack);
    EXPECT_EQ(GetParam().value, static_cast<int>(aut::classifyOS(version)));
}

INSTANTIATE_TEST_SUITE_P(
    Systems, OSClassification,
    ::testing::Values(System{"Win95", k9x, 4, 0, "", 1}, System{"Win95OtherLetter", k9x, 4, 0, " D", 1},
                      System{"Win95LetterInFirstPlace", k9x, 4, 0, "A", 1}, System{"Win95A", k9x, 4, 0, " A", 2},
                      System{"Win95B", k9x, 4, 0, " B", 3}, System{"Win95C", k9x, 4, 0, " C", 4},
                      System{"Win95LowerCaseLetter", k9x, 4, 0, " c", 1}, System{"Win98", k9x, 4, 10, "", 5},
                      System{"Win98C", k9x, 4, 10, " C", 5}, System{"Win98SEByA", k9x, 4, 10, " A", 6},
                      System{"Win98SEByB", k9x, 4, 10, " B", 6}, System{"WinMe", k9x, 4, 90, "", 7},
                      System{"Other9xMinor", k9x, 4, 1, "", 0}, System{"Other9xMajor", k9x, 5, 0, "", 0},
                      System{"NT4", kNT, 4, 0, "Service Pack 6", 8}, System{"NT351", kNT, 3, 51, "", 8},
                      System{"NT0", kNT, 0, 0, "", 8}, System{"Win2000", kNT, 5, 0, "", 9},
                      System{"WinXP", kNT, 5, 1, "Service Pack 3", 10},
                      System{"WinXP64AndServer2003", kNT, 5, 2, "", 10}, System{"Any5x", kNT, 5, 77, "", 10},
                      System{"WinVista", kNT, 6, 0, "", 11}, System{"Win7", kNT, 6, 1, "", 12},
                      System{"Win8", kNT, 6, 2, "", 0}, System{"Win81", kNT, 6, 3, "", 0},
                      System{"Win10", kNT, 10, 0, "", 0}, System{"Win32s", kWin32s, 4, 0, "", 0}),
    [](const auto& row) { return std::string(row.param.name); });
