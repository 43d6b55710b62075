#include "registry/CRegDataCaching.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;

namespace
{
constexpr char kKey[] = "Config\\Cache\\Data\\Product\\host";
} // namespace

TEST(CRegDataCaching, OpensTheKeyOfProductAndHost)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, kKey,
                         [](bool readOnly) {
                             CRegDataCaching{"host", "CID", "Product", "Component", readOnly};
                         });
}

TEST(CRegDataCaching, TheEntryIsNamedByIdAndComponent)
{
    EXPECT_STREQ("CID__Component", CRegDataCaching("host", "CID", "Product", "Component", true).GetEntryName());
    EXPECT_STREQ("CID", CRegDataCaching("host", "CID", "Product", "", true).GetEntryName());
    EXPECT_STREQ("CID", CRegDataCaching("host", "CID", "Product", nullptr, true).GetEntryName());
    EXPECT_STREQ("__Component", CRegDataCaching("host", nullptr, "Product", "Component", true).GetEntryName());
}

TEST(CRegDataCaching, AnEntrysNameIsCutAt259Characters)
{
    const std::string id(10000, 'i');
    EXPECT_EQ(std::string(259, 'i'), CRegDataCaching("host", id.c_str(), "Product", "", true).GetEntryName());
    EXPECT_EQ(std::string(259, 'i'), CRegDataCaching("host", id.c_str(), "Product", "C", true).GetEntryName());
}

TEST(CRegDataCaching, ATimeStampIsReadAndWritten)
{
    const ClientRegistry registry;
    CRegDataCaching key("host", "CID", "Product", "Component", false);
    String stamp("2010-04-01 12:00:00");
    key.SetTimeStamp(stamp);
    EXPECT_EQ("2010-04-01 12:00:00", registry.readText(kKey, "CID__Component"));
    EXPECT_STREQ("2010-04-01 12:00:00", key.GetTimeStamp());
}

TEST(CRegDataCaching, AMissingOrEmptyTimeStampIsLongAgo)
{
    const ClientRegistry registry;
    EXPECT_STREQ("1980-01-01 00:00:00", CRegDataCaching("host", "CID", "Product", "", true).GetTimeStamp());
    CRegDataCaching key("host", "CID", "Product", "", false);
    EXPECT_STREQ("1980-01-01 00:00:00", key.GetTimeStamp());
    registry.write(kKey, "CID", "");
    EXPECT_STREQ("1980-01-01 00:00:00", key.GetTimeStamp());
    registry.writeRaw(kKey, "CID", REG_SZ, "");
    EXPECT_STREQ("1980-01-01 00:00:00", key.GetTimeStamp());
}

TEST(CRegDataCaching, CopiesAreWhole)
{
    const ClientRegistry registry;
    registry.write(kKey, "CID", "2010");
    CRegDataCaching original("host", "CID", "Product", "", true);
    {
        CRegDataCaching copy(original);
        EXPECT_STREQ("CID", copy.GetEntryName());
        EXPECT_STREQ("2010", copy.GetTimeStamp());
    }
    // The copy has closed the key that they shared.
    EXPECT_STREQ("1980-01-01 00:00:00", original.GetTimeStamp());

    CRegDataCaching assigned("a", "b", "c", "d", true);
    CRegDataCaching closed("missing", "CID", "Product", "", true);
    assigned = closed;
    EXPECT_STREQ("CID", assigned.GetEntryName());
    String stamp("2011");
    assigned.SetTimeStamp(stamp);
    EXPECT_EQ("2011", registry.readText("Config\\Cache\\Data\\Product\\missing", "CID"));
}
