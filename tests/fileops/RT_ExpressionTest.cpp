#include "fileops/RT_Expression.h"
#include "foundation/RT_RESULT.h"
#include "tests/fileops/ExpressionFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <type_traits>

using auttest::evaluated;
using auttest::ExpressionProbe;
using auttest::RecordingExpression;
using auttest::Variable;
using Asked = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<RT_Expression>);
static_assert(sizeof(RT_Expression) == 56);

namespace
{
std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

void* const* virtualTable(const RT_Expression& object) { return *reinterpret_cast<void* const* const*>(&object); }

struct OverridesNothing : ExpressionProbe
{
};
struct OverridesEvaluate : ExpressionProbe
{
    String Evaluate() override { return "own"; }
};
struct OverridesFile : ExpressionProbe
{
    String EvaluateFile(const String&) override { return "own"; }
};
struct OverridesReg : ExpressionProbe
{
    String EvaluateReg(const String&) override { return "own"; }
};
struct OverridesVariable : ExpressionProbe
{
    String EvaluateEnvironmentVariable(const String&) override { return "own"; }
};

#if defined(_MSC_VER)
constexpr int kDestructorSlots = 1;
#else
constexpr int kDestructorSlots = 2; // one that ends the object, one that frees it too
#endif

/// The slots of the virtual table, but for the destructor's, in which a class differs from one that overrides nothing.
template <typename Overrides> std::vector<int> ownSlots()
{
    const OverridesNothing nothing;
    const Overrides object;
    std::vector<int> slots;
    for (int slot = 0; slot < 4 + kDestructorSlots; ++slot)
        if ((slot == 0 || slot > kDestructorSlots) && virtualTable(object)[slot] != virtualTable(nothing)[slot])
            slots.push_back(slot);
    return slots;
}
} // namespace

TEST(RT_Expression, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(std::vector<int>{0}, ownSlots<OverridesEvaluate>());
    EXPECT_EQ(std::vector<int>{kDestructorSlots + 1}, ownSlots<OverridesFile>());
    EXPECT_EQ(std::vector<int>{kDestructorSlots + 2}, ownSlots<OverridesReg>());
    EXPECT_EQ(std::vector<int>{kDestructorSlots + 3}, ownSlots<OverridesVariable>());
}

TEST(RT_Expression, HasItsMembersInTheirOrder)
{
    const ExpressionProbe probe("name", "expression");
    const auto* const strings = reinterpret_cast<const String*>(reinterpret_cast<const char*>(&probe) + sizeof(void*));
    EXPECT_EQ(strings, &probe.m_expression);
    EXPECT_EQ(strings + 1, &probe.m_name);
    EXPECT_EQ(strings + 2, &probe.m_value);
}

TEST(RT_Expression, StartsEmpty)
{
    ExpressionProbe expression;
    EXPECT_STREQ("", expression.m_expression);
    EXPECT_STREQ("", expression.m_name);
    EXPECT_STREQ("", expression.m_value);
    EXPECT_TRUE(expression.Analyse());
    EXPECT_STREQ("", expression.Evaluate());
}

TEST(RT_Expression, TakesNameAndExpressionAsTheyAre)
{
    ExpressionProbe expression(" name ", " a=b ");
    EXPECT_STREQ(" name ", expression.m_name);
    EXPECT_STREQ(" a=b ", expression.m_expression);
    EXPECT_STREQ(" a=b ", expression.Evaluate()); // not trimmed
}

TEST(RT_Expression, CopiesAreDeep)
{
    const auto original = std::make_unique<ExpressionProbe>("name", "expression");
    ExpressionProbe copy(*original);
    ExpressionProbe assigned;
    assigned = copy;
    copy.m_expression.SetAt(0, 'E');
    EXPECT_STREQ("expression", original->m_expression);
    EXPECT_STREQ("expression", assigned.m_expression);
    EXPECT_STREQ("name", assigned.m_name);
}

