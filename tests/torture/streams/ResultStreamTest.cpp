#include "foundation/RT_RESULT.h"
#include "tests/torture/AllocationBalance.h"
#include "tests/torture/Figure.h"
#include "tests/torture/streams/HostileWords.h"
#include "tests/torture/streams/MemoryStream.h"
#include "tests/torture/streams/ResultModel.h"

#include <gtest/gtest.h>

using namespace torture;

namespace
{
class ResultStream : public ::testing::Test
{
protected:
    void SetUp() override
    {
        RT_RESULT record(17);
        record.Set(459, "saving", "function()", "first", "", 5, "C:\\folder\\object");
        MemoryOutput output;
        ASSERT_EQ(1, record.Serialize(output.stream()));
        m_record = output.bytes();
        ASSERT_EQ(7u, wordsOf(m_record).size());
        check(m_record);
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

    void read(const std::string& bytes)
    {
        RT_RESULT record(3);
        ResultModel model(record);
        model.read(bytes);
        MemoryInput input(bytes);
        const int answer = record.Serialize(input.stream());
        const bool same = answer == 1 && ResultModel(record) == model && input.stream().eof() == model.ended() &&
                          input.stream().fail() == model.failed();
        m_differences += same ? 0 : 1;
        if (!same && ++m_told <= 10)
            ADD_FAILURE() << ::testing::PrintToString(bytes) << "\nmodel " << model.told() << "\nlibrary " << answer
                          << " " << ResultModel(record).told();
    }

    void report(const std::string& what)
    {
        count(what + " (" + std::to_string(m_inputs) + " streams): differences", m_differences, 0);
        AllocationBalance::report(what, m_left);
    }

    std::string m_record;
    const AllocationBalance m_balance;
    long long m_left = 0;
    int m_inputs = 0;
    int m_differences = 0;
    int m_told = 0;
};
} // namespace

TEST_F(ResultStream, CutAtEveryByteAnswersAsDocumented)
{
    for (std::size_t length = 0; length <= m_record.size(); ++length)
        check(m_record.substr(0, length));
    report("result stream cut at every byte");
}

TEST_F(ResultStream, WithEveryWordReplacedAnswersAsDocumented)
{
    const std::vector<std::string> words = wordsOf(m_record);
    for (std::size_t at = 0; at < words.size(); ++at)
        for (const std::string& hostile : hostileWords())
            check(linesWith(words, at, hostile));
    report("result stream with every word replaced");
}
