#include "registry/CRegInProgress.h"

#include "tests/registry/RegistryTests.h"

#include <limits>

using auttest::ClientRegistry;

TEST(CRegInProgress, OpensItsKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "IN_PROGRESS", [](bool readOnly) { CRegInProgress{readOnly}; });
    EXPECT_FALSE(registry.keyExists("IN_PROGRESS_LOCAL"));
}

TEST(CRegInProgress, OpensTheLocalKeyOnALocalInstallation)
{
    const ClientRegistry registry;
    registry.write("", "LocalInstall", 1u);
    CRegInProgress{true};
    EXPECT_FALSE(registry.keyExists("IN_PROGRESS_LOCAL"));
    CRegInProgress{false};
    EXPECT_TRUE(registry.keyExists("IN_PROGRESS_LOCAL"));
    EXPECT_FALSE(registry.keyExists("IN_PROGRESS"));

    registry.write("", "LocalInstall", DWORD{0});
    CRegInProgress{false};
    EXPECT_TRUE(registry.keyExists("IN_PROGRESS"));
}

TEST(CRegInProgress, TheLocalClassAlwaysOpensTheLocalKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "IN_PROGRESS_LOCAL", [](bool readOnly) { CRegInProgressLocal{readOnly}; });
    EXPECT_FALSE(registry.keyExists("IN_PROGRESS"));
}

TEST(CRegInProgress, ReadsAndWritesItsTexts)
{
    const ClientRegistry registry;
    CRegInProgress key(false);
    using Key = CRegInProgress;
    auttest::expectTextAccessors<Key>(key, registry, "IN_PROGRESS",
                                      {{"ProductsFilePath", &Key::GetProductFilePath, &Key::SetProductFilePath},
                                       {"Action", &Key::GetAction, &Key::SetAction},
                                       {"Object", &Key::GetObjectA, &Key::SetObject}});
}

TEST(CRegInProgress, TheLocalClassAddsTheLocation)
{
    const ClientRegistry registry;
    CRegInProgressLocal key(false);
    using Key = CRegInProgressLocal;
    auttest::expectTextAccessors<Key>(key, registry, "IN_PROGRESS_LOCAL",
                                      {{"Location", &Key::GetLocation, &Key::SetLocation}});
    key.SetPhase(3);
    EXPECT_EQ(3u, registry.readNumber("IN_PROGRESS_LOCAL", "Phase"));
}

TEST(CRegInProgress, ReadsAndWritesThePhase)
{
    const ClientRegistry registry;
    CRegInProgress key(false);
    EXPECT_EQ(0, key.GetPhase());
    key.SetPhase(2);
    EXPECT_EQ(2u, registry.readNumber("IN_PROGRESS", "Phase"));
    EXPECT_EQ(2, key.GetPhase());
    key.SetPhase(-1);
    EXPECT_EQ(0xFFFFFFFFu, registry.readNumber("IN_PROGRESS", "Phase"));
    EXPECT_EQ(-1, key.GetPhase());
}

TEST(CRegInProgress, PriorityIsWrittenAsOneAndDeleted)
{
    const ClientRegistry registry;
    CRegInProgress key(false);
    EXPECT_FALSE(key.IsPrioA());
    key.SetPrioA(true);
    EXPECT_EQ(1u, registry.readNumber("IN_PROGRESS", "PrioA"));
    EXPECT_TRUE(key.IsPrioA());
    key.SetPrioA(false);
    EXPECT_FALSE(registry.valueExists("IN_PROGRESS", "PrioA"));
    EXPECT_FALSE(key.IsPrioA());
    registry.write("IN_PROGRESS", "PrioA", DWORD{0});
    EXPECT_FALSE(key.IsPrioA());
}

TEST(CRegInProgress, AnActionMayBeANumber)
{
    const ClientRegistry registry;
    CRegInProgress key(false);
    for (const int number : {0, 7, -7, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        key.SetAction(number);
        EXPECT_EQ(std::to_string(number), registry.readText("IN_PROGRESS", "Action"));
    }
}