TEST(RT_Expression, SplitsALine)
{
    struct Row
    {
        const char* line;
        const char* name;
        const char* expression;
    };
    const Row rows[] = {
        {"name=expression", "name", "expression"},
        {"  my name  =  my expression  ", "my name", "my expression  "}, // only leading blanks of the expression go
        {"\tname\t=\texpression", "\tname\t", "\texpression"},           // blanks are not tabulators
        {"name=a=b", "name", "a"},                                       // deliberately cut at the next "="
        {"name=a =b", "name", "a "},
        {"name={HKLM\\a\\b};%windir%\\x", "name", "{HKLM\\a\\b};%windir%\\x"},
        {"name", "name", ""},
        {"name=", "name", ""},
        {"name=   ", "name", ""},
        {"name==expression", "name", "expression"}, // a token is never empty
        {"=name=expression", "name", "expression"},
        {"===", "", ""},
        {"   ", "", ""},
        {"", "", ""},
        {nullptr, "", ""},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.line != nullptr ? row.line : "null");
        const ExpressionProbe expression(row.line);
        EXPECT_STREQ(row.name, expression.m_name);
        EXPECT_STREQ(row.expression, expression.m_expression);
    }
}

TEST(RT_Expression, SplitsALineOfAnyLengthWithoutTouchingIt)
{
    const std::string name(10000, 'n');
    const std::string value(10000, 'v');
    const std::string line = name + "=" + value + "=more";
    const ExpressionProbe expression(line.c_str());
    EXPECT_STREQ(name.c_str(), expression.m_name);
    EXPECT_STREQ(value.c_str(), expression.m_expression);
    EXPECT_EQ(name + "=" + value + "=more", line);
}

TEST(RT_Expression, AnalyseTellsWellFormedTexts)
{
    for (const char* good : {"", "plain", "%a%", "%%", "{a}", "{}", "{%a%}", "%{a}%", "{a{b}c}{d}", "%a%%b%", "a;b",
                             "[", "]", "{%a%{%b%}}%c%", "%{}{}%"})
        EXPECT_TRUE(RT_Expression("", good).Analyse()) << good;
    for (const char* bad :
         {"%", "%a", "%a%b%", "{", "}", "}{", "{a", "a}", "{a}}", "{{a}", "{%}%", "%{%}", "{%a}%b", "a}b{c", "%a{%b}"})
        EXPECT_FALSE(RT_Expression("", bad).Analyse()) << bad;
}

TEST(RT_Expression, AnalyseCopesWithLongTexts)
{
    EXPECT_TRUE(RT_Expression("", (repeated("{", 100000) + repeated("}", 100000)).c_str()).Analyse());
    EXPECT_FALSE(RT_Expression("", repeated("{", 100000).c_str()).Analyse());
    EXPECT_FALSE(RT_Expression("", repeated("%", 99999).c_str()).Analyse());
}

TEST(RT_Expression, ExpandsVariablesOfTheSystem)
{
    char windows[MAX_PATH];
    ASSERT_NE(0u, ::GetEnvironmentVariableA("windir", windows, sizeof windows));
    EXPECT_EQ(std::string(windows) + "\\Fonts", evaluated("%windir%\\Fonts"));
    EXPECT_EQ(std::string(windows) + "\\Fonts", evaluated("%WINDIR%\\Fonts"));

    const Variable own("AUT_OWN", "one two");
    const Variable accented("AUT_ACCENTED", "Caf\xE9");
    EXPECT_EQ("<one two><one two>", evaluated("<%AUT_OWN%><%aut_own%>"));
    EXPECT_EQ("\xC9t\xE9 Caf\xE9", evaluated("\xC9t\xE9 %AUT_ACCENTED%"));
}

TEST(RT_Expression, ExpandsATextAsTheSystemDoes)
{
    const Variable own("AUT_OWN", "value");
    const std::string shortTexts[] = {"%none%AUT_OWN%x%AUT_OWN%",
                                      "%%AUT_OWN%%",
                                      "% %AUT_OWN% %",
                                      "%AUT_OWN",
                                      "%AUT_OWN%%",
                                      "%AUT_OWN%%AUT_OWN%%none%none%AUT_OWN%"};
    for (const std::string& text : shortTexts)
    {
        char expected[256];
        ASSERT_NE(0u, ::ExpandEnvironmentStringsA(text.c_str(), expected, sizeof expected));
        EXPECT_EQ(expected, evaluated(text));
        // Longer than the system takes, where every variable is expanded by itself.
        const std::string filler(40000, '-');
        EXPECT_TRUE(filler + expected + filler == evaluated(filler + text + filler)) << text;
    }
}

