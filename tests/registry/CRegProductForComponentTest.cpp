#include "registry/CRegProductForComponent.h"

#include "tests/registry/RegistryTests.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/support/NoMemoryOnce.h"

#include <cstring>

using Key = CRegProductForComponent;

namespace
{
constexpr char kOwn[] = "Components\\Comp\\P1";
constexpr char kCommon[] = "Components\\Comp\\Shared";

class CRegProductForComponentTest : public ::testing::Test
{
protected:
    /// An entry with all its values.
    void storeEntry(const char* key, const char* path)
    {
        m_registry.write(key, "Path", path);
        m_registry.write(key, "Language", "SV");
        m_registry.write(key, "ComponentVersion", "3.3.302B1");
        m_registry.write(key, "Enable", 1u);
    }
    void expectEntry(const char* key, const char* path)
    {
        EXPECT_EQ(path, m_registry.readText(key, "Path"));
        EXPECT_EQ("SV", m_registry.readText(key, "Language"));
        EXPECT_EQ("3.3.302B1", m_registry.readText(key, "ComponentVersion"));
        EXPECT_EQ(1u, m_registry.readNumber(key, "Enable"));
    }
    /// Two products share, their data in the common entry.
    void storeShared(std::initializer_list<const char*> products)
    {
        for (const char* const product : products)
            m_registry.write(std::string("Components\\Comp\\") + product, "Shared", 1u);
        storeEntry(kCommon, "C:\\common");
        m_registry.write(kCommon, "Shared", 1u);
    }

    auttest::ClientRegistry m_registry;
};

/// The system's failure to tell more than one subkey.
LSTATUS WINAPI firstSubkeyOnly(HKEY key, DWORD index, LPSTR name, LPDWORD size, LPDWORD reserved, LPSTR className,
                               LPDWORD classSize, PFILETIME written)
{
    return index == 0 ? ::RegEnumKeyExA(key, index, name, size, reserved, className, classSize, written)
                      : ERROR_NOT_ENOUGH_MEMORY;
}
/// A full disk: no path can be stored any more.
LSTATUS WINAPI noPath(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size)
{
    return std::strcmp(name, "Path") == 0 ? ERROR_DISK_FULL : ::RegSetValueExA(key, name, reserved, type, data, size);
}
void* noMemory(std::size_t) { return nullptr; }
void* noMoreMemory(void*, std::size_t) { return nullptr; }
} // namespace

TEST_F(CRegProductForComponentTest, OpensTheProductsEntry)
{
    auttest::expectKeyAt(m_registry, kOwn, [](bool readOnly) { Key{"Comp", "P1", readOnly, true}; });
}

TEST_F(CRegProductForComponentTest, ReadsAndWritesItsTexts)
{
    Key key("Comp", "P1", false, true);
    auttest::expectTextAccessors<Key>(key, m_registry, kOwn,
                                      {{"ComponentVersion", &Key::GetComponentVersion, &Key::SetComponentVersion},
                                       {"Path", &Key::GetPath, &Key::SetPath},
                                       {"Language", &Key::GetLanguage, &Key::SetLanguage}});
}

TEST_F(CRegProductForComponentTest, IsEnabledAndDisabled)
{
    Key key("Comp", "P1", false, true);
    EXPECT_FALSE(key.IsEnabled());
    key.Enable();
    EXPECT_EQ(1u, m_registry.readNumber(kOwn, "Enable"));
    EXPECT_TRUE(key.IsEnabled());
    key.Disable();
    EXPECT_EQ(0u, m_registry.readNumber(kOwn, "Enable"));
    EXPECT_FALSE(key.IsEnabled());
}

TEST_F(CRegProductForComponentTest, WithoutAProductTextsWorkButTheFlagDoesNot)
{
    storeEntry("Components\\Comp", "C:\\path");
    Key key("Comp", "", false, true);
    EXPECT_STREQ("C:\\path", key.GetPath());
    key.SetPath("C:\\other");
    EXPECT_EQ("C:\\other", m_registry.readText("Components\\Comp", "Path"));
    EXPECT_FALSE(key.IsEnabled());
    key.Disable();
    EXPECT_EQ(1u, m_registry.readNumber("Components\\Comp", "Enable"));
    m_registry.removeValue("Components\\Comp", "Enable");
    key.Enable();
    EXPECT_FALSE(m_registry.valueExists("Components\\Comp", "Enable"));
}

