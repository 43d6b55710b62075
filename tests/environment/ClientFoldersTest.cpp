#include "environment/ClientFolders.h"

#include "foundation/RT_RESULT.h"
#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
String dataPath(int perUser)
{
    String path("old");
    GetAUDataPath(path, perUser);
    return path;
}
} // namespace

TEST(GetAUDataPath, IsBelowTheUsersApplicationDataWhenAskedFor)
{
    const auttest::ClientRegistry registry;
    registry.write("", "DataPath", "C:\\machine");
    EXPECT_EQ(std::string(std::getenv("APPDATA")) + "\\Velmora\\Automatic Update Data", std::string(dataPath(1)));
    EXPECT_EQ(std::string(dataPath(1)), std::string(dataPath(-1)));
}

TEST(GetAUDataPath, IsTheDataPathOfTheRegistryOtherwise)
{
    const auttest::ClientRegistry registry;
    EXPECT_STREQ("", dataPath(0));
    registry.write("", "DataPath", "C:\\machine\\");
    EXPECT_STREQ("C:\\machine\\", dataPath(0));
    registry.write("", "DataPath", std::string(10000, 'x'));
    EXPECT_STREQ("", dataPath(0));
}

namespace
{
class ShellFolder : public ::testing::Test
{
protected:
    /// The data path while the shell's application-data folder is this one.
    static std::string dataPathWith(const char* folder)
    {
        const auttest::Registry user(HKEY_CURRENT_USER);
        const std::string folders = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
        const auto before = user.readRaw(folders, "AppData");
        user.write(folders, "AppData", folder);
        const std::string path(dataPath(1));
        if (before)
            user.writeRaw(folders, "AppData", before->type, before->bytes);
        else
            user.removeValue(folders, "AppData");
        return path;
    }
};
} // namespace

TEST_F(ShellFolder, LosesTheBackslashesAtItsEnds)
{
    EXPECT_EQ("C:\\windows\\Velmora\\Automatic Update Data", dataPathWith("C:\\windows"));
    EXPECT_EQ("C:\\windows\\Velmora\\Automatic Update Data", dataPathWith("C:\\windows\\"));
    EXPECT_EQ("windows\\Velmora\\Automatic Update Data", dataPathWith("\\windows\\"));
}

TEST_F(ShellFolder, GivesWayToTheDataPathWhenItCannotBeHad)
{
    const auttest::ClientRegistry registry;
    registry.write("", "DataPath", "C:\\machine");
    EXPECT_EQ("C:\\machine", dataPathWith("Z:\\no\\such\\folder"));
}

namespace
{
/// What kind of token the shell was asked for a folder of; 0 for none.
int askedForTokenType = 0;

HRESULT WINAPI notesTheToken(HWND, int, HANDLE token, DWORD, char* folder)
{
    TOKEN_TYPE type{};
    DWORD size = 0;
    const bool isToken = ::GetTokenInformation(token, TokenType, &type, sizeof type, &size) != FALSE;
    askedForTokenType = isToken ? type : 0;
    folder[0] = 'F';
    folder[1] = '\0';
    return S_OK;
}

FARPROC WINAPI findsThatShell(HMODULE module, const char* name)
{
    if (std::strcmp(name, "SHGetFolderPathA") == 0)
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(notesTheToken));
    return ::GetProcAddress(module, name);
}
} // namespace

namespace
{
FARPROC WINAPI findsNoShell(HMODULE module, const char* name)
{
    return std::strcmp(name, "SHGetFolderPathA") == 0 ? nullptr : ::GetProcAddress(module, name);
}
} // namespace

TEST(GetAUDataPath, IsTheDataPathOfTheRegistryWhenTheShellHasNoSuchEntry)
{
    const auttest::ClientRegistry registry;
    registry.write("", "DataPath", "C:\\machine");
    const auttest::ImportPatch patch("GetProcAddress", findsNoShell);
    EXPECT_STREQ("C:\\machine", dataPath(1));
}

TEST(GetAUDataPath, IsThatOfTheProcessWhileTheThreadImpersonates)
{
    const std::string before(dataPath(1));
    ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
    EXPECT_EQ(before, std::string(dataPath(1)));
    {
        const auttest::ImportPatch patch("GetProcAddress", findsThatShell);
        EXPECT_STREQ("F\\Velmora\\Automatic Update Data", dataPath(1));
    }
    EXPECT_TRUE(::RevertToSelf());
    EXPECT_EQ(TokenPrimary, askedForTokenType); // the thread's would be one for impersonation
}

TEST(IsEnoughDiskSpace, IsTrueWhenTheRoomIsThere)
{
    EXPECT_TRUE(IsEnoughDiskSpace("C:\\any\\path", 0));
    EXPECT_TRUE(IsEnoughDiskSpace("C:", 1));
    EXPECT_TRUE(IsEnoughDiskSpace("c", 1));
}