TEST(RT_Expression, AnUnknownVariableStaysAsWritten)
{
    EXPECT_EQ("%UNKNOWN%\\x", evaluated("%UNKNOWN%\\x"));
    EXPECT_EQ("a%UNKNOWN%b%unknown too%c", evaluated("a%UNKNOWN%b%unknown too%c"));
}

TEST(RT_Expression, AVariableOutsideTheCodePageStaysAsWritten)
{
    ::SetEnvironmentVariableW(L"AUT_WIDE", L"C:\\\u65E5\u672C");
    EXPECT_EQ("%AUT_WIDE%\\x", evaluated("%AUT_WIDE%\\x"));
    ::SetEnvironmentVariableW(L"AUT_WIDE", L"C:\\\uFF21"); // looks like an A, is another folder
    EXPECT_EQ("%AUT_WIDE%\\x", evaluated("%AUT_WIDE%\\x"));
    ::SetEnvironmentVariableW(L"AUT_WIDE", nullptr);
}

TEST(RT_Expression, EveryByteOfTheTextIsKept)
{
    std::string all;
    for (int c = 1; c < 256; ++c)
        if (c != '%' && c != '{' && c != '}')
            all += static_cast<char>(c);
    EXPECT_EQ(all, evaluated(all));
    EXPECT_EQ(all + "%UNKNOWN%", evaluated(all + "%UNKNOWN%"));
}

TEST(RT_Expression, WinSysDirIsTheFolderOf32BitLibraries)
{
    const auttest::Unset variable("WINSYSDIR");
    char folder[MAX_PATH];
    ASSERT_NE(0u, ::GetSystemWow64DirectoryA(folder, sizeof folder));
    EXPECT_EQ(std::string(folder) + "\\x.dll", evaluated("%WINSYSDIR%\\x.dll"));
    EXPECT_EQ(std::string(folder) + "\\x.dll", evaluated("%WinSysDir%\\x.dll"));
    char system[MAX_PATH];
    ASSERT_NE(0u, ::GetSystemDirectoryA(system, sizeof system));
    EXPECT_STRCASENE(system, folder);
}

namespace
{
UINT WINAPI noWow64Directory(char*, UINT)
{
    ::SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
    return 0;
}
UINT WINAPI wow64DirectoryTooLong(char*, UINT) { return 300; } // what would be needed; nothing is written
} // namespace

TEST(RT_Expression, WinSysDirStaysAsWrittenOnA32BitSystem)
{
    const auttest::Unset variable("WINSYSDIR");
    {
        const auttest::ImportPatch patch("GetSystemWow64DirectoryA", &noWow64Directory);
        EXPECT_EQ("%WINSYSDIR%\\x.dll", evaluated("%WINSYSDIR%\\x.dll"));
    }
    const auttest::ImportPatch patch("GetSystemWow64DirectoryA", &wow64DirectoryTooLong);
    EXPECT_EQ("%WINSYSDIR%\\x.dll", evaluated("%WINSYSDIR%\\x.dll"));
}

TEST(RT_Expression, ProgramAndCommonFilesComeFromThe32BitView)
{
    for (const char* name : {"ProgramFilesDir", "CommonFilesDir"})
    {
        SCOPED_TRACE(name);
        const auttest::BorrowedValue in32(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, name, "C:\\Thirty-two");
        const auttest::BorrowedValue in64(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion64, name, "C:\\Sixty-four");
        const auttest::BorrowedValue ofUser(HKEY_CURRENT_USER, auttest::kCurrentVersion64, name, "C:\\User");
        const std::string block = "%" + std::string(name) + "%";
        EXPECT_EQ("C:\\Thirty-two\\App", evaluated(block + "\\App"));
        in32.writeRaw(REG_DWORD, {"C:\\\0", 4});
        EXPECT_EQ(block + "\\App", evaluated(block + "\\App"));
        in32.remove();
        EXPECT_EQ(block + "\\App", evaluated(block + "\\App"));
    }
    const auttest::BorrowedValue in32(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "ProgramFilesDir", "C:\\P");
    EXPECT_EQ("C:\\P", evaluated("%PROGRAMFILESDIR%"));
}

