#include "machine/Xml.h"
#include "plan/Plan.h"
#include "plan/ProductList.h"
#include "plan/ReleaseFile.h"

#include "tests/catalogue/ReleaseFixture.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"

#include <7xAutoUpdateTools.h>

#include <gtest/gtest.h>

#include <fstream>

using autool::AskedRelease;

namespace
{
template <typename Record, typename Asked> void expectSame(const Record& record, const Asked& asked)
{
    EXPECT_EQ(record.GetId(), asked.id);
    EXPECT_STREQ(record.GetName(), asked.name.c_str());
    EXPECT_STREQ(record.GetVersion(), asked.version.c_str());
    EXPECT_STREQ(record.GetBuild(), asked.build.c_str());
    EXPECT_STREQ(record.GetLanguage(), asked.language.c_str());
    EXPECT_STREQ(record.GetFullVersion(), asked.fullVersion.c_str());
    EXPECT_EQ(record.GetAction(), asked.action);
}

void expectSameRelease(const CRelease& release, const AskedRelease& asked)
{
    expectSame(release, asked);
    EXPECT_EQ(release.IsEnabled() != 0, asked.enabled);
    EXPECT_EQ(release.GetActivationDate(), asked.activationDate);
    EXPECT_EQ(release.IsNoDownload() != 0, asked.noDownload);
    EXPECT_EQ(release.IsPreInstallOnly() != 0, asked.preInstallOnly);
    EXPECT_EQ(release.GetInstallationStartHour(), asked.startHour);
    EXPECT_EQ(release.GetInstallationEndHour(), asked.endHour);
    EXPECT_STREQ(release.GetMarketingName(), asked.marketingName.c_str());
    EXPECT_STREQ(release.GetTechnicalName(), asked.technicalName.c_str());
    const std::vector<CComponent*> components = auttest::componentsOf(release);
    ASSERT_EQ(components.size(), asked.components.size());
    for (std::size_t i = 0; i < components.size(); ++i)
    {
        expectSame(*components[i], asked.components[i]);
        EXPECT_EQ(components[i]->IsShared() != 0, asked.components[i].shared);
        EXPECT_STREQ(components[i]->GetSourceLocation(), asked.components[i].location.c_str());
    }
}

std::string recordOf(CRelease& release, const auttest::TestFolder& folder)
{
    std::ofstream stream(folder / "whole.lst", std::ios::binary);
    EXPECT_EQ(1, release.Serialize(stream));
    stream.close();
    return folder.readFile("whole.lst");
}

class ReleaseFiles : public ::testing::Test
{
protected:
    ReleaseFiles()
    {
        release.InitValues(12, "Velmora Ledger", "", "Ledger", "7.0.12", "B1", "EN", 2, 1'790'000'000, 1, 0, 24, false,
                           false, false);
        release.SetCertificateID("TGVkZ2VyLUNJRC0x");
        release.SetNoDownload(1);
        for (const char* const name : {"Core", "The Server"})
        {
            auto* const component = new CComponent(3, name, "1.0", "P2", "FR", 1, "http://server/a b");
            component->SetShared(1);
            release.GetComponentList().AddTail(component);
        }
    }
    /// Reads what `CRelease` reads, and fails where it fails.
    void expectAsTheLibrary(const std::string& bytes)
    {
        const std::string path = folder.writeFile("record.lst", bytes);
        auttest::ReleaseProbe read;
        std::ifstream stream(path);
        const bool isReadable = read.Serialize(stream) == 1;
        std::string why;
        const auto asked = autool::readReleaseFile(path, why);
        ASSERT_EQ(isReadable, asked.has_value()) << why;
        if (asked)
            expectSameRelease(read, *asked);
        else
            EXPECT_FALSE(why.empty());
    }

    const auttest::ClientRegistry registry;
    const auttest::TestFolder folder;
    CRelease release;
};

TEST_F(ReleaseFiles, AreReadAsTheLibraryReadsThem)
{
    expectAsTheLibrary(recordOf(release, folder));
    std::string why;
    const auto asked = autool::readReleaseFile(folder / "record.lst", why);
    ASSERT_TRUE(asked) << why;
    EXPECT_EQ("Velmora Ledger", asked->marketingName);
    EXPECT_EQ("TGVkZ2VyLUNJRC0x", asked->certificateId);
}

TEST_F(ReleaseFiles, CutOffAnywhereAreReadOrRefusedAsByTheLibrary)
{
    const std::string whole = recordOf(release, folder);
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        SCOPED_TRACE("cut behind byte " + std::to_string(length));
        expectAsTheLibrary(whole.substr(0, length));
    }
}

