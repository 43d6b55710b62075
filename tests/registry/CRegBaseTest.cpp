#include "registry/CRegBase.h"

#include "tests/registry/RegistryTests.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"

using auttest::clientKey;
using auttest::ClientRegistry;
using auttest::Registry;
using auttest::subkeyForPathOf;

namespace
{
/// Shows the members that derived classes see.
struct Probe : CRegBase
{
    using CRegBase::CRegBase;
    using CRegBase::m_access;
    using CRegBase::m_key;
    using CRegBase::m_path;
    using CRegBase::m_value;
    using CRegBase::m_valueCount;
    using CRegBase::ReopenForWriting;
};

constexpr unsigned long kReadOnly = 0x20019 | KEY_WOW64_64KEY;
constexpr unsigned long kReadWrite = 0x3001F | KEY_WOW64_64KEY;
constexpr int kReadWriteAccess = 0x3001F;

std::string keyPath() { return clientKey("Key"); }

unsigned long numberIn(CRegBase& key, const char* name)
{
    unsigned long number = 0;
    key.QueryValue(name, number);
    return number;
}

int flushes = 0;
LSTATUS WINAPI countFlush(HKEY key)
{
    ++flushes;
    return ::RegFlushKey(key);
}

void* noMemory(std::size_t) { return nullptr; }
void* noMoreMemory(void*, std::size_t) { return nullptr; }
} // namespace

TEST(CRegBase, StartsClosedWithReadAccessAndEmptyPath)
{
    Probe key;
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_STREQ("", key.m_value);
    EXPECT_STREQ("", key.m_path);
    EXPECT_EQ(0x20019u, key.m_access);
    EXPECT_EQ(0u, key.m_valueCount);
}

TEST(CRegBase, OpenedReadOnlyLeavesAMissingKeyMissing)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), true);
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_EQ(keyPath(), key.m_path);
    EXPECT_EQ(kReadOnly, key.m_access);
    EXPECT_FALSE(registry.keyExists("Key"));
    unsigned long number = 5;
    EXPECT_FALSE(key.QueryValue("Number", number));
    EXPECT_EQ(0u, number);
    char buffer[260] = "before";
    EXPECT_FALSE(key.QueryValue("Text", buffer));
    EXPECT_STREQ("", buffer);
    String text("before");
    EXPECT_FALSE(key.QueryValue("Text", text));
    EXPECT_STREQ("", text);
    EXPECT_FALSE(registry.keyExists("Key")) << "nor does reading make it";
}

TEST(CRegBase, OpenedForWritingCreatesAMissingKeyWithItsParents)
{
    const ClientRegistry registry;
    Probe key(clientKey("A\\B\\C").c_str(), false);
    EXPECT_NE(nullptr, key.m_key);
    EXPECT_EQ(kReadWrite, key.m_access);
    EXPECT_TRUE(registry.keyExists("A\\B\\C"));
}

TEST(CRegBase, CreatesKeysThatOutliveASession)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    // A volatile key refuses subkeys that are not.
    HKEY below = nullptr;
    EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(key.m_key, "Below", 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ,
                                               nullptr, &below, nullptr));
    ::RegCloseKey(below);
}

TEST(CRegBase, JoinsItsPiecesWithBackslashes)
{
    const ClientRegistry registry;
    EXPECT_EQ(clientKey("B"), Probe(clientKey().c_str(), "B", false).m_path);
    EXPECT_EQ(clientKey("B\\C"), Probe(clientKey().c_str(), "B", "C", false).m_path);
    EXPECT_EQ(clientKey("B\\C\\D"), Probe(clientKey().c_str(), "B", "C", "D", false).m_path);
    EXPECT_TRUE(registry.keyExists("B\\C\\D"));
    EXPECT_NE(nullptr, Probe(clientKey().c_str(), "B", "C", "D", true).m_key);
}