TEST(RT_Expression, DownloadedProgramFilesComeFromTheMachinesInternetSettings)
{
    const std::string key64 = std::string(auttest::kCurrentVersion64) + "\\Internet Settings";
    const std::string key32 = std::string(auttest::kCurrentVersion32) + "\\Internet Settings";
    const auttest::BorrowedValue in64(HKEY_LOCAL_MACHINE, key64, "ActiveXCache", "C:\\Sixty-four");
    const auttest::BorrowedValue in32(HKEY_LOCAL_MACHINE, key32, "ActiveXCache", "C:\\Thirty-two");
    const auttest::BorrowedValue ofUser(HKEY_CURRENT_USER, key64, "ActiveXCache", "C:\\User");
    EXPECT_EQ("C:\\Sixty-four\\ctl.ocx", evaluated("%DownloadedProgramFilesDir%\\ctl.ocx"));
    EXPECT_EQ("C:\\Sixty-four\\ctl.ocx", evaluated("%downloadedprogramfilesdir%\\ctl.ocx"));
    in64.write("");
    EXPECT_EQ("%DownloadedProgramFilesDir%\\ctl.ocx", evaluated("%DownloadedProgramFilesDir%\\ctl.ocx"));
    in64.writeRaw(REG_SZ, "");
    EXPECT_EQ("%DownloadedProgramFilesDir%\\ctl.ocx", evaluated("%DownloadedProgramFilesDir%\\ctl.ocx"));
    in64.remove();
    EXPECT_EQ("%DownloadedProgramFilesDir%\\ctl.ocx", evaluated("%DownloadedProgramFilesDir%\\ctl.ocx"));
}

TEST(RT_Expression, KnowsNoFurtherVariableOfItsOwn)
{
    ExpressionProbe expression;
    for (const char* name : {"windir", "Product", "ProductPath", "VelmoraPath", "ProgramFiles", "MSI(a:b)", "", " ",
                             "WINSYSDIR ", "WINSYSDI"})
        EXPECT_STREQ("", expression.EvaluateEnvironmentVariable(name)) << name;
    EXPECT_STREQ("", expression.EvaluateEnvironmentVariable(std::string(10000, 'n').c_str()));
}

TEST(RT_Expression, AVariableOfTheSystemGoesBeforeAKnownName)
{
    const auttest::Unset before("WINSYSDIR");
    const Variable own("WINSYSDIR", "C:\\own");
    EXPECT_EQ("C:\\own\\x.dll", evaluated("%WINSYSDIR%\\x.dll"));
}

TEST(RT_Expression, NothingIsRecordedAndNothingIsLogged)
{
    result->Set(4711, "action", "function", "argument1", "argument2", 5, "object");
    RT_RESULT before(*result);
    auttest::LogFile log;
    evaluated("{HKLM\\Software\\Nothing\\Value}{C:\\none.ini [a] b}%UNKNOWN%{x}{[%");
    EXPECT_EQ(4711, result->GetStatusCode());
    EXPECT_EQ(1, *result == before);
    EXPECT_EQ(std::vector<auttest::LogEvent>{}, log.events());
}

// How a text is taken apart

namespace
{
struct PassCase
{
    const char* text;
    Asked asked;
    const char* evaluated;
};

void PrintTo(const PassCase& row, std::ostream* out) { *out << row.text; }

class OnePass : public ::testing::TestWithParam<PassCase>
{
};
} // namespace

TEST_P(OnePass, AsksForEachBlockAndKeepsWhatHasNoValue)
{
    RecordingExpression expression("", {{"%a", "1"},
                                        {"%b", "two"},
                                        {"{a", "reg"},
                                        {"[f[s]k", "ini"},
                                        {"%again", "%b%"},
                                        {"{a{b}c", "nested"},
                                        {"{%a%", "outer"}});
    String text = GetParam().text;
    EXPECT_STREQ(GetParam().evaluated, expression.Evaluate(text));
    EXPECT_EQ(GetParam().asked, expression.asked);
    EXPECT_STREQ(GetParam().text, text);
}

