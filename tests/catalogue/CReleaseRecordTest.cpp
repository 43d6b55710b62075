#include "catalogue/CRelease.h"
#include "tests/catalogue/ReleaseFixture.h"
#include "tests/catalogue/StreamFile.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <locale>
#include <memory>
#include <streambuf>

using auttest::componentsOf;
using auttest::lines;
using auttest::LogEvent;
using auttest::ReleaseProbe;
using auttest::StreamFile;

namespace
{
const LogEvent kParsed{"Info", "CRelease::Serialize(iStream) SUCCESS : stream parsed"};
const LogEvent kOldParsed{"Info", "CRelease::Serialize(iStream) SUCCESS : old stream parsed"};
const LogEvent kBadSize{"Error", "CRelease::Serialize(iStream) FAILED: bad stream size"};
const LogEvent kBadComponent{"Error", "CRelease::Serialize(iStream) FAILED: bad component"};

// The words of a release with two components.
const std::vector<std::string> kBase = {"2", "B1", "7", "EN", "my%20product", "3.3", "1"};
const std::vector<std::string> kOwn = {"5000000000", "2", "CID-1", "3", "4"};
const std::vector<std::string> kFirst = {"0", "b1", "11", "EN", "first", "1.0", "1", "http://host/a%20b", "1"};
const std::vector<std::string> kSecond = {"1", "b2", "12", "FR", "second", "2.0", "1", "~", "0"};
const std::vector<std::string> kNames = {"Marketing%20name", "Technical"};

std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> parts)
{
    std::vector<std::string> words;
    for (const std::vector<std::string>& part : parts)
        words.insert(words.end(), part.begin(), part.end());
    return words;
}

const std::vector<std::string> kOldWords = joined({kBase, kOwn, kFirst, kSecond});
const std::vector<std::string> kWords = joined({kBase, kOwn, kFirst, kSecond, kNames});

class CReleaseRecord : public ::testing::Test
{
protected:
    void SetUp() override { startLog(); }

    /// A log of its own, so that it neither grows nor is moved aside in the middle of a test.
    void startLog()
    {
        ::DeleteFileA(m_log.path().c_str());
        m_log.mark();
    }

    /// Reads into a release with values of its own and gives the answer; `m_log` has what was logged.
    int read(const std::string& bytes)
    {
        m_release = std::make_unique<ReleaseProbe>(1, "old marketing", "old technical", "n", "v", "b", "l", 0, 9, 0);
        m_release->SetCertificateID("old");
        startLog();
        return m_file.read(*m_release, bytes);
    }
    int readWords(std::vector<std::string> words, std::size_t at, const std::string& replacement)
    {
        words.at(at) = replacement;
        return read(lines(words));
    }

    const auttest::DetailedLog m_detailed;
    const StreamFile m_file{};
    auttest::LogFile m_log;
    std::unique_ptr<ReleaseProbe> m_release;
};

void fill(ReleaseProbe& release)
{
    release.InitValues(7, "Marketing name", "Technical", "my product", "3.3", "B1", "EN", 2, 5'000'000'000, 1, 1, 2,
                       true, true, true);
    release.SetCertificateID("CID-1");
    release.SetNoDownload(3);
    release.SetPreInstallOnly(4);
    auto* const first = new CComponent(11, "first", "1.0", "b1", "EN", 0, "http://host/a b");
    first->SetShared(1);
    release.GetComponentList().AddTail(first);
    release.GetComponentList().AddTail(new CComponent(12, "second", "2.0", "b2", "FR", 1, ""));
}