TEST(CRegBase, TakesANullPieceForAnEmptyOne)
{
    const ClientRegistry registry;
    EXPECT_EQ(clientKey() + "\\", Probe(clientKey().c_str(), nullptr, true).m_path);
    EXPECT_STREQ("", Probe(static_cast<const char*>(nullptr), true).m_path);
}

TEST(CRegBase, NeverLosesAPieceForWantOfMemory)
{
    const ClientRegistry registry;
    registry.createKey("Key\\Below");
    const auttest::ImportPatch first("malloc", noMemory);
    const auttest::ImportPatch further("realloc", noMoreMemory);
    Probe key(clientKey().c_str(), "Key", "Below", "Missing", true);
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_STREQ("Software\\Velmora\\7xAutoUpdate\\Key\\Below\\Missing", key.m_path);
    EXPECT_TRUE(Probe(clientKey().c_str(), "Key", true).DeleteKey());
    EXPECT_FALSE(registry.keyExists("Key"));
    EXPECT_TRUE(registry.keyExists(""));
}

TEST(CRegBase, TakesAPathOf259Characters)
{
    const ClientRegistry registry;
    const std::string longest = subkeyForPathOf(259);
    Probe key(clientKey(longest).c_str(), false);
    EXPECT_NE(nullptr, key.m_key);
    EXPECT_TRUE(registry.keyExists(longest));
    EXPECT_NE(nullptr, Probe(clientKey().c_str(), longest.c_str(), true).m_key);
}

TEST(CRegBase, RefusesAPathOf260CharactersOrMore)
{
    const ClientRegistry registry;
    const std::string root = clientKey();
    const std::string tooLong = subkeyForPathOf(260);
    const std::string huge(10000, 'x');
    for (const std::string& last : {tooLong, huge})
    {
        const std::string part = last.substr(4); // the joined "A" and "B" make up for it
        Probe keys[] = {Probe(clientKey(last).c_str(), false), Probe(root.c_str(), last.c_str(), false),
                        Probe(root.c_str(), "A", last.substr(2).c_str(), false),
                        Probe(root.c_str(), "A", "B", part.c_str(), false)};
        for (Probe& key : keys)
        {
            EXPECT_EQ(nullptr, key.m_key);
            EXPECT_STREQ("", key.m_path);
            EXPECT_EQ(kReadWrite, key.m_access);
            EXPECT_FALSE(key.SetValue("Name", "text"));
        }
    }
    EXPECT_TRUE(registry.subkeys("").empty());

    Probe opened(keyPath().c_str(), false);
    EXPECT_FALSE(opened.Open(clientKey(tooLong).c_str(), kReadWriteAccess));
    EXPECT_EQ(nullptr, opened.m_key);
    EXPECT_STREQ("", opened.m_path);
}

TEST(CRegBase, OpenKeepsPathAndAccessEvenWhenItFails)
{
    const ClientRegistry registry;
    Probe key;
    EXPECT_FALSE(key.Open(keyPath().c_str(), KEY_READ));
    EXPECT_EQ(keyPath(), key.m_path);
    EXPECT_EQ(kReadOnly, key.m_access);
}

TEST(CRegBase, OpenClosesTheKeyItHeld)
{
    const ClientRegistry registry;
    registry.write("Old", "Name", "old");
    Probe key(clientKey("Old").c_str(), true);
    const HKEY old = key.m_key;
    EXPECT_FALSE(key.Open(keyPath().c_str(), KEY_READ));
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_NE(ERROR_SUCCESS, ::RegQueryValueExA(old, "Name", nullptr, nullptr, nullptr, nullptr));
}

TEST(CRegBase, OpenCreatesWithAnyAccessButReadOnly)
{
    const ClientRegistry registry;
    Probe key;
    EXPECT_FALSE(key.Open(keyPath().c_str(), KEY_READ));
    EXPECT_FALSE(key.Open(keyPath().c_str(), KEY_READ | KEY_WOW64_64KEY));
    EXPECT_FALSE(registry.keyExists("Key"));
    EXPECT_TRUE(key.Open(keyPath().c_str(), KEY_QUERY_VALUE));
    EXPECT_TRUE(registry.keyExists("Key"));
    EXPECT_EQ(static_cast<unsigned long>(KEY_QUERY_VALUE | KEY_WOW64_64KEY), key.m_access);
}

