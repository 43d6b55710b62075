#include "webconf/DataExchange.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/webconf/ConfigDocument.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <new>
#include <string>
#include <thread>

namespace
{
template <std::size_t N> void set(char (&field)[N], const char* text)
{
    ASSERT_LT(std::strlen(text), N);
    std::strncpy(field, text, N);
}

class DataExchangeTest : public ::testing::Test
{
protected:
    DataExchangeTest()
    {
        set(m_request.m_host, "host:81");
        set(m_request.m_certificateId, "CID1");
    }
    void installProduct(bool enabled)
    {
        m_registry.write("Products\\Phone", "Version", "3.3.302B1");
        m_registry.write("Products\\Phone", "Language", "EN");
        m_registry.write("Products\\Phone", "TechnicalName", "PhoneTech");
        m_registry.write("Products\\Phone", "Enable", enabled ? 1 : 0);
        set(m_request.m_productName, "Phone");
    }

    auttest::ClientRegistry m_registry;
    auttest::LogFile m_log;
    DataExchange m_request;
};

TEST_F(DataExchangeTest, ANewRecordIsAllZero)
{
    const DataExchange request;
    const DataExchange* const record = &request;
    const char* const bytes = reinterpret_cast<const char*>(record);
    EXPECT_EQ(std::string(sizeof request, '\0'), std::string(bytes, sizeof request));
}

TEST_F(DataExchangeTest, CopiesCarryEveryField)
{
    m_request.m_entryFlag = 1;
    m_request.m_transferFlag = 2;
    set(m_request.m_resultText, "text");
    const DataExchange copy(m_request);
    DataExchange assigned;
    assigned = m_request;
    EXPECT_EQ(0, std::memcmp(&m_request, &copy, sizeof copy));
    EXPECT_EQ(0, std::memcmp(&m_request, &assigned, sizeof assigned));
}

TEST_F(DataExchangeTest, AComponentIsSpecifiedWhenItHasAName)
{
    EXPECT_FALSE(m_request.IsComponentSpecified());
    set(m_request.m_componentName, "C");
    EXPECT_TRUE(m_request.IsComponentSpecified());
}

TEST_F(DataExchangeTest, TheUrlOfAProductNamesItsVersion)
{
    set(m_request.m_productName, "Phone");
    set(m_request.m_version, "3.3.302");
    set(m_request.m_build, "B1");
    set(m_request.m_language, "EN");
    EXPECT_STREQ("http://host:81/WebConfV1/wcfgGetConfigForProduct.asp?CertificateID=CID1&ProductName=Phone"
                 "&Version=3.3.302&Build=B1&Language=EN",
                 m_request.ConstructURL("wcfgGetConfigForProduct.asp"));
}

TEST_F(DataExchangeTest, TheUrlOfAComponentNamesItLast)
{
    set(m_request.m_productName, "Phone");
    set(m_request.m_componentName, "Dialer");
    EXPECT_STREQ("http://host:81/WebConfV1/wcfgGetConfigForComponent.asp?CertificateID=CID1&ProductName=Phone"
                 "&Version=&Build=&Language=&ComponentName=Dialer",
                 m_request.ConstructURL("wcfgGetConfigForComponent.asp"));
}

TEST_F(DataExchangeTest, TheUrlOfAPackageHasNoVersion)
{
    set(m_request.m_productName, "Phone");
    set(m_request.m_version, "3.3.302");
    set(m_request.m_packageTechnicalName, "PhoneTech");
    EXPECT_STREQ("http://host:81/WebConfV1/wcfgPPGetConfigForProduct.asp?CertificateID=CID1"
                 "&PackageTechnicalName=PhoneTech",
                 m_request.ConstructURL("wcfgPPGetConfigForProduct.asp"));
    set(m_request.m_componentName, "Dialer");
    EXPECT_STREQ("http://host:81/WebConfV1/wcfgPPGetConfigForComponent.asp?CertificateID=CID1"
                 "&PackageTechnicalName=PhoneTech&ComponentName=Dialer",
                 m_request.ConstructURL("wcfgPPGetConfigForComponent.asp"));
}

TEST_F(DataExchangeTest, TheShortUrlNamesTheCertificateOnly)
{
    set(m_request.m_productName, "Phone");
    EXPECT_STREQ("http://host:81/WebConfV1/page.asp?CID=CID1", m_request.ConstructShortURL("page.asp"));
}

TEST_F(DataExchangeTest, UrlsUseTheStoredVirtualDirectory)
{
    m_registry.write("Config", "WebVirtualDir", "Conf/V2");
    EXPECT_STREQ("http://host:81/Conf/V2/p?CID=CID1", m_request.ConstructShortURL("p"));
    set(m_request.m_packageTechnicalName, "T");
    EXPECT_STREQ("http://host:81/Conf/V2/p?CertificateID=CID1&PackageTechnicalName=T", m_request.ConstructURL("p"));
}

TEST_F(DataExchangeTest, ValuesAreInsertedWithoutEscaping)
{
    set(m_request.m_packageTechnicalName, "a b&c=%s");
    EXPECT_STREQ("http://host:81/WebConfV1/p?CertificateID=CID1&PackageTechnicalName=a b&c=%s",
                 m_request.ConstructURL("p"));
}

TEST_F(DataExchangeTest, LongPagesAreKeptWhole)
{
    const std::string page(10'000, 'p');
    EXPECT_STREQ(("http://host:81/WebConfV1/" + page + "?CID=CID1").c_str(), m_request.ConstructShortURL(page.c_str()));
    EXPECT_STREQ("http://host:81/WebConfV1/?CID=CID1", m_request.ConstructShortURL(nullptr));
}

TEST_F(DataExchangeTest, TheClientsOwnVersionComesFromItsKey)
{
    m_registry.write("", "Current_AutoUpdate_Version", "4.1.200B3_GE");
    m_registry.write("", "TechnicalName", "ClientTech");
    set(m_request.m_productName, "automatic update"); // the name counts without regard to case
    EXPECT_TRUE(m_request.UpdateVersions());
    EXPECT_STREQ("4.1.200", m_request.m_version);
    EXPECT_STREQ("B3", m_request.m_build);
    EXPECT_STREQ("GE", m_request.m_language);
    EXPECT_STREQ("ClientTech", m_request.m_packageTechnicalName);
}

TEST_F(DataExchangeTest, TheClientMayAskForItselfWithoutAVersion)
{
    set(m_request.m_productName, "Automatic Update");
    set(m_request.m_version, "old");
    set(m_request.m_componentName, "Dialer"); // not judged for the client
    EXPECT_TRUE(m_request.UpdateVersions());
    EXPECT_STREQ("", m_request.m_version);
    EXPECT_STREQ("", m_request.m_build);
    EXPECT_STREQ("", m_request.m_language);
    EXPECT_STREQ("", m_request.m_packageTechnicalName);
}

TEST_F(DataExchangeTest, AnEnabledProductMayAsk)
{
    installProduct(true);
    EXPECT_TRUE(m_request.UpdateVersions());
    EXPECT_STREQ("3.3.302", m_request.m_version);
    EXPECT_STREQ("B1", m_request.m_build);
    EXPECT_STREQ("EN", m_request.m_language);
    EXPECT_STREQ("PhoneTech", m_request.m_packageTechnicalName);
}

TEST_F(DataExchangeTest, ADisabledProductMayNotAskAndHasNoVersion)
{
    installProduct(false);
    set(m_request.m_version, "old");
    set(m_request.m_build, "old");
    set(m_request.m_language, "old");
    set(m_request.m_packageTechnicalName, "old");
    EXPECT_FALSE(m_request.UpdateVersions());
    EXPECT_STREQ("", m_request.m_version);
    EXPECT_STREQ("", m_request.m_build);
    EXPECT_STREQ("", m_request.m_language);
    EXPECT_STREQ("old", m_request.m_packageTechnicalName);
}

TEST_F(DataExchangeTest, AMissingProductMayNotAsk)
{
    set(m_request.m_productName, "Missing");
    EXPECT_FALSE(m_request.UpdateVersions());
    EXPECT_FALSE(m_registry.keyExists("Products\\Missing"));
}

TEST_F(DataExchangeTest, AProductWithoutVersionBuildOrLanguageMayNotAsk)
{
    installProduct(true);
    m_registry.write("Products\\Phone", "Version", "3.3.302");
    EXPECT_FALSE(m_request.UpdateVersions());
    m_registry.write("Products\\Phone", "Version", "B1");
    EXPECT_FALSE(m_request.UpdateVersions());
    m_registry.write("Products\\Phone", "Version", "3.3.302B1");
    m_registry.removeValue("Products\\Phone", "Language");
    EXPECT_FALSE(m_request.UpdateVersions());
}

TEST_F(DataExchangeTest, TheKernelMayBeAskedForWhenBitZeroOfTheStatusIsSet)
{
    installProduct(true);
    set(m_request.m_componentName, "kernel");
    EXPECT_FALSE(m_request.UpdateVersions());
    m_registry.write("", "Status", 6);
    EXPECT_FALSE(m_request.UpdateVersions());
    m_registry.write("", "Status", 7);
    EXPECT_TRUE(m_request.UpdateVersions());
}

TEST_F(DataExchangeTest, AComponentMayBeAskedForWhenItIsEnabledForTheProduct)
{
    installProduct(true);
    set(m_request.m_componentName, "Dialer");
    EXPECT_FALSE(m_request.UpdateVersions());
    m_registry.write("Components\\Dialer\\Phone", "Enable", 1);
    EXPECT_TRUE(m_request.UpdateVersions());
}

TEST_F(DataExchangeTest, ASharedComponentIsJudgedByItsCommonEntry)
{
    installProduct(true);
    set(m_request.m_componentName, "Dialer");
    m_registry.write("Components\\Dialer\\Phone", "Shared", 1);
    EXPECT_FALSE(m_request.UpdateVersions());
    m_registry.write("Components\\Dialer\\Shared", "Enable", 1);
    EXPECT_TRUE(m_request.UpdateVersions());
}

TEST_F(DataExchangeTest, LongRegistryTextsAreCutAtTheFieldsWidth)
{
    installProduct(true);
    m_registry.write("Products\\Phone", "Version", (std::string(100, '1') + "B" + std::string(100, '2')).c_str());
    m_registry.write("Products\\Phone", "Language", std::string(200, 'L').c_str());
    m_registry.write("Products\\Phone", "TechnicalName", std::string(200, 'T').c_str());
    EXPECT_TRUE(m_request.UpdateVersions());
    EXPECT_EQ(std::string(63, '1'), m_request.m_version);
    EXPECT_EQ("B" + std::string(62, '2'), m_request.m_build);
    EXPECT_EQ(std::string(63, 'L'), m_request.m_language);
    EXPECT_EQ(std::string(127, 'T'), m_request.m_packageTechnicalName);
}

class ExtractXmlNode : public DataExchangeTest
{
protected:
    auttest::ComApartment m_apartment;
};

TEST_F(ExtractXmlNode, GivesTheMarkupOfTheNode)
{
    EXPECT_STREQ("<b x=\"1\">t</b>", DataExchange::ExtractXmlNode("<a><b x='1'>t</b><b/></a>", "a/b"));
    EXPECT_STREQ("<b x=\"1\">t</b>", DataExchange::ExtractXmlNode("<a><b x='1'>t</b><b/></a>", "//b[@x]"));
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(ExtractXmlNode, SaysWhenThereIsNoDocument)
{
    String markup("before");
    std::thread([&markup] { markup = DataExchange::ExtractXmlNode("<a/>", "a"); }).join(); // without a COM apartment
    EXPECT_STREQ("", markup);
    EXPECT_TRUE(m_log.has("Warning", "Unable to initialize DOM Document and to Extract Xml Node"));
    EXPECT_EQ(1u, m_log.events().size());
}

TEST_F(ExtractXmlNode, SaysWhenTheTextIsNotWellFormed)
{
    for (const char* text : {"<a>", "", "plain"})
    {
        m_log.mark();
        EXPECT_STREQ("", DataExchange::ExtractXmlNode(text, "a"));
        EXPECT_TRUE(m_log.has("Warning", "ExtractXmlNode: Unable to create XML document from data"));
        EXPECT_EQ(1u, m_log.events().size());
    }
}

UINT WINAPI lengthThrows(BSTR) { throw std::bad_alloc(); }

TEST_F(ExtractXmlNode, ATextThatFindsNoMemoryIsRefused)
{
    const auttest::ImportPatch decodingThrows("SysStringLen", &lengthThrows);
    EXPECT_STREQ("", DataExchange::ExtractXmlNode("<a/>", "a"));
    EXPECT_TRUE(m_log.has("Warning", "ExtractXmlNode: Unable to create XML document from data"));
}

TEST_F(ExtractXmlNode, SaysWhenThereIsNoSuchNode)
{
    for (const char* path : {"a/b", "b()", ""}) // an unknown function finds nothing either
    {
        m_log.mark();
        EXPECT_STREQ("", DataExchange::ExtractXmlNode("<a/>", path));
        EXPECT_TRUE(m_log.has("Warning", "ExtractXmlNode: Unable to found XPath in XML document"));
        EXPECT_EQ(1u, m_log.events().size());
    }
}
} // namespace
