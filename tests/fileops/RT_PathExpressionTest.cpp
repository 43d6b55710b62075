#include "fileops/RT_PathExpression.h"
#include "foundation/RT_RESULT.h"
#include "tests/fileops/ExpressionFixture.h"
#include "tests/fileops/InstallerFixture.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using auttest::BorrowedValue;
using auttest::Variable;

static_assert(std::is_base_of_v<RT_Expression, RT_PathExpression>);
static_assert(std::has_virtual_destructor_v<RT_PathExpression>);
static_assert(sizeof(RT_PathExpression) == 80);

namespace
{
/// A path expression as those see it that derive from it.
class PathProbe : public RT_PathExpression
{
public:
    using RT_PathExpression::EvaluateEnvironmentVariable;
    using RT_PathExpression::m_alternatives;
    using RT_PathExpression::m_expression;
    using RT_PathExpression::m_name;
    using RT_PathExpression::m_productPath;
    using RT_PathExpression::RT_PathExpression;
};

std::string path(const std::string& expression, const char* productPath = "C:\\Product")
{
    return std::string(RT_PathExpression("", expression.c_str(), productPath).Evaluate());
}

std::string valueOf(const char* name)
{
    return std::string(PathProbe("", "", "C:\\Product").EvaluateEnvironmentVariable(name));
}

class RT_PathExpressionTest : public ::testing::Test
{
protected:
    auttest::ClientRegistry m_client;
};
} // namespace

TEST_F(RT_PathExpressionTest, HasItsMembersInTheirOrder)
{
    const PathProbe probe("name", "expression", "C:\\Product");
    const char* const start = reinterpret_cast<const char*>(&probe);
    EXPECT_EQ(start + 56, reinterpret_cast<const char*>(&probe.m_alternatives));
    EXPECT_EQ(start + 64, reinterpret_cast<const char*>(&probe.m_productPath));
    EXPECT_STREQ("name", probe.m_name);
    EXPECT_STREQ("expression", probe.m_expression);
    EXPECT_STREQ("C:\\Product", probe.m_productPath);
    EXPECT_EQ(1, probe.m_alternatives);
}

TEST_F(RT_PathExpressionTest, CopiesAreDeep)
{
    auto original = std::make_unique<PathProbe>("name", "%ProductPath%;x", "C:\\Product");
    original->m_alternatives = 0;
    PathProbe copy(*original);
    PathProbe assigned("", "", "");
    assigned = *original;
    original.reset();
    EXPECT_STREQ("C:\\Product;x", copy.Evaluate());
    EXPECT_STREQ("C:\\Product;x", assigned.Evaluate());
}

TEST_F(RT_PathExpressionTest, IsEvaluatedAndEndedThroughItsBase)
{
    const std::unique_ptr<RT_Expression> expression =
        std::make_unique<RT_PathExpression>("", "  {none};%ProductPath%  ", "C:\\Product");
    EXPECT_STREQ("C:\\Product", expression->Evaluate());
    EXPECT_TRUE(expression->Analyse());
}

TEST_F(RT_PathExpressionTest, ProductPathIsTheOneGiven)
{
    EXPECT_EQ("C:\\Product\\bin", path("%ProductPath%\\bin"));
    EXPECT_EQ("C:\\Product\\bin", path("%PRODUCTPATH%\\bin"));
    EXPECT_EQ("%ProductPath%\\bin", path("%ProductPath%\\bin", ""));
    const std::string longPath(10000, 'p');
    EXPECT_EQ(longPath + "\\bin", path("%ProductPath%\\bin", longPath.c_str()));
}

TEST_F(RT_PathExpressionTest, VelmoraPathIsTheClients)
{
    m_client.write("", "VelmoraPath", "C:\\Velmora");
    EXPECT_EQ("C:\\Velmora\\bin", path("%VelmoraPath%\\bin"));
    EXPECT_EQ("C:\\Velmora\\bin", path("%velmorapath%\\bin"));
    m_client.write("", "VelmoraPath", std::string(259, 'v'));
    EXPECT_EQ(std::string(259, 'v'), path("%VelmoraPath%"));
}

TEST_F(RT_PathExpressionTest, WithoutAVelmoraPathItStaysAsWritten)
{
    EXPECT_EQ("%VelmoraPath%\\bin", path("%VelmoraPath%\\bin"));
    m_client.write("Products\\VelmoraPath", "Path", "C:\\wrong"); // an empty value is no product's name
    m_client.write("Products", "Path", "C:\\wrong");
    EXPECT_EQ("%VelmoraPath%\\bin", path("%VelmoraPath%\\bin"));
    m_client.write("", "VelmoraPath", "");
    EXPECT_EQ("%VelmoraPath%\\bin", path("%VelmoraPath%\\bin"));
    m_client.write("", "VelmoraPath", std::string(260, 'v')); // does not fit, and is not cut
    EXPECT_EQ("%VelmoraPath%\\bin", path("%VelmoraPath%\\bin"));
}