TEST(CRegBase, ARootThatIsNoneOpensNothing)
{
    Probe key;
    EXPECT_FALSE(key.Open(nullptr, keyPath().c_str(), kReadWriteAccess));
    EXPECT_EQ(nullptr, key.m_key);
}

TEST(CRegBase, OpensTheKeyItNamesItself)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.Open(key.m_path, KEY_READ));
    EXPECT_EQ(keyPath(), key.m_path);
}

TEST(CRegBase, WorksOnThe64BitViewWhateverViewIsAskedFor)
{
    const ClientRegistry registry;
    const std::string narrowPath = "Software\\Wow6432Node\\Velmora";
    const Registry narrow(HKEY_LOCAL_MACHINE, narrowPath);
    narrow.write("7xAutoUpdate\\Key", "View", "32");
    registry.write("Key", "View", "64");

    Probe key;
    ASSERT_TRUE(key.Open(keyPath().c_str(), KEY_READ | KEY_WOW64_32KEY));
    EXPECT_EQ(kReadOnly, key.m_access);
    String view;
    EXPECT_TRUE(key.QueryValue("View", view));
    EXPECT_STREQ("64", view);
    EXPECT_TRUE(key.DeleteKey());
    EXPECT_FALSE(registry.keyExists("Key"));
    EXPECT_TRUE(narrow.keyExists("7xAutoUpdate\\Key"));
    narrow.removeKey("");
}

TEST(CRegBase, OpensBelowAnotherRootButReopensBelowTheLocalMachine)
{
    const ClientRegistry registry;
    const Registry user(HKEY_CURRENT_USER, clientKey());
    user.write("Key", "Whose", "user's");
    Probe key;
    ASSERT_TRUE(key.Open(HKEY_CURRENT_USER, keyPath().c_str(), KEY_READ));
    String whose;
    EXPECT_TRUE(key.QueryValue("Whose", whose));
    EXPECT_STREQ("user's", whose);

    EXPECT_TRUE(key.SetValue("Whose", "machine's"));
    EXPECT_EQ("machine's", registry.readText("Key", "Whose"));
    EXPECT_EQ("user's", user.readText("Key", "Whose"));

    ASSERT_TRUE(key.Open(HKEY_CURRENT_USER, keyPath().c_str(), kReadWriteAccess));
    EXPECT_TRUE(key.SetValue("Whose", "user's again"));
    EXPECT_EQ("user's again", user.readText("Key", "Whose"));
    user.removeKey("");
}

TEST(CRegBase, DeleteKeyOfAnotherRootsKeyComesToAnEnd)
{
    const ClientRegistry registry;
    const Registry user(HKEY_CURRENT_USER, clientKey());
    user.createKey("Key\\Below");
    registry.createKey("Key\\Below");
    Probe key;
    ASSERT_TRUE(key.Open(HKEY_CURRENT_USER, keyPath().c_str(), kReadWriteAccess));
    EXPECT_TRUE(key.DeleteKey());
    EXPECT_FALSE(registry.keyExists("Key"));
    EXPECT_TRUE(user.keyExists("Key\\Below"));
    user.removeKey("");
}

TEST(CRegBase, CloseLeavesReadWriteAccessBehind)
{
    const ClientRegistry registry;
    registry.createKey("Key");
    Probe key(keyPath().c_str(), true);
    ASSERT_NE(nullptr, key.m_key);
    key.Close();
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_EQ(0x3001Fu, key.m_access);
    key.Close(); // again
    key.Flush();
    EXPECT_EQ(nullptr, key.m_key);
}

TEST(CRegBase, SetValueFailsOnAClosedKeyThatIsNotReadOnly)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    key.Close();
    EXPECT_FALSE(key.SetValue("Name", "text"));
    EXPECT_FALSE(key.SetValue("Name", 1UL));
    EXPECT_TRUE(registry.valueNames("Key").empty());
}

