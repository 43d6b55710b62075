#include "system/SharedMemory.h"

#include "tests/support/ClientRegistry.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace auttest;

// Private members, by the layout.
template <> struct aut::LayoutOf<struct SharedMemoryAccess>
{
    static std::string nameOf(const SharedMemory& memory) { return memory.m_name; }
    static HANDLE mappingOf(const SharedMemory& memory) { return memory.m_mapping; }
    static void* viewOf(const SharedMemory& memory) { return memory.m_view; }
};
using Access = aut::LayoutOf<struct SharedMemoryAccess>;

namespace
{
/// Two objects of one name, which no other test uses: a block that was opened lives until the process ends.
class SharedMemoryTest : public ::testing::Test
{
protected:
    SharedMemoryTest() : m_name("SharedMemoryTest" + std::to_string(++s_tests)), m_memory(name()), m_other(name()) {}
    /// No destructor closes a block.
    ~SharedMemoryTest() override
    {
        m_memory.Close();
        m_other.Close();
    }
    const char* name() const { return m_name.c_str(); }
    bool blockExists() const
    {
        return static_cast<bool>(
            aut::UniqueHandle{::OpenFileMappingA(FILE_MAP_READ, FALSE, ("Local\\" + m_name).c_str())});
    }

    ClientRegistry m_registry;
    const std::string m_name;
    SharedMemory m_memory;
    SharedMemory m_other;

private:
    static inline int s_tests = 0;
};
} // namespace

TEST_F(SharedMemoryTest, TheNameIsLocalWithoutTheService)
{
    EXPECT_EQ("Local\\" + m_name, Access::nameOf(m_memory));
    m_registry.write("Config", "ServiceInstalled", DWORD{0});
    EXPECT_EQ("Local\\a", Access::nameOf(SharedMemory("a")));
}

TEST_F(SharedMemoryTest, TheNameIsGlobalOnceTheServiceIsInstalled)
{
    m_registry.write("Config", "ServiceInstalled", 1);
    EXPECT_EQ("Global\\a", Access::nameOf(SharedMemory("a")));
    EXPECT_EQ(0U, Access::nameOf(SharedMemory()).find("Global\\sharedMemory_"));
}

TEST_F(SharedMemoryTest, TheNameIsBareBelowWindows2000)
{
    m_registry.write("Config", "ServiceInstalled", 1);
    for (const char* const version : {"win98", "nt40", "win10"})
    {
        const HelperWindowsVersion setting(version);
        const HelperRun run = runHelper("names");
        ASSERT_EQ(2U, run.lines.size()) << version;
        EXPECT_EQ("helper", run.lines[1]) << version;
    }
}

TEST_F(SharedMemoryTest, TheNameHasAPrefixFromWindows2000On)
{
    for (const char* const version : {"win2k", "win7"})
    {
        const HelperWindowsVersion setting(version);
        const HelperRun run = runHelper("names");
        ASSERT_EQ(2U, run.lines.size()) << version;
        EXPECT_EQ("Local\\helper", run.lines[1]) << version;
    }
}

TEST_F(SharedMemoryTest, GeneratedNamesCountFrom0AndThe65537thBlockIsTheFirstAgain)
{
    const HelperWindowsVersion setting("win98"); // bare names, so that 65,537 objects need not ask the registry
    const HelperRun run = runHelper("counter");
    EXPECT_EQ(0U, run.status);
    EXPECT_EQ((std::vector<std::string>{"sharedMemory_0", "sharedMemory_1 ''", "sharedMemory_65535 ''",
                                        "sharedMemory_0 'first'"}),
              run.lines);
}

TEST_F(SharedMemoryTest, GeneratedNamesHaveThePrefixToo)
{
    EXPECT_EQ(0U, Access::nameOf(SharedMemory()).find("Local\\sharedMemory_"));
}

TEST_F(SharedMemoryTest, NothingIsOpenAtFirst)
{
    EXPECT_EQ(nullptr, Access::mappingOf(m_memory));
    EXPECT_EQ(nullptr, Access::viewOf(m_memory));
    EXPECT_FALSE(blockExists());
}

TEST_F(SharedMemoryTest, CreateMapsAZeroedBlockForReadingAndWriting)
{
    auto* const block = static_cast<char*>(m_memory.Create(5000));
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(block, Access::viewOf(m_memory));
    EXPECT_EQ(std::string(5000, '\0'), std::string(block, 5000));
    std::memset(block, 'x', 5000);
    EXPECT_EQ('x', block[4999]);
}

TEST_F(SharedMemoryTest, OpenSeesWhatAnotherObjectWrote)
{
    auto* const block = static_cast<char*>(m_memory.Create(64));
    ASSERT_NE(nullptr, block);
    std::strcpy(block, "text");
    auto* const seen = static_cast<char*>(m_other.Open());
    ASSERT_NE(nullptr, seen);
    EXPECT_EQ(seen, Access::viewOf(m_other));
    EXPECT_STREQ("text", seen);
    seen[0] = 'T';
    EXPECT_STREQ("Text", block);
}