INSTANTIATE_TEST_SUITE_P(
    RT_Expression, OnePass,
    ::testing::Values(PassCase{"", {}, ""}, PassCase{"no blocks } here", {}, "no blocks } here"},
                      PassCase{"%a%", {"%a"}, "1"}, PassCase{"<%a%>", {"%a"}, "<1>"},
                      PassCase{"%a%%b%", {"%a", "%b"}, "1two"}, PassCase{"x%a%y%b%z", {"%a", "%b"}, "x1ytwoz"},
                      PassCase{"%A%", {"%A"}, "%A%"},
                      PassCase{"x%none%y%b%z", {"%none", "%b"}, "x%none%ytwoz"}, // delimiters included
                      PassCase{"%a%none%b%", {"%a", "%b"}, "1nonetwo"},          // not "%none%"
                      PassCase{"%none%b%", {"%none"}, "%none%b%"},               // the scan goes on behind the block
                      PassCase{"%again%", {"%again"}, "%b%"},                    // a value waits for the next pass
                      PassCase{"{a}", {"{a"}, "reg"}, PassCase{"<{a}>", {"{a"}, "<reg>"},
                      PassCase{"{f[s]k}", {"[f[s]k"}, "ini"}, PassCase{"{none[}", {"[none["}, "{none[}"},
                      PassCase{"{none]}", {"{none]"}, "{none]}"},
                      PassCase{"{a{b}c}", {"{a{b}c"}, "nested"},                // one block
                      PassCase{"{x{a}y}z{a}", {"{x{a}y", "{a"}, "{x{a}y}zreg"}, // and only the outer one
                      PassCase{"{{{}}}{a}", {"{{{}}", "{a"}, "{{{}}}reg"},
                      PassCase{"{%a%}", {"{%a%"}, "outer"}, // the earlier of the two opens
                      PassCase{"%{a}%{a}", {"%{a}", "{a"}, "%{a}%reg"},
                      PassCase{"%a{%a%}", {"%a{"}, "%a{%a%}"}, // then "a%}" has no end
                      PassCase{"}{a}", {"{a"}, "}reg"}, PassCase{"%%", {"%"}, "%%"}, PassCase{"{}", {"{"}, "{}"},
                      PassCase{"%a%{}%b%", {"%a", "{", "%b"}, "1{}two"}));

// A block that is never closed: everything from there on stays as it is written.
INSTANTIATE_TEST_SUITE_P(RT_ExpressionUnclosed, OnePass,
                         ::testing::Values(PassCase{"%", {}, "%"}, PassCase{"{", {}, "{"}, PassCase{"}", {}, "}"},
                                           PassCase{"{{{", {}, "{{{"}, PassCase{"%%%", {"%"}, "%%%"},
                                           PassCase{"a%b", {}, "a%b"}, PassCase{"{a", {}, "{a"},
                                           PassCase{"%a%{b", {"%a"}, "1{b"}, PassCase{"%a%%b", {"%a"}, "1%b"},
                                           PassCase{"{x%a%", {}, "{x%a%"}, PassCase{"{x{a}%a%", {}, "{x{a}%a%"},
                                           PassCase{"100% {a}", {}, "100% {a}"},
                                           PassCase{"{a}100%", {"{a"}, "reg100%"}));

TEST(RT_Expression, UnclosedBlocksSurviveTheWholeEvaluation)
{
    for (const char* text : {"%", "{", "}", "%%", "%%%", "{{", "}{", "{%", "%{", "{%}", "%{%}", "{}", "{[}", "{]}",
                             "{[]}", "[", "{HKLM\\", "{HKLM\\}", "%MSI("})
    {
        SCOPED_TRACE(text);
        const std::string outcome = evaluated(text);
        if (std::string(text) == "{[}")
            EXPECT_EQ("[", outcome); // a file block without its section is its own value
        else
            EXPECT_EQ(text, outcome);
    }
}

// Rounds

TEST(RT_Expression, AVariableThatExpandsToAnotherIsExpandedAgain)
{
    const Variable first("AUT_FIRST", "%AUT_SECOND%");
    const Variable second("AUT_SECOND", "done");
    EXPECT_EQ("<done>", evaluated("<%AUT_FIRST%>"));
}

TEST(RT_Expression, EachRoundExpandsVariablesBeforeBlocks)
{
    const Variable name("AUT_NAME", "{a}");
    const Variable last("AUT_LAST", "done");
    RecordingExpression expression("%AUT_NAME%", {{"{a", "%b%"}, {"%b", "%AUT_LAST%"}});
    EXPECT_STREQ("done", expression.Evaluate());
    EXPECT_EQ((Asked{"{a", "%b"}), expression.asked);
}

