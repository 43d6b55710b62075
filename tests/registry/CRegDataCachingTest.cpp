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

TEST(CRegDataCaching, AnEntrysNameHasUpTo259Characters)
{
    const auto nameOf = [](std::size_t length, const char* component) {
        return std::string(
            CRegDataCaching("host", std::string(length, 'i').c_str(), "P", component, true).GetEntryName());
    };
    EXPECT_EQ(std::string(259, 'i'), nameOf(259, ""));
    EXPECT_EQ("", nameOf(260, ""));
    EXPECT_EQ("", nameOf(10000, ""));
    EXPECT_EQ(std::string(256, 'i') + "__C", nameOf(256, "C"));
    EXPECT_EQ("", nameOf(257, "C"));
    EXPECT_EQ("", nameOf(10000, "C"));
}

TEST(CRegDataCaching, AnEntryWhoseNameIsTooLongHasNoTimeStamp)
{
    const ClientRegistry registry;
    const std::string cut(259, 'i');
    const std::string tooLong(260, 'i');
    registry.write(kKey, "", "of the default value");
    registry.write(kKey, cut.c_str(), "of another entry");
    for (const bool readOnly : {false, true})
    {
        for (const char* component : {"", "Component"})
        {
            CRegDataCaching key("host", tooLong.c_str(), "Product", component, readOnly);
            EXPECT_STREQ("1980-01-01 00:00:00", key.GetTimeStamp());
            String stamp("2010-04-01 12:00:00");
            key.SetTimeStamp(stamp);
        }
    }
    EXPECT_EQ("of the default value", registry.readText(kKey, ""));
    EXPECT_EQ("of another entry", registry.readText(kKey, cut.c_str()));
    EXPECT_EQ(2u, registry.valueNames(kKey).size());
}

TEST(CRegDataCaching, WithoutIdAndComponentTheTimeStampIsTheDefaultValue)
{
    const ClientRegistry registry;
    for (const char* id : {"", static_cast<const char*>(nullptr)})
    {
        CRegDataCaching key("host", id, "Product", "", false);
        EXPECT_STREQ("", key.GetEntryName());
        String stamp(id == nullptr ? "of null" : "2010-04-01 12:00:00");
        key.SetTimeStamp(stamp);
        EXPECT_STREQ(stamp, key.GetTimeStamp());
        EXPECT_EQ(std::string(stamp), registry.readText(kKey, ""));
    }
    EXPECT_EQ(std::vector<std::string>{""}, registry.valueNames(kKey));
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
