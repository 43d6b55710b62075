#include "environment/ClientFolders.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using Events = std::vector<auttest::LogEvent>;

/// A library that is built for these tests, in a folder that nothing searches.
std::string libraryFile(const std::string& name)
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program = path;
    return program.substr(0, program.rfind('\\')) + "\\environment_libraries\\" + name;
}

class LoadDLLTest : public ::testing::Test
{
protected:
    LoadDLLTest()
    {
        // Every name is new, so that no test finds what an earlier one loaded or failed to load.
        static int number = 0;
        m_name = "companion" + std::to_string(++number) + ".dll";
    }
    /// Puts the library under the test's name into a folder of the test's.
    std::string place(const std::string& folder)
    {
        const std::string path = m_folder.makeFolder(folder) + "\\" + m_name;
        EXPECT_TRUE(::CopyFileA(libraryFile("companion_library.dll").c_str(), path.c_str(), FALSE));
        return m_folder / folder;
    }
    /// Where the loaded library lies; "" for null. Frees it.
    static std::string folderOf(HMODULE module)
    {
        if (module == nullptr)
            return "";
        char path[MAX_PATH] = "";
        ::GetModuleFileNameA(module, path, sizeof path);
        EXPECT_TRUE(FreeDLL(module));
        const std::string text = path;
        return text.substr(0, text.rfind('\\'));
    }
    /// The kernel path becomes this folder of the test's plus "\Kernel\1".
    void setKernel(const std::string& folder)
    {
        m_registry.write("", "CompPath", folder);
        m_registry.write("", "Current_Kernel_Version", "1");
    }
    const char* name() const { return m_name.c_str(); }

    auttest::ClientRegistry m_registry;
    auttest::TestFolder m_folder;
    auttest::LogFile m_log;
    std::string m_name;
};
} // namespace

TEST_F(LoadDLLTest, LoadsFromTheGivenFolder)
{
    const std::string folder = place("given");
    EXPECT_EQ(folder, folderOf(LoadDLL(name(), folder.c_str())));
}

TEST_F(LoadDLLTest, LoadsFromTheGivenFolderBeforeTheInstallPath)
{
    m_registry.write("", "Path", place("install"));
    const std::string given = place("given");
    EXPECT_EQ(given, folderOf(LoadDLL(name(), given.c_str())));
}

TEST_F(LoadDLLTest, LoadsFromTheInstallPathWithoutAFolder)
{
    const std::string install = place("install");
    m_registry.write("", "Path", install);
    setKernel(m_folder.path());
    place("Kernel\\1");
    EXPECT_EQ(install, folderOf(LoadDLL(name(), nullptr)));
}

TEST_F(LoadDLLTest, AnEmptyFolderIsNoFolder)
{
    const std::string install = place("install");
    m_registry.write("", "Path", install);
    EXPECT_EQ(install, folderOf(LoadDLL(name(), "")));
}