TEST(RT_Expression, StopsAfterTheRoundThatChangesNothing)
{
    RecordingExpression unresolved("x%none%{none}");
    EXPECT_STREQ("x%none%{none}", unresolved.Evaluate());
    EXPECT_EQ((Asked{"%none", "{none"}), unresolved.asked);

    RecordingExpression once("%a%%none%", {{"%a", "1"}});
    EXPECT_STREQ("1%none%", once.Evaluate());
    EXPECT_EQ((Asked{"%a", "%none", "%none"}), once.asked);
}

TEST(RT_Expression, StopsAfterTenRounds)
{
    std::map<std::string, std::string> values;
    for (int i = 0; i < 20; ++i)
        values["%" + std::to_string(i)] = "%" + std::to_string(i + 1) + "%";
    RecordingExpression expression("%0%", values);
    EXPECT_STREQ("%10%", expression.Evaluate());
    EXPECT_EQ(10u, expression.asked.size());

    values["%9"] = "end";
    RecordingExpression justEnough("%0%", values);
    EXPECT_STREQ("end", justEnough.Evaluate());
}

TEST(RT_Expression, AChainOfVariablesIsFollowedTenTimes)
{
    std::vector<std::string> names;
    for (int i = 0; i <= 12; ++i)
        names.push_back("AUT_CHAIN" + std::to_string(i));
    std::vector<std::unique_ptr<Variable>> chain;
    for (std::size_t i = 0; i < 12; ++i)
        chain.push_back(std::make_unique<Variable>(names[i].c_str(), "%" + names[i + 1] + "%"));
    EXPECT_EQ("%AUT_CHAIN10%", evaluated("%AUT_CHAIN0%"));
    EXPECT_EQ("%AUT_CHAIN12%", evaluated("%AUT_CHAIN2%"));
}

TEST(RT_Expression, AValueThatDiffersInCaseOnlyIsAChange)
{
    RecordingExpression expression("%a%", {{"%a", "%A%"}, {"%A", "done"}});
    EXPECT_STREQ("done", expression.Evaluate());
}

TEST(RT_Expression, AnEvaluationLeavesTheExpressionAsItIs)
{
    const Variable own("AUT_OWN", "1");
    ExpressionProbe expression("name", "%AUT_OWN%");
    EXPECT_STREQ("1", expression.Evaluate());
    EXPECT_STREQ("%AUT_OWN%", expression.m_expression);
    ::SetEnvironmentVariableA("AUT_OWN", "2");
    EXPECT_STREQ("2", expression.Evaluate());
}

namespace
{
DWORD WINAPI expandsNothing(const wchar_t*, wchar_t*, DWORD) { return 0; }

DWORD g_promised = 0;
/// The variable grows after the first question.
DWORD WINAPI expandsLate(const wchar_t*, wchar_t* out, DWORD size)
{
    constexpr wchar_t kText[] = L"grown in between";
    constexpr DWORD kNeeded = sizeof kText / sizeof kText[0];
    if (g_promised == 0)
        return g_promised = 4;
    if (size >= kNeeded)
        std::copy(kText, kText + kNeeded, out);
    return kNeeded;
}
} // namespace

TEST(RT_Expression, AFailingExpansionLeavesTheTextToTheBlocks)
{
    const auttest::ImportPatch patch("ExpandEnvironmentStringsW", &expandsNothing);
    RecordingExpression expression("%a%%windir%", {{"%a", "1"}});
    EXPECT_STREQ("1%windir%", expression.Evaluate());
}

TEST(RT_Expression, AsksAgainWhenAVariableHasGrown)
{
    g_promised = 0;
    const auttest::ImportPatch patch("ExpandEnvironmentStringsW", &expandsLate);
    EXPECT_EQ("grown in between", evaluated("%a%"));
}

// Sizes

TEST(RT_Expression, LongTextsComeBackWhole)
{
    const std::string plain(10000, 'x');
    EXPECT_EQ(plain, evaluated(plain));
    const std::string unknown = "%" + plain + "%";
    EXPECT_EQ(unknown, evaluated(unknown));
    for (const char c : {'%', '{', '}', '[', ';'})
        EXPECT_EQ(std::string(10000, c), evaluated(std::string(10000, c))) << c;
}