TEST(IsEnoughDiskSpace, IsTrueWhenTheFreeSpaceCannotBeRead)
{
    EXPECT_TRUE(IsEnoughDiskSpace("Q:\\no such drive", 0xFFFFFFFF));
    EXPECT_TRUE(IsEnoughDiskSpace("\\\\server\\share", 0xFFFFFFFF));
    EXPECT_TRUE(IsEnoughDiskSpace("", 0xFFFFFFFF));
    EXPECT_TRUE(IsEnoughDiskSpace(nullptr, 0xFFFFFFFF));
    EXPECT_TRUE(IsEnoughDiskSpace(std::string(10000, '?').c_str(), 0xFFFFFFFF));
}

TEST(IsEnoughDiskSpace, LeavesTheSharedRecordAloneWhenItIsTrue)
{
    result->Set(1, "action", "function", "argument1", "argument2", "object");
    EXPECT_TRUE(IsEnoughDiskSpace("C:", 1));
    EXPECT_EQ(1, result->GetStatusCode());
    EXPECT_STREQ("action", result->GetAction());
}

namespace
{
/// A drive with nothing free: the host's process folder, which is no real disk, under a letter of its own. Wine takes
/// its drives from links beside drive C:, and it starts the host's programs.
class FullDrive : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        char link[] = "ln -sfn /proc ../dosdevices/p:";
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        if (::CreateProcessA("Z:\\bin\\ln", link, nullptr, nullptr, FALSE, 0, nullptr, "C:\\", &startup, &started) ==
            FALSE)
            return;
        aut::UniqueHandle(started.hProcess).reset();
        aut::UniqueHandle(started.hThread).reset();
        for (int i = 0; i < 1000 && !isThere(); ++i) // there is nothing to wait on: it is no process of Windows
            ::Sleep(10);
    }
    void SetUp() override
    {
        if (!isThere())
            GTEST_SKIP() << "no drive without free space can be made here";
        result->Set(1, "action", "function", "argument1", "argument2", "object");
    }

private:
    static bool isThere()
    {
        ULARGE_INTEGER bytes{};
        return ::GetDiskFreeSpaceExA("P:\\", &bytes, nullptr, nullptr) != FALSE && bytes.QuadPart == 0;
    }
};
} // namespace

TEST_F(FullDrive, HasNotEnoughSpace)
{
    EXPECT_FALSE(IsEnoughDiskSpace("P:\\any\\path", 5u << 20));
    EXPECT_EQ(459, result->GetStatusCode());
    EXPECT_STREQ("Not enough disk space", result->GetAction());
    EXPECT_STREQ("IsEnoughDiskSpace", result->GetFunction());
    EXPECT_STREQ("5", result->GetArgument1());
    EXPECT_STREQ("MBytes needed", result->GetArgument2());
    EXPECT_STREQ("P:\\", result->GetObjectA());
}

TEST_F(FullDrive, GivesTheNeedInWholeMegabytes)
{
    const auto megabytes = [](unsigned long bytes)
    {
        EXPECT_FALSE(IsEnoughDiskSpace("P:", bytes));
        return std::string(result->GetArgument1());
    };
    EXPECT_EQ("0", megabytes(1));
    EXPECT_EQ("0", megabytes((1u << 20) - 1));
    EXPECT_EQ("1", megabytes(1u << 20));
    EXPECT_EQ("4095", megabytes(0xFFFFFFFF));
}

TEST_F(FullDrive, GivesALowerCaseRootForALowerCaseLetter)
{
    EXPECT_FALSE(IsEnoughDiskSpace("p:\\any", 1));
    EXPECT_STREQ("p:\\", result->GetObjectA());
}

TEST_F(FullDrive, HasEnoughForNothing) { EXPECT_TRUE(IsEnoughDiskSpace("P:\\", 0)); }

namespace
{
/// A drive with 4 MB free for the caller and more for others.
BOOL WINAPI fourMegabytes(const char*, ULARGE_INTEGER* available, ULARGE_INTEGER* total, ULARGE_INTEGER* free)
{
    constexpr ULONGLONG kMegabyte = 1u << 20;
    if (available != nullptr)
        available->QuadPart = 4 * kMegabyte;
    if (total != nullptr)
        total->QuadPart = 1000 * kMegabyte;
    if (free != nullptr)
        free->QuadPart = 500 * kMegabyte;
    return TRUE;
}
} // namespace

TEST(IsEnoughDiskSpace, ComparesTheNeedWithWhatIsFreeForTheCaller)
{
    const auttest::ImportPatch patch("GetDiskFreeSpaceExA", fourMegabytes);
    EXPECT_TRUE(IsEnoughDiskSpace("C:\\any", 1));
    EXPECT_TRUE(IsEnoughDiskSpace("C:\\any", 4u << 20));
    EXPECT_FALSE(IsEnoughDiskSpace("C:\\any", (4u << 20) + 1));
    EXPECT_STREQ("4", result->GetArgument1());
    EXPECT_FALSE(IsEnoughDiskSpace("C:\\any", 5u << 20));
    EXPECT_EQ(459, result->GetStatusCode());
    EXPECT_STREQ("5", result->GetArgument1());
    EXPECT_STREQ("C:\\", result->GetObjectA());
    EXPECT_FALSE(IsEnoughDiskSpace("C:\\any", 0xFFFFFFFF));
}

