#include "tests/examples/UpdateCycleFixture.h"
#include "tests/support/Certificates.h"

#include <string>
#include <vector>

using auttest::InstalledCertificate;

namespace
{
/// The host finds out itself who this workstation is: it has two certificates. The machine's store is searched before
/// the user's, so that their order is known.
class Workstation : public auttest::UpdateCycleFixture
{
protected:
    Workstation()
        : first(auttest::Store::machine, {"Name", "A", "B", "Unit", kFirst}),
          second(auttest::Store::user, {"Name", "A", "B", "Unit", kSecond})
    {
        registry.write("", "Current_AutoUpdate_Version", "4.2.310B1_EN");
        answer("wcfgGetConfigForProduct.asp", kFirst, configuration("T1", 0, 24));
        serve(kFirst, "Ledger");
        serve(kSecond, "Reports");
    }

    void answer(const char* page, const char* certificateId, const std::string& body)
    {
        webconf_sample::Rule rule;
        rule.page = page;
        rule.query["CertificateID"] = certificateId;
        rule.answer.body = body;
        server->addRule(rule);
    }
    static std::string configuration(const std::string& timeStamp, int start, int end)
    {
        return "<wcfgResponse><Data><ComponentList><Component><Configuration><AutomaticUpdateData><InstallStart>" +
               std::to_string(start) + "</InstallStart><InstallEnd>" + std::to_string(end) +
               "</InstallEnd></AutomaticUpdateData></Configuration></Component></ComponentList><TimeStamp>" +
               timeStamp + "</TimeStamp></Data></wcfgResponse>";
    }
    /// Hours that begin in two hours and end in four.
    static std::string laterHours()
    {
        SYSTEMTIME now{};
        ::GetLocalTime(&now);
        return std::to_string((now.wHour + 2) % 24) + "-" + std::to_string((now.wHour + 4) % 24);
    }
    std::string laterConfiguration() const
    {
        const std::string hours = laterHours();
        return configuration("T2", std::stoi(hours), std::stoi(hours.substr(hours.find('-') + 1)));
    }
    /// From now on the certificate's product list is one release without components.
    void serve(const char* certificateId, const std::string& product)
    {
        answerList(certificateId, "<Data><NewData><ModifCounter>7</ModifCounter><ProductList><Product><Name>" +
                                      product +
                                      "</Name><Language>EN</Language><Version>1.0</Version><Build>B1</Build>"
                                      "<Action>INSTALL</Action></Product></ProductList></NewData></Data>");
    }
    void answerList(const char* certificateId, const std::string& nodes)
    {
        answer("wcfgGetProductList.asp", certificateId, "<wcfgResponse>" + nodes + "</wcfgResponse>");
    }
    void refuse(const char* certificateId, const std::string& reason)
    {
        answerList(certificateId, "<Status><Error><Kind><Business><AccessMissing><DBReason>" + reason +
                                      "</DBReason></AccessMissing></Business></Kind></Error></Status>");
    }
    DWORD cycle(const std::string& further = "")
    {
        server->clearRequests();
        return run(options() + further);
    }
    std::string options() const { return "--server " + server->host() + " --data \"" + folder.path() + "\""; }
    std::vector<std::string> lines() const
    {
        std::vector<std::string> all;
        for (const webconf_sample::HttpRequest& request : server->requests())
            all.push_back(request.line);
        return all;
    }
    static std::string configurationLine(const std::string& id, const std::string& timeStamp)
    {
        return "GET /WebConfV1/wcfgGetConfigForProduct.asp?CertificateID=" + id +
               "&ProductName=Automatic%20Update&Version=4.2.310&Build=B1&Language=EN&TimeStamp=" + timeStamp +
               " HTTP/1.1";
    }
    static std::string listLine(const std::string& id)
    {
        return "GET /WebConfV1/wcfgGetProductList.asp?CertificateID=" + id +
               "&ProductName=Automatic%20Update&Version=4.2.310&Build=B1&Language=EN HTTP/1.1";
    }
    bool installed(const char* product) const
    {
        return registry.readText("Products\\" + std::string(product), "Version") == "1.0B1";
    }

