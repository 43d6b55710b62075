#include "system/COperatingSystem.h"

#include "tests/foundation/ChildProgram.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
std::string textOf(int value)
{
    return std::string(COperatingSystem::GetInstance()->OSValueToString(static_cast<COperatingSystem::OS>(value)));
}
} // namespace

TEST(COperatingSystem, NamesEveryValue)
{
    const char* const names[] = {"UNKNOWN",    "WIN95",         "Windows 95 A", "Windows 95 B", "Windows 95 C",
                                 "Windows 98", "Windows 98 SE", "Windows Me",   "Windows NT 4", "Windows 2000",
                                 "Windows XP", "Windows VISTA", "Windows 7"};
    for (int i = 0; i <= 12; ++i)
        EXPECT_EQ(names[i], textOf(i)) << i;
    EXPECT_EQ("UnSupported OS", textOf(13));
    EXPECT_EQ("UnSupported OS", textOf(-1));
    EXPECT_EQ("UnSupported OS", textOf(1000000));
}

TEST(COperatingSystem, IsOneInstanceUntilFreed)
{
    COperatingSystem* const first = COperatingSystem::GetInstance();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(first, COperatingSystem::GetInstance());
    COperatingSystem::FreeInstance();
    COperatingSystem::FreeInstance(); // nothing left to free
    EXPECT_NE(nullptr, COperatingSystem::GetInstance());
}

TEST(COperatingSystem, AgreesWithTheSystemItRunsOn)
{
    String version;
    String servicePack;
    const COperatingSystem::OS value = COperatingSystem::GetInstance()->GetOSValue(version, servicePack);
    OSVERSIONINFOA told{};
    told.dwOSVersionInfoSize = sizeof told;
    ASSERT_TRUE(::GetVersionExA(&told));
    if (value == COperatingSystem::OS_UNKNOWN)
    {
        EXPECT_STREQ("", version);
        EXPECT_STREQ("", servicePack);
    }
    else
    {
        EXPECT_EQ(std::to_string(told.dwMajorVersion) + "." + std::to_string(told.dwMinorVersion),
                  std::string(version));
        EXPECT_STREQ(told.szCSDVersion, servicePack);
    }
    EXPECT_EQ(1, COperatingSystem::GetInstance()->IsOSx64()); // the tests are 64-bit programs
}

namespace
{
void WINAPI plainSystemOfAnotherKind(SYSTEM_INFO* system)
{
    *system = {};
    system->wProcessorArchitecture = PROCESSOR_ARCHITECTURE_INTEL;
}
FARPROC WINAPI withoutNativeQuery(HMODULE module, const char* name)
{
    return std::strcmp(name, "GetNativeSystemInfo") == 0 ? nullptr : ::GetProcAddress(module, name);
}
int g_versionQueries = 0;
BOOL WINAPI countedVersionQuery(OSVERSIONINFOA* version)
{
    ++g_versionQueries;
    EXPECT_EQ(sizeof(OSVERSIONINFOA), version->dwOSVersionInfoSize);
    return ::GetVersionExA(version);
}
} // namespace

TEST(COperatingSystem, AsksForTheNativeSystemAndForThePlainOneWhereThatIsMissing)
{
    const auttest::ImportPatch plain("GetSystemInfo", plainSystemOfAnotherKind);
    COperatingSystem::FreeInstance();
    EXPECT_EQ(1, COperatingSystem::GetInstance()->IsOSx64());
    COperatingSystem::FreeInstance();
    {
        const auttest::ImportPatch patch("GetProcAddress", withoutNativeQuery);
        EXPECT_EQ(0, COperatingSystem::GetInstance()->IsOSx64());
    }
    COperatingSystem::FreeInstance();
}

TEST(COperatingSystem, AsksTheSystemOnceForEachInstance)
{
    const auttest::ImportPatch patch("GetVersionExA", countedVersionQuery);
    COperatingSystem::FreeInstance();
    g_versionQueries = 0;
    for (int i = 0; i < 3; ++i)
    {
        String version;
        String servicePack;
        COperatingSystem::GetInstance()->GetOSValue(version, servicePack);
        COperatingSystem::GetInstance()->IsOSx64();
        EXPECT_EQ(1, g_versionQueries);
    }
    COperatingSystem::FreeInstance();
    COperatingSystem::GetInstance()->IsOSx64();
    EXPECT_EQ(2, g_versionQueries);
}

namespace
{
struct Told
{
    const char* wineName; ///< what Wine is told to be for one program
    const char* line;
};
class COperatingSystemOf : public ::testing::TestWithParam<Told>
{
};
} // namespace

/// A process that is told another version: value, name, version and service pack, asked for twice, and once more after
/// the instance was freed.
TEST_P(COperatingSystemOf, ReportsTheVersionTheProcessIsTold)
{
    const auttest::TestFolder folder;
    const std::string program = auttest::logProgramAs(folder, "told_system.exe");
    const auttest::Registry user(HKEY_CURRENT_USER);
    const std::string key = "Software\\Wine\\AppDefaults\\told_system.exe";
    user.write(key, "Version", GetParam().wineName);

    EXPECT_EQ(0u, auttest::runProgram(program, "system \"" + folder / "out.txt" + '"'));
    user.removeKey(key);

    const std::string line = std::string(GetParam().line) + "\r\n";
    EXPECT_EQ(line + line + line, folder.readFile("out.txt"));
}

INSTANTIATE_TEST_SUITE_P(Versions, COperatingSystemOf,
                         ::testing::Values(Told{"win95", "1|WIN95|4.0||0"}, Told{"win98", "6|Windows 98 SE|4.10| A |0"},
                                           Told{"winme", "7|Windows Me|4.90| |0"},
                                           Told{"nt40", "8|Windows NT 4|4.0|Service Pack 6a|1"},
                                           Told{"win2k", "9|Windows 2000|5.0|Service Pack 4|1"},
                                           Told{"winxp", "10|Windows XP|5.1|Service Pack 3|1"},
                                           Told{"winxp64", "10|Windows XP|5.2|Service Pack 2|1"},
                                           Told{"win2003", "10|Windows XP|5.2|Service Pack 2|1"},
                                           Told{"vista", "11|Windows VISTA|6.0|Service Pack 2|1"},
                                           Told{"win7", "12|Windows 7|6.1|Service Pack 1|1"},
                                           Told{"win8", "0|UNKNOWN|||1"}, Told{"win10", "0|UNKNOWN|||1"}),
                         [](const auto& row) { return std::string(row.param.wineName); });
