#include "catalogue/CComponent.h"
#include "platform/UniqueResource.h"
#include "tests/catalogue/Attachment.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

using auttest::Attachment;

namespace
{
class ComponentProbe : public CComponent
{
public:
    using CComponent::CComponent;
    using CComponent::IsFromMSIComponent;
    using CComponent::m_attachment;
    using CComponent::m_mapFile;
};

std::string besideThisProgram(const char* name)
{
    char path[MAX_PATH];
    const std::string program(path, ::GetModuleFileNameA(nullptr, path, sizeof path));
    return program.substr(0, program.rfind('\\') + 1) + name;
}

bool isLibraryLoaded() { return ::GetModuleHandleA("MapFile.dll") != nullptr; }

/// Keeps the library loaded beyond its unloading, so that it can be asked afterwards.
class HeldLibrary
{
public:
    explicit HeldLibrary(const std::string& path) : m_module(::LoadLibraryA(path.c_str())) { EXPECT_TRUE(m_module); }
    /// Whether it has that handle loaded.
    bool knows(unsigned long long handle) const
    {
        using Check = int(unsigned long long, int**, bool);
        auto* const check =
            reinterpret_cast<Check*>(reinterpret_cast<void*>(::GetProcAddress(m_module.get(), "MapFileCheck")));
        return check != nullptr && check(handle, nullptr, false) != -1;
    }

private:
    aut::UniqueModule m_module;
};

/// The map files of one component and, once installed, the library that reads them.
class CComponentMapFile : public ::testing::Test
{
protected:
    CComponentMapFile()
    {
        m_registry.write("", "Path", m_folder / "client");
        m_registry.write("", "CompPath", m_folder / "components");
        m_folder.makeFolder("client");
        m_folder.writeFile("components\\comp\\1.0B1_EN\\comp.map", "server=update.example\nitem=" + m_item + "\n");
        m_folder.writeFile("elsewhere\\comp\\1.0B1_EN\\comp.map", "server=elsewhere\n");
    }
    ~CComponentMapFile() override
    {
        m_component.ReleaseMapFile(); // its folder can only be deleted once the library is gone
        EXPECT_FALSE(isLibraryLoaded());
    }

    void install(const char* library = "mapfile\\MapFile.dll")
    {
        ASSERT_TRUE(::CopyFileA(besideThisProgram(library).c_str(), (m_folder / "client\\MapFile.dll").c_str(), FALSE));
    }
    /// The library without one of its entry points, whose name is spoilt in the copy.
    void installWithout(const std::string& entryPoint)
    {
        std::string bytes = auttest::readFile(besideThisProgram("mapfile\\MapFile.dll"));
        std::size_t found = 0;
        for (std::size_t at = bytes.find(entryPoint); at != std::string::npos; at = bytes.find(entryPoint, at))
        {
            bytes[at + entryPoint.size() - 1] = '_'; // the last letter: the names stay in order
            ++found;
        }
        ASSERT_NE(0u, found);
        m_folder.writeFile("client\\MapFile.dll", bytes);
    }
    std::string root(const char* name) const { return m_folder / name; }
    std::string parameter(CComponent& component, const char* name)
    {
        char out[260] = "old";
        EXPECT_EQ(out, component.GetMapFileParam(name, out));
        return out;
    }