TEST(CRegBase, DeletingOnAClosedKeyThatIsNotReadOnlySucceedsAtOnce)
{
    const ClientRegistry registry;
    registry.write("Key", "Name", "text");
    Probe key(keyPath().c_str(), false);
    key.Close();
    EXPECT_TRUE(key.DeleteValue("Name"));
    EXPECT_TRUE(key.DeleteKey());
    EXPECT_TRUE(registry.valueExists("Key", "Name"));
}

TEST(CRegBase, EveryWriteOnAReadOnlyObjectReopensItForWriting)
{
    const ClientRegistry registry;
    registry.write("Key", "Old", "text");

    Probe text(keyPath().c_str(), true);
    EXPECT_TRUE(text.SetValue("Text", "text"));
    EXPECT_EQ(kReadWrite, text.m_access);
    EXPECT_EQ("text", registry.readText("Key", "Text"));

    Probe number(keyPath().c_str(), true);
    EXPECT_TRUE(number.SetValue("Number", 7UL));
    EXPECT_EQ(kReadWrite, number.m_access);
    EXPECT_EQ(7u, registry.readNumber("Key", "Number"));

    Probe deleting(keyPath().c_str(), true);
    EXPECT_TRUE(deleting.DeleteValue("Old"));
    EXPECT_EQ(kReadWrite, deleting.m_access);
    EXPECT_FALSE(registry.valueExists("Key", "Old"));

    Probe removing(keyPath().c_str(), true);
    EXPECT_TRUE(removing.DeleteKey());
    EXPECT_FALSE(registry.keyExists("Key"));
}

TEST(CRegBase, AWriteOnAReadOnlyObjectOfAMissingKeyCreatesIt)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), true);
    ASSERT_EQ(nullptr, key.m_key);
    EXPECT_TRUE(key.SetValue("Name", "text"));
    EXPECT_EQ("text", registry.readText("Key", "Name"));
    EXPECT_NE(nullptr, key.m_key);
}

TEST(CRegBase, WritesFailOnAReadOnlyObjectWithoutAPath)
{
    const ClientRegistry registry;
    Probe key;
    EXPECT_FALSE(key.SetValue("Name", "text"));
    EXPECT_FALSE(key.SetValue("Name", 1UL));
    EXPECT_FALSE(key.DeleteValue("Name"));
    EXPECT_FALSE(key.DeleteKey());
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_EQ(0x20019u, key.m_access);
}

TEST(CRegBase, WritesFailWhenTheKeyCannotBeReopened)
{
    const std::string path(259, 'x'); // one key's name may have 255 characters
    for (const auto& write :
         std::vector<bool (*)(CRegBase&)>{
             [](CRegBase& key) { return key.SetValue("Name", "text"); },
             [](CRegBase& key) { return key.SetValue("Name", 1UL); },
             [](CRegBase& key) { return key.DeleteValue("Name"); },
             [](CRegBase& key) { return key.DeleteKey(); },
         })
    {
        Probe key(path.c_str(), true);
        EXPECT_EQ(path, key.m_path);
        EXPECT_FALSE(write(key));
        EXPECT_EQ(nullptr, key.m_key);
    }
}

TEST(CRegBase, EverySuccessfulChangeIsFlushed)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    const auttest::ImportPatch counting("RegFlushKey", countFlush);
    flushes = 0;
    EXPECT_TRUE(key.SetValue("Text", "text"));
    EXPECT_EQ(1, flushes);
    EXPECT_TRUE(key.SetValue("Number", 1UL));
    EXPECT_EQ(2, flushes);
    EXPECT_TRUE(key.DeleteValue("Text"));
    EXPECT_EQ(3, flushes);
    EXPECT_FALSE(key.DeleteValue("Text"));
    EXPECT_EQ(3, flushes);
    key.Flush();
    EXPECT_EQ(4, flushes);
    key.Close();
    key.Flush();
    EXPECT_FALSE(key.SetValue("Text", "text"));
    EXPECT_EQ(4, flushes);
}

