#include "foundation/VersionText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
struct Newer
{
    const char* name;
    const char* a;
    const char* b;
    bool forward;  ///< IsVersionNewer(a, b)
    bool backward; ///< IsVersionNewer(b, a)
};
class VersionOrder : public ::testing::TestWithParam<Newer>
{
};
std::string caseName(const ::testing::TestParamInfo<Newer>& info) { return info.param.name; }
} // namespace

TEST_P(VersionOrder, Is)
{
    EXPECT_EQ(GetParam().forward, IsVersionNewer(GetParam().a, GetParam().b));
    EXPECT_EQ(GetParam().backward, IsVersionNewer(GetParam().b, GetParam().a));
}

INSTANTIATE_TEST_SUITE_P(
    IsVersionNewer, VersionOrder,
    ::testing::Values(
        Newer{"ByTheFifthPart", "3.3.302.1", "3.3.302.2", true, false},
        Newer{"EqualFiveParts", "3.3.302.1", "3.3.302.1", false, false},
        Newer{"EqualShort", "3.3.302", "3.3.302", false, false},
        Newer{"EqualFull", "3.3.302B1.2", "3.3.302B1.2", false, false},
        Newer{"ByMajor", "3.9.999", "4.0.0", true, false}, Newer{"ByMinor", "3.9.999", "3.10.0", true, false},
        Newer{"ByBuild", "3.3.9", "3.3.10", true, false},
        // "." is 46, "_" is 95: the separator's code decides before the build.
        Newer{"BySeparator", "3.3.302", "3.3_302", true, false},
        Newer{"BySeparatorBeforeBuild", "3.3.999", "3.3_1", true, false},
        Newer{"ShortAgainstFive", "3.3.302", "3.3.302.1", false, true},
        Newer{"ShortAgainstFull", "3.3.302", "3.3.302B1.2", false, true},
        Newer{"FiveAgainstFull", "3.3.302.9", "3.3.302B1.2", true, false},
        Newer{"FullBySecondSeparator", "3.3.302A9.9", "3.3.302B1.1", true, false},
        Newer{"FullBySixthPart", "3.3.302B1.9", "3.3.302B2.1", true, false},
        Newer{"FullBySeventhPart", "3.3.302B1.1", "3.3.302B1.2", true, false},
        // A build letter without the two numbers behind it is short, so nothing behind the build counts.
        Newer{"LettersOfShortOnes", "3.3.302A1", "3.3.302B2", false, false},
        Newer{"AnUnreadableTextIsAllZeros", "abc", "0.0.1", true, false},
        Newer{"TwoPartsAreUnreadable", "9.9", "0.1.1", true, false},
        Newer{"AnUnreadableTextAgainstNull", "abc", nullptr, false, false},
        Newer{"NullIsOlder", nullptr, "1.0.0", true, false}, Newer{"NullIsNotNewer", nullptr, nullptr, false, false},
        Newer{"EmptyIsOlder", "", "1.0.0", true, false}, Newer{"NegativePartsAreRead", "-1.0.0", "1.0.0", true, false},
        // The nearest 32-bit number stands for one that does not fit.
        Newer{"HugeNumbersAreTheLargest", "2147483646.0.0", "99999999999.0.0", true, false},
        Newer{"OppositeExtremes", "-99999999999.0.0", "99999999999.0.0", true, false}),
    caseName);

TEST(IsVersionNewer, SurvivesTenThousandCharacters)
{
    EXPECT_TRUE(IsVersionNewer("1.2.3", (std::string(10000, '9') + ".1.1").c_str()));
    EXPECT_FALSE(IsVersionNewer(std::string(10000, 'x').c_str(), std::string(10000, 'y').c_str()));
}

namespace
{
struct FullVersion
{
    const char* name;
    const char* text;
    const char* version;
    const char* build;
    const char* language;
};
class FullVersionParts : public ::testing::TestWithParam<FullVersion>
{
};
std::string fullName(const ::testing::TestParamInfo<FullVersion>& info) { return info.param.name; }
} // namespace

TEST_P(FullVersionParts, Are)
{
    String build("old");
    String version("old");
    String language("old");
    const bool found = ExtractBuildVersionAndLanguage(GetParam().text, build, version, language);
    EXPECT_EQ(*GetParam().version != '\0', found);
    EXPECT_STREQ(GetParam().version, version);
    EXPECT_STREQ(GetParam().build, build);
    EXPECT_STREQ(GetParam().language, language);
}

INSTANTIATE_TEST_SUITE_P(ExtractBuildVersionAndLanguage, FullVersionParts,
                         ::testing::Values(FullVersion{"All", "3.3.302B1_EN", "3.3.302", "B1", "EN"},
                                           FullVersion{"LowerCaseBuild", "3.3.302p7_fr", "3.3.302", "p7", "fr"},
                                           FullVersion{"FirstLetterOfThree", "2.1A5B6P7_EN", "2.1", "A5B6P7", "EN"},
                                           FullVersion{"NoBuild", "2.105_EN", "2.105", "", "EN"},
                                           FullVersion{"NoLanguage", "3.3.302B1", "3.3.302", "B1", ""},
                                           FullVersion{"OtherLetters", "2.1C5_EN", "2.1C5", "", "EN"},
                                           FullVersion{"LastUnderscore", "3_3_302B1_EN", "3_3_302", "B1", "EN"},
                                           FullVersion{"EmptyLanguage", "3.3B1_", "3.3", "B1", ""},
                                           FullVersion{"LanguageWithBuildLetters", "3.3_PB", "3.3", "", "PB"},
                                           FullVersion{"NoVersion", "B1_EN", "", "B1", "EN"},
                                           FullVersion{"Empty", "", "", "", ""},
                                           FullVersion{"Null", nullptr, "", "", ""}),
                         fullName);

TEST(ExtractBuildVersionAndLanguage, MayTakeApartOneOfItsOwnResults)
{
    String text("3.3.302B1_EN");
    String build;
    String language;
    EXPECT_TRUE(ExtractBuildVersionAndLanguage(text, build, text, language));
    EXPECT_STREQ("3.3.302", text);
    EXPECT_STREQ("B1", build);
    EXPECT_STREQ("EN", language);
}