    const auttest::TestFolder m_folder;
    const auttest::ClientRegistry m_registry;
    const std::string m_item = m_folder.writeFile("item.txt", "");
    ComponentProbe m_component{5, "comp", "1.0", "B1", "EN", 0, ""};
};

TEST_F(CComponentMapFile, IsLoadedFromTheComponentPathOfTheRegistry)
{
    install();
    EXPECT_TRUE(m_component.LoadMapFile(nullptr));
    EXPECT_NE(0u, m_component.m_mapFile);
    EXPECT_TRUE(isLibraryLoaded());
    EXPECT_EQ("update.example", parameter(m_component, "server"));
}

TEST_F(CComponentMapFile, IsLoadedFromAGivenRoot)
{
    install();
    std::string elsewhere = root("elsewhere");
    EXPECT_TRUE(m_component.LoadMapFile(elsewhere.data()));
    EXPECT_EQ("elsewhere", parameter(m_component, "server"));
}

TEST_F(CComponentMapFile, AHandleThatIsHeldIsKept)
{
    install();
    ASSERT_TRUE(m_component.LoadMapFile(nullptr));
    const auto handle = m_component.m_mapFile;
    std::string elsewhere = root("elsewhere");
    EXPECT_TRUE(m_component.LoadMapFile(elsewhere.data()));
    EXPECT_EQ(handle, m_component.m_mapFile);
    EXPECT_EQ("update.example", parameter(m_component, "server"));
}

TEST_F(CComponentMapFile, AVersionWithoutMapFileIsNotLoaded)
{
    install();
    ComponentProbe other(5, "comp", "1.0", "B2", "EN", 0, "");
    EXPECT_FALSE(other.LoadMapFile(nullptr));
    EXPECT_EQ(0u, other.m_mapFile);
    m_folder.writeFile("components\\comp\\1.0B2_EN\\comp.map", "no map file");
    EXPECT_FALSE(other.LoadMapFile(nullptr));
    EXPECT_EQ("", parameter(other, "server"));
    EXPECT_EQ(-1, other.CheckMapFile(nullptr, false)); // asked with the handle 0
}

TEST_F(CComponentMapFile, WithoutTheLibraryNothingIsLoaded)
{
    EXPECT_FALSE(m_component.LoadMapFile(nullptr));
    EXPECT_EQ(0, m_component.CheckMapFile(nullptr, false));
    char out[260] = "old";
    EXPECT_EQ(nullptr, m_component.GetMapFileParam("server", out));
    EXPECT_STREQ("", out);
    EXPECT_EQ(0u, m_component.m_mapFile);
}

TEST_F(CComponentMapFile, ALibraryWithoutTheEntryPointsIsAsGoodAsNone)
{
    install("versiondlls\\blank.dll");
    EXPECT_FALSE(m_component.LoadMapFile(nullptr));
    EXPECT_TRUE(isLibraryLoaded());
    EXPECT_EQ(0, m_component.CheckMapFile(nullptr, false));
    char out[260] = "old";
    EXPECT_EQ(nullptr, m_component.GetMapFileParam("server", out));
    EXPECT_STREQ("", out);
}

TEST_F(CComponentMapFile, WithoutTheLibraryAHeldHandleStillCountsAsLoaded)
{
    m_component.m_mapFile = 1;
    EXPECT_TRUE(m_component.LoadMapFile(nullptr));
    m_component.m_mapFile = 0;
}

TEST_F(CComponentMapFile, GetMapFileParamDoesNotLoadTheMapFile)
{
    install();
    EXPECT_EQ("", parameter(m_component, "server"));
    EXPECT_EQ(0u, m_component.m_mapFile);
    EXPECT_TRUE(isLibraryLoaded()); // the library, though, is there from now on
    ASSERT_TRUE(m_component.LoadMapFile(nullptr));
    EXPECT_EQ("update.example", parameter(m_component, "server"));
    EXPECT_EQ("", parameter(m_component, "no such parameter"));
    EXPECT_EQ(nullptr, m_component.GetMapFileParam("server", nullptr));
}

TEST_F(CComponentMapFile, CheckMapFileLoadsTheMapFileFirst)
{
    install();
    EXPECT_EQ(0, m_component.CheckMapFile(nullptr, false));
    EXPECT_NE(0u, m_component.m_mapFile);
}

TEST_F(CComponentMapFile, CheckMapFilePassesItsArgumentsThrough)
{
    install();
    int* states = nullptr;
    EXPECT_EQ(1, m_component.CheckMapFile(&states, true));
    ASSERT_NE(nullptr, states);
    EXPECT_EQ(1, states[0]);
    ASSERT_TRUE(::DeleteFileA(m_item.c_str()));
    EXPECT_EQ(0, m_component.CheckMapFile(&states, true));
    EXPECT_EQ(0, states[0]);
    EXPECT_EQ(1, m_component.CheckMapFile(nullptr, false));
}

TEST_F(CComponentMapFile, ReleaseUnloadsTheLibraryForEveryComponent)
{
    install();
    ComponentProbe other(5, "comp", "1.0", "B1", "EN", 0, "");
    ASSERT_TRUE(m_component.LoadMapFile(nullptr));
    ASSERT_TRUE(other.LoadMapFile(nullptr));
    const auto handle = other.m_mapFile;
    m_component.ReleaseMapFile();
    EXPECT_EQ(0u, m_component.m_mapFile);
    EXPECT_FALSE(isLibraryLoaded());
    EXPECT_EQ(handle, other.m_mapFile);
    // The library is loaded afresh; what it was asked before is not known to it.
    EXPECT_EQ("", parameter(other, "server"));
    EXPECT_TRUE(isLibraryLoaded());
    EXPECT_EQ(-1, other.CheckMapFile(nullptr, false));
    EXPECT_TRUE(m_component.LoadMapFile(nullptr));
    EXPECT_EQ("update.example", parameter(m_component, "server"));
}

TEST_F(CComponentMapFile, ReleaseWithoutAHandleUnloadsTheLibraryToo)
{
    install();
    ComponentProbe other(5, "comp", "1.0", "B1", "EN", 0, "");
    ASSERT_TRUE(m_component.LoadMapFile(nullptr));
    other.ReleaseMapFile();
    EXPECT_FALSE(isLibraryLoaded());
    EXPECT_NE(0u, m_component.m_mapFile);
    other.ReleaseMapFile();
    EXPECT_FALSE(isLibraryLoaded());
}

TEST_F(CComponentMapFile, TheDestructorReleasesWhatIsHeldAndOnlyThen)
{
    install();
    {
        ComponentProbe loaded(5, "comp", "1.0", "B1", "EN", 0, "");
        ASSERT_TRUE(loaded.LoadMapFile(nullptr));
        {
            const ComponentProbe neverLoaded(loaded);
            EXPECT_EQ(0u, neverLoaded.m_mapFile);
        }
        EXPECT_TRUE(isLibraryLoaded());
    }
    EXPECT_FALSE(isLibraryLoaded());
}

TEST_F(CComponentMapFile, TheAttachedObjectIsDeletedWithTheHandle)
{
    install();
    int deleted = 0;
    ASSERT_TRUE(m_component.LoadMapFile(nullptr));
    m_component.m_attachment = new Attachment(deleted);
    m_component.ReleaseMapFile();
    EXPECT_EQ(1, deleted);
    EXPECT_EQ(nullptr, m_component.m_attachment);
    {
        ComponentProbe loaded(5, "comp", "1.0", "B1", "EN", 0, "");
        ASSERT_TRUE(loaded.LoadMapFile(nullptr));
        loaded.m_attachment = new Attachment(deleted);
    }
    EXPECT_EQ(2, deleted);
}

TEST_F(CComponentMapFile, ReleaseGivesTheHandleBackToTheLibrary)
{
    install();
    HeldLibrary library(root("client\\MapFile.dll"));
    ASSERT_TRUE(m_component.LoadMapFile(nullptr));
    const auto handle = m_component.m_mapFile;
    EXPECT_TRUE(library.knows(handle));
    m_component.ReleaseMapFile();
    EXPECT_FALSE(library.knows(handle));
}

TEST_F(CComponentMapFile, TheDestructorGivesTheHandleBackToTheLibrary)
{
    install();
    HeldLibrary library(root("client\\MapFile.dll"));
    unsigned long long handle = 0;
    {
        ComponentProbe loaded(5, "comp", "1.0", "B1", "EN", 0, "");
        ASSERT_TRUE(loaded.LoadMapFile(nullptr));
        handle = loaded.m_mapFile;
        EXPECT_TRUE(library.knows(handle));
    }
    EXPECT_FALSE(library.knows(handle));
}

TEST_F(CComponentMapFile, ALibraryThatOnlyCannotLoadIsAskedForTheRest)
{
    installWithout("MapFileLoad");
    EXPECT_FALSE(m_component.LoadMapFile(nullptr));
    EXPECT_EQ(0u, m_component.m_mapFile);
    EXPECT_EQ("", parameter(m_component, "server"));
    EXPECT_EQ(-1, m_component.CheckMapFile(nullptr, false)); // asked with the handle 0
}

TEST_F(CComponentMapFile, ALibraryThatOnlyCannotGiveParametersIsAskedForTheRest)
{
    installWithout("MapFileGetParam");
    EXPECT_TRUE(m_component.LoadMapFile(nullptr));
    EXPECT_EQ(1, m_component.CheckMapFile(nullptr, true));
    char out[260] = "old";
    EXPECT_EQ(nullptr, m_component.GetMapFileParam("server", out));
    EXPECT_STREQ("", out);
}

TEST_F(CComponentMapFile, ALibraryThatOnlyCannotCheckIsAskedForTheRest)
{
    installWithout("MapFileCheck");
    EXPECT_EQ(0, m_component.CheckMapFile(nullptr, true)); // of the one item that is there
    EXPECT_NE(0u, m_component.m_mapFile) << "the map file is loaded all the same";
    EXPECT_EQ("update.example", parameter(m_component, "server"));
}

TEST_F(CComponentMapFile, ALibraryThatOnlyLacksWhatNobodyCallsIsAsGoodAsAny)
{
    installWithout("MapFileItemGetDestinationPath");
    EXPECT_TRUE(m_component.LoadMapFile(nullptr));
    EXPECT_EQ(1, m_component.CheckMapFile(nullptr, true));
    EXPECT_EQ("update.example", parameter(m_component, "server"));
}

TEST_F(CComponentMapFile, AHandleThatNobodyReleasesStaysUntilTheEnd)
{
    installWithout("MapFileRelease");
    int deleted = 0;
    {
        ComponentProbe loaded(5, "comp", "1.0", "B1", "EN", 0, "");
        ASSERT_TRUE(loaded.LoadMapFile(nullptr));
        loaded.m_attachment = new Attachment(deleted);
        loaded.ReleaseMapFile();
        EXPECT_NE(0u, loaded.m_mapFile);
        EXPECT_FALSE(isLibraryLoaded());
        EXPECT_EQ(0, deleted);
    }
    EXPECT_EQ(1, deleted);
}

TEST_F(CComponentMapFile, AFolderThatDoesNotFitIsNotLoaded)
{
    install();
    std::string longRoot = root("elsewhere") + "\\" + std::string(250, 'x');
    EXPECT_FALSE(m_component.LoadMapFile(longRoot.data()));
    ComponentProbe longName(5, std::string(259, 'n').c_str(), "1.0", "B1", "EN", 0, "");
    EXPECT_FALSE(longName.LoadMapFile(nullptr));
    char out[260];
    EXPECT_FALSE(longName.IsFromMSIComponent(out));
    EXPECT_EQ(259u, std::string(out).size());
}

TEST_F(CComponentMapFile, NamesThatLeadElsewhereAreRefused)
{
    install();
    m_folder.writeFile("comp\\1.0B1_EN\\comp.map", "server=outside\n");
    m_folder.writeFile("components\\1.0B1_EN\\FromMSI", "");
    for (const char* name :
         {"..\\comp", "../comp", "..", ". .", "C:", "a\\..\\..\\comp", "comp.", "comp ", "NUL", "com1.x"})
    {
        auttest::LogFile log;
        ComponentProbe leading(5, name, "1.0", "B1", "EN", 0, "");
        EXPECT_FALSE(leading.LoadMapFile(nullptr)) << name;
        const std::vector<auttest::LogEvent> refused = {
            {"Error", std::string("CComponent - component ") + name + " 1.0B1_EN refused: no folder of its own"}};
        EXPECT_EQ(refused, log.events());
        log.mark();
        char out[260] = "old";
        EXPECT_FALSE(leading.IsFromMSIComponent(out)) << name;
        EXPECT_STREQ("", out);
        EXPECT_EQ(refused, log.events());
    }
    ComponentProbe version(5, "comp", "..\\..\\comp\\1.0", "B1", "EN", 0, "");
    EXPECT_FALSE(version.LoadMapFile(nullptr));
    ComponentProbe language(5, "comp", "1.0", "B1", "EN ", 0, ""); // Windows would drop the blank
    EXPECT_FALSE(language.LoadMapFile(nullptr));
}

TEST_F(CComponentMapFile, IsFromMSIComponentTellsWhetherTheMarkIsThere)
{
    char out[260] = "old";
    EXPECT_FALSE(m_component.IsFromMSIComponent(out));
    EXPECT_EQ(root("components\\comp\\1.0B1_EN"), out);
    m_folder.writeFile("components\\comp\\1.0B1_EN\\FromMSI", "");
    EXPECT_TRUE(m_component.IsFromMSIComponent(out));
    EXPECT_EQ(root("components\\comp\\1.0B1_EN"), out);
    EXPECT_FALSE(m_component.IsFromMSIComponent(nullptr));
}

TEST_F(CComponentMapFile, ManyRoundsLeaveNoHandle)
{
    install();
    const auto round = [this]
    {
        m_component.LoadMapFile(nullptr);
        m_component.CheckMapFile(nullptr, true);
        parameter(m_component, "server");
        m_component.ReleaseMapFile();
    };
    round();
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 200; ++i)
        round();
    EXPECT_EQ(before, auttest::openHandles());
}
} // namespace
