#include "registry/CRegBase.h"
#include "tests/registry/RegistryTests.h"

#include <algorithm>

using auttest::clientKey;
using auttest::ClientRegistry;
using auttest::StringList;
using auttest::textsOf;
using Texts = std::vector<std::string>;

namespace
{
Texts sorted(Texts texts)
{
    std::sort(texts.begin(), texts.end());
    return texts;
}
} // namespace

TEST(CRegBaseWalk, SubKeysAreListedInPlaceOfWhatTheListHeld)
{
    const ClientRegistry registry;
    registry.createKey("Key\\A\\Deeper");
    registry.createKey("Key\\B");
    registry.write("Key", "Value", 1u);
    CRegBase key(clientKey("Key").c_str(), true);
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_TRUE(key.GetSubKeys(list));
    EXPECT_EQ((Texts{"A", "B"}), sorted(textsOf(list)));
}

TEST(CRegBaseWalk, AKeyWithoutSubKeysGivesAnEmptyListAndTrue)
{
    const ClientRegistry registry;
    registry.write("Key", "Value", 1u);
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_TRUE(CRegBase(clientKey("Key").c_str(), true).GetSubKeys(list));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(CRegBaseWalk, ASubKeysNameOf255CharactersIsListedWhole)
{
    const ClientRegistry registry;
    const std::string longest(255, 'x');
    auttest::createSubkey(registry, "Key", longest);
    StringList list;
    EXPECT_TRUE(CRegBase(clientKey("Key").c_str(), true).GetSubKeys(list));
    EXPECT_EQ((Texts{longest}), textsOf(list));
}

TEST(CRegBaseWalk, ValuesOfEveryTypeAreListed)
{
    const ClientRegistry registry;
    registry.createKey("Key\\Below");
    registry.write("Key", "Text", "text");
    registry.write("Key", "Number", 1u);
    registry.writeRaw("Key", "Binary", REG_BINARY, "x");
    registry.writeRaw("Key", "", REG_SZ, "unnamed");
    CRegBase key(clientKey("Key").c_str(), true);
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_TRUE(key.GetValues(list));
    EXPECT_EQ((Texts{"", "Binary", "Number", "Text"}), sorted(textsOf(list)));
}

TEST(CRegBaseWalk, AKeyWithoutValuesGivesAnEmptyListAndTrue)
{
    const ClientRegistry registry;
    registry.createKey("Key");
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_TRUE(CRegBase(clientKey("Key").c_str(), true).GetValues(list));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(CRegBaseWalk, AValuesNameOf259CharactersIsListedAndALongerOneEndsTheWalk)
{
    const ClientRegistry registry;
    CRegBase key(clientKey("Key").c_str(), false);
    const std::string longest(259, 'x');
    key.SetValue(longest.c_str(), 1UL);
    StringList list;
    EXPECT_TRUE(key.GetValues(list));
    EXPECT_EQ((Texts{longest}), textsOf(list));

    key.DeleteValue(longest.c_str());
    key.SetValue(std::string(260, 'x').c_str(), 1UL);
    EXPECT_FALSE(key.GetValues(list));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(CRegBaseWalk, AClosedKeyLeavesTheListsAlone)
{
    const ClientRegistry registry;
    CRegBase key(clientKey("Missing").c_str(), true);
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_FALSE(key.GetSubKeys(list));
    EXPECT_FALSE(key.GetValues(list));
    EXPECT_EQ((Texts{"before"}), textsOf(list));
}

TEST(CRegBaseWalk, AKeyThatCannotBeQueriedLeavesTheListsAlone)
{
    const ClientRegistry registry;
    registry.write("Key", "Value", 1u);
    CRegBase key(clientKey("Key").c_str(), true);
    EXPECT_EQ(1u, key.GetSubValuesCount());
    registry.removeKey("Key"); // under the open object
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_FALSE(key.GetSubKeys(list));
    EXPECT_FALSE(key.GetValues(list));
    EXPECT_EQ((Texts{"before"}), textsOf(list));
    EXPECT_EQ(0u, key.GetSubValuesCount());
}

TEST(CRegBaseWalk, AFailingEnumerationEndsTheWalk)
{
    const ClientRegistry registry;
    registry.createKey("Key\\Below");
    CRegBase key;
    ASSERT_TRUE(key.Open(clientKey("Key").c_str(), KEY_QUERY_VALUE)); // may be counted, but not enumerated
    StringList list;
    auttest::fill(list, {"before"});
    EXPECT_FALSE(key.GetSubKeys(list));
    EXPECT_TRUE(list.IsEmpty());
}

TEST(CRegBaseWalk, CountsTheValuesOfEveryType)
{
    const ClientRegistry registry;
    CRegBase key(clientKey("Key").c_str(), false);
    EXPECT_EQ(0u, key.GetSubValuesCount());
    registry.write("Key", "Text", "text");
    registry.write("Key", "Number", 1u);
    EXPECT_EQ(2u, key.GetSubValuesCount());
    key.Close();
    EXPECT_EQ(0u, key.GetSubValuesCount());
}

TEST(CRegBaseWalk, EnumeratesTheNamesOfTextValuesAndAnEmptyResultForOthers)
{
    const ClientRegistry registry;
    registry.write("Key", "Number", 1u);
    registry.write("Key", "TextA", "a");
    registry.write("Key", "TextB", "b");
    CRegBase key(clientKey("Key").c_str(), true);
    Texts names;
    unsigned long index = 0;
    for (unsigned long call = 1; call <= 3; ++call)
    {
        names.emplace_back(key.EnumerateStringValues(index));
        EXPECT_EQ(call, index);
    }
    Texts expected = registry.valueNames("Key"); // in the registry's order
    std::replace(expected.begin(), expected.end(), std::string("Number"), std::string());
    EXPECT_EQ(expected, names);
    EXPECT_EQ((Texts{"", "TextA", "TextB"}), sorted(names));

    EXPECT_STREQ("", key.EnumerateStringValues(index));
    EXPECT_EQ(3u, index);
}

TEST(CRegBaseWalk, EnumeratesPlainTextsOnly)
{
    const ClientRegistry registry;
    registry.writeRaw("Key", "Expanded", REG_EXPAND_SZ, "text");
    CRegBase key(clientKey("Key").c_str(), true);
    unsigned long index = 0;
    EXPECT_STREQ("", key.EnumerateStringValues(index));
    EXPECT_EQ(1u, index);
}

TEST(CRegBaseWalk, EnumeratingBehindTheEndOrAClosedKeyLeavesTheIndex)
{
    const ClientRegistry registry;
    CRegBase key(clientKey("Key").c_str(), false);
    unsigned long index = 0;
    EXPECT_STREQ("", key.EnumerateStringValues(index)); // no values
    EXPECT_EQ(0u, index);
    registry.write("Key", "Text", "text");
    index = 7;
    EXPECT_STREQ("", key.EnumerateStringValues(index));
    EXPECT_EQ(7u, index);
    key.Close();
    index = 0;
    EXPECT_STREQ("", key.EnumerateStringValues(index));
    EXPECT_EQ(0u, index);
}

TEST(CRegBaseWalk, EnumeratesUpToTheRememberedCount)
{
    const ClientRegistry registry;
    registry.write("Key", "A", "a");
    CRegBase key(clientKey("Key").c_str(), true);
    unsigned long index = 0;
    EXPECT_STREQ("A", key.EnumerateStringValues(index)); // counts, since nothing is remembered yet
    registry.write("Key", "B", "b");
    EXPECT_STREQ("", key.EnumerateStringValues(index));
    EXPECT_EQ(1u, index);
    EXPECT_EQ(2u, key.GetSubValuesCount());
    EXPECT_STREQ("B", key.EnumerateStringValues(index));
    EXPECT_EQ(2u, index);
}

TEST(CRegBaseWalk, EnumeratingAValueThatWentIsAnEmptyResult)
{
    const ClientRegistry registry;
    registry.write("Key", "A", "a");
    CRegBase key(clientKey("Key").c_str(), true);
    EXPECT_EQ(1u, key.GetSubValuesCount());
    registry.removeValue("Key", "A");
    unsigned long index = 0;
    EXPECT_STREQ("", key.EnumerateStringValues(index));
    EXPECT_EQ(1u, index);
}