TEST_F(CRegProductForComponentTest, SplitsItsVersion)
{
    storeEntry(kOwn, "C:\\path");
    Key key("Comp", "P1", true, true);
    char version[260] = "before";
    char build[260] = "before";
    key.GetBuildAndVersion(version, build);
    EXPECT_STREQ("3.3.302", version);
    EXPECT_STREQ("B1", build);
}

TEST_F(CRegProductForComponentTest, ASharedEntryIsReplacedByTheCommonOneWhenFollowed)
{
    storeShared({"P1"});
    m_registry.write(kOwn, "Path", "C:\\own");
    Key followed("Comp", "P1", true, true);
    EXPECT_TRUE(followed.IsShared());
    EXPECT_STREQ("C:\\common", followed.GetPath());
    EXPECT_TRUE(followed.IsEnabled());
    Key own("Comp", "P1", true, false);
    EXPECT_TRUE(own.IsShared());
    EXPECT_STREQ("C:\\own", own.GetPath());
    EXPECT_FALSE(own.IsEnabled());
}

TEST_F(CRegProductForComponentTest, AnEntryThatIsNotSharedStaysItself)
{
    storeEntry(kCommon, "C:\\common");
    storeEntry(kOwn, "C:\\own");
    m_registry.write(kOwn, "Shared", DWORD{0});
    Key key("Comp", "P1", true, true);
    EXPECT_FALSE(key.IsShared());
    EXPECT_STREQ("C:\\own", key.GetPath());
}

TEST_F(CRegProductForComponentTest, TheCommonEntryIsOpenedWithTheSameAccess)
{
    m_registry.write(kOwn, "Shared", 1u);
    Key readOnly("Comp", "P1", true, true);
    EXPECT_STREQ("", readOnly.GetPath());
    EXPECT_FALSE(m_registry.keyExists(kCommon));
    Key writable("Comp", "P1", false, true);
    EXPECT_TRUE(m_registry.keyExists(kCommon));
    writable.SetPath("C:\\common");
    EXPECT_EQ("C:\\common", m_registry.readText(kCommon, "Path"));
    EXPECT_FALSE(m_registry.valueExists(kOwn, "Path"));
}

TEST_F(CRegProductForComponentTest, SharingASharedEntryChangesNothing)
{
    storeShared({"P1"});
    m_registry.write(kOwn, "Path", "C:\\own");
    Key key("Comp", "P1", false, false);
    EXPECT_TRUE(key.Share());
    EXPECT_EQ("C:\\own", m_registry.readText(kOwn, "Path"));
    EXPECT_STREQ("C:\\own", key.GetPath()); // still on its own entry
}

TEST_F(CRegProductForComponentTest, TheOnlyProductMovesItsEntryToTheCommonOne)
{
    storeEntry(kOwn, "C:\\path");
    Key key("Comp", "P1", true, true); // opened for writing on the way
    EXPECT_TRUE(key.Share());
    EXPECT_TRUE(key.IsShared());
    EXPECT_FALSE(m_registry.valueExists(kOwn, "Path"));
    EXPECT_EQ(1u, m_registry.readNumber(kOwn, "Shared"));
    EXPECT_EQ("SV", m_registry.readText(kOwn, "Language")); // only the path goes
    EXPECT_EQ("3.3.302B1", m_registry.readText(kOwn, "ComponentVersion"));
    EXPECT_EQ(1u, m_registry.readNumber(kCommon, "Shared"));
    expectEntry(kCommon, "C:\\path");
    key.SetLanguage("EN");
    EXPECT_EQ("EN", m_registry.readText(kCommon, "Language"));
}

TEST_F(CRegProductForComponentTest, WhatCannotBeMovedIsTold)
{
    storeEntry(kOwn, "C:\\path");
    Key key("Comp", "P1", false, true);
    auttest::LogFile log;
    const auttest::ImportPatch patch("RegSetValueExA", noPath);
    EXPECT_TRUE(key.Share());
    EXPECT_EQ(
        (std::vector<auttest::LogEvent>{
            {"Error", "CRegProductForComponent::Share - entry of component Comp for product P1 not wholly written"}}),
        log.events());
    EXPECT_EQ("SV", m_registry.readText(kCommon, "Language")) << "the rest is there";

    m_registry.write(kCommon, "Path", "C:\\path");
    log.mark();
    EXPECT_TRUE(key.UnShare());
    EXPECT_EQ((std::vector<auttest::LogEvent>{
                  {"Error", "CRegProductForComponent::UnShare - entry of component Comp for product P1 not wholly "
                            "written"}}),
              log.events());
    EXPECT_EQ("3.3.302B1", m_registry.readText(kOwn, "ComponentVersion"));
}

