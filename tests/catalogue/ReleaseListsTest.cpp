#include "catalogue/ReleaseLists.h"

#include "tests/catalogue/Attachment.h"
#include "tests/catalogue/ReleaseFixture.h"
#include "tests/support/FullDisk.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

using auttest::componentsOf;
using Events = std::vector<auttest::LogEvent>;
using Names = std::vector<std::string>;

namespace
{
CRelease release(const char* name, const char* certificateId, const char* version = "2.1")
{
    CRelease made(7, "", "", name, version, "B05", "EN", 0, 0, 1);
    made.SetCertificateID(certificateId);
    return made;
}
} // namespace

class SaveConfigFileTest : public ::testing::Test
{
protected:
    SaveConfigFileTest() { registry.write("", "DataPath", data.path()); }

    bool save(const char* name, const char* certificateId, const char* version = "2.1")
    {
        CRelease saved = release(name, certificateId, version);
        return SaveConfigFile(&saved);
    }
    /// Nothing is in the registry but what the test wrote.
    void expectNothingNoted() { EXPECT_FALSE(registry.keyExists("Data")); }

    auttest::ClientRegistry registry;
    auttest::TestFolder data;
    auttest::LogFile log;
};

TEST_F(SaveConfigFileTest, ALocalReleaseGetsALocalFileAndAValueInTheLocalKey)
{
    EXPECT_TRUE(save("Editor", ""));
    EXPECT_TRUE(data.exists("local_Editor.lst"));
    EXPECT_FALSE(data.exists("Editor.lst"));
    EXPECT_EQ(Names{"Editor"}, registry.valueNames("Data\\Local"));
    EXPECT_EQ("2.1B05_EN", registry.readText("Data\\Local", "Editor"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf"));
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(SaveConfigFileTest, AReleaseOfACertificateGetsAFileAndAKey)
{
    EXPECT_TRUE(save("Editor", "CID-1"));
    EXPECT_TRUE(data.exists("Editor.lst"));
    EXPECT_FALSE(data.exists("local_Editor.lst"));
    EXPECT_EQ(Names{"Editor"}, registry.subkeys("Data\\WebConf"));
    EXPECT_EQ(2u, registry.valueNames("Data\\WebConf\\Editor").size());
    EXPECT_EQ("2.1B05_EN", registry.readText("Data\\WebConf\\Editor", ""));
    EXPECT_EQ("CID-1", registry.readText("Data\\WebConf\\Editor", "CID-1"));
    EXPECT_FALSE(registry.keyExists("Data\\Local"));
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(SaveConfigFileTest, TheFileHoldsExactlyOneRecordAsText)
{
    CRelease saved(7, "Velmora Editor", "VELED", "Editor", "2.1", "B05", "EN", 2, 5000000000, 1);
    saved.SetCertificateID("CID-1");
    saved.SetNoDownload(1);
    saved.GetComponentList().AddTail(new CComponent(11, "Core", "1.0", "b1", "EN", 0, "http://host/a b"));
    EXPECT_TRUE(SaveConfigFile(&saved));
    EXPECT_EQ("2\r\nB05\r\n7\r\nEN\r\nEditor\r\n2.1\r\n1\r\n"
              "5000000000\r\n1\r\nCID-1\r\n1\r\n0\r\n"
              "0\r\nb1\r\n11\r\nEN\r\nCore\r\n1.0\r\n1\r\nhttp://host/a%20b\r\n0\r\n"
              "Velmora%20Editor\r\nVELED\r\n",
              data.readFile("Editor.lst"));
}

TEST_F(SaveConfigFileTest, TheFileReadsBackAsTheRelease)
{
    CRelease saved(7, "Velmora Editor", "", "My Editor", "2.1", "B05", "EN", 2, 5000000000, 1);
    saved.GetComponentList().AddTail(new CComponent(11, "Core", "1.0", "b1", "EN", 0, ""));
    saved.GetComponentList().AddTail(new CComponent(12, "Help", "1.1", "b2", "EN", 1, "http://host/help"));
    ASSERT_TRUE(SaveConfigFile(&saved));

    CRelease loaded;
    std::ifstream file(data / "local_My Editor.lst");
    ASSERT_EQ(1, loaded.Serialize(file));
    EXPECT_STREQ("My Editor", loaded.GetName());
    EXPECT_STREQ("", loaded.GetCertificateID());
    EXPECT_STREQ("2.1B05_EN", loaded.GetFullVersion());
    EXPECT_EQ(2, loaded.GetAction());
    EXPECT_STREQ("Velmora Editor", loaded.GetMarketingName());
    ASSERT_EQ(2u, componentsOf(loaded).size());
    EXPECT_STREQ("http://host/help", componentsOf(loaded)[1]->GetSourceLocation());
}

TEST_F(SaveConfigFileTest, AFileCutOffDoesNotReadBack)
{
    CRelease saved = release("Editor", "CID-1");
    saved.GetComponentList().AddTail(new CComponent(11, "Core", "1.0", "b1", "EN", 0, ""));
    ASSERT_TRUE(SaveConfigFile(&saved));
    const std::string whole = data.readFile("Editor.lst");
    for (const std::size_t kept : {std::size_t{0}, std::size_t{10}, whole.find("Core")})
    {
        data.writeFile("Editor.lst", whole.substr(0, kept));
        CRelease loaded;
        std::ifstream file(data / "Editor.lst");
        EXPECT_EQ(0, loaded.Serialize(file)) << kept;
    }
}

TEST_F(SaveConfigFileTest, ALongerOlderFileIsReplaced)
{
    data.writeFile("Editor.lst", std::string(10000, 'x'));
    EXPECT_TRUE(save("Editor", "CID-1"));
    EXPECT_EQ("0\r\nB05\r\n7\r\nEN\r\nEditor\r\n2.1\r\n1\r\n0\r\n0\r\nCID-1\r\n0\r\n0\r\n~\r\n~\r\n",
              data.readFile("Editor.lst"));
}

TEST_F(SaveConfigFileTest, EachCertificateGetsItsValueAndTheLatestVersionStays)
{
    EXPECT_TRUE(save("Editor", "CID-1", "2.1"));
    EXPECT_TRUE(save("Editor", "QUJD+/12345=", "2.2"));
    EXPECT_EQ(3u, registry.valueNames("Data\\WebConf\\Editor").size());
    EXPECT_EQ("2.2B05_EN", registry.readText("Data\\WebConf\\Editor", ""));
    EXPECT_EQ("CID-1", registry.readText("Data\\WebConf\\Editor", "CID-1"));
    EXPECT_EQ("QUJD+/12345=", registry.readText("Data\\WebConf\\Editor", "QUJD+/12345="));
}

TEST_F(SaveConfigFileTest, TheFileIsClosedAndNoHandleStays)
{
    EXPECT_TRUE(save("Editor", "CID-1")); // what is opened once and kept, is open now
    EXPECT_TRUE(::MoveFileA((data / "Editor.lst").c_str(), (data / "moved").c_str()));
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(save("Editor", i % 2 == 0 ? "" : "CID-1"));
    EXPECT_EQ(before, auttest::openHandles());
}

TEST_F(SaveConfigFileTest, NullIsNotSaved) { EXPECT_FALSE(SaveConfigFile(nullptr)); }

// What cannot be written.

TEST_F(SaveConfigFileTest, WithoutTheDataFolderNothingIsNoted)
{
    registry.write("", "DataPath", data / "missing");
    EXPECT_FALSE(save("Editor", "CID-1"));
    EXPECT_FALSE(save("Editor", ""));
    const auttest::LogEvent event{"Error", "SaveConfigFile: release Editor not saved: its file cannot be opened"};
    EXPECT_EQ((Events{event, event}), log.events());
    expectNothingNoted();
    EXPECT_FALSE(data.exists("missing"));
}

TEST_F(SaveConfigFileTest, WithoutADataPathNothingIsWritten)
{
    registry.removeValue("", "DataPath");
    EXPECT_FALSE(save("Editor", "CID-1"));
    EXPECT_EQ((Events{{"Error", "SaveConfigFile: release Editor has no usable file name"}}), log.events());
    EXPECT_FALSE(auttest::fileExists("\\Editor.lst"));
    expectNothingNoted();
}

TEST_F(SaveConfigFileTest, AReadOnlyFileStaysAsItIs)
{
    const std::string path = data.writeFile("Editor.lst", "old");
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(save("Editor", "CID-1"));
    EXPECT_EQ("old", data.readFile("Editor.lst"));
    EXPECT_EQ((Events{{"Error", "SaveConfigFile: release Editor not saved: its file cannot be opened"}}), log.events());
    expectNothingNoted();
}

TEST_F(SaveConfigFileTest, AFolderOfTheNameIsNoFile)
{
    data.makeFolder("Editor.lst");
    EXPECT_FALSE(save("Editor", "CID-1"));
    expectNothingNoted();
}

TEST_F(SaveConfigFileTest, OnAFullDiskNothingIsNoted)
{
    const auttest::FullDiskFile full(data.path(), "Editor.lst");
    if (!full.isThere())
        GTEST_SKIP() << "no full disk can be made here";
    EXPECT_FALSE(save("Editor", "CID-1"));
    EXPECT_EQ((Events{{"Error", "SaveConfigFile: release Editor not saved: its file cannot be written"}}),
              log.events());
    expectNothingNoted();
}

TEST_F(SaveConfigFileTest, ALargeReleaseOnAFullDiskFailsToo)
{
    const auttest::FullDiskFile full(data.path(), "local_Editor.lst");
    if (!full.isThere())
        GTEST_SKIP() << "no full disk can be made here";
    CRelease saved = release("Editor", "");
    for (int i = 0; i < 1000; ++i)
        saved.GetComponentList().AddTail(new CComponent(i, "Component", "1", "2", "EN", 0, "http://host/component"));
    EXPECT_FALSE(SaveConfigFile(&saved));
    expectNothingNoted();
}

// Names.

class ReleaseName : public SaveConfigFileTest, public ::testing::WithParamInterface<const char*>
{
};
TEST_P(ReleaseName, ThatLeadsOutOfTheDataFolderIsRefused)
{
    const std::string name = GetParam();
    registry.write("", "DataPath", data.makeFolder("data"));
    EXPECT_FALSE(save(name.c_str(), "CID-1"));
    EXPECT_FALSE(save(name.c_str(), ""));
    const auttest::LogEvent event{"Error", "SaveConfigFile: release " + name + " has no usable file name"};
    EXPECT_EQ((Events{event, event}), log.events());
    expectNothingNoted();

    WIN32_FIND_DATAA found{};
    const HANDLE search = ::FindFirstFileA((data / "*.lst").c_str(), &found);
    EXPECT_EQ(INVALID_HANDLE_VALUE, search);
    if (search != INVALID_HANDLE_VALUE)
        ::FindClose(search);
}
INSTANTIATE_TEST_SUITE_P(Names, ReleaseName,
                         ::testing::Values("..\\Editor", "../Editor", "..\\..\\..\\Editor", "a\\b", "a/b", "C:Editor",
                                           "C:\\Editor", "Editor:stream", "..", ".", ""));

// Windows takes these for devices in every folder and with every extension.
TEST_F(SaveConfigFileTest, ADevicesNameIsNoFile)
{
    for (const std::string name : {"NUL", "nul", "NUL.v2", "COM1", "prn"})
    {
        log.mark();
        EXPECT_FALSE(save(name.c_str(), "CID-1"));
        EXPECT_EQ((Events{{"Error", "SaveConfigFile: release " + name + " has no usable file name"}}), log.events());
        expectNothingNoted();
        EXPECT_TRUE(save((name + "1x").c_str(), "")) << name;
        EXPECT_TRUE(data.exists("local_" + name + "1x.lst"));
        EXPECT_TRUE(save(name.c_str(), "")) << "a local release's file has a prefix";
        EXPECT_TRUE(data.exists("local_" + name + ".lst"));
        registry.removeKey("Data");
    }
}

TEST_F(SaveConfigFileTest, ANameWithBlanksAndPointsIsFine)
{
    EXPECT_TRUE(save("Automatic Update 7.x", "CID-1"));
    EXPECT_TRUE(data.exists("Automatic Update 7.x.lst"));
    EXPECT_TRUE(registry.keyExists("Data\\WebConf\\Automatic Update 7.x"));
}

TEST_F(SaveConfigFileTest, APathThatDoesNotFitIsRefused)
{
    const std::string longest(259 - (data / ".lst").size(), 'n');
    EXPECT_TRUE(save(longest.c_str(), "CID-1"));
    EXPECT_TRUE(data.exists(longest + ".lst"));
    log.mark();
    EXPECT_FALSE(save((longest + "n").c_str(), "CID-1"));
    EXPECT_FALSE(data.exists(longest + "n.lst"));
    EXPECT_EQ((Events{{"Error", "SaveConfigFile: release " + longest + "n has no usable file name"}}), log.events());
    EXPECT_FALSE(save(std::string(10000, 'n').c_str(), "CID-1"));
}

TEST_F(SaveConfigFileTest, AKeyThatDoesNotFitIsLoggedAndTheFileStays)
{
    // Leaves room for the file in a short folder, not for the key.
    const std::string folder = "C:\\lists";
    ASSERT_TRUE(::CreateDirectoryA(folder.c_str(), nullptr));
    registry.write("", "DataPath", folder);
    const std::string name(230, 'n');
    EXPECT_TRUE(save(name.c_str(), "CID-1"));
    EXPECT_TRUE(auttest::fileExists(folder + "\\" + name + ".lst"));
    EXPECT_EQ((Events{{"Error", "SaveConfigFile: release " + name + " saved, but not noted in the registry"}}),
              log.events());
    auttest::removeAll(folder);
}

// Lists.

class ReleaseList : public ::testing::Test
{
protected:
    CRelease* add(const char* name, const char* certificateId)
    {
        releases.push_back(std::make_unique<CRelease>(release(name, certificateId)));
        list.AddTail(releases.back().get());
        return releases.back().get();
    }
    CRelease* found(const char* certificateId)
    {
        POSITION at = FindCIDinReleaseList(&list, certificateId);
        return at != nullptr ? list.GetNext(at) : nullptr;
    }

    std::vector<std::unique_ptr<CRelease>> releases;
    RT_List<CRelease*, CRelease*> list;
};

TEST_F(ReleaseList, TheFirstReleaseOfTheCertificateIsFound)
{
    add("a", "CID-1");
    CRelease* const second = add("b", "CID-2");
    add("c", "CID-2");
    CRelease* const local = add("d", "");
    EXPECT_EQ(second, found("CID-2"));
    EXPECT_EQ(local, found(""));
    EXPECT_EQ(nullptr, found("CID-3"));
    EXPECT_EQ(nullptr, found("CID"));
    EXPECT_EQ(4, list.GetCount());
    EXPECT_EQ(list.GetHeadPosition(), FindCIDinReleaseList(&list, "CID-1"));
}

TEST_F(ReleaseList, CertificatesAreComparedWithoutRegardToCase)
{
    CRelease* const only = add("a", "Cid-1");
    EXPECT_EQ(only, found("cID-1"));
}

TEST_F(ReleaseList, NothingIsFoundInAnEmptyListOrNone)
{
    EXPECT_EQ(nullptr, FindCIDinReleaseList(&list, "CID-1"));
    EXPECT_EQ(nullptr, FindCIDinReleaseList(nullptr, "CID-1"));
}

TEST_F(ReleaseList, NullPointersInTheListAreSteppedOver)
{
    list.AddTail(nullptr);
    CRelease* const only = add("a", "");
    list.AddTail(nullptr);
    EXPECT_EQ(only, found(""));
    EXPECT_EQ(nullptr, found("CID-1"));
}

namespace
{
/// Counts when it is deleted, through the destructor of its base.
class CountedRelease : public CRelease
{
public:
    explicit CountedRelease(int& deleted) : m_deleted(deleted) {}
    CountedRelease(const CountedRelease&) = delete;
    CountedRelease& operator=(const CountedRelease&) = delete;
    ~CountedRelease() override { ++m_deleted; }

private:
    int& m_deleted;
};
} // namespace

TEST(FreeReleaseListTest, DeletesTheReleasesAndTheList)
{
    int deleted = 0;
    auto* list = new RT_List<CRelease*, CRelease*>();
    for (int i = 0; i < 3; ++i)
        list->AddTail(new CountedRelease(deleted));
    list->AddTail(nullptr);
    EXPECT_EQ(1, FreeReleaseList(list));
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(3, deleted);
    EXPECT_EQ(1, FreeReleaseList(list)) << "a null pointer is fine";
    EXPECT_EQ(nullptr, list);
}

TEST(FreeReleaseListTest, AnEmptyListIsDeletedToo)
{
    auto* list = new RT_List<CRelease*, CRelease*>();
    EXPECT_EQ(1, FreeReleaseList(list));
    EXPECT_EQ(nullptr, list);
}
