#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

TEST(ClientRegistry, KeepsNumbersAndTexts)
{
    const auttest::ClientRegistry registry;
    registry.write("Config", "Number", 7);
    registry.write("Config", "Text", "abc");
    EXPECT_EQ(7u, registry.readNumber("Config", "Number"));
    EXPECT_EQ("abc", registry.readText("Config", "Text"));
    EXPECT_EQ(std::nullopt, registry.readText("Config", "Number"));
    EXPECT_EQ(std::nullopt, registry.readNumber("Config", "Text"));
    EXPECT_EQ(std::nullopt, registry.readNumber("Config", "Missing"));
    EXPECT_EQ((std::vector<std::string>{"Number", "Text"}), registry.valueNames("Config"));
    EXPECT_EQ((std::vector<std::string>{"Config"}), registry.subkeys(""));
}

TEST(ClientRegistry, WritesAnyBytesOfAnyType)
{
    const auttest::ClientRegistry registry;
    registry.writeRaw("", "Short", REG_DWORD, "abc");
    const auto stored = registry.readRaw("", "Short");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(DWORD{REG_DWORD}, stored->type);
    EXPECT_EQ("abc", stored->bytes);
    EXPECT_EQ(std::nullopt, registry.readNumber("", "Short"));
}

TEST(ClientRegistry, IsEmptyAtTheStartAndAtTheEnd)
{
    const auttest::Registry machine;
    machine.write("Software\\Velmora\\7xAutoUpdate\\Config\\Network", "Left", 1);
    {
        const auttest::ClientRegistry registry;
        EXPECT_FALSE(registry.keyExists(""));
        registry.write("Config", "Number", 1);
    }
    EXPECT_FALSE(machine.keyExists("Software\\Velmora\\7xAutoUpdate"));
}
