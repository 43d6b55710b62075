#include "foundation/CVersion.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>

namespace
{
struct Parsed
{
    const char* text;
    bool read;
    bool full;
    bool isShort;
    std::array<int, 7> parts;
};
void PrintTo(const Parsed& row, std::ostream* out) { *out << '"' << row.text << '"'; }

class CVersionParse : public ::testing::TestWithParam<Parsed>
{
};

std::array<int, 7> partsOf(const CVersion& version)
{
    std::array<int, 7> parts{};
    for (int i = 0; i < CVersion::kPartCount; ++i)
        parts[static_cast<std::size_t>(i)] = version.part(i);
    return parts;
}
} // namespace

TEST_P(CVersionParse, TakesTheTextApart)
{
    CVersion version;
    EXPECT_EQ(GetParam().read, version.parse(GetParam().text));
    EXPECT_EQ(GetParam().full, version.isFull());
    EXPECT_EQ(GetParam().isShort, version.isShort());
    if (GetParam().full || !GetParam().read)
    {
        EXPECT_EQ(GetParam().parts, partsOf(version));
        return;
    }
    for (std::size_t i = 0; i < (GetParam().isShort ? 4u : 5u); ++i)
        EXPECT_EQ(GetParam().parts[i], version.part(static_cast<int>(i))) << i;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CVersionParse,
    ::testing::Values(Parsed{"1.2,3,4.5", true, true, false, {1, 2, ',', 3, ',', 4, 5}},
                      Parsed{"3.3.302B1.2", true, true, false, {3, 3, '.', 302, 'B', 1, 2}},
                      Parsed{"1.2.3.4.5", true, true, false, {1, 2, '.', 3, '.', 4, 5}},
                      Parsed{"1.2.3.4", true, false, false, {1, 2, '.', 3, 4, 0, 0}},
                      Parsed{"1.2.3.4_EN", true, false, false, {1, 2, '.', 3, 4, 0, 0}},
                      Parsed{"1.2.3.4B", true, false, false, {1, 2, '.', 3, 4, 0, 0}},
                      Parsed{"1.2.3", true, false, true, {1, 2, '.', 3, 0, 0, 0}},
                      Parsed{"1.2.3.", true, false, true, {1, 2, '.', 3, 0, 0, 0}},
                      Parsed{"1.2.3_EN", true, false, true, {1, 2, '.', 3, 0, 0, 0}},
                      Parsed{"1.2.3B4", true, false, true, {1, 2, '.', 3, 0, 0, 0}},
                      Parsed{"1.2 3", true, false, true, {1, 2, ' ', 3, 0, 0, 0}},
                      Parsed{" 1. 2. 3", true, false, true, {1, 2, '.', 3, 0, 0, 0}},
                      Parsed{"1.2--3", true, false, true, {1, 2, '-', -3, 0, 0, 0}},
                      Parsed{"1.2", false, false, false, {}}, Parsed{"1.2.", false, false, false, {}},
                      Parsed{"1,2.3", false, false, false, {}}, Parsed{"1 .2.3", false, false, false, {}},
                      Parsed{"abc", false, false, false, {}}, Parsed{"", false, false, false, {}}));

TEST(CVersion, HasOnlyZerosBeforeTheFirstParse)
{
    const CVersion version;
    EXPECT_EQ((std::array<int, 7>{}), partsOf(version));
    EXPECT_FALSE(version.isFull());
    EXPECT_FALSE(version.isShort());
}

TEST(CVersion, ForgetsTheLastTextWhenItParsesAnother)
{
    CVersion version;
    EXPECT_TRUE(version.parse("1.2,3,4.5"));
    EXPECT_FALSE(version.parse(nullptr));
    EXPECT_EQ((std::array<int, 7>{}), partsOf(version));
    EXPECT_FALSE(version.isFull());
    EXPECT_TRUE(version.parse("6.7.8"));
    EXPECT_TRUE(version.isShort());
    EXPECT_TRUE(version.parse("6.7.8.9"));
    EXPECT_FALSE(version.isShort());
}