TEST_F(CRegProductForComponentTest, TheProductsNameIsComparedWithoutRegardToCase)
{
    storeEntry(kOwn, "C:\\path");
    Key key("Comp", "p1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_TRUE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, OnlyWhatIsThereMovesToTheCommonEntry)
{
    m_registry.write(kOwn, "Path", "");
    m_registry.write(kOwn, "Enable", DWORD{0});
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_EQ((std::vector<std::string>{"Shared"}), m_registry.valueNames(kCommon));
}

TEST_F(CRegProductForComponentTest, AnotherOnlyProductLeavesEverythingAsItIs)
{
    storeEntry("Components\\Comp\\P2", "C:\\path");
    Key key("Comp", "", false, true); // an entry of no product
    EXPECT_TRUE(key.Share());
    EXPECT_FALSE(key.IsShared());
    EXPECT_FALSE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, NoProductAtAllLeavesEverythingAsItIs)
{
    m_registry.createKey("Components\\Comp");
    Key key("Comp", "", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_FALSE(key.IsShared());
    EXPECT_FALSE(m_registry.keyExists(kCommon));
    EXPECT_FALSE(m_registry.valueExists("Components\\Comp", "Shared"));
}

TEST_F(CRegProductForComponentTest, OneOfSeveralWithoutAVersionJoinsAtOnce)
{
    storeShared({"P2"});
    m_registry.write(kOwn, "Path", "C:\\own");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_TRUE(key.IsShared());
    EXPECT_EQ(1u, m_registry.readNumber(kOwn, "Shared"));
    EXPECT_EQ("C:\\own", m_registry.readText(kOwn, "Path")); // deliberately kept, unlike the only product's
    EXPECT_STREQ("C:\\common", key.GetPath());
    expectEntry(kCommon, "C:\\common");
}

TEST_F(CRegProductForComponentTest, JoiningMakesAMissingCommonEntry)
{
    storeEntry("Components\\Comp\\P2", "C:\\path"); // does not share
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_TRUE(m_registry.keyExists(kCommon));
    EXPECT_TRUE(m_registry.valueNames(kCommon).empty());
}

TEST_F(CRegProductForComponentTest, OneOfSeveralJoinsWhenAnotherSharesTheSamePath)
{
    storeShared({"P2", "P3"});
    storeEntry(kOwn, "c:\\COMMON");
    Key key("Comp", "P1", true, true);
    EXPECT_TRUE(key.Share());
    EXPECT_TRUE(key.IsShared());
    EXPECT_EQ(1u, m_registry.readNumber(kOwn, "Shared"));
    EXPECT_EQ("c:\\COMMON", m_registry.readText(kOwn, "Path"));
    EXPECT_STREQ("C:\\common", key.GetPath());
}

TEST_F(CRegProductForComponentTest, OneOfSeveralDoesNotJoinAnotherPath)
{
    storeShared({"P2"});
    storeEntry(kOwn, "C:\\own");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_FALSE(key.IsShared());
    EXPECT_FALSE(m_registry.valueExists(kOwn, "Shared"));
    EXPECT_STREQ("C:\\own", key.GetPath());
}

TEST_F(CRegProductForComponentTest, OneOfSeveralDoesNotJoinWhenTheOtherDoesNotShare)
{
    storeEntry(kOwn, "C:\\same");
    storeEntry("Components\\Comp\\P2", "C:\\same");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_FALSE(key.IsShared());
    EXPECT_FALSE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, EmptyPathsAreNotTheSame)
{
    storeShared({"P2"});
    m_registry.removeValue(kCommon, "Path");
    storeEntry(kOwn, "");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_FALSE(key.IsShared());
}

TEST_F(CRegProductForComponentTest, SharingFailsWhenTheEntryCannotBeWritten)
{
    Key refused(std::string(300, 'x').c_str(), "P1", true, true);
    EXPECT_FALSE(refused.Share());
    EXPECT_FALSE(refused.IsShared());
    Key closed("Comp", "P1", false, true);
    closed.Close();
    EXPECT_FALSE(closed.Share());
    EXPECT_FALSE(closed.IsShared());
}

TEST_F(CRegProductForComponentTest, SharingFailsWhenTheCommonEntryCannotBeOpened)
{
    // Room for the product's entry, but not for the common one, whose name is longer.
    const std::string component(259 - auttest::clientKey("Components\\").size() - 2, 'x');
    Key key(component.c_str(), "P", false, true);
    EXPECT_FALSE(key.Share());
    EXPECT_EQ(1u, m_registry.readNumber("Components\\" + component + "\\P", "Shared"));

    m_registry.createKey("Components\\" + component + "\\Q");
    m_registry.createKey("Components\\" + component + "\\R");
    Key joining(component.c_str(), "Q", false, true);
    EXPECT_FALSE(joining.Share());
}

TEST_F(CRegProductForComponentTest, SharingFailsWhenTheProductsCannotAllBeRead)
{
    storeEntry(kOwn, "C:\\own");
    storeEntry("Components\\Comp\\P2", "C:\\other");
    Key key("Comp", "P1", false, true);
    const auttest::ImportPatch patch("RegEnumKeyExA", firstSubkeyOnly);
    EXPECT_FALSE(key.Share());
    EXPECT_FALSE(key.IsShared());
    expectEntry(kOwn, "C:\\own");
    EXPECT_FALSE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, UnsharingAnEntryThatIsNotSharedChangesNothing)
{
    storeEntry(kOwn, "C:\\own");
    storeEntry(kCommon, "C:\\common");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.UnShare());
    EXPECT_STREQ("C:\\own", key.GetPath());
    EXPECT_TRUE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, TheLastProductTakesTheCommonEntryWithIt)
{
    storeShared({"P1"});
    m_registry.createKey(std::string(kCommon) + "\\Below");
    Key key("Comp", "P1", true, true);
    EXPECT_TRUE(key.UnShare());
    EXPECT_FALSE(key.IsShared());
    EXPECT_FALSE(m_registry.keyExists(kCommon));
    EXPECT_FALSE(m_registry.valueExists(kOwn, "Shared"));
    expectEntry(kOwn, "C:\\common");
    key.SetPath("C:\\own");
    EXPECT_EQ("C:\\own", m_registry.readText(kOwn, "Path"));
}

TEST_F(CRegProductForComponentTest, OneOfSeveralLeavesTheCommonEntryToTheOthers)
{
    storeShared({"P1", "P2"});
    m_registry.write("Components\\Comp\\P1", "Path", "C:\\old");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.UnShare());
    EXPECT_FALSE(key.IsShared());
    EXPECT_FALSE(m_registry.valueExists(kOwn, "Shared"));
    expectEntry(kOwn, "C:\\common");
    expectEntry(kCommon, "C:\\common");
    EXPECT_EQ(1u, m_registry.readNumber(kCommon, "Shared"));
    EXPECT_EQ(1u, m_registry.readNumber("Components\\Comp\\P2", "Shared"));

    // From now on the accessors work on the product's own entry.
    key.SetPath("C:\\own");
    key.Disable();
    EXPECT_EQ("C:\\own", m_registry.readText(kOwn, "Path"));
    EXPECT_EQ(0u, m_registry.readNumber(kOwn, "Enable"));
    expectEntry(kCommon, "C:\\common");
    m_registry.write(kOwn, "ComponentVersion", "4.0");
    EXPECT_STREQ("4.0", key.GetComponentVersion());
    EXPECT_STREQ("C:\\own", key.GetPath());
    EXPECT_FALSE(key.IsEnabled());
}

TEST_F(CRegProductForComponentTest, UnsharingTakesTheCommonDataEvenWhenTheEntryWasNotFollowed)
{
    storeShared({"P1"});
    Key key("Comp", "P1", false, false);
    EXPECT_TRUE(key.UnShare());
    expectEntry(kOwn, "C:\\common");
    EXPECT_FALSE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, OnlyWhatIsThereComesBack)
{
    m_registry.write(kOwn, "Shared", 1u);
    m_registry.write(kOwn, "Path", "C:\\own");
    m_registry.write(kOwn, "Enable", DWORD{0});
    m_registry.write(kCommon, "Shared", 1u);
    m_registry.write(kCommon, "Path", "");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.UnShare());
    EXPECT_EQ("C:\\own", m_registry.readText(kOwn, "Path"));
    EXPECT_FALSE(m_registry.valueExists(kOwn, "Language"));
    EXPECT_EQ(0u, m_registry.readNumber(kOwn, "Enable"));
}

