#include "registry/CRegLogon.h"

#include "tests/registry/RegistryTests.h"

#include <algorithm>

using auttest::ClientRegistry;

TEST(CRegLogon, OpensTheLogonKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "Config\\Logon", [](bool readOnly) { CRegLogon{readOnly}; });
}

TEST(CRegLogon, ALogonNameIsNameAndDataOfItsValue)
{
    const ClientRegistry registry;
    CRegLogon key(false);
    key.SetLogonName("domain\\user");
    EXPECT_EQ("domain\\user", registry.readText("Config\\Logon", "domain\\user"));
}

TEST(CRegLogon, AnEmptyLogonNameIsIgnored)
{
    const ClientRegistry registry;
    CRegLogon key(false);
    key.SetLogonName("");
    key.SetLogonName(nullptr);
    EXPECT_TRUE(registry.valueNames("Config\\Logon").empty());
}

TEST(CRegLogon, ALogonNameCanBeRemoved)
{
    const ClientRegistry registry;
    CRegLogon key(false);
    key.SetLogonName("one");
    key.SetLogonName("two");
    key.RemoveLogonName("one");
    key.RemoveLogonName("never there");
    EXPECT_EQ((std::vector<std::string>{"two"}), registry.valueNames("Config\\Logon"));
}

TEST(CRegLogon, ListsItsLogonNames)
{
    const ClientRegistry registry;
    CRegLogon key(false);
    auttest::StringList list;
    EXPECT_TRUE(key.GetLogonNameList(list));
    EXPECT_TRUE(list.IsEmpty());
    key.SetLogonName("one");
    key.SetLogonName("two");
    EXPECT_TRUE(key.GetLogonNameList(list));
    std::vector<std::string> names = auttest::textsOf(list);
    std::sort(names.begin(), names.end());
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), names);
    key.Close();
    EXPECT_FALSE(key.GetLogonNameList(list));
}