    using Lines = std::vector<std::string>;
    static constexpr const char* kFirst = "Rmlyc3RDZXJ0aWZpY2F0ZQ==";
    static constexpr const char* kSecond = "U2Vjb25k+2VydGlmaWNhdGU=";
    static constexpr const char* kSecondInAddress = "U2Vjb25k%2B2VydGlmaWNhdGU=";
    InstalledCertificate first;
    InstalledCertificate second;
};

/// A workstation without any certificate.
using NoWorkstation = auttest::UpdateCycleFixture;
} // namespace

TEST_F(Workstation, AsksForItsConfigurationAndForTheListOfEachCertificate)
{
    EXPECT_EQ(0u, cycle());
    EXPECT_EQ((Lines{configurationLine(kFirst, "1980-01-01%2000:00:00"), listLine(kFirst), listLine(kSecondInAddress)}),
              lines());
    expectOutput("  configured   " + (folder / "Client\\AUKernelData.xml") + " is as the server wants it\r\n");
    EXPECT_EQ(configuration("T1", 0, 24), folder.readFile("Client\\AUKernelData.xml"));
    EXPECT_TRUE(folder.exists(std::string(kFirst) + "_productList.xml"));
    EXPECT_TRUE(folder.exists(std::string(kSecond) + "_productList.xml"));
    EXPECT_TRUE(installed("Ledger"));
    EXPECT_TRUE(installed("Reports"));
    EXPECT_EQ(kFirst, registry.readText("Products\\Ledger\\Certificates", kFirst));
    EXPECT_EQ(kSecond, registry.readText("Products\\Reports\\Certificates", kSecond));
}

TEST_F(Workstation, AsksNextOnlyForWhatChangedSince)
{
    ASSERT_EQ(0u, cycle(" --list"));
    answer("wcfgGetConfigForProduct.asp", kFirst, "<wcfgResponse><Data><NoChange/></Data></wcfgResponse>");
    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_EQ((Lines{configurationLine(kFirst, "T1"), listLine(kFirst), listLine(kSecondInAddress)}), lines());
    EXPECT_EQ(configuration("T1", 0, 24), folder.readFile("Client\\AUKernelData.xml"));
}

TEST_F(Workstation, InstallsOnlyInTheHoursOfItsConfiguration)
{
    answer("wcfgGetConfigForProduct.asp", kFirst, laterConfiguration());
    EXPECT_EQ(0u, cycle());
    expectOutput("  decided      later: outside the installation hours " + laterHours() + " (not installed)\r\n");
    EXPECT_FALSE(installed("Ledger"));
    EXPECT_EQ(0u, cycle(" --hours 0-24"));
    EXPECT_TRUE(installed("Ledger"));
}

TEST_F(Workstation, GoesOnWithWhatItHasWhenTheServerIsAway)
{
    answer("wcfgGetConfigForProduct.asp", kFirst, laterConfiguration());
    ASSERT_EQ(0u, cycle());
    const std::string later = options();
    server.reset();
    EXPECT_EQ(4u, run(later));
    expectOutput("AUKernelData.xml is used as it was\r\n");
    expectOutput("  kept         1 releases wait from before\r\n");
    expectOutput("\r\n0 done, 0 nothing to do, 2 later, 0 failed\r\n");
    EXPECT_EQ(4u, run(later + " --hours 0-24"));
    expectOutput("\r\n2 done, 0 nothing to do, 0 later, 0 failed\r\n");
    EXPECT_TRUE(installed("Ledger"));
    EXPECT_FALSE(folder.exists("Ledger.lst"));
}

TEST_F(Workstation, ReleasesWaitWhileTheListDoesNotChange)
{
    ASSERT_EQ(0u, cycle(" --list"));
    answerList(kFirst, "<Data><NoChange/></Data>");
    answerList(kSecond, "<Data><NoChange/></Data>");
    EXPECT_EQ(0u, cycle());
    expectOutput("  no new list  1 releases wait from before\r\n");
    EXPECT_TRUE(installed("Ledger"));
    EXPECT_TRUE(installed("Reports"));
    EXPECT_EQ(0u, cycle());
    expectOutput("  no new list  0 releases wait from before\r\n");
    expectOutput("The server has nothing for this workstation.\r\n");
}

