#include "fileops/MSIPath.h"
#include "tests/fileops/InstallerFixture.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <string>
#include <thread>

using auttest::kInstallerBlock;

namespace
{
/// An answer of the installer that is a text; null is one too.
struct TextAnswer
{
    explicit TextAnswer(const wchar_t* text) : value{}
    {
        value.vt = VT_BSTR;
        value.bstrVal = text != nullptr ? ::SysAllocString(text) : nullptr;
    }
    ~TextAnswer() { ::VariantClear(&value); }
    TextAnswer(const TextAnswer&) = delete;
    TextAnswer& operator=(const TextAnswer&) = delete;

    VARIANT value;
};

class MSIEvaluatePathTest : public auttest::InstallerFixture
{
protected:
    std::string folderFor(const wchar_t* text)
    {
        const TextAnswer answer(text);
        front().answer = &answer.value;
        const std::string folder(MSIEvaluatePath(kInstallerBlock));
        front().answer = nullptr;
        return folder;
    }
};

/// What COM says of the calling thread: S_OK when it is in no apartment.
HRESULT joinApartment(DWORD kind)
{
    const HRESULT joined = ::CoInitializeEx(nullptr, kind);
    if (SUCCEEDED(joined))
        ::CoUninitialize();
    return joined;
}
} // namespace

TEST(MSIExtractProductIDAndMainCompID, PutsEachSideOfTheFirstColonIntoBraces)
{
    struct Row
    {
        const char* text;
        const char* product;
        const char* component;
    };
    const Row rows[] = {{"MSI(P:C)", "{P}", "{C}"},         {"MSI(one two:three)", "{one two}", "{three}"},
                        {"MSI(a:b:c)", "{a}", "{b:c}"},     {"MSI(:)", "{}", "{}"},
                        {"MSI(a:)", "{a}", "{}"},           {"MSI(:b)", "{}", "{b}"},
                        {"1234P:C5", "{P}", "{C}"}, // whatever the first four and the last are
                        {"MSI({P}:{C})", "{{P}}", "{{C}}"}, {"MSI(%s%n:%d)", "{%s%n}", "{%d}"}};
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.text);
        String product("before");
        String component("before");
        EXPECT_TRUE(MSIExtractProductIDAndMainCompID(row.text, product, component));
        EXPECT_STREQ(row.product, product);
        EXPECT_STREQ(row.component, component);
    }
}

TEST(MSIExtractProductIDAndMainCompID, GivesFalseWithoutAColon)
{
    for (const char* text : {"", "M", "MSI", "MSI(", "MSI()", "MSI(P)", "MSI(PC", "M:I(PC)", "MSI(PC:", ":::::"})
    {
        SCOPED_TRACE(text);
        String product("before");
        String component("before");
        EXPECT_FALSE(MSIExtractProductIDAndMainCompID(text, product, component));
        EXPECT_STREQ("before", product);
        EXPECT_STREQ("before", component);
    }
    String product;
    String component;
    EXPECT_TRUE(MSIExtractProductIDAndMainCompID("::::::", product, component)); // one is left behind the fourth
}

TEST(MSIExtractProductIDAndMainCompID, TakesCodesOfAnyLength)
{
    const std::string code(10000, 'c');
    String product;
    String component;
    EXPECT_TRUE(MSIExtractProductIDAndMainCompID(("MSI(" + code + ":" + code + ")").c_str(), product, component));
    EXPECT_EQ("{" + code + "}", std::string(product));
    EXPECT_EQ("{" + code + "}", std::string(component));
}

TEST(MSIExtractProductIDAndMainCompID, TheTextMayBeOneOfTheTwo)
{
    String text("MSI(P:C)");
    String other;
    EXPECT_TRUE(MSIExtractProductIDAndMainCompID(text, text, other));
    EXPECT_STREQ("{P}", text);
    EXPECT_STREQ("{C}", other);
    text = "MSI(P:C)";
    EXPECT_TRUE(MSIExtractProductIDAndMainCompID(text, other, text));
    EXPECT_STREQ("{P}", other);
    EXPECT_STREQ("{C}", text);
}

