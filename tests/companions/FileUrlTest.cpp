#include "tests/companions/TransferLibrary.h"
#include "tests/support/TestFolder.h"

#include <windows.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

using auttest::fetch;
using auttest::Fetched;
using filetransfer::ConnectionParams;

class FileUrl : public ::testing::Test
{
protected:
    /// The folder with slashes: "C:/users/.../folder".
    std::string folder() const
    {
        std::string path = m_folder.path();
        std::replace(path.begin(), path.end(), '\\', '/');
        return path;
    }

    auttest::TestFolder m_folder;
};

TEST_F(FileUrl, EveryWayToWriteADriveIsUnderstood)
{
    m_folder.writeFile("data.xml", "<a/>");
    const std::string path = folder() + "/data.xml";
    const std::string behindDrive = path.substr(2);
    for (const std::string& url :
         {"file:///" + path, "file://" + path, "FILE://" + path, "file:" + path, "file:/" + path,
          "file://localhost/" + path, "file:///" + path.substr(0, 1) + "|" + behindDrive,
          "file:///" + m_folder.path() + "\\data.xml", "file:\\\\\\" + m_folder.path() + "\\data.xml"})
        EXPECT_EQ("<a/>", fetch(url).body) << url;
}

TEST_F(FileUrl, EscapesAndBlanksAreUnderstood)
{
    m_folder.writeFile("two words 100%.xml", "<b/>");
    EXPECT_EQ("<b/>", fetch("file:///" + folder() + "/two%20words 100%25.xml").body);
    EXPECT_EQ("<b/>", fetch("file:///" + folder() + "/two words 100%.xml").body);
}

TEST_F(FileUrl, TheQueryIsNoPartOfTheName)
{
    m_folder.writeFile("data.xml", "<a/>");
    EXPECT_EQ("<a/>", fetch("file:///" + folder() + "/data.xml?version=1").body);
}

TEST_F(FileUrl, AnEmptyFileIsFinishedWithDataOfNoBytes)
{
    m_folder.writeFile("empty", "");
    const Fetched fetched = fetch("file:///" + folder() + "/empty");
    EXPECT_EQ(1, fetched.status);
    EXPECT_TRUE(fetched.hasData);
    EXPECT_EQ("", fetched.body);
}

TEST_F(FileUrl, AFileIsReadInPackets)
{
    m_folder.writeFile("data", std::string(10000, 'd'));
    const Fetched fetched =
        fetch("file:///" + folder() + "/data", [](ConnectionParams& params) { params.packetSize = 1000; });
    EXPECT_EQ(std::string(10000, 'd'), fetched.body);
    EXPECT_EQ(12, fetched.steps); // opening, ten packets, the end
}

TEST_F(FileUrl, AFileBeyondTheMaximumIsTooLong)
{
    m_folder.writeFile("data", std::string(1001, 'd'));
    EXPECT_EQ(
        14004,
        fetch("file:///" + folder() + "/data", [](ConnectionParams& params) { params.maximumLength = 1000; }).status);
}

TEST_F(FileUrl, AMissingFileAndAMissingFolderAreWindowsErrors)
{
    const Fetched file = fetch("file:///" + folder() + "/missing");
    EXPECT_EQ(100002, file.status);
    EXPECT_EQ(2u, file.systemError);
    EXPECT_EQ(100003, fetch("file:///" + folder() + "/missing/too").status);
}

TEST_F(FileUrl, AFolderIsNoFile) { EXPECT_EQ(100005, fetch("file:///" + folder()).status); }

TEST_F(FileUrl, ADeviceIsNoFile)
{
    for (const char* device : {"file:///NUL", "file:///CON", "file:///C:/NUL"})
        EXPECT_GT(fetch(device).status, 2) << device;
}

TEST_F(FileUrl, AFileThatSomebodyHoldsIsTriedAgain)
{
    const std::string path = m_folder.writeFile("held", "free at last");
    const HANDLE held =
        ::CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_EQ(100032, fetch("file:///" + folder() + "/held").status);
    std::thread releaser(
        [held]
        {
            ::Sleep(150);
            ::CloseHandle(held);
        });
    const Fetched fetched = fetch("file:///" + folder() + "/held",
                                  [](ConnectionParams& params)
                                  {
                                      params.connectionRetries = 50;
                                      params.retryPauseMs = 50;
                                  });
    releaser.join();
    EXPECT_EQ("free at last", fetched.body);
}

TEST_F(FileUrl, AFileOpenForWritingByAnotherIsRead)
{
    const std::string path = m_folder.writeFile("log", "so far");
    const HANDLE writer = ::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, writer);
    EXPECT_EQ("so far", fetch("file:///" + folder() + "/log").body);
    ::CloseHandle(writer);
}

TEST_F(FileUrl, APathOfTenThousandCharactersIsAnError)
{
    EXPECT_GT(fetch("file:///C:/" + std::string(10000, 'p')).status, 100000);
}
