#include "7xAutoUpdateTools.h"
#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>

namespace
{
const char* const kCertificate = "UzFNUExFLUNJRC0x";

/// The whole job: the host program against a server of this process.
class UpdateCycle : public ::testing::Test
{
protected:
    UpdateCycle() { server.emplace(AUTOOLS_WEBCONFIGURATOR_TEMPLATES); }

    std::string cycleOptions() const
    {
        return "--server " + server->host() + " --cid " + kCertificate + " --data \"" + folder.path() + "\"";
    }
    /// Runs the host; its output is kept.
    DWORD run(const std::string& options)
    {
        char own[MAX_PATH] = {};
        ::GetModuleFileNameA(nullptr, own, MAX_PATH);
        std::string command = own;
        command = '"' + command.substr(0, command.find_last_of('\\')) + "\\updatecycle.exe\" " + options;

        // The first program of a Windows session may start others that inherit the file and outlive it.
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        static int runs = 0;
        const std::string path = auttest::tempPath() + "\\updatecycle-" + std::to_string(::GetCurrentProcessId()) +
                                 "-" + std::to_string(++runs);
        const aut::UniqueFile file(::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inheritable,
                                                 CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = file.get();
        startup.hStdError = file.get();
        PROCESS_INFORMATION started = {};
        if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started))
        {
            ADD_FAILURE() << "updatecycle.exe does not start: " << ::GetLastError();
            return STILL_ACTIVE;
        }
        const aut::UniqueHandle process(started.hProcess);
        const aut::UniqueHandle thread(started.hThread);
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), 120'000));
        DWORD code = STILL_ACTIVE;
        ::GetExitCodeProcess(process.get(), &code);
        output = contentOf(file.get());
        return code;
    }
    static std::string contentOf(HANDLE file)
    {
        std::string content(::GetFileSize(file, nullptr), '\0');
        DWORD read = 0;
        ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
        EXPECT_TRUE(::ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr));
        content.resize(read);
        return content;
    }
    void expectOutput(const std::string& text) const
    {
        EXPECT_NE(std::string::npos, output.find(text)) << "missing: " << text << "\nin: " << output;
    }
    void expectNoRecords() const
    {
        WIN32_FIND_DATAA found;
        const aut::UniqueFind search(::FindFirstFileA((folder / "*.lst").c_str(), &found));
        EXPECT_FALSE(search) << found.cFileName;
    }

    auttest::ClientRegistry registry;
    auttest::TestFolder folder;
    std::optional<webconf_sample::WebConfigurator> server;
    std::string output;
};
} // namespace

TEST_F(UpdateCycle, TurnsAProductListIntoReleases)
{
    EXPECT_EQ(0u, run(cycleOptions()));

    ASSERT_EQ(1u, server->requests().size());
    EXPECT_EQ("wcfgGetProductList.asp", server->requests()[0].page);
    EXPECT_EQ(kCertificate, server->requests()[0].parameter("CertificateID"));

    expectOutput("Downloading the product list");
    expectOutput("4 releases, list number 42, country CH");
    expectOutput("  1001    Automatic Update  4.2.310B1_EN  install    2026-01-15 08:00  Velmora Automatic Update\r\n"
                 "    5001    Kernel          4.2.310B1_EN  install                      http://" +
                 server->host() + "/Depot/AutomaticUpdate/kernel.cab\r\n");
    expectOutput("  1002    Ledger            7.0.12P3_DE   install    2031-06-01 00:00  Velmora Ledger & Reports, "
                 "pre-install only\r\n");
    expectOutput("  1003    OldViewer         2.1.4A7_EN    remove     any time          Velmora Viewer "
                 "(discontinued)\r\n");
    expectOutput(
        "  1004    Archive           3.3.302B2_EN  disable    any time          Velmora Archive, no download\r\n");
    expectOutput("Phase1_Start  Update cycle: product list from http://" + server->host());
    expectOutput("Info          " + (folder / "Ledger.lst") + " file saved\r\n");
    expectOutput("Phase1_End    Update cycle: 4 releases\r\n");
}

TEST_F(UpdateCycle, SavesARecordForEachRelease)
{
    ASSERT_EQ(0u, run(cycleOptions()));
    for (const char* name : {"Automatic Update", "Ledger", "OldViewer", "Archive"})
    {
        expectOutput("  " + (folder / (std::string(name) + ".lst")) + "\r\n");
        std::ifstream file(folder / (std::string(name) + ".lst"));
        CRelease release;
        EXPECT_EQ(1, release.Serialize(file)) << name;
        EXPECT_STREQ(name, release.GetName());
        EXPECT_STREQ(kCertificate, release.GetCertificateID());
    }
}