TEST_F(MSIEvaluatePathTest, GivesTheFolderOfTheInstalledComponent)
{
    const auttest::TestFolder folder;
    install(folder.writeFile("lib x\\main.dll", "x"));
    EXPECT_EQ(folder / "lib x", std::string(MSIEvaluatePath(kInstallerBlock)));
}

TEST_F(MSIEvaluatePathTest, AsksForThePropertyWithTwoTexts)
{
    MSIEvaluatePath(kInstallerBlock);
    EXPECT_EQ(31, front().id);
    EXPECT_EQ(WORD{DISPATCH_PROPERTYGET}, front().flags);
    EXPECT_EQ(2u, front().arguments);
    EXPECT_STREQ(L"{01234567-89AB-CDEF-0123-456789ABCDEF}", front().product);
    EXPECT_STREQ(L"{76543210-BA98-FEDC-3210-FEDCBA987654}", front().component);
    MSIEvaluatePath("MSI(P\xE9:C)");
    EXPECT_STREQ(L"{P\u00E9}", front().product);
}

TEST_F(MSIEvaluatePathTest, GivesNothingForWhatTheInstallerDoesNotKnow)
{
    EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock));
    const auttest::TestFolder folder;
    install(folder / "missing.dll"); // recorded, but the file is gone
    EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock));
    for (const char* text : {"MSI(no:codes)", "MSI(:)", "MSI(P:C)"})
        EXPECT_STREQ("", MSIEvaluatePath(text)) << text;
    EXPECT_STREQ("", MSIEvaluatePath(("MSI(" + std::string(10000, 'p') + ":c)").c_str()));
}

TEST_F(MSIEvaluatePathTest, AsksNobodyWithoutTwoCodes)
{
    const long before = front().created;
    for (const char* text : {"", "MSI()", "MSI(P)", "P:C"})
        EXPECT_STREQ("", MSIEvaluatePath(text)) << text;
    EXPECT_EQ(before, front().created);
}

TEST_F(MSIEvaluatePathTest, KeepsThePathUpToItsLastBackslash)
{
    EXPECT_EQ("C:\\a\\b", folderFor(L"C:\\a\\b\\c.dll"));
    EXPECT_EQ("C:\\a\\b", folderFor(L"C:\\a\\b\\"));
    EXPECT_EQ("C:", folderFor(L"C:\\c.dll"));
    EXPECT_EQ("C:\\Caf\xE9", folderFor(L"C:\\Caf\u00E9\\c.dll"));
    EXPECT_EQ("C:\\a", folderFor(L"C:\\a\\\u65E5\u672C.dll")); // the name of the file does not matter
    const std::wstring longFolder = L"C:\\" + std::wstring(10000, L'f');
    EXPECT_EQ("C:\\" + std::string(10000, 'f'), folderFor((longFolder + L"\\c.dll").c_str()));
}

TEST_F(MSIEvaluatePathTest, GivesNothingForAPathWithoutAFolder)
{
    EXPECT_EQ("", folderFor(L""));
    EXPECT_EQ("", folderFor(nullptr));
    EXPECT_EQ("", folderFor(L"main.dll"));
    EXPECT_EQ("", folderFor(L"C:/a/main.dll"));
    EXPECT_EQ("", folderFor(L"\\main.dll"));
}

TEST_F(MSIEvaluatePathTest, GivesNothingForAFolderOutsideTheCodePage)
{
    EXPECT_EQ("", folderFor(L"C:\\\u65E5\u672C\\c.dll"));
    EXPECT_EQ("", folderFor(L"C:\\\uFF21\\c.dll")); // looks like an A, is another folder
}

TEST_F(MSIEvaluatePathTest, GivesNothingForAnAnswerThatIsNoText)
{
    VARIANT answer;
    for (const VARTYPE type : {VARTYPE{VT_EMPTY}, VARTYPE{VT_NULL}, VARTYPE{VT_I4}, VARTYPE{VT_BOOL}, VARTYPE{VT_R8}})
    {
        answer = VARIANT();
        answer.vt = type;
        front().answer = &answer;
        EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock)) << type;
    }
}

