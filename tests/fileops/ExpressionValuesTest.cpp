// What stands in braces: registry values and entries of ini files.
#include "tests/fileops/ExpressionFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

using auttest::evaluated;
using auttest::ExpressionProbe;

namespace
{
using namespace std::string_literals;

/// "HKLM\<test key>\" and the rest.
std::string inMachine(const std::string& rest) { return "HKLM\\" + (auttest::kExpressionKey + ("\\" + rest)); }
std::string inUser(const std::string& rest) { return "HKCU\\" + (auttest::kExpressionKey + ("\\" + rest)); }

std::string block(const std::string& inner) { return "{" + inner + "}"; }

class RegistryBlock : public ::testing::Test
{
protected:
    auttest::ExpressionKeys m_keys;
};

class IniBlock : public ::testing::Test
{
protected:
    /// The block for an entry of the file that `write` wrote.
    std::string entry(const std::string& section, const std::string& key) const
    {
        return block(m_path + " [" + section + "] " + key);
    }
    void write(const std::string& content) { m_path = m_folder.writeFile("a b.ini", content); }

    auttest::TestFolder m_folder;
    std::string m_path;
};
} // namespace

TEST_F(RegistryBlock, IsAValueOfTheMachineOrOfTheUser)
{
    m_keys.machine.write("App", "InstallDir", "C:\\Machine");
    m_keys.user.write("App", "InstallDir", "C:\\User");
    EXPECT_EQ("C:\\Machine\\x", evaluated(block(inMachine("App\\InstallDir")) + "\\x"));
    EXPECT_EQ("C:\\User\\x", evaluated(block(inUser("App\\InstallDir")) + "\\x"));
}

TEST_F(RegistryBlock, StaysAsWrittenWithoutItsKeyOrValue)
{
    m_keys.machine.createKey("App");
    EXPECT_EQ("{HKLM\\Software\\Nothing\\Value}", evaluated("{HKLM\\Software\\Nothing\\Value}"));
    EXPECT_EQ("{HKCU\\Software\\Nothing\\Value}", evaluated("{HKCU\\Software\\Nothing\\Value}"));
    EXPECT_EQ(block(inMachine("App\\Value")), evaluated(block(inMachine("App\\Value"))));
    EXPECT_EQ(block(inMachine("App\\")), evaluated(block(inMachine("App\\"))));
    EXPECT_FALSE(auttest::Registry().keyExists("Software\\Nothing")); // asking makes no key
}

TEST_F(RegistryBlock, NamesAreTrimmedOfBlanksAndIgnoreCase)
{
    m_keys.machine.write("My App", "Install Dir", "C:\\Machine");
    EXPECT_EQ("C:\\Machine", evaluated("{ hklm\\  "s + auttest::kExpressionKey + "\\my app  \\  install dir  }"));
    EXPECT_EQ("C:\\Machine", evaluated("{hKlM\\"s + auttest::kExpressionKey + "\\My App\\Install Dir}"));
    m_keys.user.write("App", "v", "C:\\User");
    EXPECT_EQ("C:\\User", evaluated("{hkcu\\"s + auttest::kExpressionKey + "\\App\\v}"));
}

TEST_F(RegistryBlock, ThePrefixMayStandAnywhere)
{
    m_keys.machine.write("App", "v", "machine");
    m_keys.user.write("App", "v", "user");
    EXPECT_EQ("machine", evaluated("{anything " + inMachine("App\\v") + "}"));
    EXPECT_EQ("user", evaluated("{any\\thing " + inUser("App\\v") + "}"));
}

TEST_F(RegistryBlock, TheUserIsLookedForOnlyWithoutTheMachine)
{
    ExpressionProbe expression;
    m_keys.user.write("HKLM", "v", "user"); // below this, HKCU\...\HKLM\v
    EXPECT_STREQ("", expression.EvaluateReg(inUser("HKLM\\v").c_str()));
    m_keys.user.write("HKLM key", "v", "user"); // no prefix without its backslash
    EXPECT_STREQ("user", expression.EvaluateReg(inUser("HKLM key\\v").c_str()));
}

TEST_F(RegistryBlock, HasNoValueWithoutAPrefix)
{
    ExpressionProbe expression;
    for (const char* inner : {"", "HKLM", "HKCU", "HKLM/a/b", "HKEY_LOCAL_MACHINE\\Software\\a", "a\\b", "\\", "HKLM\\",
                              "HKCU\\", "HKLM\\\\", "HKLM\\ \\ "})
        EXPECT_STREQ("", expression.EvaluateReg(inner)) << inner;
}

