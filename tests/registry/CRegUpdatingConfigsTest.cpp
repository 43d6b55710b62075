#include "registry/CRegUpdatingConfigs.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;

namespace
{
constexpr char kKey[] = "Config\\Cache\\UpdatingConfigs\\Product\\host";

class CRegUpdatingConfigsTest : public ::testing::Test
{
protected:
    ClientRegistry m_registry;
    CRegUpdatingConfigs m_key{"host", "unused", "Product", false};
};
} // namespace

TEST(CRegUpdatingConfigs, OpensTheKeyOfProductAndHost)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, kKey,
                         [](bool readOnly) {
                             CRegUpdatingConfigs{"host", "unused", "Product", readOnly};
                         });
}

TEST_F(CRegUpdatingConfigsTest, AMarkIsSetSeenAndDeleted)
{
    EXPECT_FALSE(m_key.IsUpdatingConfigForCID("CID"));
    m_key.SetUpdatingConfigForCID("CID");
    EXPECT_EQ("updating", m_registry.readText(kKey, "CID__config"));
    EXPECT_TRUE(m_key.IsUpdatingConfigForCID("CID"));
    EXPECT_FALSE(m_key.IsUpdatingConfigForCID("other"));
    m_key.DeleteUpdatingConfigForCID("CID");
    EXPECT_FALSE(m_registry.valueExists(kKey, "CID__config"));
    EXPECT_FALSE(m_key.IsUpdatingConfigForCID("CID"));
}

TEST_F(CRegUpdatingConfigsTest, OnlyTheExactTextIsAMark)
{
    for (const char* const text : {"", "Updating", "updating ", "updatin", "1"})
    {
        m_registry.write(kKey, "CID__config", text);
        EXPECT_FALSE(m_key.IsUpdatingConfigForCID("CID")) << text;
    }
}

TEST_F(CRegUpdatingConfigsTest, AnEmptyIdHasNoMark)
{
    for (const char* const cid : {static_cast<const char*>(nullptr), ""})
    {
        m_key.SetUpdatingConfigForCID(cid);
        EXPECT_TRUE(m_registry.valueNames(kKey).empty());
        m_registry.write(kKey, "__config", "updating");
        EXPECT_FALSE(m_key.IsUpdatingConfigForCID(cid));
        m_key.DeleteUpdatingConfigForCID(cid);
        EXPECT_TRUE(m_registry.valueExists(kKey, "__config"));
        m_registry.removeValue(kKey, "__config");
    }
}

TEST_F(CRegUpdatingConfigsTest, LongIdsAreToldApartToTheirEnd)
{
    const std::string one = std::string(1000, 'i') + "1";
    const std::string two = std::string(1000, 'i') + "2";
    m_key.SetUpdatingConfigForCID(one.c_str());
    EXPECT_TRUE(m_key.IsUpdatingConfigForCID(one.c_str()));
    EXPECT_FALSE(m_key.IsUpdatingConfigForCID(two.c_str()));
}
