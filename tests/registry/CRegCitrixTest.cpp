#include "registry/CRegCitrix.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;

TEST(CRegCitrix, OpensTheFarmsKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "Citrix", [](bool readOnly) { CRegCitrix{readOnly}; });
}

TEST(CRegCitrix, ReadsItsLimits)
{
    const ClientRegistry registry;
    registry.createKey("Citrix");
    CRegCitrix key(true);
    EXPECT_EQ(0u, key.GetUserNumber());
    EXPECT_EQ(0u, key.GetMsgNumber());
    registry.write("Citrix", "UsersNumber", 12u);
    registry.write("Citrix", "MsgNumber", 34u);
    EXPECT_EQ(12u, key.GetUserNumber());
    EXPECT_EQ(34u, key.GetMsgNumber());
}

TEST(CRegCitrix, HasNoLimitsWithoutItsKey)
{
    const ClientRegistry registry;
    CRegCitrix key(true);
    EXPECT_EQ(0u, key.GetUserNumber());
    EXPECT_EQ(0u, key.GetMsgNumber());
}
