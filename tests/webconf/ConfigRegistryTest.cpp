#include "tests/webconf/ConfigFixture.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace
{
class CConfigRegistry : public auttest::ConfigFixture
{
protected:
    CConfigRegistry()
    {
        // so that neither the language nor the service switch is what changes
        m_registry.write("Config", "LanguageID", 9);
    }
    /// Loads with the language given and the service switch as the registry has it, unless an element says otherwise.
    bool loadQuietly(const std::string& elements)
    {
        return load("<Language>English</Language><ServiceActivation>1</ServiceActivation>" + elements);
    }
};

TEST_F(CConfigRegistry, SwitchesAsStoredChangeNothing)
{
    EXPECT_TRUE(loadQuietly(""));
    EXPECT_FALSE(m_config.m_registryChanged);
    EXPECT_EQ((std::vector<std::string>{"LanguageID"}), m_registry.valueNames("Config"));
}

TEST_F(CConfigRegistry, AdminActivationOnlySetsAdminModeAndTurnsTheServiceOn)
{
    m_registry.write("Config", "NoService", 1);
    EXPECT_TRUE(loadQuietly("<AdminActivationOnly>1</AdminActivationOnly>"));
    EXPECT_EQ(1u, stored("AdminMode"));
    EXPECT_EQ(0u, stored("NoService"));
    EXPECT_TRUE(m_config.m_registryChanged);
}

TEST_F(CConfigRegistry, WithoutAdminActivationOnlyAdminModeIsClearedAndTheServiceSwitchStays)
{
    m_registry.write("Config", "AdminMode", 1);
    EXPECT_TRUE(loadQuietly(""));
    EXPECT_EQ(0u, stored("AdminMode"));
    EXPECT_EQ(std::nullopt, stored("NoService"));
    EXPECT_TRUE(m_config.m_registryChanged);
}

struct Service
{
    const char* name;
    std::optional<DWORD> noService;
    const char* activation;
    std::optional<DWORD> noServiceAfter;
    bool changed;
};

class CConfigService : public CConfigRegistry, public ::testing::WithParamInterface<Service>
{
};

TEST_P(CConfigService, ComparesTheNegationAndWritesTheSwitchItself)
{
    if (GetParam().noService)
        m_registry.write("Config", "NoService", *GetParam().noService);
    EXPECT_TRUE(load(std::string("<Language>English</Language><ServiceActivation>") + GetParam().activation +
                     "</ServiceActivation>"));
    EXPECT_EQ(GetParam().noServiceAfter, stored("NoService"));
    EXPECT_EQ(GetParam().changed, m_config.m_registryChanged);
}

const Service kServices[] = {
    {"MissingAndOn", std::nullopt, "1", std::nullopt, false},
    {"MissingAndOff", std::nullopt, "0", 0u, true},
    {"ServiceAndOn", 0u, "1", 0u, false},
    {"ServiceAndOff", 0u, "0", 0u, true},
    {"NoServiceAndOn", 1u, "1", 1u, true},
    {"NoServiceAndOff", 1u, "0", 1u, false},
};
INSTANTIATE_TEST_SUITE_P(Table, CConfigService, ::testing::ValuesIn(kServices),
                         [](const auto& row) { return std::string(row.param.name); });

struct Mirrored
{
    const char* element;
    const char* value;
    bool marksChange;
};

class CConfigMirrors : public CConfigRegistry, public ::testing::WithParamInterface<Mirrored>
{
};

TEST_P(CConfigMirrors, AFlagIntoTheRegistryWhenItDiffers)
{
    const Mirrored& flag = GetParam();
    const std::string on = std::string("<") + flag.element + ">1</" + flag.element + ">";
    EXPECT_TRUE(loadQuietly(on));
    EXPECT_EQ(1u, stored(flag.value));
    EXPECT_EQ(flag.marksChange, m_config.m_registryChanged);

    m_config.m_registryChanged = false;
    m_registry.write("Config", flag.value, 5); // true already: not written again
    EXPECT_TRUE(loadQuietly(on));
    EXPECT_EQ(5u, stored(flag.value));
    EXPECT_FALSE(m_config.m_registryChanged);

    EXPECT_TRUE(loadQuietly(""));
    EXPECT_EQ(0u, stored(flag.value));
    EXPECT_EQ(flag.marksChange, m_config.m_registryChanged);
}

const Mirrored kMirrored[] = {{"CIDHybridMode", "CIDHybridMode", true},
                              {"HideIcon", "NoIcon", true},
                              {"SilentMode", "SilentMode", true},
                              {"SilentInstallNow", "SilentInstallNow", false},
                              {"SilentReboot", "SilentReboot", false}};
INSTANTIATE_TEST_SUITE_P(Table, CConfigMirrors, ::testing::ValuesIn(kMirrored),
                         [](const auto& row) { return std::string(row.param.element); });

TEST_F(CConfigRegistry, TheMarkOfAChangeStays)
{
    EXPECT_TRUE(loadQuietly("<HideIcon>1</HideIcon>"));
    EXPECT_TRUE(loadQuietly("<HideIcon>1</HideIcon>"));
    EXPECT_TRUE(m_config.m_registryChanged);
}

TEST_F(CConfigRegistry, TheComponentsFolderIsStoredOrDeleted)
{
    EXPECT_TRUE(loadQuietly("<ComponentsDir>\\\\depot\\share</ComponentsDir>"));
    EXPECT_EQ("\\\\depot\\share", m_registry.readText("Config", "IntermediateServersPath"));
    EXPECT_TRUE(loadQuietly("<ComponentsDir></ComponentsDir>"));
    EXPECT_FALSE(m_registry.valueExists("Config", "IntermediateServersPath"));
    EXPECT_FALSE(m_config.m_registryChanged);
}

struct Language
{
    const char* text;
    DWORD id;
};

TEST_F(CConfigRegistry, TheLanguageBecomesItsPrimaryId)
{
    for (const Language& language :
         {Language{"German", 7}, {"SPANISH", 10}, {"english", 9}, {"French", 9}, {"Germanic", 9}})
    {
        EXPECT_TRUE(
            load(std::string("<ServiceActivation>1</ServiceActivation><Language>") + language.text + "</Language>"));
        EXPECT_EQ(language.id, stored("LanguageID")) << language.text;
    }
}

TEST_F(CConfigRegistry, ADifferentLanguageMarksAChange)
{
    EXPECT_TRUE(load("<ServiceActivation>1</ServiceActivation><Language>German</Language>"));
    EXPECT_TRUE(m_config.m_registryChanged);
}

TEST_F(CConfigRegistry, WithoutALanguageTheUsersOwnIsStored)
{
    EXPECT_TRUE(load("<ServiceActivation>1</ServiceActivation>"));
    EXPECT_EQ(::GetUserDefaultLCID() & 0x3FF, stored("LanguageID"));
}

TEST_F(CConfigRegistry, UpdateRegistryKeysAloneReturnsTrue)
{
    EXPECT_TRUE(m_config.UpdateRegistryKeys(nullptr));
    EXPECT_EQ(0u, stored("NoService"));
}
} // namespace