TEST_F(RegistryBlock, AnEmptyNameIsTheUnnamedValue)
{
    m_keys.machine.write("App", "", "C:\\Unnamed");
    EXPECT_EQ("C:\\Unnamed", evaluated(block(inMachine("App\\"))));
}

TEST_F(RegistryBlock, WithoutAKeyTheHiveItselfIsAsked)
{
    const auttest::BorrowedValue value(HKEY_CURRENT_USER, "", "AutExpressionTest", "of the hive");
    EXPECT_EQ("of the hive", evaluated("{HKCU\\AutExpressionTest}"));
}

TEST_F(RegistryBlock, OnlyTextsAreValues)
{
    struct Row
    {
        DWORD type;
        std::string bytes;
    };
    const Row rows[] = {{REG_DWORD, "abcd"},           {REG_BINARY, "text\0"s}, {REG_MULTI_SZ, "one\0two\0\0"s},
                        {REG_QWORD, "abcdefgh"},       {REG_NONE, "text\0"s},   {REG_DWORD, ""},
                        {REG_DWORD_BIG_ENDIAN, "abcd"}};
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.type);
        m_keys.machine.writeRaw("App", "v", row.type, row.bytes);
        EXPECT_EQ(block(inMachine("App\\v")), evaluated(block(inMachine("App\\v"))));
    }
}

TEST_F(RegistryBlock, ReadsATextHoweverItIsStored)
{
    struct Row
    {
        std::string bytes;
        const char* text;
    };
    const Row rows[] = {{"C:\\Dir\0"s, "C:\\Dir"},
                        {"C:\\Dir"s, "C:\\Dir"},
                        {"C:\\Dir\0\0\0"s, "C:\\Dir"},
                        {"C:\\Dir\0behind\0"s, "C:\\Dir"},
                        {"x"s, "x"},
                        {"x\0"s, "x"},
                        {"Caf\xE9\0"s, "Caf\xE9"},
                        {"\0"s, ""},
                        {"\0x"s, ""},
                        {""s, ""},
                        {"  \0"s, "  "}};
    ExpressionProbe expression;
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}})
        for (const Row& row : rows)
        {
            SCOPED_TRACE(testing::PrintToString(row.bytes));
            m_keys.machine.writeRaw("App", "v", type, row.bytes);
            const String value = expression.EvaluateReg(inMachine("App\\v").c_str());
            EXPECT_STREQ(row.text, value);
            EXPECT_EQ(std::string(row.text).size(), static_cast<std::size_t>(value.GetLength()));
        }
}

TEST_F(RegistryBlock, AnEmptyTextLeavesTheBlock)
{
    m_keys.machine.write("App", "v", "");
    EXPECT_EQ("<" + block(inMachine("App\\v")) + ">", evaluated("<" + block(inMachine("App\\v")) + ">"));
}

TEST_F(RegistryBlock, VariablesInAValueAreExpandedByTheNextRound)
{
    const auttest::Variable own("AUT_OWN", "C:\\Own");
    m_keys.machine.writeRaw("App", "expand", REG_EXPAND_SZ, "%AUT_OWN%\\x\0"s);
    m_keys.machine.write("App", "plain", "%AUT_OWN%\\y");
    EXPECT_STREQ("%AUT_OWN%\\x", ExpressionProbe().EvaluateReg(inMachine("App\\expand").c_str()));
    EXPECT_EQ("C:\\Own\\x", evaluated(block(inMachine("App\\expand"))));
    EXPECT_EQ("C:\\Own\\y", evaluated(block(inMachine("App\\plain"))));
}

TEST_F(RegistryBlock, AValueMayNameAnotherBlock)
{
    m_keys.machine.write("App", "first", block(inUser("App\\second")).c_str());
    m_keys.user.write("App", "second", "end");
    EXPECT_EQ("end", evaluated(block(inMachine("App\\first"))));
    m_keys.machine.write("App", "self", ("x" + block(inMachine("App\\self"))).c_str());
    EXPECT_EQ("xxxxxxxxxx" + block(inMachine("App\\self")), evaluated(block(inMachine("App\\self"))));
}

TEST_F(RegistryBlock, AValueMayBeLong)
{
    const std::string text(10000, 'v');
    m_keys.machine.write("App", "v", text);
    EXPECT_EQ("<" + text + ">", evaluated("<" + block(inMachine("App\\v")) + ">"));
    m_keys.machine.write("App", "v", std::string(2 * 1024 * 1024, 'v'));
    EXPECT_EQ(block(inMachine("App\\v")), evaluated(block(inMachine("App\\v"))));
}