// The product without a name is the root of the products, and that has no path whatever is stored there.
TEST_F(RT_PathExpressionTest, ProductIsThePathOfTheRootOfProductsWhichHasNone)
{
    m_client.write("Products", "Path", "C:\\Root");
    m_client.write("Products\\Product", "Path", "C:\\wrong");
    EXPECT_EQ("", valueOf("Product"));
    EXPECT_EQ("%Product%\\bin", path("%Product%\\bin"));
    EXPECT_EQ("%product%\\bin", path("%product%\\bin"));
}

TEST_F(RT_PathExpressionTest, AnyOtherNameIsTheBasesBusiness)
{
    const auttest::Unset variable("WINSYSDIR");
    char folder[MAX_PATH];
    ASSERT_NE(0u, ::GetSystemWow64DirectoryA(folder, sizeof folder));
    EXPECT_EQ(std::string(folder) + "\\x", path("%WINSYSDIR%\\x"));
    const BorrowedValue programs(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "ProgramFilesDir", "C:\\P");
    EXPECT_EQ("C:\\P\\App", path("%ProgramFilesDir%\\App"));
    const Variable own("AUT_OWN", "C:\\Own");
    EXPECT_EQ("C:\\Own\\x", path("%AUT_OWN%\\x"));
    EXPECT_EQ("%UNKNOWN%\\x", path("%UNKNOWN%\\x"));
    EXPECT_EQ("", valueOf(""));
    EXPECT_EQ("%%", path("%%"));
    EXPECT_EQ("", valueOf(std::string(10000, 'n').c_str()));
}

TEST_F(RT_PathExpressionTest, TheNameOfAProductIsNoVariable)
{
    m_client.write("Products\\Editor", "Path", "C:\\Editor");
    EXPECT_EQ("%Editor%\\x", path("%Editor%\\x"));
}

TEST_F(RT_PathExpressionTest, AValueThatIsItsOwnNameIsTakenAsAProduct)
{
    const BorrowedValue programs(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "ProgramFilesDir", "programfilesdir");
    EXPECT_EQ("%ProgramFilesDir%\\x", path("%ProgramFilesDir%\\x")); // there is no such product
    m_client.write("Products\\ProgramFilesDir", "Path", "C:\\Editor");
    EXPECT_EQ("C:\\Editor\\x", path("%ProgramFilesDir%\\x"));
    programs.write("ProgramFilesDir2");
    EXPECT_EQ("ProgramFilesDir2\\x", path("%ProgramFilesDir%\\x"));
}

TEST_F(RT_PathExpressionTest, AVariableOfTheSystemGoesBeforeAKnownName)
{
    const Variable own("ProductPath", "C:\\Own");
    EXPECT_EQ("C:\\Own\\x", path("%ProductPath%\\x"));
}

TEST_F(RT_PathExpressionTest, AnInstallerNameWithoutItsParenthesisIsItsOwnValue)
{
    EXPECT_EQ("MSI(a:b", valueOf("MSI(a:b"));
    EXPECT_EQ("MSI(", valueOf("MSI("));
    EXPECT_EQ("msi(a:b) ", valueOf("msi(a:b) "));
    EXPECT_EQ("MSI(a:b\\lib", path("%MSI(a:b%\\lib"));
    EXPECT_EQ("%xMSI(a:b)%\\lib", path("%xMSI(a:b)%\\lib")); // only at the start
    EXPECT_EQ("%MSI%\\lib", path("%MSI%\\lib"));
}

TEST_F(RT_PathExpressionTest, AnInstallerNameWithoutAColonHasNoValue)
{
    EXPECT_EQ("", valueOf("MSI()"));
    EXPECT_EQ("", valueOf("MSI(a)"));
    EXPECT_EQ("%MSI()%\\lib", path("%MSI()%\\lib"));
}

TEST_F(RT_PathExpressionTest, TheWholeTextIsTrimmedOfBlanks)
{
    EXPECT_EQ("C:\\a b", path("   C:\\a b   "));
    EXPECT_EQ("\tC:\\a", path(" \tC:\\a"));
    EXPECT_EQ("", path("   "));
    EXPECT_EQ("", path(""));
    EXPECT_EQ("x{none}", path("  x{none}  ")); // one text need not be resolved
    EXPECT_EQ("C:\\Product", path("%ProductPath%", "  C:\\Product  "));
}