TEST_F(CRegProductForComponentTest, UnsharingWithoutAnyProductChangesNothing)
{
    storeShared({"P1"});
    Key key("Comp", "P1", false, true);
    m_registry.removeKey(kOwn);
    EXPECT_TRUE(key.UnShare());
    EXPECT_TRUE(m_registry.keyExists(kCommon));
    EXPECT_FALSE(m_registry.keyExists(kOwn));
}

TEST_F(CRegProductForComponentTest, UnsharingFailsWhenTheProductsCannotAllBeRead)
{
    storeShared({"P1", "P2"});
    Key key("Comp", "P1", false, true);
    const auttest::ImportPatch patch("RegEnumKeyExA", firstSubkeyOnly);
    EXPECT_FALSE(key.UnShare()); // the one product read is not the last
    EXPECT_TRUE(key.IsShared());
    expectEntry(kCommon, "C:\\common");
    EXPECT_TRUE(m_registry.valueExists(kOwn, "Shared"));
}

TEST_F(CRegProductForComponentTest, UnsharingWithoutMemoryChangesNothing)
{
    storeShared({"P1"});
    Key key("Comp", "P1", false, true);
    {
        const auttest::ImportPatch first("malloc", noMemory);
        const auttest::ImportPatch further("realloc", noMoreMemory);
        EXPECT_FALSE(key.UnShare());
    }
    EXPECT_TRUE(key.IsShared());
    expectEntry(kCommon, "C:\\common");
    EXPECT_TRUE(m_registry.valueExists(kOwn, "Shared"));
}