TEST_F(SharedMemoryTest, TwoProcessesShareABlock)
{
    auto* const block = static_cast<char*>(m_memory.Create(64));
    ASSERT_NE(nullptr, block);
    std::strcpy(block, "question");
    EXPECT_EQ(0U, runHelper("answer " + m_name).status);
    EXPECT_STREQ("answer", block);
}

TEST_F(SharedMemoryTest, ObjectsWithDifferentPrefixesAreDifferentBlocks)
{
    ASSERT_NE(nullptr, m_memory.Create(64));
    m_registry.write("Config", "ServiceInstalled", 1);
    SharedMemory global(name());
    EXPECT_EQ(nullptr, global.Open());
}

TEST_F(SharedMemoryTest, CreateOpensABlockThatExists)
{
    auto* const first = static_cast<char*>(m_memory.Create(64));
    ASSERT_NE(nullptr, first);
    std::strcpy(first, "text");
    auto* const second = static_cast<char*>(m_other.Create(64));
    ASSERT_NE(nullptr, second);
    EXPECT_STREQ("text", second);
}

TEST_F(SharedMemoryTest, TheBlockIsOpenToEveryoneAndInheritable)
{
    ASSERT_NE(nullptr, m_memory.Create(64));
    EXPECT_TRUE(hasNullAccessList(Access::mappingOf(m_memory)));
    EXPECT_TRUE(isInheritable(Access::mappingOf(m_memory)));
}

TEST_F(SharedMemoryTest, OpenFailsWithoutABlock)
{
    EXPECT_EQ(nullptr, m_memory.Open());
    EXPECT_EQ(nullptr, Access::viewOf(m_memory));
}

TEST_F(SharedMemoryTest, CreateFailsForNoBytes)
{
    EXPECT_EQ(nullptr, m_memory.Create(0));
    EXPECT_EQ(nullptr, Access::mappingOf(m_memory));
}

TEST_F(SharedMemoryTest, CloseUnmapsAndClosesWhatCreateMade)
{
    ASSERT_NE(nullptr, m_memory.Create(64));
    void* const view = Access::viewOf(m_memory);
    m_memory.Close();
    EXPECT_EQ(nullptr, Access::mappingOf(m_memory));
    EXPECT_EQ(nullptr, Access::viewOf(m_memory));
    EXPECT_FALSE(blockExists());
    MEMORY_BASIC_INFORMATION memory{};
    ::VirtualQuery(view, &memory, sizeof memory);
    EXPECT_EQ(static_cast<DWORD>(MEM_FREE), memory.State);
    m_memory.Close(); // closing again is fine
}

TEST_F(SharedMemoryTest, OpenDoesNotKeepItsMappingHandle)
{
    ASSERT_NE(nullptr, m_memory.Create(64));
    const std::size_t before = openHandles();
    ASSERT_NE(nullptr, m_other.Open());
    EXPECT_EQ(nullptr, Access::mappingOf(m_other));
    EXPECT_EQ(before + 1, openHandles());
    m_other.Close();
    EXPECT_EQ(before + 1, openHandles()) << "Close knows nothing of the handle";
    m_memory.Close();
    EXPECT_TRUE(blockExists()) << "so the block lives on";
}

TEST_F(SharedMemoryTest, TheDestructorReleasesNothing)
{
    const std::size_t before = openHandles();
    HANDLE mapping = nullptr;
    void* view = nullptr;
    {
        SharedMemory memory(name());
        view = memory.Create(64);
        mapping = Access::mappingOf(memory);
    }
    EXPECT_EQ(before + 1, openHandles());
    ::UnmapViewOfFile(view);
    aut::UniqueHandle{mapping}.reset();
    EXPECT_EQ(before, openHandles());
}

TEST_F(SharedMemoryTest, TheWholeNameIsCutTo64Characters)
{
    EXPECT_EQ("Local\\" + std::string(58, 'n'), Access::nameOf(SharedMemory(std::string(10000, 'n').c_str())));
    EXPECT_EQ("Local\\" + std::string(58, 'n'), Access::nameOf(SharedMemory(std::string(58, 'n').c_str())));
}

TEST_F(SharedMemoryTest, ANullNameCountsAsEmpty)
{
    SharedMemory memory(nullptr);
    EXPECT_EQ("Local\\", Access::nameOf(memory));
    EXPECT_EQ("Local\\", Access::nameOf(SharedMemory("")));
    EXPECT_EQ(nullptr, memory.Create(64));
}

TEST_F(SharedMemoryTest, ANameThatAnotherKindOfObjectHasFails)
{
    const aut::UniqueHandle event{::CreateEventA(nullptr, TRUE, FALSE, ("Local\\" + m_name).c_str())};
    ASSERT_TRUE(event);
    EXPECT_EQ(nullptr, m_memory.Create(64));
    EXPECT_EQ(nullptr, m_memory.Open());
}

TEST_F(SharedMemoryTest, CreateAndCloseLeakNothing)
{
    const std::size_t before = openHandles();
    for (int round = 0; round < 1000; ++round)
    {
        ASSERT_NE(nullptr, m_memory.Create(64));
        m_memory.Close();
    }
    EXPECT_EQ(before, openHandles());
}
