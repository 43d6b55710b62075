#include "tests/support/Certificates.h"
#include "tests/webconf/CachingFixture.h"

#include <string>
#include <vector>

// The client's own configuration: which certificate ID is asked for, and what becomes of the answer. The machine's
// store is searched before the user's, so that the order of the two certificates is known.

using auttest::CachingTest;
using auttest::Events;
using auttest::InstalledCertificate;
using auttest::OpenDataCaching;

class AUData : public CachingTest
{
protected:
    AUData()
        : first(auttest::Store::machine, {"Name", "A", "B", "Unit", kFirst}),
          second(auttest::Store::user, {"Name", "A", "B", "Unit", kSecond})
    {
        registry.write("", "Path", client.path());
        registry.write("", "Current_AutoUpdate_Version", "7.0.1P2_English");
    }
    /// How a request for this certificate ID is answered.
    void answerFor(const char* certificateId, const std::string& body)
    {
        webconf_sample::Rule rule;
        rule.query["CertificateID"] = certificateId;
        rule.answer.body = body;
        server->addRule(rule);
    }
    static std::string refusal()
    {
        return answer("<Status><Error><Kind><Business><AccessMissing><DBReason>Err 101: no</DBReason></AccessMissing>"
                      "</Business></Kind></Error></Status>");
    }
    static std::string configuration(const std::string& timeStamp)
    {
        return answer("<Data><ComponentList><Component><Configuration><AutomaticUpdateData/></Configuration>"
                      "</Component></ComponentList><TimeStamp>" +
                      timeStamp + "</TimeStamp></Data>");
    }
    bool getAUData()
    {
        log.mark();
        return request.GetAUData(host.c_str());
    }
    /// The certificate IDs asked for, in order.
    std::vector<std::string> asked() const
    {
        std::vector<std::string> ids;
        for (const webconf_sample::HttpRequest& one : server->requests())
            ids.push_back(one.parameter("CertificateID"));
        return ids;
    }
    std::string stampOf(const char* certificateId) const
    {
        return registry.readText(stampKey("Automatic Update"), certificateId).value_or("(none)");
    }
    bool installed() const { return client.exists("AUKernelData.xml"); }

    static constexpr const char* kFirst = "Rmlyc3RDZXJ0aWZpY2F0ZQ==";
    static constexpr const char* kSecond = "U2Vjb25kQ2VydGlmaWNhdGU=";
    using Ids = std::vector<std::string>;

    auttest::TestFolder client;
    InstalledCertificate first;
    InstalledCertificate second;
    OpenDataCaching request;
};