TEST_F(RegistryBlock, AValueThatMultipliesItselfEnds)
{
    std::string many;
    for (int i = 0; i < 100; ++i)
        many += block(inMachine("v"));
    m_keys.machine.write("", "v", many);
    EXPECT_LE(evaluated(block(inMachine("v"))).size(), 1048576u);
}

TEST_F(RegistryBlock, NestedBracesAreOneBlockForTheRegistry)
{
    m_keys.machine.write("{App}", "{v}", "value");
    EXPECT_EQ("value", evaluated(block(inMachine("{App}\\{v}"))));
}

namespace
{
std::vector<REGSAM> g_access;
LSTATUS WINAPI recordedOpen(HKEY root, const char* path, DWORD options, REGSAM access, HKEY* key)
{
    g_access.push_back(access);
    return ::RegOpenKeyExA(root, path, options, access, key);
}
LSTATUS WINAPI failingRead(HKEY, const char*, const char*, DWORD, DWORD*, void* data, DWORD* size)
{
    *size = 10; // there a moment ago
    return data == nullptr ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}
} // namespace

TEST_F(RegistryBlock, KeysAreOpenedForQueriesOnly)
{
    m_keys.machine.write("App", "v", "value");
    g_access.clear();
    const auttest::ImportPatch patch("RegOpenKeyExA", &recordedOpen);
    EXPECT_EQ("value", evaluated(block(inMachine("App\\v"))));
    EXPECT_EQ(std::vector<REGSAM>{KEY_QUERY_VALUE}, g_access);

    g_access.clear();
    ExpressionProbe().EvaluateEnvironmentVariable("ProgramFilesDir");
    EXPECT_EQ(std::vector<REGSAM>{KEY_QUERY_VALUE | KEY_WOW64_32KEY}, g_access);
    g_access.clear();
    ExpressionProbe().EvaluateEnvironmentVariable("DownloadedProgramFilesDir");
    EXPECT_EQ(std::vector<REGSAM>{KEY_READ | KEY_WOW64_64KEY}, g_access);
}

TEST_F(RegistryBlock, AReadThatFailsLeavesTheBlock)
{
    m_keys.machine.write("App", "v", "value");
    const auttest::ImportPatch patch("RegGetValueA", &failingRead);
    EXPECT_EQ(block(inMachine("App\\v")), evaluated(block(inMachine("App\\v"))));
}

TEST_F(RegistryBlock, NoHandleStaysOpen)
{
    m_keys.machine.write("App", "v", "value");
    m_keys.machine.write("App", "n", 1);
    const std::string text = block(inMachine("App\\v")) + block(inMachine("App\\n")) + block(inUser("App\\v")) +
                             "%ProgramFilesDir%%DownloadedProgramFilesDir%%WINSYSDIR%{C:\\none.ini[a]b}";
    evaluated(text);
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 200; ++i)
        evaluated(text);
    EXPECT_EQ(before, auttest::openHandles());
}

// Files

TEST_F(IniBlock, IsAnEntryOfTheFile)
{
    write("[Other]\r\nData=wrong\r\n[Paths]\r\nData=C:\\Data\r\nMore=C:\\More\r\n");
    EXPECT_EQ("C:\\Data\\x", evaluated(entry("Paths", "Data") + "\\x"));
    EXPECT_EQ("C:\\Data;C:\\More", evaluated(entry("Paths", "Data") + ";" + entry("PATHS", "more")));
}

TEST_F(IniBlock, EachPartIsTrimmedOfBlanks)
{
    write("[My Paths]\r\nMy Data=C:\\Data\r\n");
    EXPECT_EQ("C:\\Data", evaluated("{   " + m_path + "   [  My Paths  ]   My Data   }"));
    EXPECT_EQ("C:\\Data", evaluated("{" + m_path + "[My Paths]My Data}"));
}

TEST_F(IniBlock, StaysAsWrittenWithoutItsEntry)
{
    write("[Paths]\r\nEmpty=\r\nData=x\r\n");
    for (const std::string& text :
         {entry("Paths", "None"), entry("None", "Data"), entry("Paths", "Empty"), entry("Paths", ""), entry("", "Data"),
          entry("", ""), block("C:\\none\\none.ini [a] b"), block(m_folder.path() + " [a] b"), block("[a] b"),
          block("[]"), block(" [ ] ")})
        EXPECT_EQ(text, evaluated(text));
}