TEST(RT_Expression, LongNamesAreNotFound)
{
    const std::string plain(10000, 'x');
    for (const std::string& inner : {"HKLM\\" + plain, "HKLM\\" + plain + "\\v", "HKLM\\Software\\" + plain,
                                     plain + "[s]k", "C:\\" + plain + "[s]k", "f[" + plain + "]k", "f[s]" + plain})
        EXPECT_EQ("{" + inner + "}", evaluated("{" + inner + "}"));
    const std::string nested = repeated("{", 10000) + repeated("}", 10000);
    EXPECT_EQ(nested, evaluated(nested));
}

TEST(RT_Expression, ThousandsOfBlocksAreAllEvaluated)
{
    const Variable own("AUT_OWN", "value");
    EXPECT_TRUE(repeated("value;", 10000) == evaluated(repeated("%AUT_OWN%;", 10000)));
    EXPECT_TRUE(repeated("%none%value;", 10000) == evaluated(repeated("%none%%AUT_OWN%;", 10000)));
    RecordingExpression expression(repeated("{a}%b%", 10000), {{"{a", "1"}, {"%b", "2"}});
    EXPECT_TRUE(repeated("12", 10000) == std::string(expression.Evaluate()));
}

// Each of these would take minutes if a pass cost more than its text is long.
TEST(RT_Expression, APassCostsAsMuchAsItsTextIsLong)
{
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& text : {repeated("{}", 250000), repeated("x}", 250000), repeated("{", 500000),
                                    repeated("{", 250000) + repeated("}", 250000), repeated("x", 499999) + "%"})
    {
        ExpressionProbe expression;
        String given = text.c_str();
        EXPECT_TRUE(text == std::string(expression.Evaluate(given)));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(RT_Expression, AVariableThatNamesItselfEnds)
{
    const Variable itself("AUT_SELF", "%AUT_SELF%");
    EXPECT_EQ("%AUT_SELF%", evaluated("%AUT_SELF%"));
    const Variable longer("AUT_LONGER", "x%AUT_LONGER%");
    EXPECT_EQ("xxxxxxxxxx%AUT_LONGER%", evaluated("%AUT_LONGER%"));
    const Variable ping("AUT_PING", "%AUT_PONG%");
    const Variable pong("AUT_PONG", "%AUT_PING%");
    EXPECT_EQ("%AUT_PING%", evaluated("%AUT_PING%"));
}

TEST(RT_Expression, AVariableThatDoublesItselfDoublesTenTimes)
{
    const Variable own("AUT_D", "%AUT_D%%AUT_D%");
    EXPECT_EQ(repeated("%AUT_D%", 1024), evaluated("%AUT_D%"));
}

TEST(RT_Expression, NoVariableGrowsBeyondAMegabyte)
{
    const Variable hundredfold("AUT_G", repeated("%AUT_G%", 100));
    const Variable huge("AUT_H", repeated("%AUT_H%", 4000));
    for (const char* variable : {"%AUT_G%", "%AUT_H%"})
    {
        const std::string grown = evaluated(variable);
        EXPECT_LE(grown.size(), 1048576u);
        EXPECT_GT(grown.size(), 1048576u - 32768u); // there is no room for one more
        EXPECT_TRUE(grown == repeated(variable, static_cast<int>(grown.size() / 7)));
    }
}

TEST(RT_Expression, NoValueGrowsBeyondAMegabyte)
{
    RecordingExpression expression("%g%", {{"%g", repeated("%g%", 1000)}});
    const std::string grown(expression.Evaluate());
    EXPECT_LE(grown.size(), 1048576u);
    EXPECT_GT(grown.size(), 1048576u - 3000u);
    EXPECT_TRUE(repeated("%g%", static_cast<int>(grown.size() / 3)) == grown);
    EXPECT_LT(expression.asked.size(), 3000u); // and it is not asked again for what has no room
}

TEST(RT_Expression, AMegabyteIsTheMost)
{
    const std::string most(1048576, 'v');
    RecordingExpression fits("%a%", {{"%a", most}});
    EXPECT_TRUE(most == std::string(fits.Evaluate()));
    RecordingExpression exceeds("x%a%%b%", {{"%a", most}, {"%b", "1"}});
    EXPECT_STREQ("x%a%%b%", exceeds.Evaluate());
    RecordingExpression given((most + "%none%").c_str()); // what is given is not cut
    EXPECT_TRUE(most + "%none%" == std::string(given.Evaluate()));
}