TEST_F(MSIEvaluatePathTest, GivesNothingWhenTheInstallerFails)
{
    const TextAnswer answer(L"C:\\a\\b.dll");
    front().answer = &answer.value;
    for (const HRESULT outcome : {E_FAIL, DISP_E_MEMBERNOTFOUND, E_OUTOFMEMORY})
    {
        front().outcome = outcome;
        EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock));
    }
    front().outcome = S_OK;
    EXPECT_STREQ("C:\\a", MSIEvaluatePath(kInstallerBlock));
    front().creation = E_ACCESSDENIED;
    EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock));
}

TEST_F(MSIEvaluatePathTest, GivesNothingWithoutAnInstaller)
{
    registerServer("C:\\none\\none.dll");
    EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock));
    registerServer("");
    EXPECT_STREQ("", MSIEvaluatePath(kInstallerBlock));
}

// The installer's own object lives in a single-threaded apartment, so that COM brings the call there and back.
TEST_F(MSIEvaluatePathTest, WorksOnAThreadOfAnyApartmentAndLeavesItThere)
{
    const auttest::TestFolder folder;
    install(folder.writeFile("lib\\main.dll", "x"));
    for (const char* threadingModel : {"Apartment", "Both"})
    {
        SCOPED_TRACE(threadingModel);
        registerFront(threadingModel);
        std::thread(
            [&]
            {
                EXPECT_EQ(folder / "lib", std::string(MSIEvaluatePath(kInstallerBlock)));
                EXPECT_EQ(S_OK, joinApartment(COINIT_APARTMENTTHREADED)); // in none, as before
            })
            .join();
        std::thread(
            [&]
            {
                ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
                EXPECT_EQ(folder / "lib", std::string(MSIEvaluatePath(kInstallerBlock)));
                EXPECT_EQ(S_FALSE, joinApartment(COINIT_APARTMENTTHREADED));
                EXPECT_EQ(RPC_E_CHANGED_MODE, joinApartment(COINIT_MULTITHREADED));
                ::CoUninitialize();
                EXPECT_EQ(S_OK,
                          joinApartment(COINIT_MULTITHREADED)); // one initialisation was its own, and none is left
            })
            .join();
        std::thread(
            [&]
            {
                ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
                EXPECT_EQ(folder / "lib", std::string(MSIEvaluatePath(kInstallerBlock)));
                EXPECT_EQ(S_FALSE, joinApartment(COINIT_MULTITHREADED));
                ::CoUninitialize();
                EXPECT_EQ(S_OK, joinApartment(COINIT_APARTMENTTHREADED));
            })
            .join();
    }
}

TEST_F(MSIEvaluatePathTest, LeavesTheThreadAloneWhenItFails)
{
    std::thread(
        [&]
        {
            MSIEvaluatePath(kInstallerBlock);
            front().outcome = E_FAIL;
            MSIEvaluatePath(kInstallerBlock);
            registerServer("");
            MSIEvaluatePath(kInstallerBlock);
            MSIEvaluatePath("MSI(P)");
            EXPECT_EQ(S_OK, joinApartment(COINIT_APARTMENTTHREADED));
        })
        .join();
}

TEST_F(MSIEvaluatePathTest, ReleasesWhatItMade)
{
    const auttest::TestFolder folder;
    install(folder.writeFile("lib\\main.dll", "x"));
    const long before = front().created;
    for (const HRESULT outcome : {S_OK, E_FAIL})
    {
        front().outcome = outcome;
        MSIEvaluatePath(kInstallerBlock);
    }
    EXPECT_EQ(before + 2, front().created);
    EXPECT_EQ(0, front().objects);

    front().outcome = S_OK;
    ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); // COM's own threads would come and go
    MSIEvaluatePath(kInstallerBlock);
    const std::size_t handles = auttest::openHandles();
    for (int i = 0; i < 100; ++i)
        MSIEvaluatePath(kInstallerBlock);
    EXPECT_LT(auttest::openHandles(), handles + 50) << "less than one for two calls; COM's threads come and go";
    EXPECT_EQ(0, front().objects);
    ::CoUninitialize();
}