TEST_F(AUData, OfTheFirstDeployedCertificateIdBecomesTheKernelsConfiguration)
{
    answerFor(kFirst, configuration("T1"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ(Ids{kFirst}, asked());
    EXPECT_EQ(configuration("T1"), client.readFile("AUKernelData.xml"));
    EXPECT_EQ("T1", stampOf(kFirst));
    EXPECT_TRUE(log.has("Info", "New AU Data saved in AUKernelData.xml file"));
    EXPECT_EQ("/WebConfV1/wcfgGetConfigForProduct.asp?CertificateID=" + std::string(kFirst) +
                  "&ProductName=Automatic%20Update&Version=7.0.1&Build=P2&Language=English&TimeStamp="
                  "1980-01-01%2000:00:00",
              target());
    EXPECT_EQ(1, request.m_entryFlag);
    EXPECT_EQ(0, request.m_transferFlag);
}

TEST_F(AUData, UsesTheClientsTechnicalName)
{
    registry.write("", "TechnicalName", "VELAU");
    answerFor(kFirst, configuration("T1"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ("/WebConfV1/wcfgPPGetConfigForProduct.asp?CertificateID=" + std::string(kFirst) +
                  "&PackageTechnicalName=VELAU&TimeStamp=1980-01-01%2000:00:00",
              target());
}

TEST_F(AUData, ACertificateIdWithoutDeploymentLetsTheNextOneBeAsked)
{
    answerFor(kFirst, refusal());
    answerFor(kSecond, configuration("T2"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ((Ids{kFirst, kSecond}), asked());
    EXPECT_EQ("Nothing In Cache.", stampOf(kFirst));
    EXPECT_EQ(configuration("T2"), client.readFile("AUKernelData.xml"));
}

TEST_F(AUData, ATransferThatFailsLetsTheNextOneBeAsked)
{
    server->addRule("query.CertificateID=" + std::string(kFirst).substr(0, 22) + "==, status=500");
    answerFor(kSecond, configuration("T2"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ((Ids{kFirst, kSecond}), asked());
}

TEST_F(AUData, WithoutAnyDeploymentThereIsNone)
{
    answerFor(kFirst, refusal());
    answerFor(kSecond, refusal());
    EXPECT_FALSE(getAUData());
    EXPECT_EQ((Ids{kFirst, kSecond}), asked());
    EXPECT_FALSE(installed());
    EXPECT_TRUE(log.has("Warning", "AU Data: No data returned by Web Conf because of no ID deployments"));
}

TEST_F(AUData, ThatHasNotChangedStopsTheWalkAndIsNotCopiedAgain)
{
    answerFor(kFirst, configuration("T1"));
    EXPECT_TRUE(getAUData());
    client.writeFile("AUKernelData.xml", "as it was");
    EXPECT_TRUE(getAUData());
    EXPECT_EQ("as it was", client.readFile("AUKernelData.xml")) << "the same time stamp came again";
    answerFor(kFirst, answer("<Data><NoChange/></Data>"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ("as it was", client.readFile("AUKernelData.xml"));
    EXPECT_EQ((Ids{kFirst, kFirst, kFirst}), asked());
}

TEST_F(AUData, ReplacesAReadOnlyConfiguration)
{
    const std::string file = client.writeFile("AUKernelData.xml", "old");
    ::SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    answerFor(kFirst, configuration("T1"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ(configuration("T1"), client.readFile("AUKernelData.xml"));
    EXPECT_EQ(0u, ::GetFileAttributesA(file.c_str()) &
                      (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
}

TEST_F(AUData, ThatCannotBePutInPlaceIsFetchedOnceMore)
{
    const std::string file = client.writeFile("AUKernelData.xml", "old");
    answerFor(kFirst, configuration("T1"));
    const HANDLE held = ::CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(getAUData()) << "a certificate ID stopped the walk";
    ::CloseHandle(held);
    EXPECT_EQ("old", client.readFile("AUKernelData.xml"));
    EXPECT_TRUE(log.has("Error", "Unable to save new AU Data in " + file));
    EXPECT_FALSE(log.has("Info", "New AU Data saved in AUKernelData.xml file"));

    EXPECT_TRUE(getAUData());
    EXPECT_EQ(configuration("T1"), client.readFile("AUKernelData.xml"));
}

TEST_F(AUData, OfAServerThatIsAwayStaysTheOldOne)
{
    answerFor(kFirst, configuration("T1"));
    ASSERT_TRUE(getAUData());
    server.reset();
    EXPECT_FALSE(getAUData());
    EXPECT_EQ(configuration("T1"), client.readFile("AUKernelData.xml"));
    EXPECT_EQ("T1", stampOf(kFirst));
    EXPECT_TRUE(log.has("Warning", "AU Data: No data returned by Web Conf because of no ID deployments"));
}

TEST_F(AUData, AConfiguredTestIdIsAskedFirst)
{
    registry.write("Config", "TestCID", kSecond);
    answerFor(kFirst, configuration("T1"));
    answerFor(kSecond, refusal());
    EXPECT_TRUE(getAUData());
    EXPECT_EQ((Ids{kSecond, kFirst}), asked());
}

TEST_F(AUData, AConfiguredDeploymentIdIsAskedFirst)
{
    registry.write("Config", "DeploymentCID", kSecond);
    answerFor(kSecond, configuration("T2"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ(Ids{kSecond}, asked());
}

TEST_F(AUData, ATestIdThatIsNoneOfTheWorkstationsAsksForNothing)
{
    registry.write("Config", "TestCID", "Tm90SW5UaGVMaXN0");
    EXPECT_FALSE(getAUData());
    EXPECT_EQ(Ids{}, asked());
    EXPECT_TRUE(log.has("Warning", "testCID Tm90SW5UaGVMaXN0 configured but not valid"));
}

TEST_F(AUData, ARevokedCertificateIdIsNotAskedFor)
{
    registry.write(std::string("Config\\Cache\\Certificates\\") + kFirst, "Status", "Revoked");
    answerFor(kSecond, configuration("T2"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ(Ids{kSecond}, asked());
}

TEST_F(AUData, OfAnotherRequestThatIsUnderWayIsLeftToIt)
{
    registry.write(markKey("Automatic Update"), (std::string(kFirst) + "__config").c_str(), "updating");
    answerFor(kSecond, refusal());
    EXPECT_FALSE(getAUData());
    EXPECT_EQ(Ids{kSecond}, asked());
}

TEST_F(AUData, InEmptyModeIsAskedForOnceWithAnEmptyCertificateId)
{
    std::snprintf(request.m_host, sizeof request.m_host, "%s", host.c_str());
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    answerFor("", configuration("T1"));
    CCIDListManager& ids = request.m_certificateIds;
    ASSERT_EQ(1, ids.InitManager(true));
    for (ids.InitCIDLoop(); !ids.IsEndOfTheListReached();)
    {
        String id = ids.GetNextCID();
        bool stop = false;
        EXPECT_TRUE(request.IsAUDataUpdated(id, &stop));
        EXPECT_TRUE(stop);
    }
    EXPECT_EQ((Ids{""}), asked());
    EXPECT_NE(std::string::npos, target().find("?CertificateID=&")) << target();
    EXPECT_EQ("T1", stampOf(""));
}

TEST_F(AUData, TheAnswerToOneCertificateIdIsJudgedByItsTimeStamps)
{
    std::snprintf(request.m_host, sizeof request.m_host, "%s", host.c_str());
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    String id(kFirst);
    bool stop = false;
    answerFor(kFirst, configuration("abc"));
    EXPECT_TRUE(request.IsAUDataUpdated(id, &stop));
    EXPECT_TRUE(stop);
    EXPECT_STREQ(kFirst, request.m_certificateId);

    stop = false;
    answerFor(kFirst, configuration("ABC"));
    EXPECT_FALSE(request.IsAUDataUpdated(id, &stop)) << "compared in any case";
    EXPECT_TRUE(stop);

    answerFor(kFirst, refusal());
    EXPECT_FALSE(request.IsAUDataUpdated(id, &stop));
    EXPECT_FALSE(stop);

    stop = true;
    server->addRule("status=500");
    EXPECT_FALSE(request.IsAUDataUpdated(id, &stop));
    EXPECT_TRUE(stop) << "a failure says nothing about deployments";
    EXPECT_FALSE(request.IsAUDataUpdated(id, nullptr));
}

TEST_F(AUData, ThatAProcessGotAndDidNotInstallBeforeItDiedIsInstalledByTheNext)
{
    // It had noted what was installed, kept the answer and its time stamp, and died.
    const std::string note = std::string(kFirst) + "__AUKernelData.xml";
    registry.write(stampKey("Automatic Update"), note.c_str(), "T0");
    registry.write(stampKey("Automatic Update"), kFirst, "T1");
    data.writeFile(file(kFirst, "Automatic Update"), configuration("T1"));
    client.writeFile("AUKernelData.xml", "the old one");

    server->addRule("status=500");
    EXPECT_FALSE(getAUData());
    EXPECT_EQ("the old one", client.readFile("AUKernelData.xml"));
    EXPECT_EQ("T0", registry.readText(stampKey("Automatic Update"), note.c_str())) << "still to be done";

    server->clearRules();
    answerFor(kFirst, answer("<Data><NoChange/></Data>"));
    EXPECT_TRUE(getAUData());
    EXPECT_EQ(configuration("T1"), client.readFile("AUKernelData.xml"));
    EXPECT_FALSE(registry.valueExists(stampKey("Automatic Update"), note.c_str()));

    client.writeFile("AUKernelData.xml", "edited");
    EXPECT_TRUE(getAUData());
    EXPECT_EQ("edited", client.readFile("AUKernelData.xml")) << "installed once";
}

class AUDataWithoutCertificates : public CachingTest
{
};

TEST_F(AUDataWithoutCertificates, ThereIsNothingToAskFor)
{
    OpenDataCaching request;
    EXPECT_FALSE(request.GetAUData(host.c_str()));
    EXPECT_TRUE(server->requests().empty());
    EXPECT_TRUE(log.has("Warning", "No valid Velmora Certificate found"));
    EXPECT_TRUE(log.has("Warning", "DataCaching : Error during CIDs list manager initialization"));
    EXPECT_TRUE(log.has("Warning", "AU Data: No data returned by Web Conf because of no ID deployments"));
    EXPECT_FALSE(request.GetAUData(nullptr));
}