TEST(CRegBase, SetValueWritesATextWithItsTerminator)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.SetValue("Text", "abc"));
    ASSERT_TRUE(registry.readRaw("Key", "Text"));
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), registry.readRaw("Key", "Text")->type);
    EXPECT_EQ(std::string("abc\0", 4), registry.readRaw("Key", "Text")->bytes);
}

TEST(CRegBase, SetValueWritesNullAsAnEmptyText)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.SetValue("Text", static_cast<const char*>(nullptr)));
    ASSERT_TRUE(registry.readRaw("Key", "Text"));
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), registry.readRaw("Key", "Text")->type);
    EXPECT_EQ(std::string("\0", 1), registry.readRaw("Key", "Text")->bytes);
}

TEST(CRegBase, SetValueWritesANumberOfFourBytes)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.SetValue("Number", 0xFEDCBA98UL));
    ASSERT_TRUE(registry.readRaw("Key", "Number"));
    EXPECT_EQ(static_cast<DWORD>(REG_DWORD), registry.readRaw("Key", "Number")->type);
    EXPECT_EQ("\x98\xBA\xDC\xFE", registry.readRaw("Key", "Number")->bytes);
}

TEST(CRegBase, SetValueReplacesAValueOfAnotherType)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.SetValue("Value", 5UL));
    EXPECT_TRUE(key.SetValue("Value", "text"));
    EXPECT_EQ("text", registry.readText("Key", "Value"));
    EXPECT_TRUE(key.SetValue("Value", 6UL));
    EXPECT_EQ(6u, registry.readNumber("Key", "Value"));
}

TEST(CRegBase, TakesTextsAndNamesOf10000Characters)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    const std::string text(10000, 't');
    const std::string name(10000, 'n');
    EXPECT_TRUE(key.SetValue("Text", text.c_str()));
    EXPECT_EQ(text, registry.readText("Key", "Text"));
    EXPECT_TRUE(key.SetValue(name.c_str(), 3UL));
    EXPECT_EQ(3u, numberIn(key, name.c_str()));
    EXPECT_TRUE(key.DeleteValue(name.c_str()));
    EXPECT_EQ((std::vector<std::string>{"Text"}), registry.valueNames("Key"));
}

TEST(CRegBase, RefusesANameThatTheRegistryRefuses)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    const std::string name(40000, 'n');
    unsigned long number = 1;
    EXPECT_FALSE(key.SetValue(name.c_str(), 3UL));
    EXPECT_FALSE(key.QueryValue(name.c_str(), number));
    EXPECT_EQ(0u, number);
    EXPECT_FALSE(key.DeleteValue(name.c_str()));
}

TEST(CRegBase, TakesANullNameForTheUnnamedValue)
{
    const ClientRegistry registry;
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.SetValue(nullptr, 3UL));
    EXPECT_EQ(3u, registry.readNumber("Key", ""));
    EXPECT_EQ(3u, numberIn(key, nullptr));
    EXPECT_EQ(3u, numberIn(key, ""));
    EXPECT_TRUE(key.DeleteValue(nullptr));
    EXPECT_FALSE(registry.valueExists("Key", ""));
}

TEST(CRegBase, FindsValuesWithoutRegardToCase)
{
    const ClientRegistry registry;
    registry.write("Key", "Number", 4u);
    Probe key(keyPath().c_str(), true);
    EXPECT_EQ(4u, numberIn(key, "nUMBER"));
}

TEST(CRegBase, DeleteValueSaysWhetherThereWasOne)
{
    const ClientRegistry registry;
    registry.write("Key", "Name", "text");
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.DeleteValue("Name"));
    EXPECT_FALSE(registry.valueExists("Key", "Name"));
    EXPECT_FALSE(key.DeleteValue("Name"));
}

