#include "system/CProcessListManager.h"
#include "system/UserProcesses.h"
#include "tests/support/TestFolder.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

using namespace auttest;

namespace
{
const unsigned long kSelf = ::GetCurrentProcessId();

class ModuleSearchTest : public ::testing::Test
{
protected:
    /// A copy of the test module under another name.
    std::string copyModule(const std::string& name) const
    {
        const std::string path = m_folder / name;
        EXPECT_TRUE(::CopyFileA((programFolder() + "\\system_module.dll").c_str(), path.c_str(), FALSE));
        return path;
    }
    static aut::UniqueModule load(const std::string& path)
    {
        aut::UniqueModule module{::LoadLibraryA(path.c_str())};
        EXPECT_TRUE(module) << path << " error " << ::GetLastError();
        return module;
    }
    int isLoaded(const char* name, unsigned long pid = kSelf)
    {
        String dllName = name;
        return m_manager.IsDllLoadedByProcess(pid, dllName, m_path);
    }

    TestFolder m_folder;
    CProcessListManager m_manager;
    String m_path = "untouched";
};
} // namespace

TEST_F(ModuleSearchTest, FindsALoadedModuleByItsFileName)
{
    const std::string path = copyModule("A rather long name.dll");
    EXPECT_EQ(0, isLoaded("A rather long name.dll"));
    EXPECT_STREQ("untouched", m_path);
    const aut::UniqueModule module = load(path);
    EXPECT_EQ(1, isLoaded("a rather LONG name.DLL")) << "case is ignored";
    EXPECT_EQ(path, std::string(m_path));
}

TEST_F(ModuleSearchTest, ComparesTheWholeFileName)
{
    const std::string path = copyModule("whole.dll");
    const aut::UniqueModule module = load(path);
    EXPECT_EQ(1, isLoaded("whole.dll"));
    for (const char* const name : {"whole", "hole.dll", "whole.dll2", "", "\\whole.dll", path.c_str()})
        EXPECT_EQ(0, isLoaded(name)) << name;
}

TEST_F(ModuleSearchTest, GivesTheLongFormOfAPathLoadedByItsShortOne)
{
    const std::string path = copyModule("A rather long name.dll");
    char shortPath[MAX_PATH] = "";
    ASSERT_GT(::GetShortPathNameA(path.c_str(), shortPath, sizeof shortPath), 0U);
    ASSERT_NE(path, shortPath);
    const aut::UniqueModule module = load(shortPath);
    EXPECT_EQ(1, isLoaded("A rather long name.dll"));
    EXPECT_EQ(path, std::string(m_path));
}

TEST_F(ModuleSearchTest, FindsAModuleOfAnotherProcess)
{
    const IdleProcesses idle("other.exe");
    const Child child = idle.start();
    EXPECT_EQ(1, isLoaded("other.exe", child.pid())) << "a program is a module too";
    EXPECT_EQ(idle.program(), std::string(m_path));
    EXPECT_EQ(0, isLoaded("system_tests.exe", child.pid()));
}

TEST_F(ModuleSearchTest, FailsForAProcessThatCannotBeRead)
{
    const IdleProcesses idle("other.exe");
    const Child child = idle.start();
    allowOnly(child.handle(), 0);
    EXPECT_EQ(0, isLoaded("other.exe", child.pid()));
    EXPECT_EQ(0, isLoaded("kernel32.dll", 0));
    EXPECT_EQ(0, isLoaded("kernel32.dll", 0xFFFFFFF0UL));
    EXPECT_STREQ("untouched", m_path);
}

TEST_F(ModuleSearchTest, FindsNothingInAProcessWithMoreThan200Modules)
{
    EXPECT_EQ(1, isLoaded("kernel32.dll"));
    std::vector<aut::UniqueModule> modules;
    for (int i = 0; i < 201; ++i)
        modules.push_back(load(copyModule(std::to_string(i) + ".dll")));
    EXPECT_EQ(0, isLoaded("kernel32.dll"));
    String name;
    EXPECT_EQ(1, m_manager.GetProcessNameFromPID(kSelf, name)) << "the name needs the first module only";
    EXPECT_STREQ("system_tests.exe", name);
}

TEST_F(ModuleSearchTest, IsDllLoadedGivesTheLengthAndThePath)
{
    const std::string path = copyModule("A rather long name.dll");
    const aut::UniqueModule module = load(path);
    char buffer[600];
    std::fill(std::begin(buffer), std::end(buffer), 'x');
    EXPECT_EQ(path.size(), IsDllLoaded(kSelf, "A rather long name.dll", buffer, 599));
    EXPECT_EQ(path, buffer);
    EXPECT_EQ(std::string(599 - path.size(), '\0'), std::string(buffer + path.size(), 599 - path.size()));
    EXPECT_EQ('x', buffer[599]);
}

TEST_F(ModuleSearchTest, IsDllLoadedOnlyZeroesABufferThatIsTooShort)
{
    const std::string path = copyModule("A rather long name.dll");
    const aut::UniqueModule module = load(path);
    const auto length = static_cast<unsigned long>(path.size());
    for (const unsigned long size : {0UL, 1UL, length - 1, length}) // the path needs a place for its NUL as well
    {
        std::string buffer(600, 'x');
        EXPECT_EQ(length, IsDllLoaded(kSelf, "A rather long name.dll", buffer.data(), size));
        EXPECT_EQ(std::string(size, '\0') + std::string(600 - size, 'x'), buffer);
    }
    std::string buffer(600, 'x');
    EXPECT_EQ(length, IsDllLoaded(kSelf, "A rather long name.dll", buffer.data(), length + 1));
    EXPECT_EQ(path + '\0' + std::string(600 - length - 1, 'x'), buffer);
}

TEST_F(ModuleSearchTest, IsDllLoadedNeedsNoBuffer)
{
    const std::string path = copyModule("A rather long name.dll");
    const aut::UniqueModule module = load(path);
    EXPECT_EQ(path.size(), IsDllLoaded(kSelf, "A rather long name.dll", nullptr, 0));
    EXPECT_EQ(path.size(), IsDllLoaded(kSelf, "A rather long name.dll", nullptr, 1000));
}

TEST_F(ModuleSearchTest, IsDllLoadedLeavesTheBufferWhenThereIsNoSuchModule)
{
    const std::string longName(10000, 'n');
    for (const char* const name : {"no such module.dll", "", static_cast<const char*>(nullptr), longName.c_str()})
    {
        char buffer[10] = "untouched";
        EXPECT_EQ(0U, IsDllLoaded(kSelf, name, buffer, sizeof buffer));
        EXPECT_STREQ("untouched", buffer);
    }
    EXPECT_EQ(0U, IsDllLoaded(0, "kernel32.dll", nullptr, 0));
}

TEST_F(ModuleSearchTest, LeaksNoHandles)
{
    EXPECT_EQ(1, isLoaded("kernel32.dll"));
    const std::size_t before = openHandles();
    for (int round = 0; round < 50; ++round)
        ASSERT_EQ(1, isLoaded("kernel32.dll"));
    EXPECT_EQ(before, openHandles());
}