TEST_F(RT_PathExpressionTest, TheFirstResolvedAlternativeWins)
{
    const auttest::ExpressionKeys keys;
    keys.machine.write("App", "Dir", "C:\\App");
    const std::string known = "{HKLM\\" + std::string(auttest::kExpressionKey) + "\\App\\Dir}";
    const BorrowedValue programs(HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "ProgramFilesDir", "C:\\Programs");
    struct Row
    {
        std::string expression;
        const char* path;
    };
    const Row rows[] = {
        {"{HKLM\\a\\b};C:\\Fallback", "C:\\Fallback"},
        {"{HKLM\\...\\Dir};%ProgramFilesDir%\\App", "C:\\Programs\\App"},
        {known + ";C:\\Fallback", "C:\\App"},
        {known + "\\x ; C:\\Fallback", "C:\\App\\x"},
        {"%UNKNOWN%;{none};" + known + ";C:\\Fallback", "C:\\App"},
        {"C:\\a;C:\\b;C:\\c", "C:\\a"},
        {"%UNKNOWN%;  C:\\b c  ;C:\\d", "C:\\b c"},
        {"%UNKNOWN%;{none}", ""}, // none qualifies
        {"%UNKNOWN%;x{none}y", ""},
        {"%a;b%", ""}, // a half on each side
        {"{a;b}", ""},
        {"{a;b};C:\\c", "C:\\c"},
        {"%a;b%;C:\\c", "C:\\c"},
        {"C:\\50%;C:\\b", "C:\\b"}, // an open percent sign or brace is enough
        {"C:\\a{;C:\\b", "C:\\b"},
        {"C:\\a};C:\\b", "C:\\b"},
        {"C:\\a;", "C:\\a"},
        {"%UNKNOWN%;", ""}, // an empty alternative is resolved too
        {";C:\\b", ""},
        {"  ;C:\\b", ""},
        {"%UNKNOWN%;;C:\\b", ""},
        {";", ""},
        {";;;", ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.path, path(row.expression)) << row.expression;
}

TEST_F(RT_PathExpressionTest, AlternativesMayComeFromAValue)
{
    const Variable own("AUT_OWN", "%UNKNOWN%;C:\\b;C:\\c");
    EXPECT_EQ("C:\\b", path("%AUT_OWN%"));
    EXPECT_EQ("C:\\1", path("%ProductPath%", "C:\\1;C:\\2"));
}

TEST_F(RT_PathExpressionTest, WithoutTheFlagThereAreNoAlternatives)
{
    PathProbe expression("", "  {none};C:\\b  ", "");
    expression.m_alternatives = 0;
    EXPECT_STREQ("{none};C:\\b", expression.Evaluate());
    expression.m_alternatives = 2;
    EXPECT_STREQ("C:\\b", expression.Evaluate());
}

TEST_F(RT_PathExpressionTest, TakesTenThousandAlternatives)
{
    std::string text;
    for (int i = 0; i < 10000; ++i)
        text += "{none};";
    EXPECT_EQ("C:\\last", path(text + "C:\\last"));
    EXPECT_EQ("", path(text + "{none}"));
    EXPECT_EQ(std::string(10000, 'x'), path("{none};" + std::string(10000, 'x')));
}

TEST_F(RT_PathExpressionTest, OpenBlocksSurvive)
{
    for (const char* text : {"%", "{", "}", "%%%", "{{", "{%}", "%MSI(", "x%ProductPath"})
        EXPECT_EQ(text, path(text));
    EXPECT_EQ("C:\\Product%x", path("%ProductPath%%x"));
}

TEST_F(RT_PathExpressionTest, NothingIsRecorded)
{
    result->Set(4711, "action", "function", "argument1", "argument2", 5, "object");
    path("%Product%;%VelmoraPath%;%MSI(a:b)%;{HKLM\\a\\b}");
    EXPECT_EQ(4711, result->GetStatusCode());
    EXPECT_STREQ("action", result->GetAction());
}

namespace
{
class InstallerPath : public auttest::InstallerFixture
{
};
} // namespace

TEST_F(InstallerPath, IsTheFolderOfTheComponent)
{
    const auttest::TestFolder folder;
    install(folder.writeFile("lib\\main.dll", "x"));
    const std::string block = "%" + std::string(auttest::kInstallerBlock) + "%";
    EXPECT_EQ(folder / "lib\\sub", path(block + "\\sub"));
    EXPECT_EQ(folder / "lib", path("{none};" + block + ";C:\\Fallback"));
    EXPECT_STREQ("", auttest::ExpressionProbe().EvaluateEnvironmentVariable(auttest::kInstallerBlock));
    EXPECT_EQ(folder / "lib", path("%msi(" + std::string(auttest::kInstallerBlock).substr(4) + "%"));
}

TEST_F(InstallerPath, StaysAsWrittenForAnUnknownComponent)
{
    const std::string block = "%" + std::string(auttest::kInstallerBlock) + "%";
    EXPECT_EQ(block + "\\sub", path(block + "\\sub"));
    EXPECT_EQ("C:\\Fallback", path(block + ";C:\\Fallback"));
}