TEST_F(ReleaseFiles, WithAnyWordSpoiltAreReadOrRefusedAsByTheLibrary)
{
    const std::string whole = recordOf(release, folder);
    for (const std::string& spoilt : {std::string("x"), std::string(10'000, 'y'), std::string("-1"), std::string()})
        for (std::size_t at = 0; at < whole.size(); at = whole.find('\n', at) + 1)
        {
            SCOPED_TRACE("word at byte " + std::to_string(at) + " replaced");
            std::string bytes = whole;
            expectAsTheLibrary(bytes.replace(at, whole.find('\n', at) - at, spoilt));
        }
}

TEST_F(ReleaseFiles, AreFoundByTheirWholeExtension)
{
    folder.writeFile("b.lst", "");
    folder.writeFile("A.LST", "");
    folder.writeFile("c.lst_old", "");
    folder.makeFolder("d.lst");
    const std::vector<std::string> expected = {folder / "A.LST", folder / "b.lst"};
    EXPECT_EQ(expected, autool::releaseFilesOf(folder.path()));
    EXPECT_TRUE(autool::releaseFilesOf(folder / "missing").empty());
}

/// Product lists, read by the library and by us.
class ProductLists : public ::testing::Test
{
protected:
    ProductLists() { registry.write("", "DataPath", folder.path()); }

    void expectAsTheLibrary(const std::string& xml)
    {
        folder.writeFile("productList.xml", xml);
        phase1xml list("http://server/");
        ASSERT_EQ(1, list.GetPreviousXMLDoc());
        RT_List<CRelease*, CRelease*> releases;
        const bool isReadable = list.ParseXMLDocument(&releases, "") == 1;
        std::string why;
        const auto asked = autool::readProductList(
            folder / "productList.xml", [] {}, why);
        ASSERT_TRUE(isReadable);
        ASSERT_TRUE(asked) << why;
        ASSERT_EQ(static_cast<std::size_t>(releases.GetCount()), asked->size());
        std::size_t i = 0;
        for (POSITION at = releases.GetHeadPosition(); at != nullptr; ++i)
            expectSameRelease(*releases.GetNext(at), (*asked)[i]);
        while (!releases.IsEmpty())
            delete releases.RemoveHead();
    }
    std::string refusal(const std::string& xml)
    {
        folder.writeFile("list.xml", xml);
        std::string why;
        EXPECT_FALSE(autool::readProductList(
            folder / "list.xml", [] {}, why));
        return why;
    }

    const autool::ComApartment com;
    const auttest::ClientRegistry registry;
    const auttest::TestFolder folder;
};

TEST_F(ProductLists, AreReadAsTheLibraryReadsThem)
{
    expectAsTheLibrary(R"(<?xml version="1.0" encoding="ISO-8859-1"?><r><Data><NewData>
        <ProductList>
          <Product><ProductReleaseID>2001</ProductReleaseID><Name>Ledger</Name><Language>EN</Language>
            <Version>7.0.12</Version><Build>B1</Build><Action>forcereinstall</Action>
            <StartDate>2026-01-15 08:00</StartDate><PreInstallOnly>true</PreInstallOnly><NoDownload>Yes</NoDownload>
            <MarketingName> Velmora  Ledger </MarketingName><Name>Second</Name>
            <ComponentList><Component><ComponentReleaseID>12abc</ComponentReleaseID><Name>Core &amp; more</Name>
              <Version>1.0</Version><URL>http://server/x</URL><Action>REMOVE</Action><Shared>tRuE</Shared></Component>
              <!-- none --><Other/></ComponentList>
            <ComponentList><Component/></ComponentList></Product>
          <Product/>
          <Product><Name>Off</Name><Action>disable</Action><StartDate>nonsense</StartDate></Product>
          <Product><Name>Odd</Name><Action>DANCE</Action><ProductReleaseID>99999999999</ProductReleaseID></Product>
        </ProductList>
        <ProductList><Product><Name>Late</Name></Product></ProductList>
        </NewData></Data></r>)");
}

TEST_F(ProductLists, WithTenThousandCharactersAreCutAsByTheLibrary)
{
    const std::string longText(10'000, 'n');
    expectAsTheLibrary("<r><Data><NewData><ProductList><Product><Name>" + longText + "</Name><Version>" + longText +
                       "</Version><Language>" + longText + "</Language><ComponentList><Component><Name>" + longText +
                       "</Name><URL>" + longText + "</URL></Component></ComponentList></Product></ProductList>" +
                       "</NewData></Data></r>");
}

TEST_F(ProductLists, WithoutProductsAreEmpty) { expectAsTheLibrary("<r><Data><NewData/></Data></r>"); }

TEST_F(ProductLists, ThatAreNoneAreRefusedWithTheReason)
{
    EXPECT_EQ("no product list: it has no element Data/NewData", refusal("<html/>"));
    EXPECT_EQ("an answer that says \"no change\": it has no product list", refusal("<r><Data><NoChange/></Data></r>"));
    EXPECT_EQ("an error answer of the server: AccessMissing",
              refusal("<r><Status><Error>AccessMissing</Error></Status></r>"));
    EXPECT_FALSE(refusal("<r><Data>").empty());
    EXPECT_FALSE(refusal("").empty());
    std::string why;
    EXPECT_FALSE(autool::readProductList(
        folder / "missing.xml", [] {}, why));
    EXPECT_EQ("there is no such file", why);
}

TEST(PlanTime, IsReadStrictly)
{
    EXPECT_TRUE(autool::parseTime("2026-11-22 01:30"));
    EXPECT_EQ(autool::parseTime("2026-11-22 01:30"), autool::parseTime("2026-11-22T01:30:00"));
    EXPECT_EQ(autool::parseTime("2026-11-22 00:00"), autool::parseTime("2026-11-22"));
    EXPECT_EQ("2026-11-22 01:30:07", autool::timeText(*autool::parseTime("2026-11-22 01:30:07")));
    for (const char* const wrong :
         {"", "now", "2026-04-31 10:00", "2026-13-01", "2026-11-22 24:00", "2026-11-22 10:60", "2026-11-22 10:00x",
          "2026-11-22x10:00", "22.11.2026", "2026-11-22 10:00:99", "2026-11-22 10", "2026-11-22 -1:00"})
        EXPECT_FALSE(autool::parseTime(wrong)) << wrong;
}
} // namespace