TEST_F(CRegProductForComponentTest, UnsharingFailsOnAClosedObject)
{
    storeShared({"P1"});
    Key key("Comp", "P1", false, true);
    key.Close();
    EXPECT_FALSE(key.UnShare());
    EXPECT_TRUE(key.IsShared());
    EXPECT_TRUE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, UnsharingFailsWhenTheProductsEntryCannotBeOpened)
{
    // Below a key that lives for the session only, the system refuses to create one that outlives it.
    HKEY created = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegCreateKeyExA(HKEY_LOCAL_MACHINE, auttest::clientKey("Components\\Comp").c_str(), 0, nullptr,
                                REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &created, nullptr));
    const aut::UniqueKey component(created);
    for (const char* const name : {"P1", "P2", "Shared"})
    {
        ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(component.get(), name, 0, nullptr, REG_OPTION_VOLATILE,
                                                   KEY_ALL_ACCESS, nullptr, &created, nullptr));
        const aut::UniqueKey entry(created);
    }
    storeShared({"P1"});
    Key key("Comp", "P1", false, true);
    m_registry.removeKey(kOwn);
    EXPECT_FALSE(key.UnShare());
    EXPECT_TRUE(key.IsShared());
    EXPECT_FALSE(m_registry.keyExists(kOwn));
}

TEST_F(CRegProductForComponentTest, SharingAndUnsharingLeavesTheEntryAsItWas)
{
    storeEntry(kOwn, "C:\\path");
    Key key("Comp", "P1", false, true);
    EXPECT_TRUE(key.Share());
    EXPECT_TRUE(key.UnShare());
    expectEntry(kOwn, "C:\\path");
    EXPECT_EQ(4u, m_registry.valueNames(kOwn).size());
    EXPECT_FALSE(m_registry.keyExists(kCommon));
}

TEST_F(CRegProductForComponentTest, WithoutMemoryTheLastProductTakesTheCommonEntryWithItOrFails)
{
    bool met = true;
    for (int number = 1; met; ++number)
    {
        m_registry.removeKey("Components\\Comp");
        storeShared({"P1"});
        bool done = false;
        {
            const auttest::NoMemoryOnce once(number);
            done = Key("Comp", "P1", true, true).UnShare();
            met = once.wasMet();
        }
        EXPECT_EQ(done, !m_registry.keyExists(kCommon)) << "at request " << number;
        EXPECT_EQ(done, !m_registry.valueExists(kOwn, "Shared")) << "at request " << number;
        expectEntry(done ? kOwn : kCommon, "C:\\common");
        EXPECT_TRUE(m_registry.valueNames("Components\\Comp").empty()) << "at request " << number;
        EXPECT_FALSE(m_registry.keyExists("Components\\Shared")) << "at request " << number;
        EXPECT_TRUE(met || done);
    }
}
