#include "tests/support/LogFile.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace
{
const std::string kHead = "<LogAutoUpdate>\r\n<Environment>\r\n</Environment>\r\n";
const std::string kEnd = "</LogAutoUpdate>\r\n";

std::string event(const std::string& type, const std::string& text)
{
    return "<LogEvent><Date>26/01/02 03:04.05</Date><Type>" + type + "</Type><Event>" + text +
           "</Event></LogEvent>\r\n";
}
} // namespace

TEST(LogFile, GivesTheEventsBehindTheMark)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("log.xml", kHead + event("Info", "old") + kEnd);
    const auttest::LogFile log(path);
    EXPECT_TRUE(log.events().empty());

    folder.writeFile("log.xml", kHead + event("Info", "old") + event("Error", "a&lt;b &amp; &quot;c&quot;") +
                                    event("", "") + kEnd);
    EXPECT_EQ((std::vector<auttest::LogEvent>{{"Error", "a<b & \"c\""}, {"", ""}}), log.events());
    EXPECT_TRUE(log.has("Error", "a<b & \"c\""));
    EXPECT_FALSE(log.has("Info", "old"));
}

TEST(LogFile, AMissingFileHasNoEvents)
{
    const auttest::TestFolder folder;
    EXPECT_TRUE(auttest::LogFile(folder / "log.xml").events().empty());
}

TEST(LogFile, AFileWithoutItsClosingTagFailsTheTest)
{
    const auttest::TestFolder folder;
    const auttest::LogFile log(folder / "log.xml");
    folder.writeFile("log.xml", kHead + event("Info", "text"));
    EXPECT_NONFATAL_FAILURE(log.events(), "closing tag");
}
