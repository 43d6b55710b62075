#include "catalogue/AutoUpdateObject.h"
#include "tests/catalogue/StreamFile.h"

#include <gtest/gtest.h>

#include <type_traits>

static_assert(std::has_virtual_destructor_v<AutoUpdateObject>);

using auttest::lines;
using auttest::StreamFile;

namespace
{
class ObjectProbe : public AutoUpdateObject
{
public:
    using AutoUpdateObject::AutoUpdateObject;
    using AutoUpdateObject::InitValues;
    using AutoUpdateObject::m_fullVersion;
};

TEST(AutoUpdateObject, ADefaultObjectIsEmptyAndEnabled)
{
    const AutoUpdateObject object;
    EXPECT_EQ(0, object.GetId());
    EXPECT_STREQ("", object.GetName());
    EXPECT_STREQ("", object.GetVersion());
    EXPECT_STREQ("", object.GetBuild());
    EXPECT_STREQ("", object.GetLanguage());
    EXPECT_STREQ("", object.GetFullVersion());
    EXPECT_EQ(0, object.GetAction());
    EXPECT_EQ(1, object.IsEnabled());
    EXPECT_EQ(0, object.GetUpdateStatus());
}

TEST(AutoUpdateObject, TheValueConstructorsEnable)
{
    const AutoUpdateObject byNumber(-7, "name", "2.1", "05", "EN", 3);
    EXPECT_EQ(-7, byNumber.GetId());
    EXPECT_STREQ("name", byNumber.GetName());
    EXPECT_STREQ("2.1", byNumber.GetVersion());
    EXPECT_STREQ("05", byNumber.GetBuild());
    EXPECT_STREQ("EN", byNumber.GetLanguage());
    EXPECT_EQ(3, byNumber.GetAction());
    EXPECT_EQ(1, byNumber.IsEnabled());
    EXPECT_EQ(0, byNumber.GetUpdateStatus());
    const AutoUpdateObject byWord(8, "name", "2.1", "05", "EN", "Remove");
    EXPECT_EQ(8, byWord.GetId());
    EXPECT_EQ(1, byWord.GetAction());
    EXPECT_EQ(1, byWord.IsEnabled());
}

TEST(AutoUpdateObject, TheFullVersionJoinsVersionAndBuildAndTheLanguageIfAny)
{
    EXPECT_STREQ("2.105_EN", AutoUpdateObject(1, "n", "2.1", "05", "EN", 0).GetFullVersion());
    EXPECT_STREQ("2.105", AutoUpdateObject(1, "n", "2.1", "05", "", 0).GetFullVersion());
    EXPECT_STREQ("_EN", AutoUpdateObject(1, "n", "", "", "EN", 0).GetFullVersion());
    EXPECT_STREQ("2.1", AutoUpdateObject(1, "n", "2.1", nullptr, nullptr, 0).GetFullVersion());
}

TEST(AutoUpdateObject, InitValuesSetsEverythingAndClearsTheStatus)
{
    ObjectProbe object(1, "a", "b", "c", "d", 3);
    object.SetUpdateStatus(9);
    EXPECT_EQ(9, object.GetUpdateStatus());
    object.InitValues(2, "name", "1.0", "B1", "FR", 2, 0);
    EXPECT_EQ(2, object.GetId());
    EXPECT_STREQ("name", object.GetName());
    EXPECT_STREQ("1.0B1_FR", object.GetFullVersion());
    EXPECT_EQ(2, object.GetAction());
    EXPECT_EQ(0, object.IsEnabled());
    EXPECT_EQ(0, object.GetUpdateStatus());
    object.SetUpdateStatus(-1);
    object.InitValues(3, "name", "1.1", "B1", "", "DISABLE", 5);
    EXPECT_STREQ("1.1B1", object.GetFullVersion());
    EXPECT_EQ(3, object.GetAction());
    EXPECT_EQ(5, object.IsEnabled());
    EXPECT_EQ(0, object.GetUpdateStatus());
}

TEST(AutoUpdateObject, ActionWordsIgnoreCaseAndUnknownOnesKeepTheAction)
{
    struct Row
    {
        const char* word;
        int before;
        int after;
    };
    for (const Row& row : {Row{"INSTALL", 3, 0}, Row{"Install", 3, 0}, Row{"REMOVE", 0, 1}, Row{"remove", 0, 1},
                           Row{"FORCEREINSTALL", 0, 2}, Row{"ForceReinstall", 0, 2}, Row{"DISABLE", 0, 3},
                           Row{"disable", 0, 3}, Row{"", 2, 2}, Row{nullptr, 2, 2}, Row{"INSTALL ", 2, 2},
                           Row{"INSTAL", 2, 2}, Row{"1", 2, 2}, Row{"UPDATE", 17, 17}})
    {
        ObjectProbe object(1, "n", "v", "b", "l", row.before);
        object.InitValues(1, "n", "v", "b", "l", row.word, 1);
        EXPECT_EQ(row.after, object.GetAction()) << (row.word != nullptr ? row.word : "null");
    }
    EXPECT_EQ(0, AutoUpdateObject(1, "n", "v", "b", "l", "unknown").GetAction());
}

TEST(AutoUpdateObject, TextsAreCutTo259Characters)
{
    const std::string text(10'000, 'x');
    const AutoUpdateObject object(1, text.c_str(), text.c_str(), text.c_str(), text.c_str(), 0);
    const std::string kept(259, 'x');
    EXPECT_EQ(kept, object.GetName());
    EXPECT_EQ(kept, object.GetVersion());
    EXPECT_EQ(kept, object.GetBuild());
    EXPECT_EQ(kept, object.GetLanguage());
    EXPECT_EQ(kept, object.GetFullVersion());
    const AutoUpdateObject percent(1, "n", "%s%n", "%s", "%d", 0);
    EXPECT_STREQ("%s%n%s_%d", percent.GetFullVersion());
}

TEST(AutoUpdateObject, TheOwnTextsMayBeGiven)
{
    ObjectProbe object(1, "name", "1", "2", "3", 0);
    object.InitValues(2, object.GetName(), object.GetVersion(), object.GetBuild(), object.GetLanguage(), 0, 1);
    EXPECT_STREQ("name", object.GetName());
    EXPECT_STREQ("12_3", object.GetFullVersion());
}

TEST(AutoUpdateObject, CopiesAreWhole)
{
    ObjectProbe object;
    object.InitValues(2, "name", "1.0", "B1", "FR", 2, 0);
    object.SetUpdateStatus(9);
    const AutoUpdateObject copy(object);
    AutoUpdateObject assigned(1, "a", "b", "c", "d", 3);
    assigned = object;
    for (const AutoUpdateObject* same : {&copy, static_cast<const AutoUpdateObject*>(&assigned)})
    {
        EXPECT_EQ(2, same->GetId());
        EXPECT_STREQ("name", same->GetName());
        EXPECT_STREQ("1.0B1_FR", same->GetFullVersion());
        EXPECT_EQ(2, same->GetAction());
        EXPECT_EQ(0, same->IsEnabled());
        EXPECT_EQ(9, same->GetUpdateStatus());
    }
}

// ---- The record

const std::string kRecord = "2\nB1\n4711\nEN\nmy%20name\n1.0\n0\n";

TEST(AutoUpdateObjectRecord, IsSevenWordsOfItsOwnOrder)
{
    ObjectProbe object;
    object.InitValues(4711, "my name", "1.0", "B1", "EN", 2, 0);
    EXPECT_EQ(kRecord, StreamFile().write(object));
}

TEST(AutoUpdateObjectRecord, ReadsBack)
{
    AutoUpdateObject object(1, "a", "b", "c", "d", 3);
    object.SetUpdateStatus(9);
    EXPECT_EQ(1, StreamFile().read(object, kRecord));
    EXPECT_EQ(2, object.GetAction());
    EXPECT_STREQ("B1", object.GetBuild());
    EXPECT_EQ(4711, object.GetId());
    EXPECT_STREQ("EN", object.GetLanguage());
    EXPECT_STREQ("my name", object.GetName());
    EXPECT_STREQ("1.0", object.GetVersion());
    EXPECT_EQ(0, object.IsEnabled());
    EXPECT_STREQ("1.0B1_EN", object.GetFullVersion());
    EXPECT_EQ(9, object.GetUpdateStatus());
}

TEST(AutoUpdateObjectRecord, EveryBlankIsEscapedAndAStoredEscapeReadsAsABlank)
{
    AutoUpdateObject object(1, " a  %20b ", "v", "b", "l", 0);
    EXPECT_EQ("0\nb\n1\nl\n%20a%20%20%20b%20\nv\n1\n", StreamFile().write(object));
    AutoUpdateObject read;
    EXPECT_EQ(1, StreamFile().read(read, "0\nb\n1\nl\n%20a%20%20%20b%20\nv\n1\n"));
    EXPECT_STREQ(" a   b ", read.GetName());
}

TEST(AutoUpdateObjectRecord, WordsOfNothingButBlanksFitWhenWritten)
{
    const std::string blanks(259, ' ');
    AutoUpdateObject object(1, blanks.c_str(), "v", "b", "l", 0);
    std::string escaped;
    for (int i = 0; i < 259; ++i)
        escaped += "%20";
    EXPECT_EQ("0\nb\n1\nl\n" + escaped + "\nv\n1\n", StreamFile().write(object));
}

TEST(AutoUpdateObjectRecord, AnyWhiteSpaceSeparates)
{
    AutoUpdateObject object;
    EXPECT_EQ(1, StreamFile().read(object, "\r\n  0\tB1 17\r\n\r\nEN name\v1.0\f 1"));
    EXPECT_EQ(17, object.GetId());
    EXPECT_STREQ("name", object.GetName());
    EXPECT_STREQ("1.0B1_EN", object.GetFullVersion());
}

TEST(AutoUpdateObjectRecord, AnEmptyTextIsAnEmptyLineAndDoesNotReadBack)
{
    AutoUpdateObject object(4711, "name", "1.0", "B1", "", 0);
    const std::string bytes = StreamFile().write(object);
    EXPECT_EQ("0\nB1\n4711\n\nname\n1.0\n1\n", bytes);
    AutoUpdateObject read;
    EXPECT_EQ(1, StreamFile().read(read, bytes)); // the words behind it have moved up by one
    EXPECT_STREQ("name", read.GetLanguage());
    EXPECT_STREQ("1.0", read.GetName());
    EXPECT_STREQ("1", read.GetVersion());
}

TEST(AutoUpdateObjectRecord, WordsOfTheReadersLengthsAreRead)
{
    const std::string build(63, 'b');
    const std::string language(15, 'l');
    const std::string name(127, 'n');
    const std::string version(63, 'v');
    AutoUpdateObject object;
    EXPECT_EQ(1, StreamFile().read(object, lines({"0", build, "1", language, name, version, "1"})));
    EXPECT_EQ(build, object.GetBuild());
    EXPECT_EQ(language, object.GetLanguage());
    EXPECT_EQ(name, object.GetName());
    EXPECT_EQ(version, object.GetVersion());
    EXPECT_EQ(version + build + "_" + language, object.GetFullVersion());
}

struct BadRecord
{
    const char* name;
    std::string bytes;
};

class AutoUpdateObjectBadRecord : public ::testing::TestWithParam<BadRecord>
{
};

TEST_P(AutoUpdateObjectBadRecord, FailsAndLeavesTheObjectAsItWas)
{
    AutoUpdateObject object(1, "a", "b", "c", "d", 3);
    EXPECT_EQ(0, StreamFile().read(object, GetParam().bytes));
    EXPECT_EQ(1, object.GetId());
    EXPECT_EQ(3, object.GetAction());
    EXPECT_STREQ("a", object.GetName());
    EXPECT_STREQ("bc_d", object.GetFullVersion());
}

const std::string kHuge(1'000'000, '7');

INSTANTIATE_TEST_SUITE_P(
    , AutoUpdateObjectBadRecord,
    ::testing::Values(BadRecord{"Empty", ""}, BadRecord{"White", " \n\r\n\t "},
                      BadRecord{"Zeros", std::string(100, '\0')}, BadRecord{"ActionIsAWord", "x\nb\n1\nl\nn\nv\n1\n"},
                      BadRecord{"ActionIsTooLarge", "2147483648\nb\n1\nl\nn\nv\n1\n"},
                      BadRecord{"IdIsAWord", "0\nb\nid\nl\nn\nv\n1\n"},
                      BadRecord{"IdIsTooLarge", "0\nb\n4294967296\nl\nn\nv\n1\n"},
                      BadRecord{"IdIsTooSmall", "0\nb\n-2147483649\nl\nn\nv\n1\n"},
                      BadRecord{"IdIsMillionsOfDigits", "0\nb\n" + kHuge + "\nl\nn\nv\n1\n"},
                      BadRecord{"EnabledIsAWord", "0\nb\n1\nl\nn\nv\nyes\n"},
                      // The last number, with nothing behind it.
                      BadRecord{"EnabledIsASignAtTheEnd", "0\nb\n1\nl\nn\nv\n-"},
                      BadRecord{"EnabledIsAWordAtTheEnd", "0\nb\n1\nl\nn\nv\nx"},
                      BadRecord{"EnabledIsTooLargeAtTheEnd", "0\nb\n1\nl\nn\nv\n99999999999"},
                      BadRecord{"BuildIsTooLong", lines({"0", std::string(64, 'b'), "1", "l", "n", "v", "1"})},
                      BadRecord{"LanguageIsTooLong", lines({"0", "b", "1", std::string(16, 'l'), "n", "v", "1"})},
                      BadRecord{"NameIsTooLong", lines({"0", "b", "1", "l", std::string(128, 'n'), "v", "1"})},
                      BadRecord{"VersionIsTooLong", lines({"0", "b", "1", "l", "n", std::string(64, 'v'), "1"})},
                      BadRecord{"NameIsHuge", lines({"0", "b", "1", "l", kHuge, "v", "1"})}),
    [](const auto& row) { return row.param.name; });

TEST(AutoUpdateObjectRecord, ARecordCutOffAnywhereBehindTheVersionKeepsTheOwnEnabled)
{
    const StreamFile file;
    const std::size_t versionEnd = kRecord.find("1.0") + 3;
    for (std::size_t length = 0; length <= kRecord.size(); ++length)
    {
        AutoUpdateObject object;
        // The version is known to be whole once something stands behind it.
        EXPECT_EQ(length > versionEnd ? 1 : 0, file.read(object, kRecord.substr(0, length))) << length;
        EXPECT_EQ(length > versionEnd + 1 ? 0 : 1, object.IsEnabled()) << length;
    }
}

TEST(AutoUpdateObjectRecord, AStreamThatIsNotReadableFails)
{
    const auttest::TestFolder folder;
    AutoUpdateObject object;
    std::ifstream missing(folder / "missing.lst");
    EXPECT_EQ(0, object.Serialize(missing));
    std::ifstream closed;
    EXPECT_EQ(0, object.Serialize(closed));
    std::ofstream unopened;
    EXPECT_EQ(0, object.Serialize(unopened));
}

TEST(AutoUpdateObjectRecord, AStreamThatThrowsFailsWithoutAnException)
{
    const auttest::TestFolder folder;
    std::ifstream stream(folder.writeFile("a.lst", "x\n"));
    stream.exceptions(std::ios::failbit | std::ios::eofbit | std::ios::badbit);
    AutoUpdateObject object;
    EXPECT_EQ(0, object.Serialize(stream));
}

TEST(AutoUpdateObjectRecord, RecordsFollowEachOther)
{
    const StreamFile file;
    file.folder().writeFile("two.lst", kRecord + lines({"1", "B2", "4712", "FR", "other", "2.0", "1"}));
    std::ifstream stream(file.folder() / "two.lst");
    AutoUpdateObject first;
    AutoUpdateObject second;
    EXPECT_EQ(1, first.Serialize(stream));
    EXPECT_EQ(1, second.Serialize(stream));
    EXPECT_EQ(4711, first.GetId());
    EXPECT_EQ(4712, second.GetId());
    EXPECT_EQ(0, second.Serialize(stream));
    EXPECT_EQ(0, second.Serialize(stream));
}
} // namespace