TEST_F(UpdateCycle, WritesNothingButItsOwnSettings)
{
    ASSERT_EQ(0u, run(cycleOptions()));
    EXPECT_EQ(folder.path(), registry.readText("", "DataPath"));
    EXPECT_EQ("CH", registry.readText("", "CountryCode"));
    EXPECT_EQ(2u, registry.valueNames("").size());
    EXPECT_EQ(server->host(), registry.readText("Config", "WebServer"));
    EXPECT_EQ(1u, registry.valueNames("Config").size());
    EXPECT_EQ("7.0.12P3_DE", registry.readText("Data\\WebConf\\Ledger", ""));
    EXPECT_EQ(kCertificate, registry.readText("Data\\WebConf\\Ledger", kCertificate));
    EXPECT_EQ(4u, registry.subkeys("Data\\WebConf").size());
}

TEST_F(UpdateCycle, RemembersItsSettings)
{
    ASSERT_EQ(0u, run(cycleOptions()));
    EXPECT_EQ(0u, run(std::string("--cid ") + kCertificate));
    EXPECT_EQ(2u, server->requests().size());
}

TEST_F(UpdateCycle, WithoutACertificateTheReleasesAreLocal)
{
    EXPECT_EQ(0u, run("--data \"" + folder.path() + "\" --url " + server->url("wcfgGetProductList.asp")));
    EXPECT_TRUE(folder.exists("local_Ledger.lst"));
    EXPECT_FALSE(registry.keyExists("Data"));
    EXPECT_FALSE(registry.keyExists("Config"));
}

TEST_F(UpdateCycle, ShowsThatItIsDownloading)
{
    server->addRule("delay=1200");
    EXPECT_EQ(0u, run(cycleOptions()));
    expectOutput("Downloading the product list ...");
}

TEST_F(UpdateCycle, AnAnswerWithoutProductsIsNoFailure)
{
    server->addRule("file=error-no-data.xml");
    EXPECT_EQ(0u, run(cycleOptions()));
    expectOutput("The server has nothing for this workstation.\r\n");
    expectOutput("Phase1_End    Update cycle: 0 releases\r\n");
    expectNoRecords();
}

TEST_F(UpdateCycle, EndsWith4WhenTheServerIsDown)
{
    const std::string options = cycleOptions();
    server.reset();
    EXPECT_EQ(4u, run(options));
    expectOutput(
        "No product list came.\r\n  no data returned by the server: status 12029, in phase1xml::GetXMLDoc, on http://");
    expectOutput("Warning       Phase1: No data returned by the server\r\n");
    expectNoRecords();
}

TEST_F(UpdateCycle, EndsWith4WhenTheServerRefuses)
{
    server->addRule("status=503");
    EXPECT_EQ(4u, run(cycleOptions()));
    expectOutput("status 13503");
    expectNoRecords();
}

TEST_F(UpdateCycle, EndsWith5WhenTheAnswerIsNotWellFormed)
{
    server->addRule("file=malformed.xml");
    EXPECT_EQ(5u, run(cycleOptions()));
    expectOutput(
        "What the server sent is no product list.\r\n  Unable to create XML document from data: status 500, in "
        "phase1xml::GetXMLDoc, on pDoc->loadXML\r\n");
    expectOutput("Warning       Phase1: Unable to create XML document from data\r\n");
    expectNoRecords();
}

TEST_F(UpdateCycle, EndsWith6WhenANameIsNoFileName)
{
    webconf_sample::Rule rule;
    rule.answer.body =
        "<r><Data><NewData><ProductList><Product><Name>..\\evil</Name></Product><Product><Name>Good</Name>"
        "</Product></ProductList></NewData></Data></r>";
    server->addRule(rule);
    const std::string data = folder.makeFolder("data");
    EXPECT_EQ(6u, run("--server " + server->host() + " --cid C1 --data \"" + data + "\""));
    expectOutput("  ..\\evil: refused: its name is no file name\r\n");
    expectOutput("Error         Release record ..\\evil: refused");
    EXPECT_FALSE(folder.exists("evil.lst"));
    EXPECT_TRUE(folder.exists("data\\Good.lst"));
}

TEST_F(UpdateCycle, EndsWith3WithoutServerOrDataFolder)
{
    EXPECT_EQ(3u, run("--data \"" + folder.path() + "\""));
    expectOutput("No Web Configurator is known; name one with --server.");
    registry.removeKey("");
    EXPECT_EQ(3u, run("--server " + server->host()));
    expectOutput("There is no data folder; name one with --data.");
    EXPECT_EQ(3u, run("--server " + server->host() + " --data \"" + folder.writeFile("file", "x") + "\""));
    expectOutput("There is no data folder: ");
    EXPECT_TRUE(server->requests().empty());
}

TEST_F(UpdateCycle, EndsWith2OnACommandLineItDoesNotUnderstand)
{
    EXPECT_EQ(2u, run("--nonsense"));
    expectOutput("unknown option --nonsense\r\nupdatecycle [--server");
    EXPECT_EQ(2u, run("--cid"));
    expectOutput("--cid needs a value");
    EXPECT_EQ(2u, run("--server \"\""));
    EXPECT_EQ(0u, run("--help"));
    expectOutput("Exit codes:");
    EXPECT_FALSE(registry.keyExists("Config"));
}