TEST_F(CReleaseRecord, IsWrittenWordByWord)
{
    ReleaseProbe release;
    fill(release);
    EXPECT_EQ(lines(kWords), m_file.write(release));
    EXPECT_EQ(2, release.m_componentCount);
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(CReleaseRecord, ReadsBack)
{
    ASSERT_EQ(1, read(lines(kWords)));
    EXPECT_EQ(std::vector<LogEvent>{kParsed}, m_log.events());
    EXPECT_EQ(2, m_release->GetAction());
    EXPECT_EQ(7, m_release->GetId());
    EXPECT_STREQ("my product", m_release->GetName());
    EXPECT_STREQ("3.3B1_EN", m_release->GetFullVersion());
    EXPECT_EQ(1, m_release->IsEnabled());
    EXPECT_EQ(5'000'000'000, m_release->GetActivationDate());
    EXPECT_STREQ("CID-1", m_release->GetCertificateID());
    EXPECT_EQ(3, m_release->IsNoDownload()); // stands before ...
    EXPECT_EQ(4, m_release->IsPreInstallOnly());
    EXPECT_STREQ("Marketing name", m_release->GetMarketingName());
    EXPECT_STREQ("Technical", m_release->GetTechnicalName());
    EXPECT_EQ(2, m_release->m_componentCount);
    const std::vector<CComponent*> components = componentsOf(*m_release);
    ASSERT_EQ(2u, components.size());
    EXPECT_EQ(11, components[0]->GetId());
    EXPECT_STREQ("first", components[0]->GetName());
    EXPECT_STREQ("http://host/a b", components[0]->GetSourceLocation());
    EXPECT_EQ(1, components[0]->IsShared());
    EXPECT_EQ(12, components[1]->GetId());
    EXPECT_STREQ("2.0b2_FR", components[1]->GetFullVersion());
    EXPECT_STREQ("", components[1]->GetSourceLocation());
    EXPECT_EQ(lines(kWords), m_file.write(*m_release));
}

TEST_F(CReleaseRecord, EmptyOptionalTextsAreTildes)
{
    ReleaseProbe release(7, "", nullptr, "p", "3.3", "B1", "EN", 2, 0, 1);
    const std::string bytes = lines({"2", "B1", "7", "EN", "p", "3.3", "1", "0", "0", "~", "0", "0", "~", "~"});
    EXPECT_EQ(bytes, m_file.write(release));
    ASSERT_EQ(1, read(bytes));
    EXPECT_STREQ("", m_release->GetCertificateID());
    EXPECT_STREQ("", m_release->GetMarketingName());
    EXPECT_STREQ("", m_release->GetTechnicalName());
    EXPECT_EQ(0, m_release->m_componentCount);
}

// Only the optional texts have a tilde; the reader takes the next word for an empty one of the others.
TEST_F(CReleaseRecord, AnEmptyLanguageIsAnEmptyLineAndDoesNotReadBack)
{
    ReleaseProbe release(7, "m", "t", "p", "3.3", "B1", "", 2, 5, 1);
    const std::string bytes = lines({"2", "B1", "7", "", "p", "3.3", "1", "5", "0", "~", "0", "0", "m", "t"});
    EXPECT_EQ(bytes, m_file.write(release));
    EXPECT_EQ(0, read(bytes));
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(CReleaseRecord, TheCertificateIdIsStoredAsItIs)
{
    ReleaseProbe release;
    fill(release);
    release.SetCertificateID("a%20b");
    const std::string bytes = m_file.write(release);
    ASSERT_EQ(1, read(bytes));
    EXPECT_STREQ("a%20b", m_release->GetCertificateID());
}

TEST_F(CReleaseRecord, NegativeAndLargeNumbersReadBack)
{
    ReleaseProbe release(-2147483647 - 1, "m", "t", "p", "3.3", "B1", "EN", -5, -1, -1);
    const std::string bytes = m_file.write(release);
    ASSERT_EQ(1, read(bytes));
    EXPECT_EQ(-2147483647 - 1, m_release->GetId());
    EXPECT_EQ(-5, m_release->GetAction());
    EXPECT_EQ(-1, m_release->GetActivationDate());
    EXPECT_EQ(-1, m_release->IsEnabled());
}

TEST_F(CReleaseRecord, TheOlderFormatEndsBehindTheComponents)
{
    for (const char* end : {"", "\n", "\r\n \n"})
    {
        std::string bytes = lines(kOldWords);
        bytes.pop_back();
        ASSERT_EQ(1, read(bytes + end));
        EXPECT_EQ(std::vector<LogEvent>{kOldParsed}, m_log.events());
        EXPECT_STREQ("old marketing", m_release->GetMarketingName());
        EXPECT_STREQ("old technical", m_release->GetTechnicalName());
        EXPECT_EQ(2u, componentsOf(*m_release).size());
    }
}

TEST_F(CReleaseRecord, TheOlderFormatMayHaveNoComponents)
{
    std::vector<std::string> words = joined({kBase, kOwn});
    words[8] = "0";
    ASSERT_EQ(1, read(lines(words)));
    EXPECT_EQ(std::vector<LogEvent>{kOldParsed}, m_log.events());
}

/// What a record gives that is cut off behind `whole` words and `characters` characters of the next.
struct Outcome
{
    int answer;
    std::vector<LogEvent> events;
};

Outcome outcomeOfCut(std::size_t whole, std::size_t characters)
{
    const bool nextBegun = characters > 0;
    if (whole < 6) // action to version
        return {0, {}};
    if (whole == 6) // enabled
        return {0, {kBadSize}};
    if (whole < 10) // date, count, certificate ID
        return {0, {}};
    if (whole < 29) // the two numbers, both components up to the second one's location
        return {0, {kBadComponent}};
    if (whole == 29 || (whole == 30 && !nextBegun)) // the second one's shared flag
        return {1, {kOldParsed}};
    return {1, {kParsed}};
}

TEST_F(CReleaseRecord, SuccessIsLoggedFromDetailLevelTwoOn)
{
    for (const DWORD level : {1U, 2U})
    {
        const auttest::DetailedLog detailed(level);
        ASSERT_EQ(1, read(lines(kWords)));
        EXPECT_EQ(level == 2 ? std::vector<LogEvent>{kParsed} : std::vector<LogEvent>(), m_log.events()) << level;
        ASSERT_EQ(1, read(lines(kOldWords)));
        EXPECT_EQ(level == 2 ? std::vector<LogEvent>{kOldParsed} : std::vector<LogEvent>(), m_log.events()) << level;
    }
}

TEST(CReleaseRecordWithoutDetail, ItsFailuresAreLogged)
{
    const StreamFile file;
    auttest::LogFile log;
    ReleaseProbe tooShort;
    EXPECT_EQ(0, file.read(tooShort, lines({kBase.begin(), kBase.end() - 1})));
    EXPECT_EQ(std::vector<LogEvent>{kBadSize}, log.events());
    log.mark();
    ReleaseProbe withBadComponent;
    EXPECT_EQ(0, file.read(withBadComponent, lines(joined({kBase, kOwn, kFirst}))));
    EXPECT_EQ(std::vector<LogEvent>{kBadComponent}, log.events());
}

TEST_F(CReleaseRecord, CutOffAtEveryByte)
{
    const std::string record = lines(kWords);
    std::size_t whole = 0;
    std::size_t wordBegin = 0;
    for (std::size_t length = 0; length <= record.size(); ++length)
    {
        if (length > 0 && record[length - 1] == '\n')
        {
            ++whole;
            wordBegin = length;
        }
        SCOPED_TRACE(length);
        const Outcome expected = outcomeOfCut(whole, length - wordBegin);
        EXPECT_EQ(expected.answer, read(record.substr(0, length)));
        EXPECT_EQ(expected.events, m_log.events());
    }
    EXPECT_EQ(32u, whole);
}

TEST_F(CReleaseRecord, ACutNameIsTakenAsItIsAndAMissingOneIsEmpty)
{
    ASSERT_EQ(1, read(lines(kOldWords) + "Market"));
    EXPECT_STREQ("Market", m_release->GetMarketingName());
    EXPECT_STREQ("", m_release->GetTechnicalName());
}

TEST_F(CReleaseRecord, ACutFlagKeepsTheDefault)
{
    std::vector<std::string> words = kOldWords;
    words.pop_back();
    words[20] = "1"; // the first component's shared flag
    ASSERT_EQ(1, read(lines(words)));
    EXPECT_EQ(1, componentsOf(*m_release)[0]->IsShared());
    EXPECT_EQ(0, componentsOf(*m_release)[1]->IsShared());
}

TEST_F(CReleaseRecord, MoreComponentsDeclaredThanPresentIsABadComponent)
{
    EXPECT_EQ(0, readWords(kOldWords, 8, "3"));
    EXPECT_EQ(std::vector<LogEvent>{kBadComponent}, m_log.events());
    EXPECT_EQ(2u, componentsOf(*m_release).size()); // what was read stays
}

TEST_F(CReleaseRecord, ACountOfThousandsOfMillionsCostsNothing)
{
    const ULONGLONG begin = ::GetTickCount64();
    EXPECT_EQ(0, readWords(kOldWords, 8, "2147483647"));
    EXPECT_EQ(0, readWords(kWords, 8, "2000000000"));
    EXPECT_EQ(std::vector<LogEvent>{kBadComponent}, m_log.events());
    EXPECT_LT(::GetTickCount64() - begin, 5'000u);
}

TEST_F(CReleaseRecord, ANegativeCountIsNoComponents)
{
    std::vector<std::string> words = joined({kBase, kOwn, kNames});
    ASSERT_EQ(1, readWords(words, 8, "-1"));
    EXPECT_STREQ("Marketing name", m_release->GetMarketingName());
    EXPECT_TRUE(componentsOf(*m_release).empty());
    const std::string bytes = m_file.write(*m_release);
    EXPECT_NE(std::string::npos, bytes.find("\n5000000000\n0\n"));
}

TEST_F(CReleaseRecord, WordsWhereNumbersStandFailAndNeverLoop)
{
    struct Row
    {
        std::size_t word;
        std::vector<LogEvent> events;
    };
    // Silent in the release's own part; a broken component is told.
    for (const Row& row : {Row{0, {}}, Row{2, {}}, Row{6, {}}, Row{7, {}}, Row{8, {}}, Row{10, {}}, Row{11, {}},
                           Row{12, {kBadComponent}}, Row{14, {kBadComponent}}, Row{18, {kBadComponent}},
                           Row{20, {kBadComponent}}, Row{29, {kBadComponent}}})
    {
        for (const char* word : {"x", "99999999999999999999", "--1", "~"})
        {
            EXPECT_EQ(0, readWords(kWords, row.word, word)) << row.word << " " << word;
            EXPECT_EQ(row.events, m_log.events()) << row.word << " " << word;
        }
    }
}

TEST_F(CReleaseRecord, ALastNumberThatIsNoneFailsThoughNothingFollowsIt)
{
    std::vector<std::string> upToPreInstallOnly = joined({kBase, kOwn});
    upToPreInstallOnly[8] = "0"; // components
    std::vector<std::string> upToNoDownload = upToPreInstallOnly;
    upToNoDownload.pop_back();
    struct Row
    {
        std::vector<std::string> words;
        std::vector<LogEvent> events;
    };
    for (const Row& row : {Row{kBase, {}}, Row{upToNoDownload, {}}, Row{upToPreInstallOnly, {}},
                           Row{kOldWords, {kBadComponent}}}) // up to enabled, ..., the second component's shared flag
    {
        for (const char* word : {"-", "x", "99999999999"})
        {
            std::vector<std::string> words = row.words;
            words.back() = word;
            std::string bytes = lines(words);
            bytes.pop_back();
            EXPECT_EQ(0, read(bytes)) << words.size() << " " << word;
            EXPECT_EQ(row.events, m_log.events()) << words.size() << " " << word;
        }
    }
}

TEST_F(CReleaseRecord, WordsLongerThanTheReadersBuffersAreRefused)
{
    struct Row
    {
        std::size_t word;
        std::size_t most;
        std::vector<LogEvent> events;
    };
    for (const Row& row :
         {Row{1, 63, {}}, Row{3, 15, {}}, Row{4, 127, {}}, Row{5, 63, {}}, Row{9, 259, {}},
          Row{13, 63, {kBadComponent}}, Row{15, 15, {kBadComponent}}, Row{16, 127, {kBadComponent}},
          Row{17, 63, {kBadComponent}}, Row{19, 259, {kBadComponent}}, Row{30, 259, {}}, Row{31, 259, {}}})
    {
        EXPECT_EQ(1, readWords(kWords, row.word, std::string(row.most, 'x'))) << row.word;
        EXPECT_EQ(std::vector<LogEvent>{kParsed}, m_log.events()) << row.word;
        EXPECT_EQ(0, readWords(kWords, row.word, std::string(row.most + 1, 'x'))) << row.word;
        EXPECT_EQ(row.events, m_log.events()) << row.word;
        EXPECT_EQ(0, readWords(kWords, row.word, std::string(100'000, 'x'))) << row.word;
    }
}

TEST_F(CReleaseRecord, ReadingAppendsToTheListThatIsThere)
{
    m_file.folder().writeFile("a.lst", lines(kWords));
    ReleaseProbe release;
    release.GetComponentList().AddTail(new CComponent(10, "here", "1", "", "", 0, ""));
    std::ifstream stream(m_file.folder() / "a.lst");
    ASSERT_EQ(1, release.Serialize(stream));
    const std::vector<CComponent*> components = componentsOf(release);
    ASSERT_EQ(3u, components.size());
    EXPECT_EQ(10, components[0]->GetId());
    EXPECT_EQ(11, components[1]->GetId());
    EXPECT_EQ(3, release.m_componentCount);
}

TEST_F(CReleaseRecord, ReleasesFollowEachOther)
{
    m_file.folder().writeFile("two.lst", lines(kWords) + lines(kWords));
    std::ifstream stream(m_file.folder() / "two.lst");
    ReleaseProbe first;
    ReleaseProbe second;
    EXPECT_EQ(1, first.Serialize(stream));
    EXPECT_EQ(1, second.Serialize(stream));
    EXPECT_STREQ("Technical", second.GetTechnicalName());
    EXPECT_EQ(0, second.Serialize(stream));
}

TEST_F(CReleaseRecord, AStreamThatIsNotReadableFailsSilently)
{
    ReleaseProbe release;
    std::ifstream missing(m_file.folder() / "missing.lst");
    EXPECT_EQ(0, release.Serialize(missing));
    std::ofstream unopened;
    EXPECT_EQ(0, release.Serialize(unopened));
    std::ifstream garbage(m_file.folder().writeFile("a.lst", std::string("\0\xFF\x01~ \0 \n", 8)), std::ios::binary);
    EXPECT_EQ(0, release.Serialize(garbage));
    EXPECT_TRUE(m_log.events().empty());
}

/// Takes so many bytes and no more, as a full disk does.
class FullDisk : public std::streambuf
{
public:
    explicit FullDisk(std::size_t room) : m_room(room) {}

protected:
    int_type overflow(int_type byte) override
    {
        if (m_room == 0)
            return traits_type::eof();
        --m_room;
        return traits_type::not_eof(byte);
    }

private:
    std::size_t m_room;
};

TEST_F(CReleaseRecord, ARecordThatDoesNotFitOnTheDiskFails)
{
    ReleaseProbe release;
    fill(release);
    const std::size_t whole = lines(kWords).size();
    for (std::size_t room = 0; room <= whole; ++room)
    {
        FullDisk disk(room);
        std::ofstream stream;
        static_cast<std::ostream&>(stream).rdbuf(&disk);
        EXPECT_EQ(room == whole ? 1 : 0, release.Serialize(stream)) << room;
    }
}
} // namespace

namespace
{
/// What reading left in a release and its stream.
struct Reading
{
    int answer;
    std::ios::iostate state;
    std::streamoff position;
    std::string fields;
};

std::string fieldsOf(ReleaseProbe& release)
{
    std::string all = release.GetName() + std::string("|") + release.GetFullVersion() + "|" +
                      release.GetCertificateID() + "|" + release.GetMarketingName() + "|" + release.GetTechnicalName();
    for (const std::int64_t number : {std::int64_t{release.GetId()}, std::int64_t{release.GetAction()},
                                      std::int64_t{release.IsEnabled()}, std::int64_t{release.GetActivationDate()},
                                      std::int64_t{release.IsNoDownload()}, std::int64_t{release.IsPreInstallOnly()}})
        all += "|" + std::to_string(number);
    for (const CComponent* const component : componentsOf(release))
        all += std::string("\n") + component->GetName() + "|" + component->GetFullVersion() + "|" +
               component->GetSourceLocation() + "|" + std::to_string(component->GetId()) + "|" +
               std::to_string(component->IsShared()) + "|" + std::to_string(component->IsEnabled());
    return all;
}

/// A locale that behaves like the classic one but is not: the stream's own operators do the work.
std::locale likeTheClassicOne() { return std::locale(std::locale::classic(), new std::numpunct<char>); }

Reading readThrough(const std::string& path, const std::locale& locale)
{
    ReleaseProbe release(1, "old marketing", "old technical", "n", "v", "b", "l", 0, 9, 0);
    std::ifstream stream(path, std::ios::binary);
    stream.imbue(locale);
    const int answer = release.Serialize(stream);
    const std::ios::iostate state = stream.rdstate();
    stream.clear();
    return {answer, state, stream.tellg(), fieldsOf(release)};
}
} // namespace

// Records are read and written past the stream's own operators, which must make no difference to anybody.
TEST_F(CReleaseRecord, IsReadAsTheStreamsOwnOperatorsReadIt)
{
    const auttest::TestFolder folder;
    const std::string path = folder / "record.lst";
    const auto expectAlike = [&](const std::string& bytes)
    {
        folder.writeFile("record.lst", bytes);
        const Reading plain = readThrough(path, std::locale::classic());
        const Reading other = readThrough(path, likeTheClassicOne());
        EXPECT_EQ(other.answer, plain.answer) << bytes;
        EXPECT_EQ(other.state, plain.state) << bytes;
        EXPECT_EQ(other.fields, plain.fields) << bytes;
        if (other.state == std::ios::goodbit || other.state == std::ios::eofbit)
        {
            EXPECT_EQ(other.position, plain.position) << bytes;
        }
    };
    for (std::size_t length = 0; length <= lines(kWords).size(); ++length)
        expectAlike(lines(kWords).substr(0, length));
    expectAlike(lines(kWords) + lines(kOldWords));
    const std::string hostile[] = {"0",
                                   "-1",
                                   "+7",
                                   "-",
                                   "+",
                                   "--1",
                                   "007",
                                   "0x1F",
                                   "1e3",
                                   "1.5",
                                   "12abc",
                                   "abc",
                                   "1,000",
                                   "2147483647",
                                   "2147483648",
                                   "-2147483648",
                                   "-2147483649",
                                   "9223372036854775807",
                                   "9223372036854775808",
                                   "-9223372036854775808",
                                   "-9223372036854775809",
                                   std::string(400, '9'),
                                   "~",
                                   "~~",
                                   "%20",
                                   "%2",
                                   "a%20%20b",
                                   "\xA0\xE4",
                                   "~\0x",
                                   std::string("~\0x", 3),
                                   std::string("a\0b", 3),
                                   std::string(63, 'w'),
                                   std::string(64, 'w'),
                                   std::string(127, 'w'),
                                   std::string(128, 'w'),
                                   std::string(259, 'w'),
                                   std::string(260, 'w'),
                                   std::string(780, 'w'),
                                   ""};
    // One of each kind: numbers of every type, short and long words, those that may be left out.
    for (const std::size_t at : {0U, 1U, 2U, 4U, 7U, 8U, 9U, 19U, 20U})
        for (const std::string& word : hostile)
        {
            std::vector<std::string> words = kWords;
            words[at] = word;
            expectAlike(lines(words));
        }
    for (const std::string& word : hostile) // at the very end
        expectAlike(lines(kOldWords).substr(0, lines(kOldWords).size() - 2) + word);
    expectAlike("\t\v\f\r\n " + lines(kWords) + " \r\n");
}

TEST_F(CReleaseRecord, IsWrittenAsTheStreamsOwnOperatorsWriteIt)
{
    const auttest::TestFolder folder;
    const auto written = [&](ReleaseProbe& release, const std::locale& locale)
    {
        std::ofstream stream(folder / "record.lst", std::ios::binary);
        stream.imbue(locale);
        EXPECT_EQ(1, release.Serialize(stream));
        stream.close();
        return folder.readFile("record.lst");
    };
    ReleaseProbe release;
    fill(release);
    for (const char* const location : {"", " ", "a b  c ", "no-blank"})
        release.GetComponentList().AddTail(
            new CComponent(-5, " x ", "", "  ", "EN", 2, (std::string(location) + std::string(130, ' ')).c_str()));
    const std::string marketing = "a very long name " + std::string(3000, ' ') + "end";
    release.InitValues(-2147483647 - 1, marketing.c_str(), std::string(2000, 't').c_str(), "my product", "3.3", "B1",
                       "EN", 2, -9223372036854775807 - 1, 1, 1, 2, true, true, true);
    EXPECT_EQ(written(release, likeTheClassicOne()), written(release, std::locale::classic()));
}

TEST_F(CReleaseRecord, AStreamToldOtherwiseIsWrittenAndReadAsItWasTold)
{
    const auttest::TestFolder folder;
    CComponent component(255, "n", "v", "b", "l", 1, "s");
    {
        std::ofstream stream(folder / "record.lst", std::ios::binary);
        stream << std::hex << std::showbase;
        ASSERT_EQ(1, component.Serialize(stream));
    }
    EXPECT_EQ(lines({"0x1", "b", "0xff", "l", "n", "v", "0x1", "s", "0"}), folder.readFile("record.lst"));
    std::ifstream stream(folder / "record.lst", std::ios::binary);
    stream >> std::hex;
    CComponent copy;
    ASSERT_EQ(1, copy.Serialize(stream));
    EXPECT_EQ(255, copy.GetId());
}