TEST_F(LoadDLLTest, LoadsByTheBareNameWhenTheInstallPathDoesNotHaveIt)
{
    m_registry.write("", "Path", m_folder.makeFolder("install"));
    const HMODULE module = LoadDLL("version.dll", nullptr);
    ASSERT_NE(nullptr, module);
    EXPECT_TRUE(FreeDLL(module));
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(LoadDLLTest, LoadsByTheBareNameWithoutAnInstallPath)
{
    const HMODULE module = LoadDLL("version.dll", nullptr);
    EXPECT_NE(nullptr, module);
    EXPECT_TRUE(FreeDLL(module));
}

TEST_F(LoadDLLTest, LoadsFromTheKernelPathWhenAllElseFails)
{
    setKernel(m_folder.path());
    const std::string kernel = place("Kernel\\1");
    EXPECT_EQ(kernel, folderOf(LoadDLL(name(), nullptr)));
    EXPECT_EQ(kernel, folderOf(LoadDLL(name(), m_folder.makeFolder("given").c_str())));
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(LoadDLLTest, FailureIsLoggedWithTheLastPathTried)
{
    setKernel(m_folder.path());
    EXPECT_EQ(nullptr, LoadDLL(name(), nullptr));
    EXPECT_EQ((Events{{"Error", "Unable to load the DLL " + m_folder.path() + "\\Kernel\\1\\" + m_name}}),
              m_log.events());
}

TEST_F(LoadDLLTest, TheSameFailureIsLoggedOnceInARow)
{
    setKernel(m_folder.path());
    const std::string path = "Unable to load the DLL " + m_folder.path() + "\\Kernel\\1\\";
    EXPECT_EQ(nullptr, LoadDLL(name(), nullptr));
    EXPECT_EQ(nullptr, LoadDLL(name(), nullptr));
    EXPECT_EQ((Events{{"Error", path + m_name}}), m_log.events());

    EXPECT_EQ(nullptr, LoadDLL("another.dll", nullptr));
    EXPECT_EQ(nullptr, LoadDLL(name(), nullptr));
    EXPECT_EQ((Events{{"Error", path + m_name}, {"Error", path + "another.dll"}, {"Error", path + m_name}}),
              m_log.events());
}

TEST_F(LoadDLLTest, ASuccessInBetweenDoesNotMakeTheFailureNew)
{
    setKernel(m_folder.path());
    EXPECT_EQ(nullptr, LoadDLL(name(), nullptr));
    EXPECT_TRUE(FreeDLL(LoadDLL("version.dll", nullptr)));
    EXPECT_EQ(nullptr, LoadDLL(name(), nullptr));
    EXPECT_EQ(1u, m_log.events().size());
}

TEST_F(LoadDLLTest, DependenciesComeFromTheLibrarysOwnFolder)
{
    // companion_user.dll imports companion_library.dll, which lies in no other place that is searched.
    const std::string folder = m_folder.makeFolder("pair");
    for (const char* file : {"companion_user.dll", "companion_library.dll"})
        ASSERT_TRUE(::CopyFileA(libraryFile(file).c_str(), (folder + "\\" + file).c_str(), FALSE));
    const HMODULE module = LoadDLL("companion_user.dll", folder.c_str());
    ASSERT_NE(nullptr, module);
    EXPECT_TRUE(FreeDLL(module));
}

TEST_F(LoadDLLTest, NullEmptyAndEndlessNamesFail)
{
    EXPECT_EQ(nullptr, LoadDLL(nullptr, nullptr));
    EXPECT_EQ(nullptr, LoadDLL("", nullptr));
    const std::string endless(10000, 'x');
    EXPECT_EQ(nullptr, LoadDLL(endless.c_str(), nullptr));
    EXPECT_EQ(nullptr, LoadDLL(name(), endless.c_str()));
    EXPECT_EQ(nullptr, LoadDLL(endless.c_str(), endless.c_str()));
}

TEST_F(LoadDLLTest, APathThatDoesNotFitIsNotCutToAnotherFile)
{
    // Cut at 259 characters, the path would name an existing library.
    const std::string folder = place(std::string(30, 'f'));
    std::string deep = folder;
    while (deep.size() + 2 + m_name.size() < 259)
        deep += "\\.";
    if (deep.size() + 1 + m_name.size() < 259)
        deep += '\\';
    ASSERT_EQ(259u, deep.size() + 1 + m_name.size());
    EXPECT_EQ(nullptr, LoadDLL((m_name + "x").c_str(), deep.c_str()));
}

TEST(FreeDLL, OfNullIsTrue) { EXPECT_TRUE(FreeDLL(nullptr)); }

TEST(FreeDLL, OfSomethingElseIsFalse)
{
    alignas(16) static char noModule[64] = {};
    EXPECT_FALSE(FreeDLL(reinterpret_cast<HMODULE>(noModule)));
}
