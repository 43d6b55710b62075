// Links inside of a tree: whatever is done to the tree, nothing outside of it is touched.

#include "fileops/RT_Dir.h"
#include "tests/fileops/DirectoryLink.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/Figure.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
/// A tree with links to a folder outside, to the tree itself and to nothing.
class Links : public ::testing::Test
{
protected:
    Links()
    {
        m_folder.writeFile("outside\\kept.txt", "kept");
        m_folder.writeFile("outside\\sub\\kept.txt", "kept");
        m_folder.writeFile("tree\\own.txt", "own");
        m_folder.writeFile("tree\\sub\\own.txt", "own");
        for (const char* link : {"tree\\out", "tree\\sub\\out"})
            auttest::makeLink(m_folder / link, m_folder / "outside");
        auttest::makeLink(m_folder / "tree\\sub\\up", m_folder / "tree");
    }
    ~Links() override
    {
        for (const char* tree : {"tree", "target\\tree"})
            for (const char* link : {"\\out", "\\sub\\out", "\\sub\\up"})
                auttest::removeLink(m_folder / (std::string(tree) + link));
    }
    /// What outside is other than it was.
    int harm() const
    {
        int harmed = 0;
        for (const char* name : {"outside\\kept.txt", "outside\\sub\\kept.txt"})
            harmed += m_folder.exists(name) && m_folder.readFile(name) == "kept" ? 0 : 1;
        for (const char* name : {"outside\\own.txt", "outside\\out", "outside\\tree"})
            harmed += m_folder.exists(name) ? 1 : 0;
        return harmed;
    }
    std::string path(const char* name) const { return m_folder / name; }

    auttest::TestFolder m_folder;
};
} // namespace

TEST_F(Links, AreNotFollowedByRemoving)
{
    RT_Dir(path("tree").c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_TOP_ONLY);
    RT_Dir(path("tree").c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
    EXPECT_FALSE(m_folder.exists("tree\\own.txt"));
    EXPECT_FALSE(m_folder.exists("tree\\sub\\own.txt"));
    torture::count("files outside harmed by removing a tree with links", harm(), 0);
}

TEST_F(Links, AreNotFollowedByRemovingAtTheNextStart)
{
    RT_Dir(path("tree").c_str()).Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE);
    torture::count("files outside harmed by removing a tree with links, in part at the next start", harm(), 0);
}

// A folder of the target that is a link was put elsewhere by whoever administers the machine: it is copied through.
// What lies there stays.
TEST_F(Links, InTheTargetAreCopiedThroughAndNothingBehindThemIsRemoved)
{
    m_folder.writeFile("source\\tree\\out\\new.txt", "new");
    m_folder.writeFile("source\\tree\\sub\\out\\new.txt", "new");
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        RT_Dir(path("source\\tree").c_str()).CopyTo(m_folder.path().c_str(), overwrite);
        torture::count("files harmed behind the links of a target", harm(), 0);
    }
}

TEST_F(Links, AreNotFollowedByCopyingAndMoving)
{
    RT_Dir(path("tree").c_str()).CopyTo(path("target").c_str(), OVERWRITE_NOW_ONLY);
    EXPECT_TRUE(m_folder.exists("target\\tree\\sub\\own.txt"));
    int harmed = harm();
    RT_Dir(path("target\\tree").c_str()).MoveTo(path("moved").c_str(), OVERWRITE_NOW_ONLY);
    RT_Dir(path("tree").c_str()).MoveTo(path("target").c_str(), OVERWRITE_AT_REBOOT);
    harmed += harm();
    torture::count("files outside harmed by copying and moving a tree with links", harmed, 0);
}
