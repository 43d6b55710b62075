#include "tests/webconf/CachingFixture.h"

#include "tests/support/ImportPatch.h"

#include <string>

// The entry points, and the cache file.

using auttest::CachingTest;
using auttest::Events;
using auttest::OpenDataCaching;

class DataCachingEntry : public CachingTest
{
protected:
    DataCachingEntry() { answerWith(newData("T")); }
    OpenDataCaching request;
};

TEST_F(DataCachingEntry, AProductThatIsNotInstalledIsNotAskedFor)
{
    fill(request);
    EXPECT_EQ(953, request.GetData());
    EXPECT_TRUE(server->requests().empty());
    EXPECT_EQ(953, result->GetStatusCode());
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(DataCachingEntry, GetDataAsksWithTheInstalledVersions)
{
    registry.write("Products\\Ledger", "Version", "7.0.12P3");
    registry.write("Products\\Ledger", "Language", "DE");
    registry.write("Products\\Ledger", "Enable", 1);
    fill(request);
    EXPECT_EQ(0, request.GetData());
    EXPECT_EQ("/WebConfV1/wcfgGetConfigForProduct.asp?CertificateID=" + std::string(kCid) +
                  "&ProductName=Ledger&Version=7.0.12&Build=P3&Language=DE&TimeStamp=1980-01-01%2000:00:00",
              target());
    EXPECT_EQ("T", timeStamp());
}

TEST_F(DataCachingEntry, GetDataGivesTheRequestsError)
{
    fill(request);
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    server->addRule("status=503");
    EXPECT_EQ(13503, request.GetData());
}

TEST_F(DataCachingEntry, GetComponentDataFillsTheRecord)
{
    registry.write("Products\\Ledger", "TechnicalName", "VELLEDG");
    request.m_transferFlag = 1;
    EXPECT_EQ(0, request.GetComponentData(host.c_str(), kCid, kProduct, "1.0", "2", "English", "Core"));
    EXPECT_EQ(1, request.m_entryFlag);
    EXPECT_EQ(0, request.m_transferFlag);
    EXPECT_STREQ(host.c_str(), request.m_host);
    EXPECT_STREQ(kCid, request.m_certificateId);
    EXPECT_STREQ("Ledger", request.m_productName);
    EXPECT_STREQ("1.0", request.m_version);
    EXPECT_STREQ("2", request.m_build);
    EXPECT_STREQ("English", request.m_language);
    EXPECT_STREQ("Core", request.m_componentName);
    EXPECT_STREQ("VELLEDG", request.m_packageTechnicalName);
    EXPECT_EQ("/WebConfV1/wcfgPPGetConfigForComponent.asp?CertificateID=" + std::string(kCid) +
                  "&PackageTechnicalName=VELLEDG&ComponentName=Core&TimeStamp=1980-01-01%2000:00:00",
              target());
    EXPECT_EQ(newData("T"), data.readFile(file(std::string(kCid) + "__Core")));
}

TEST_F(DataCachingEntry, GetComponentDataCutsLongTextsAndTakesNullForEmpty)
{
    const std::string longText(10'000, 'x');
    const char* const text = longText.c_str();
    EXPECT_EQ(0, request.GetComponentData(host.c_str(), text, text, text, text, text, text));
    EXPECT_EQ(std::string(63, 'x'), request.m_certificateId);
    EXPECT_EQ(std::string(127, 'x'), request.m_productName);
    EXPECT_EQ(std::string(63, 'x'), request.m_version);
    EXPECT_EQ(std::string(63, 'x'), request.m_build);
    EXPECT_EQ(std::string(63, 'x'), request.m_language);
    EXPECT_EQ(std::string(127, 'x'), request.m_componentName);

    EXPECT_EQ(0, request.GetComponentData(host.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ("", request.m_certificateId);
    EXPECT_STREQ("", request.m_componentName);
}

TEST_F(DataCachingEntry, GetAUDataSetsTheFlagsOfTheRecord)
{
    request.m_transferFlag = 1;
    EXPECT_FALSE(request.GetAUData(host.c_str())) << "there is no certificate ID";
    EXPECT_EQ(1, request.m_entryFlag);
    EXPECT_EQ(0, request.m_transferFlag);
}

// The cache file

class CacheFile : public CachingTest
{
protected:
    void put(const char* content, const char* component = "")
    {
        SetDataInCache(host.c_str(), kCid, kProduct, component, content);
    }
    /// What lies in the cache folder.
    int entries() const
    {
        WIN32_FIND_DATAA entry;
        const HANDLE find = ::FindFirstFileA((data / (std::string(kProduct) + "\\" + host + "\\*")).c_str(), &entry);
        int count = -2; // "." and ".."
        for (bool more = find != INVALID_HANDLE_VALUE; more; more = ::FindNextFileA(find, &entry) != FALSE)
            ++count;
        ::FindClose(find);
        return count;
    }
};

TEST_F(CacheFile, IsCreatedWithItsFolders)
{
    put("<a>\r\n\xE9</a>");
    EXPECT_EQ("<a>\r\n\xE9</a>", data.readFile(file()));
    EXPECT_EQ(1, entries()) << "nothing else is left there";
    put("for the component", "Core");
    EXPECT_EQ("for the component", data.readFile(file(std::string(kCid) + "__Core")));
}

TEST_F(CacheFile, IsReplacedWhole)
{
    put("the older and longer content");
    put("new");
    EXPECT_EQ("new", data.readFile(file()));
    EXPECT_EQ(1, entries());
}

TEST_F(CacheFile, ASlashInTheCertificateIdLeadsIntoAFolder)
{
    SetDataInCache(host.c_str(), "ab/cd+12345==", kProduct, nullptr, "content");
    EXPECT_EQ("content", data.readFile(file("ab\\cd+12345==")));
}

// Certificate IDs, product and component names come from servers.
TEST_F(CacheFile, NamesThatLeadOutOfTheDataFolderAreRefused)
{
    const std::string inner = data.makeFolder("data");
    registry.write("", "DataPath", inner);
    const std::string longName(10000, 'x');
    const struct
    {
        std::string host, certificateId, product, component;
    } rows[] = {
        {host, "..\\..\\..\\CID", kProduct, ""},
        {host, "../../../CID", kProduct, ""},
        {host, "a/../../../../CID", kProduct, ""},
        {host, "..", "..\\..", ""},
        {host, kCid, "..", ""},
        {host, kCid, "..\\", ""},
        {host, kCid, ".. ", ""},
        {host, kCid, "C:x", ""},
        {host, kCid, kProduct, "\\..\\..\\..\\Core"},
        {host, kCid, kProduct, "Core:stream"},
        {"..", kCid, kProduct, ""},
        {"..\\..\\host", kCid, kProduct, ""},
        {"C:8080", kCid, kProduct, ""},
        {host, "NUL", kProduct, ""},
        {host, kCid, "COM1", ""},
        {host, kCid, longName, ""},
        {host, longName, kProduct, ""},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.host + "|" + row.certificateId + "|" + row.product + "|" + row.component);
        log.mark();
        SetDataInCache(row.host.c_str(), row.certificateId.c_str(), row.product.c_str(), row.component.c_str(), "evil");
        const Events events = log.events();
        ASSERT_EQ(1u, events.size());
        EXPECT_EQ("Error", events[0].type);
        EXPECT_EQ(0u, events[0].text.find("Unable to create the data cache directory: "));
    }
    auttest::OpenDataCaching request;
    fill(request);
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "..\\..\\..\\CID");
    EXPECT_STREQ("", request.GetDataFilePath());
    EXPECT_FALSE(data.exists("CID.dat"));
    EXPECT_FALSE(data.exists(std::string(kCid) + ".dat"));
    EXPECT_FALSE(data.exists(host + "\\" + kCid + ".dat"));
}

TEST_F(CacheFile, NeedsADataFolder)
{
    registry.removeValue("", "DataPath");
    put("lost");
    EXPECT_EQ(
        (Events{{"Error", std::string("Unable to create the data cache directory: \\") + kProduct + "\\" + host}}),
        log.events());
}

TEST_F(CacheFile, AFolderThatCannotBeMadeIsLogged)
{
    data.writeFile(kProduct, "a file where the folder should be");
    put("lost");
    EXPECT_EQ((Events{{"Error", "Unable to create the data cache directory: " + (data / kProduct) + "\\" + host}}),
              log.events());
}

TEST_F(CacheFile, ANameThatDoesNotFitIsLogged)
{
    const std::string longName(300, 'x');
    SetDataInCache(host.c_str(), kCid, longName.c_str(), "", "lost");
    EXPECT_EQ((Events{{"Error", "Unable to create the data cache directory: "}}), log.events());
}

TEST_F(CacheFile, APathThatDoesNotFitIsLogged)
{
    const std::string longName(150, 'x');
    SetDataInCache(host.c_str(), longName.c_str(), kProduct, "", "fits");
    EXPECT_EQ("fits", data.readFile(file(longName)));
    EXPECT_EQ(Events{}, log.events());
    SetDataInCache(host.c_str(), longName.c_str(), longName.c_str(), "", "lost");
    EXPECT_EQ((Events{{"Error", "Unable to create the data cache directory: " + (data / longName) + "\\" + host}}),
              log.events());
}

TEST_F(CacheFile, StaysWhenItCannotBeReplaced)
{
    put("old");
    const HANDLE held = ::CreateFileA((data / file()).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    put("new");
    ::CloseHandle(held);
    EXPECT_EQ("old", data.readFile(file()));
    EXPECT_EQ((Events{{"Error", "Unable to write the data cache file: " + (data / file())}}), log.events());
    EXPECT_EQ(1, entries()) << "the new content is not left beside it";
}

namespace
{
BOOL WINAPI diskFull(HANDLE, LPCVOID, DWORD size, LPDWORD written, LPOVERLAPPED)
{
    *written = size / 2;
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}
} // namespace

TEST_F(CacheFile, StaysWhenTheDiskIsFull)
{
    put("old");
    {
        const auttest::ImportPatch full("WriteFile", &diskFull);
        put("new and longer");
    }
    EXPECT_EQ("old", data.readFile(file()));
    EXPECT_EQ(1, entries());
}

TEST_F(CacheFile, AnAnswerThatCannotBeKeptLeavesTheTimeStampOfTheOldOne)
{
    OpenDataCaching request;
    fill(request);
    cache("2026-01-01 00:00:00", "old");
    answerWith(newData("2026-05-05 00:00:00"));
    const HANDLE held = ::CreateFileA((data / file()).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    ::CloseHandle(held);
    EXPECT_EQ("2026-01-01 00:00:00", timeStamp()) << "or the change would never be asked for again";
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_EQ("2026-05-05 00:00:00", timeStamp());
    EXPECT_EQ(newData("2026-05-05 00:00:00"), data.readFile(file()));
}

TEST_F(CacheFile, WithoutAFolderTheNextRequestAsksForEverything)
{
    OpenDataCaching request;
    fill(request);
    data.writeFile(kProduct, "a file where the folder should be");
    answerWith(newData("2026-05-05 00:00:00"));
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_EQ("2026-05-05 00:00:00", timeStamp());
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_NE(std::string::npos, target(1).find("TimeStamp=1980-01-01")) << target(1);
}

// Validity

struct ValidityRow
{
    const char* content;
    bool valid;
    const char* logged;
};
class CachedAnswer : public CachingTest, public ::testing::WithParamInterface<ValidityRow>
{
};
TEST_P(CachedAnswer, IsValidWithoutAnError)
{
    OpenDataCaching request;
    fill(request);
    data.writeFile(file(kCid, "Automatic Update"), GetParam().content);
    EXPECT_EQ(GetParam().valid, request.IsAUValidForWebServer(host.c_str()));
    EXPECT_EQ(*GetParam().logged == '\0' ? Events{} : (Events{{"Warning", GetParam().logged}}), log.events());
}
INSTANTIATE_TEST_SUITE_P(
    All, CachedAnswer,
    ::testing::Values(ValidityRow{"<wcfgResponse><Data/></wcfgResponse>", true, ""},
                      ValidityRow{"<wcfgResponse><Status><OK/></Status></wcfgResponse>", true, ""},
                      ValidityRow{"<wcfgResponse><Status><Error>no way</Error></Status></wcfgResponse>", false,
                                  "IsAUValidForWebServer: no way"},
                      ValidityRow{"<wcfgResponse>", false,
                                  "IsAUValidForWebServer: Unable to create XML document from data"},
                      ValidityRow{"", false, "IsAUValidForWebServer: Unable to create XML document from data"}));

TEST_F(CacheFile, ThatIsMissingIsNotValid)
{
    OpenDataCaching request;
    fill(request);
    EXPECT_FALSE(request.IsAUValidForWebServer(host.c_str()));
    EXPECT_FALSE(request.IsAUValidForWebServer(nullptr));
    EXPECT_EQ((Events{{"Warning", "IsAUValidForWebServer: Unable to create XML document from data"},
                      {"Warning", "IsAUValidForWebServer: Unable to create XML document from data"}}),
              log.events());
}