TEST_F(IniBlock, WithoutABracketBehindTheFirstItIsItsOwnText)
{
    ExpressionProbe expression;
    for (const char* inner : {"file [section", "[", "file ] section [ key", "][", " [ ", "HKLM\\a[b"})
    {
        SCOPED_TRACE(inner);
        EXPECT_STREQ(inner, expression.EvaluateFile(inner));
        EXPECT_STREQ(inner, expression.EvaluateRegOrFile(inner));
        EXPECT_EQ("<" + std::string(inner) + ">", evaluated("<" + block(inner) + ">"));
    }
    EXPECT_STREQ("plain", expression.EvaluateFile("plain")); // nobody asks for one without "["
    EXPECT_STREQ("file ]", expression.EvaluateFile("file ]"));
    EXPECT_STREQ("", expression.EvaluateFile(""));
}

TEST_F(IniBlock, ABracketMakesARegistryTextAFile)
{
    const auttest::ExpressionKeys keys;
    keys.machine.write("[App]", "v", "registry");
    EXPECT_EQ(block(inMachine("[App]\\v")), evaluated(block(inMachine("[App]\\v"))));
    EXPECT_STREQ("registry", ExpressionProbe().EvaluateReg(inMachine("[App]\\v").c_str()));
}

TEST_F(IniBlock, TheFirstBracketsCount)
{
    m_path = m_folder.writeFile("a]b.ini", "[s]\r\nk]x=value\r\n[k=other\r\n");
    EXPECT_EQ("value", evaluated(entry("s", "k]x")));
    EXPECT_EQ("other", evaluated(entry("s", "[k")));
}

TEST_F(IniBlock, AnEntryHasAtMost1023Characters)
{
    for (const std::size_t length : {1022u, 1023u, 1024u, 1025u, 5000u})
    {
        SCOPED_TRACE(length);
        std::string value;
        for (std::size_t i = 0; i < length; ++i)
            value += static_cast<char>('a' + i % 26);
        write("[Paths]\r\nData=" + value + "\r\n");
        EXPECT_EQ("<" + value.substr(0, 1023) + ">", evaluated("<" + entry("Paths", "Data") + ">"));
    }
}

TEST_F(IniBlock, KeepsTheCodePage)
{
    m_path = m_folder.writeFile("Caf\xE9.ini", "[\xC9t\xE9]\r\nNo\xEBl=C:\\No\xEBl\r\n");
    EXPECT_EQ("C:\\No\xEBl", evaluated(entry("\xC9t\xE9", "No\xEBl")));
}

TEST_F(IniBlock, NestedBracesAreOneBlockForTheFile)
{
    m_path = m_folder.writeFile("{a}.ini", "[{s{t}}]\r\n{k}=value\r\n");
    EXPECT_EQ("<value>", evaluated("<" + entry("{s{t}}", "{k}") + ">"));
}

TEST_F(IniBlock, BlocksInAnEntryAreEvaluatedByTheNextRound)
{
    const auttest::Variable own("AUT_OWN", "C:\\Own");
    write("[Paths]\r\nData=%AUT_OWN%\\x\r\n");
    EXPECT_EQ("C:\\Own\\x", evaluated(entry("Paths", "Data")));
}

TEST_F(IniBlock, VariablesInItsFileNameAreExpandedFirst)
{
    m_path = m_folder.writeFile("a.ini", "[s]\r\nk=value\r\n");
    const auttest::Variable folder("AUT_FOLDER", m_folder.path());
    EXPECT_EQ("value", evaluated("{%AUT_FOLDER%\\a.ini [s] k}"));
    // Names that only we know are not: the braces are one block.
    const auttest::BorrowedValue known(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "ProgramFilesDir",
                                       m_folder.path().c_str());
    EXPECT_EQ("{%ProgramFilesDir%\\a.ini [s] k}", evaluated("{%ProgramFilesDir%\\a.ini [s] k}"));
}

TEST_F(IniBlock, MayBeThousandsOfEntriesLong)
{
    std::string content = "[s]\r\n";
    for (int i = 0; i < 2000; ++i)
        content += "key" + std::to_string(i) + "=value" + std::to_string(i) + "\r\n";
    write(content);
    EXPECT_EQ("value1999", evaluated(entry("s", "key1999")));
    EXPECT_EQ("value0", evaluated(entry("s", "key0")));
}
