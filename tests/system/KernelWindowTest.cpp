#include "system/KernelControl.h"
#include "tests/support/ClientRegistry.h"
#include "tests/system/Kernel.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <ostream>
#include <string>

using namespace auttest;

namespace
{
constexpr char kPlainTitle[] = "Velmora Automatic Update";

/// A window of the test's own while it lives.
class Window
{
public:
    explicit Window(const std::string& title, HWND parent = nullptr)
        : m_window(::CreateWindowExA(0, "STATIC", title.c_str(), parent != nullptr ? WS_CHILD : WS_OVERLAPPED, 0, 0, 10,
                                     10, parent, nullptr, nullptr, nullptr))
    {
        EXPECT_NE(nullptr, m_window) << ::GetLastError();
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() { ::DestroyWindow(m_window); }
    HWND get() const { return m_window; }

private:
    HWND m_window;
};

class KernelWindowTest : public ::testing::Test
{
protected:
    void setVersion(const std::string& version) const { m_registry.write("", "Current_Kernel_Version", version); }
    void setMarketingName(const std::string& name) const { m_registry.write("", "MarketingName", name); }

    ClientRegistry m_registry;
};

struct Titled
{
    const char* name;
    const char* version;
    const char* title;
};
void PrintTo(const Titled& titled, std::ostream* out) { *out << titled.version; }
class KernelWindowTitleTest : public KernelWindowTest, public ::testing::WithParamInterface<Titled>
{
};
} // namespace

TEST_P(KernelWindowTitleTest, ComesFromTheVersion)
{
    setVersion(GetParam().version);
    EXPECT_EQ(nullptr, FindAUWindow());
    const Window plain(kPlainTitle);
    EXPECT_EQ(plain.get(), FindAUWindow());
    const Window window(std::string(kPlainTitle) + " " + GetParam().title);
    EXPECT_EQ(window.get(), FindAUWindow());
}
INSTANTIATE_TEST_SUITE_P(
    Versions, KernelWindowTitleTest,
    ::testing::Values(Titled{"Beta", "3.3.302.1_beta", "3.3.302"}, Titled{"Short", "3.3.302", "3.3.302"},
                      Titled{"Build", "3.3.302.1", "3.3.302"}, Titled{"Full", "3.3.302B1.2_EN", "3.3.302"},
                      Titled{"OtherSeparator", "3.3B302.1_EN", "3.3B302"},
                      Titled{"CutAtTheLastUnderscoreOnly", "3.3_302.1_EN", "3.3_302"},
                      Titled{"CutAtTheSeparator", "3.3_302", "3.3"}, Titled{"LeadingZeros", "03.004.0005", "3.4.5"},
                      Titled{"Blanks", " 3. 3. 302", "3.3.302"}, Titled{"BlankSeparator", "3.3 302", "3.3 302"},
                      Titled{"Signs", "-1.+2.-3", "-1.2.-3"}, Titled{"NoBuild", "3.3.", "3.3.0"},
                      Titled{"BuildOfLetters", "3.3.x", "3.3.0"}, Titled{"NoSeparator", "3.3", "3.3"},
                      Titled{"NoMinor", "3.", "3.0"}, Titled{"MajorOnly", "3", "3.0"}, Titled{"Letters", "abc", "0.0"},
                      Titled{"UnderscoreOnly", "_", "0.0"}, Titled{"PercentSigns", "3.3%302", "3.3%302"},
                      Titled{"TooLarge", "99999999999.1.2", "2147483647.1.2"},
                      Titled{"BeyondAscii",
                             "3.3\xE9"
                             "302",
                             "3.3\xE9"
                             "302"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(KernelWindowTest, AVersionOfTheGreatestLengthIsCutLikeAnyOther)
{
    setVersion("3.3.302." + std::string(251, '1'));
    const Window window("Velmora Automatic Update 3.3.302");
    EXPECT_EQ(window.get(), FindAUWindow());
}

TEST_F(KernelWindowTest, TheMarketingNameComesBeforeTheVersion)
{
    setVersion("3.3.302.1_beta");
    setMarketingName("Update Center_2 %s");
    const Window versioned("Velmora Automatic Update 3.3.302");
    EXPECT_EQ(nullptr, FindAUWindow());
    const Window window("Velmora Update Center_2 %s");
    EXPECT_EQ(window.get(), FindAUWindow());
}

TEST_F(KernelWindowTest, TheMarketingNameNeedsNoVersion)
{
    setMarketingName("Update Center");
    EXPECT_EQ(nullptr, FindAUWindow());
    const Window plain(kPlainTitle);
    EXPECT_EQ(plain.get(), FindAUWindow());
    const Window window("Velmora Update Center");
    EXPECT_EQ(window.get(), FindAUWindow());
}

TEST_F(KernelWindowTest, AnEmptyMarketingNameIsNone)
{
    setMarketingName("");
    setVersion("3.3.302");
    const Window window("Velmora Automatic Update 3.3.302");
    EXPECT_EQ(window.get(), FindAUWindow());
}

TEST_F(KernelWindowTest, WithoutNameAndVersionNoWindowIsLookedFor)
{
    const Window plain(kPlainTitle);
    EXPECT_EQ(nullptr, FindAUWindow());
    setVersion("");
    EXPECT_EQ(nullptr, FindAUWindow());
}

TEST_F(KernelWindowTest, TextsOfTenThousandCharactersCountAsMissing)
{
    const Window plain(kPlainTitle);
    setVersion(std::string(10000, '3'));
    EXPECT_EQ(nullptr, FindAUWindow());
    setVersion("3.3.302");
    setMarketingName(std::string(10000, 'm'));
    const Window window("Velmora Automatic Update 3.3.302");
    EXPECT_EQ(window.get(), FindAUWindow());
}

TEST_F(KernelWindowTest, TheLongestMarketingNameIsNotCut)
{
    const std::string name(259, 'm');
    setMarketingName(name);
    const Window shorter("Velmora " + name.substr(1));
    EXPECT_EQ(nullptr, FindAUWindow());
    const Window window("Velmora " + name);
    EXPECT_EQ(window.get(), FindAUWindow());
}

TEST_F(KernelWindowTest, OnlyAWholeTitleOfATopLevelWindowCounts)
{
    setVersion("3.3.302");
    const Window longer("Velmora Automatic Update 3.3.302 beta");
    const Window shorter("Velmora Automatic Update 3.3.30");
    const Window child("Velmora Automatic Update 3.3.302", longer.get());
    EXPECT_EQ(nullptr, FindAUWindow());
}

TEST_F(KernelWindowTest, TheWindowOfARunningKernelIsFound)
{
    setVersion("3.3.302.1_beta");
    const KernelProgram program;
    const Child kernel = program.start("\"window=Velmora Automatic Update 3.3.302\"");
    DWORD pid = 0;
    ::GetWindowThreadProcessId(FindAUWindow(), &pid);
    EXPECT_EQ(kernel.pid(), pid);
}

TEST_F(KernelWindowTest, LookingLeavesNoHandleOpen)
{
    setVersion("3.3.302");
    FindAUWindow();
    const std::size_t before = openHandles();
    for (int round = 0; round < 20; ++round)
        FindAUWindow();
    EXPECT_EQ(before, openHandles());
}