namespace
{
std::string windowsFolder()
{
    char folder[MAX_PATH] = "";
    ::GetWindowsDirectoryA(folder, sizeof folder);
    return folder;
}
constexpr unsigned int kIniName = 17; // "\7xAutoUpdate.ini"
} // namespace

TEST(Get7xAutoUpdateIniFile, IsInTheWindowsFolder)
{
    char buffer[MAX_PATH];
    const std::string expected = windowsFolder() + "\\7xAutoUpdate.ini";
    EXPECT_EQ(expected.size(), Get7xAutoUpdateIniFile(buffer, sizeof buffer));
    EXPECT_EQ(expected, buffer);
}

TEST(Get7xAutoUpdateIniFile, NeedsOneByteMoreThanPathAndTerminator)
{
    // The Windows folder is read into the size less the name's length less one, its terminator included.
    const std::string expected = windowsFolder() + "\\7xAutoUpdate.ini";
    const auto enough = static_cast<unsigned int>(expected.size() + 2);
    char buffer[MAX_PATH];
    EXPECT_EQ(expected.size(), Get7xAutoUpdateIniFile(buffer, enough));
    EXPECT_EQ(expected, buffer);
    EXPECT_EQ(0u, Get7xAutoUpdateIniFile(buffer, enough - 1));
    EXPECT_STREQ("", buffer);
}

TEST(Get7xAutoUpdateIniFile, NeverWritesBehindASmallBuffer)
{
    for (unsigned int size = 0; size <= kIniName + 20; ++size)
    {
        char buffer[64];
        std::memset(buffer, '#', sizeof buffer);
        const unsigned int length = Get7xAutoUpdateIniFile(buffer, size);
        EXPECT_TRUE(length == 0 || length + 1 < size) << size;
        for (unsigned int i = size; i < sizeof buffer; ++i)
            EXPECT_EQ('#', buffer[i]) << size << ", " << i;
        if (size > 0)
        {
            EXPECT_EQ(length, std::strlen(buffer)) << size;
        }
    }
    EXPECT_EQ(0u, Get7xAutoUpdateIniFile(nullptr, 100));
}

TEST(GetDataFilePath, JoinsDataPathProductAndHost)
{
    const auttest::ClientRegistry registry;
    registry.write("", "DataPath", "C:\\data");
    char folder[MAX_PATH];
    char file[MAX_PATH];
    GetDataFilePath(folder, file, "host.example", "CID1", "Product", "");
    EXPECT_STREQ("C:\\data\\Product\\host.example", folder);
    EXPECT_STREQ("CID1.dat", file);
}

TEST(GetDataFilePath, NamesTheComponentBehindTheCertificateId)
{
    const auttest::ClientRegistry registry;
    char folder[MAX_PATH];
    char file[MAX_PATH];
    GetDataFilePath(folder, file, "host.example", "CID1", "Product", "Kernel");
    EXPECT_STREQ("\\Product\\host.example", folder);
    EXPECT_STREQ("CID1__Kernel.dat", file);
}

TEST(GetDataFilePath, GivesNothingOfANameThatDoesNotFit)
{
    const auttest::ClientRegistry registry;
    registry.write("", "DataPath", "C:\\data");
    char folder[MAX_PATH];
    char file[MAX_PATH];
    const auto text = [](std::size_t length) { return std::string(length, 'x'); };
    // "C:\data\P\" has ten characters, ".dat" four.
    GetDataFilePath(folder, file, text(249).c_str(), text(255).c_str(), "P", "");
    EXPECT_EQ("C:\\data\\P\\" + text(249), folder);
    EXPECT_EQ(text(255) + ".dat", file);
    GetDataFilePath(folder, file, text(250).c_str(), text(256).c_str(), "P", "");
    EXPECT_STREQ("", folder);
    EXPECT_STREQ("", file);
    for (const char* component : {"", "C"}) // not even the entry has a name
    {
        GetDataFilePath(folder, file, "host", text(260).c_str(), "P", component);
        EXPECT_STREQ("C:\\data\\P\\host", folder);
        EXPECT_STREQ("", file);
    }
    GetDataFilePath(folder, file, "host", "", "P", text(258).c_str());
    EXPECT_STREQ("", file);
}

TEST(GetDataFilePath, TakesNullAndEndlessTexts)
{
    const auttest::ClientRegistry registry;
    registry.write("", "DataPath", "C:\\data");
    char folder[MAX_PATH + 1];
    char file[MAX_PATH + 1];
    folder[MAX_PATH] = '#';
    file[MAX_PATH] = '#';
    const std::string endless(10000, 'x');
    GetDataFilePath(folder, file, endless.c_str(), endless.c_str(), endless.c_str(), endless.c_str());
    EXPECT_STREQ("", folder);
    EXPECT_STREQ("", file);
    EXPECT_EQ('#', folder[MAX_PATH]);
    EXPECT_EQ('#', file[MAX_PATH]);

    GetDataFilePath(folder, file, nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ("C:\\data\\\\", folder);
    EXPECT_STREQ(".dat", file);
    GetDataFilePath(nullptr, nullptr, "host", "cid", "product", "component");
}
