#include "catalogue/ComponentList.h"

#include "catalogue/CRelease.h"
#include "tests/catalogue/ComponentListFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <new>

using auttest::entryKey;
using auttest::writeShared;

namespace
{
/// The substitutes for the components of P1 whose common version, 3.3.302B1_SV, is newer.
class Substitute : public auttest::ComponentListFixture
{
protected:
    Substitute()
    {
        for (const char* const name : {"A", "B", "C"})
            writeShared(m_registry, name, {"3.3.302B1", "SV"}, {"P1"});
    }
    CComponent* addOlder(const char* name) { return add(name, "3.3.301", "B2", 0, true); }
};

TEST_F(Substitute, IsTheCommonVersionOfTheComponent)
{
    CComponent* const older = add("a", "3.3.301", "B2", 2, true);
    older->SetUpdateStatus(7);
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    ASSERT_EQ(1, m_list.GetCount());
    const CComponent& substitute = *elements()[0];
    EXPECT_EQ(0, substitute.GetId());
    EXPECT_STREQ("a", substitute.GetName());
    EXPECT_STREQ("3.3.302", substitute.GetVersion());
    EXPECT_STREQ("B1", substitute.GetBuild());
    EXPECT_STREQ("SV", substitute.GetLanguage());
    EXPECT_STREQ("3.3.302B1_SV", substitute.GetFullVersion());
    EXPECT_EQ(2, substitute.GetAction());
    EXPECT_STREQ("a/3.3.302B1_SV", substitute.GetSourceLocation());
    EXPECT_EQ(1, substitute.IsShared());
    EXPECT_EQ(1, substitute.IsEnabled());
    EXPECT_EQ(0, substitute.GetUpdateStatus());
}

TEST_F(Substitute, OfARemovalRemoves)
{
    add("A", "9.9.9", "", 1, true);
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(Texts{"A 3.3.302B1_SV"}, texts());
    EXPECT_EQ(1, elements()[0]->GetAction());
}

TEST_F(Substitute, OfAVersionWithoutBuildAndLanguageHasNone)
{
    writeShared(m_registry, "A", {"3.3.302", ""}, {"P1"});
    addOlder("A");
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    const CComponent& substitute = *elements()[0];
    EXPECT_STREQ("3.3.302", substitute.GetVersion());
    EXPECT_STREQ("", substitute.GetBuild());
    EXPECT_STREQ("", substitute.GetLanguage());
    EXPECT_STREQ("A/3.3.302_", substitute.GetSourceLocation());
}

TEST_F(Substitute, StandsAtTheTailAndOwnsTheComponentItReplaces)
{
    addOlder("A");
    CComponent* const newer = add("B", "3.3.303", "", 0, true);
    addOlder("C");
    EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((Texts{"B 3.3.303_EN", "A 3.3.302B1_SV", "C 3.3.302B1_SV"}), texts());
    EXPECT_EQ(newer, elements()[0]);
    EXPECT_EQ(0, m_deleted);
    delete m_list.RemoveHead();
    EXPECT_EQ(1, m_deleted);
    delete m_list.RemoveHead();
    EXPECT_EQ(2, m_deleted);
    delete m_list.RemoveHead();
    EXPECT_EQ(3, m_deleted);
}

TEST_F(Substitute, KeepsTheComponentAlive)
{
    CComponent* const older = addOlder("A");
    older->SetUpdateStatus(7);
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    ASSERT_NE(older, elements()[0]);
    EXPECT_STREQ("3.3.301B2_EN", older->GetFullVersion());
    EXPECT_EQ(7, older->GetUpdateStatus());
    EXPECT_STREQ("there", older->GetSourceLocation());
}

TEST_F(Substitute, IsDroppedWhenAnEqualOneIsInTheList)
{
    CComponent* const older = addOlder("A");
    auto* const equal = new CComponent(8, "a", "3.3.302", "b1", "sv", 3, "");
    m_list.AddTail(equal);
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((std::vector<CComponent*>{older, equal}), elements());
    EXPECT_EQ(0, m_deleted);
    EXPECT_STREQ("A", older->GetName());
    clear();
    EXPECT_EQ(1, m_deleted);
}

TEST_F(Substitute, IsDroppedWhenTheComponentIsTheCommonVersionItself)
{
    auto* const same = new auttest::ComponentProbe(8, "A", "3.3.302", "B1", "SV", 1, "there");
    same->m_attachment = new auttest::Attachment(m_deleted);
    same->SetShared(1);
    m_list.AddTail(same);
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(std::vector<CComponent*>{same}, elements());
    EXPECT_EQ(0, m_deleted);
}

TEST_F(Substitute, OneOfTwoEqualOnesIsEnough)
{
    addOlder("A");
    CComponent* const second = add("A", "3.3.300", "", 0, true);
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ((Texts{"A 3.3.300_EN", "A 3.3.302B1_SV"}), texts());
    EXPECT_EQ(second, elements()[0]);
    EXPECT_EQ(0, m_deleted);
    clear();
    EXPECT_EQ(2, m_deleted);
}

TEST_F(Substitute, StaysUntilTheCommonVersionIsNewerAgain)
{
    addOlder("A");
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    CComponent* const first = elements()[0];
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(std::vector<CComponent*>{first}, elements());

    m_registry.write(entryKey("A", "Shared"), "ComponentVersion", "3.3.400P2");
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    EXPECT_EQ(Texts{"A 3.3.400P2_SV"}, texts());
    EXPECT_EQ(0, m_deleted);
    clear();
    EXPECT_EQ(1, m_deleted); // by the one that was replaced, by the one that replaced it
}

TEST_F(Substitute, WhoseLocationDoesNotFitIsNotMade)
{
    const auto update = [this](std::size_t versionLength)
    {
        // Name, "/", version, "_" and "SV".
        const std::string version = "9.9.9B" + std::string(versionLength - 6, '1');
        m_registry.write(entryKey("A", "Shared"), "ComponentVersion", version);
        CComponent* const older = addOlder("A");
        EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
        const bool replaced = elements()[0] != older;
        EXPECT_EQ(replaced ? "A/" + version + "_SV" : "there", elements()[0]->GetSourceLocation());
        clear();
        return replaced;
    };
    auttest::LogFile log;
    EXPECT_TRUE(update(254));
    EXPECT_EQ(std::vector<auttest::LogEvent>{}, log.events());
    EXPECT_FALSE(update(255));
    EXPECT_EQ(
        (std::vector<auttest::LogEvent>{
            {"Error", "UpdateComponentList - component A: the source location of its shared version is too long"}}),
        log.events());
    EXPECT_EQ(2, m_deleted);
}

TEST_F(Substitute, DiesWithItsReleaseAndItsComponentWithIt)
{
    {
        CRelease release(1, "", "", "P1", "1.0", "", "EN", 0, 0, 1);
        release.GetComponentList().AddTail(addOlder("A"));
        m_list.RemoveHead();
        EXPECT_EQ(1, release.IsUpdateNecessary());
        EXPECT_EQ(1, release.GetComponentList().GetCount());

        const CRelease copy(release); // of the substitute only
        POSITION head = copy.GetComponentList().GetHeadPosition();
        EXPECT_STREQ("3.3.302B1_SV", copy.GetComponentList().GetNext(head)->GetFullVersion());
        EXPECT_EQ(0, m_deleted);
    }
    EXPECT_EQ(1, m_deleted);
}

TEST_F(Substitute, WithoutAMapFileKeepsTheComponentWhenItReleasesIt)
{
    addOlder("A");
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    elements()[0]->ReleaseMapFile();
    EXPECT_EQ(0, m_deleted);
    clear();
    EXPECT_EQ(1, m_deleted);
}

TEST_F(Substitute, LetsTheComponentGoWithItsMapFile)
{
    char program[MAX_PATH];
    const std::string path(program, ::GetModuleFileNameA(nullptr, program, sizeof program));
    const auttest::TestFolder folder;
    folder.writeFile("components\\A\\3.3.302B1_SV\\A.map", "server=update.example\n");
    folder.writeFile("client\\MapFile.dll",
                     auttest::readFile(path.substr(0, path.rfind('\\') + 1) + "mapfile\\MapFile.dll"));
    m_registry.write("", "Path", folder / "client");
    m_registry.write("", "CompPath", folder / "components");
    addOlder("A");
    ASSERT_TRUE(UpdateComponentList(m_list, "P1"));
    ASSERT_TRUE(elements()[0]->LoadMapFile(nullptr));
    elements()[0]->ReleaseMapFile();
    EXPECT_EQ(1, m_deleted);
    clear();
    EXPECT_EQ(1, m_deleted);
}

// The library's imports of operator new bear the names that this C++ runtime gives them.
#if defined(__MINGW32__) // The library's imports of operator new bear the names that this C++ runtime gives them.
int g_allocationsUntilFailure = -1;

bool isToFail() { return g_allocationsUntilFailure >= 0 && g_allocationsUntilFailure-- == 0; }
void* allocate(std::size_t size)
{
    if (isToFail())
        throw std::bad_alloc();
    return ::operator new(size);
}
void* allocateNoThrow(std::size_t size, const std::nothrow_t&)
{
    return isToFail() ? nullptr : ::operator new(size, std::nothrow);
}

TEST_F(Substitute, WithoutMemoryLeavesTheListAsItWas)
{
    bool failed = true;
    int failures = 0;
    for (int nth = 0; failed; ++nth)
    {
        ASSERT_LT(nth, 200);
        m_deleted = 0;
        CComponent* const older = addOlder("A");
        {
            const auttest::ImportPatch throwing("_Znwy", &allocate);
            const auttest::ImportPatch notThrowing("_ZnwyRKSt9nothrow_t", &allocateNoThrow);
            g_allocationsUntilFailure = nth;
            EXPECT_TRUE(UpdateComponentList(m_list, "P1"));
            failed = g_allocationsUntilFailure < 0;
            g_allocationsUntilFailure = -1;
        }
        ASSERT_EQ(1, m_list.GetCount()) << nth;
        EXPECT_EQ(failed, elements()[0] == older) << nth;
        EXPECT_EQ(0, m_deleted) << nth;
        clear();
        EXPECT_EQ(1, m_deleted) << nth;
        failures += failed ? 1 : 0;
    }
    EXPECT_GE(failures, 3); // the substitute, its hold, the list's node
}
#endif
} // namespace