TEST_F(Workstation, ANewListTakesThePlaceOfWhatWaits)
{
    ASSERT_EQ(0u, cycle(" --list"));
    serve(kFirst, "Viewer");
    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_FALSE(folder.exists("Ledger.lst"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\Ledger"));
    EXPECT_TRUE(folder.exists("Viewer.lst"));
    EXPECT_TRUE(folder.exists("Reports.lst"));
}

TEST_F(Workstation, ARevokedCertificateLosesItsReleasesAndIsNotAskedForAgain)
{
    ASSERT_EQ(0u, cycle(" --list"));
    refuse(kSecond, "Err 102: certificate expired");
    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_EQ(3u, lines().size());
    expectOutput("  refused      its releases are withdrawn, and it is not asked for again\r\n");
    EXPECT_EQ("Revoked", registry.readText("Config\\Cache\\Certificates\\" + std::string(kSecond), "Status"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\Reports"));
    EXPECT_FALSE(folder.exists("Reports.lst"));
    EXPECT_TRUE(registry.keyExists("Data\\WebConf\\Ledger"));
    EXPECT_TRUE(folder.exists("Ledger.lst"));

    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_EQ((Lines{configurationLine(kFirst, "T1"), listLine(kFirst)}), lines());
    EXPECT_TRUE(folder.exists("Ledger.lst"));
}

TEST_F(Workstation, ACertificateRefusedForAnotherReasonKeepsItsReleases)
{
    ASSERT_EQ(0u, cycle(" --list"));
    refuse(kSecond, "103: busy");
    EXPECT_EQ(0u, cycle(" --list"));
    expectOutput("  no new list  1 releases wait from before\r\n");
    EXPECT_TRUE(folder.exists("Reports.lst"));
    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_EQ(3u, lines().size());
}

TEST_F(Workstation, ACertificateWithoutDataLosesItsReleasesAndIsAskedForAgain)
{
    ASSERT_EQ(0u, cycle(" --list"));
    answerList(kSecond,
               "<Status><Error><Kind><Business><NoDataFound>none</NoDataFound></Business></Kind></Error></Status>");
    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\Reports"));
    EXPECT_FALSE(folder.exists("Reports.lst"));
    EXPECT_EQ(0u, cycle(" --list"));
    EXPECT_EQ(3u, lines().size());
}

TEST_F(Workstation, WhatARevokedCertificateLeftBehindIsNotInstalled)
{
    ASSERT_EQ(0u, cycle(" --list"));
    registry.write("Config\\Cache\\Certificates\\" + std::string(kSecond), "Status", "Revoked");
    EXPECT_EQ(0u, cycle());
    EXPECT_TRUE(installed("Ledger"));
    EXPECT_FALSE(installed("Reports"));
    EXPECT_FALSE(folder.exists("Reports.lst"));
}

TEST_F(Workstation, OneListThatDoesNotComeDoesNotStopTheOthers)
{
    server->addRule("page=wcfgGetProductList.asp, query.CertificateID=" + std::string(kFirst) + ", status=503");
    EXPECT_EQ(4u, cycle());
    expectOutput("No product list came.\r\n");
    EXPECT_TRUE(installed("Reports"));
}

TEST_F(Workstation, OneListThatIsNotUnderstoodDoesNotStopTheOthers)
{
    answer("wcfgGetProductList.asp", kFirst, "<not xml");
    EXPECT_EQ(5u, cycle());
    expectOutput("What the server sent is no product list.\r\n");
    EXPECT_TRUE(installed("Reports"));
}

TEST_F(NoWorkstation, EndsWith3)
{
    EXPECT_EQ(3u, run("--server " + server->host() + " --data \"" + folder.path() + "\""));
    expectOutput("This workstation has no certificate ID");
    EXPECT_TRUE(server->requests().empty());
}
