#include "catalogue/ReleaseLists.h"
#include "tests/support/DetailedLog.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/AllocationBalance.h"
#include "tests/torture/Figure.h"
#include "tests/torture/streams/HostileWords.h"
#include "tests/torture/streams/RecordModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

using namespace torture;

namespace
{
long long componentsMade = 0;
long long allocations = 0;
std::size_t largestAllocation = 0;

void* countedNew(std::size_t size)
{
    ++allocations;
    largestAllocation = std::max(largestAllocation, size);
    componentsMade += size == sizeof(CComponent) ? 1 : 0;
    return ::operator new(size);
}

/// A release of three components in the file that the client keeps it in.
class ReleaseFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_registry.write("", "DataPath", m_folder.path());
        CRelease release(7, "Marketing name", "Technical", "my product", "3.3", "B1", "EN", 2, 5'000'000'000, 1);
        release.SetCertificateID("CID-1");
        release.SetNoDownload(3);
        release.SetPreInstallOnly(4);
        for (const char* name : {"first part", "second", "third"})
        {
            release.GetComponentList().AddTail(
                new CComponent(11, name, "1.0", "b1", "FR", 1, *name == 's' ? "" : "http://host/a b"));
        }
        ASSERT_TRUE(SaveConfigFile(&release));
        std::string saved = m_folder.readFile("my product.lst");
        saved.erase(std::remove(saved.begin(), saved.end(), '\r'), saved.end());
        m_record = saved;
        ASSERT_EQ(41u, wordsOf(m_record).size());
        check(m_record); // what the runtime keeps from its first use on
        m_handles = auttest::openHandles();
        m_left = 0;
        m_inputs = 0;
    }

    void check(const std::string& bytes)
    {
        const long long before = m_balance.blocks();
        read(bytes);
        m_left += m_balance.blocks() - before;
        ++m_inputs;
    }

    /// Reads the file with these bytes, as the model does.
    void read(const std::string& bytes)
    {
        m_folder.writeFile("my product.lst", bytes);
        ::DeleteFileA(auttest::LogFile::ownPath().c_str()); // one that is neither long nor moved aside meanwhile
        m_log.mark();
        ReleaseModel model;
        model.id = 1;
        model.marketingName = "old marketing";
        model.technicalName = "old technical";
        model.date = 9;
        const int expected = model.read(bytes);

        componentsMade = 0;
        allocations = 0;
        largestAllocation = 0;
        CRelease release(1, "old marketing", "old technical", "", "", "", "", 0, 9, 0);
        int answer = -1;
        {
            std::ifstream stream(m_folder / "my product.lst");
            const auttest::ImportPatch patch("_Znwy", &countedNew);
            answer = release.Serialize(stream);
        }
        const std::vector<auttest::LogEvent> events = m_log.events();
        const std::string event = events.empty() ? "" : events.front().text;
        bool same = answer == expected && event == model.event && events.size() <= 1 &&
                    release.GetComponentList().GetCount() == static_cast<int>(model.components.size());
        if (expected == 1)
            same = same && told(release) == told(model);
        // Nothing is set aside for a count: a component is made, read, and only then the next one.
        const bool cheap = componentsMade == model.componentsMade && largestAllocation <= sizeof(CComponent) + 65536 &&
                           allocations <= 200 + 60 * componentsMade;
        m_dear += cheap ? 0 : 1;
        m_differences += same ? 0 : 1;
        if ((!same || !cheap) && ++m_told <= 10)
            ADD_FAILURE() << ::testing::PrintToString(bytes) << "\nmodel " << expected << " " << model.event << " "
                          << model.componentsMade << " components made\n"
                          << told(model) << "\nlibrary " << answer << " " << event << " " << componentsMade
                          << " components made, " << allocations << " allocations\n"
                          << told(release);
    }

    void report(const std::string& what)
    {
        count(what + " (" + std::to_string(m_inputs) + " files): differences", m_differences, 0);
        count(what + ": reads that cost more than the components there", m_dear, 0);
        AllocationBalance::report(what, m_left);
        count(what + ": handles left open",
              static_cast<long long>(auttest::openHandles()) - static_cast<long long>(m_handles), 0);
    }

    const auttest::ClientRegistry m_registry;
    const auttest::TestFolder m_folder;
    const auttest::DetailedLog m_detailed;
    auttest::LogFile m_log;
    std::string m_record;
    const AllocationBalance m_balance;
    long long m_left = 0;
    std::size_t m_handles = 0;
    int m_inputs = 0;
    int m_differences = 0;
    int m_dear = 0;
    int m_told = 0;
};
} // namespace

TEST_F(ReleaseFile, CutAtEveryByteAnswersAsDocumented)
{
    for (std::size_t length = 0; length <= m_record.size(); ++length)
        check(m_record.substr(0, length));
    report("release file cut at every byte");
}

TEST_F(ReleaseFile, WithEveryWordReplacedAnswersAsDocumented)
{
    const std::vector<std::string> words = wordsOf(m_record);
    for (std::size_t at = 0; at < words.size(); ++at)
        for (const std::string& hostile : isLong() ? hostileWords() : worstWords())
            check(linesWith(words, at, hostile));
    report("release file with every word replaced");
}

TEST_F(ReleaseFile, ACountOfThousandsOfMillionsIsReadUpToTheFirstBadComponent)
{
    const std::vector<std::string> words = wordsOf(m_record);
    for (const char* number : {"4", "2000000000", "2147483647", "-1", "-2000000000"})
        for (std::size_t broken = 12; broken <= words.size(); broken += isLong() ? 1 : 5)
        {
            std::vector<std::string> counted = words;
            counted[8] = number;
            if (broken < words.size())
                counted.resize(broken);
            check(linesWith(counted, 8, number));
        }
    report("release file with a wrong count");
}
