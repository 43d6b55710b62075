#include "tests/examples/UpdateCycleFixture.h"

#include "7xAutoUpdateTools.h"

#include <fstream>
#include <string>

using auttest::kCertificate;

namespace
{
/// The first half: from the server to the records of the releases.
class UpdateCycle : public auttest::UpdateCycleFixture
{
protected:
    std::string listOptions() const { return "--list " + cycleOptions(); }
    void expectNoRecords() const
    {
        WIN32_FIND_DATAA found;
        const aut::UniqueFind search(::FindFirstFileA((folder / "*.lst").c_str(), &found));
        EXPECT_FALSE(search) << found.cFileName;
    }
};
} // namespace

TEST_F(UpdateCycle, TurnsAProductListIntoReleases)
{
    EXPECT_EQ(0u, run(listOptions()));

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
    expectOutput("Phase1_Start  Update cycle: product lists of 1 certificates\r\n");
    expectOutput("Info          Update cycle: product list from http://" + server->host());
    expectOutput("Phase1_End    Update cycle: 4 releases\r\n");
}

TEST_F(UpdateCycle, SavesARecordForEachRelease)
{
    ASSERT_EQ(0u, run(listOptions()));
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
    ASSERT_EQ(0u, run(listOptions()));
    EXPECT_EQ(folder.path(), registry.readText("", "DataPath"));
    EXPECT_EQ("CH", registry.readText("", "CountryCode"));
    EXPECT_EQ(2u, registry.valueNames("").size());
    EXPECT_EQ(server->host(), registry.readText("Config", "WebServer"));
    EXPECT_TRUE(registry.valueExists("Config", "DiffWebConfDate")); // the server's clock, from its answer
    EXPECT_EQ(2u, registry.valueNames("Config").size());
    EXPECT_EQ("7.0.12P3_DE", registry.readText("Data\\WebConf\\Ledger", ""));
    EXPECT_EQ(kCertificate, registry.readText("Data\\WebConf\\Ledger", kCertificate));
    EXPECT_EQ(4u, registry.subkeys("Data\\WebConf").size());
}

TEST_F(UpdateCycle, RemembersItsSettings)
{
    ASSERT_EQ(0u, run(listOptions()));
    EXPECT_EQ(0u, run(std::string("--list --cid ") + kCertificate));
    EXPECT_EQ(2u, server->requests().size());
}

TEST_F(UpdateCycle, WithoutACertificateTheReleasesAreLocal)
{
    EXPECT_EQ(0u, run("--list --data \"" + folder.path() + "\" --url " + server->url("wcfgGetProductList.asp")));
    EXPECT_TRUE(folder.exists("local_Ledger.lst"));
    EXPECT_EQ("7.0.12P3_DE", registry.readText("Data\\Local", "Ledger"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf"));
    EXPECT_FALSE(registry.valueExists("Config", "WebServer"));
}

TEST_F(UpdateCycle, ShowsThatItIsDownloading)
{
    server->addRule("delay=1200");
    EXPECT_EQ(0u, run(listOptions()));
    expectOutput("Downloading the product list ...");
}

TEST_F(UpdateCycle, AnAnswerWithoutProductsIsNoFailure)
{
    server->addRule("file=error-no-data.xml");
    EXPECT_EQ(0u, run(listOptions()));
    expectOutput("The server has nothing for this workstation.\r\n");
    expectOutput("Phase1_End    Update cycle: 0 releases\r\n");
    expectNoRecords();
}

TEST_F(UpdateCycle, EndsWith4WhenTheServerIsDown)
{
    const std::string options = listOptions();
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
    EXPECT_EQ(4u, run(listOptions()));
    expectOutput("status 13503");
    expectNoRecords();
}

TEST_F(UpdateCycle, EndsWith5WhenTheAnswerIsNotWellFormed)
{
    server->addRule("file=malformed.xml");
    EXPECT_EQ(5u, run(listOptions()));
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
    EXPECT_EQ(6u, run("--list --server " + server->host() + " --cid C1 --data \"" + data + "\""));
    expectOutput("  ..\\evil: cannot be saved\r\n");
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
    for (const char* hours : {"22", "22-", "24-3", "3-25", "-1-3", "3-4x", "x"})
    {
        EXPECT_EQ(2u, run(std::string("--hours ") + hours)) << hours;
        expectOutput("--hours needs two hours of the day, as in 22-6");
    }
    EXPECT_EQ(0u, run("--help"));
    expectOutput("Exit codes:");
    EXPECT_FALSE(registry.keyExists("Config"));
}