TEST(CRegBase, WritesFailWhenTheAccessDoesNotAllowThem)
{
    const ClientRegistry registry;
    registry.write("Key", "Name", "text");
    Probe key;
    ASSERT_TRUE(key.Open(keyPath().c_str(), KEY_QUERY_VALUE)); // not the read-only access, so never reopened
    EXPECT_FALSE(key.SetValue("Name", "other"));
    EXPECT_FALSE(key.DeleteValue("Name"));
    EXPECT_EQ("text", registry.readText("Key", "Name"));
}

TEST(CRegBase, DeleteKeyRemovesNestedSubkeysAndClosesTheObject)
{
    const ClientRegistry registry;
    registry.write("Key\\A\\AA", "Name", "text");
    registry.createKey("Key\\A\\AB");
    registry.createKey("Key\\B");
    registry.createKey("Kept");
    Probe key(keyPath().c_str(), false);
    EXPECT_TRUE(key.DeleteKey());
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_EQ((std::vector<std::string>{"Kept"}), registry.subkeys(""));
}

TEST(CRegBase, DeleteKeyRemovesAHundredSubkeys)
{
    const ClientRegistry registry;
    for (int i = 0; i < 100; ++i)
        registry.createKey("Key\\" + std::to_string(i));
    EXPECT_TRUE(CRegBase(keyPath().c_str(), false).DeleteKey());
    EXPECT_FALSE(registry.keyExists("Key"));
}

TEST(CRegBase, DeleteKeyStopsAtASubkeyThatItCannotName)
{
    const ClientRegistry registry;
    const std::string tooLong(250, 'x'); // behind the path of its key
    auttest::createSubkey(registry, "Key", tooLong);
    Probe key(keyPath().c_str(), false);
    EXPECT_FALSE(key.DeleteKey());
    EXPECT_EQ(nullptr, key.m_key);
    EXPECT_EQ((std::vector<std::string>{tooLong}), registry.subkeys("Key"));
}

TEST(CRegBase, DeleteKeyNeverMeansAWholeHive)
{
    const ClientRegistry registry;
    registry.createKey("Key");
    Probe key;
    ASSERT_TRUE(key.Open(HKEY_LOCAL_MACHINE, "", kReadWriteAccess));
    EXPECT_FALSE(key.DeleteKey());
    EXPECT_TRUE(registry.keyExists("Key"));
}

TEST(CRegBase, CopiesShareTheKeyUntilOneOfThemClosesIt)
{
    const ClientRegistry registry;
    registry.write("Key", "Number", 9u);
    Probe original(keyPath().c_str(), false);
    original.QueryValue("Number", original.m_value);
    original.GetSubValuesCount();
    Probe copy(original);
    Probe assigned;
    assigned = original;
    for (Probe* other : {&copy, &assigned})
    {
        EXPECT_EQ(original.m_key, other->m_key);
        EXPECT_STREQ(original.m_path, other->m_path);
        EXPECT_STREQ(original.m_value, other->m_value);
        EXPECT_EQ(kReadWrite, other->m_access);
        EXPECT_EQ(1u, other->m_valueCount);
        EXPECT_EQ(9u, numberIn(*other, "Number"));
    }
    original.Close();
    EXPECT_NE(nullptr, copy.m_key);
    EXPECT_EQ(0u, numberIn(copy, "Number"));
    EXPECT_EQ(0u, numberIn(assigned, "Number"));
}

TEST(CRegBase, ClosesItsKeyWhenItGoes)
{
    const ClientRegistry registry;
    HKEY used = nullptr;
    {
        Probe key(keyPath().c_str(), false);
        used = key.m_key;
    }
    EXPECT_NE(ERROR_SUCCESS, ::RegFlushKey(used));
}

TEST(CRegBase, LogsNothing)
{
    const ClientRegistry registry;
    const auttest::LogFile log;
    Probe key(keyPath().c_str(), true);
    String text;
    EXPECT_FALSE(key.QueryValue("Name", text));
    EXPECT_FALSE(CRegBase().SetValue("Name", 1UL));
    EXPECT_TRUE(log.events().empty());
}
