#include "tests/webconf/CIDManager.h"

#include <algorithm>
#include <chrono>

namespace
{
class CIDSourceUsers : public CIDTest
{
protected:
    void keep(const std::string& user, const char* cid, const char* state) const
    {
        m_registry.write("Config\\Cache\\User\\" + user, cid, state);
    }
    CIDs appendedTo(const CIDs& list)
    {
        Steps::startList(m_manager, list);
        Steps::appendUsers(m_manager);
        return Steps::list(m_manager);
    }
};

TEST_F(CIDSourceUsers, WithoutAnyTheListStaysAsItIs)
{
    EXPECT_EQ((CIDs{"FIRST0000001"}), appendedTo({"FIRST0000001"}));
}

TEST_F(CIDSourceUsers, EveryUsersCIDsAreAppended)
{
    keep("anna", "QU5OQS0wMDAx", "");
    keep("anna", "QU5OQS0wMDAy", "Valid");
    keep("OFFICE_bert", "QkVSVC0wMDAx", "anything");
    EXPECT_EQ((CIDs{"FIRST0000001", "QU5OQS0wMDAx", "QU5OQS0wMDAy", "QkVSVC0wMDAx"}), appendedTo({"FIRST0000001"}));
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_F(CIDSourceUsers, ARevokedOneIsSkipped)
{
    keep("anna", "QU5OQS0wMDAx", "Revoked");
    keep("anna", "QU5OQS0wMDAy", "Revoked later");
    keep("anna", "QU5OQS0wMDAz", "revoked");
    keep("bert", "QU5OQS0wMDAx", "Valid");
    EXPECT_EQ((CIDs{"QU5OQS0wMDAy", "QU5OQS0wMDAx"}), appendedTo({})) << "revoked for one user only";
}

TEST_F(CIDSourceUsers, OneThatTheListHasInAnyCaseIsNotAppended)
{
    keep("anna", "QU5OQS0wMDAx", "");
    keep("bert", "qu5oqs0wmdax", "");
    keep("bert", "first0000001", "");
    EXPECT_EQ((CIDs{"FIRST0000001", "QU5OQS0wMDAx"}), appendedTo({"FIRST0000001"}));
}

TEST_F(CIDSourceUsers, ValuesOfAnyTypeCount)
{
    m_registry.write("Config\\Cache\\User\\anna", "NUMBER000001", 7);
    m_registry.writeRaw("Config\\Cache\\User\\anna", "EMPTY0000001", REG_SZ, "");
    m_registry.writeRaw("Config\\Cache\\User\\anna", "UNENDED00001", REG_SZ, "Revoked");
    m_registry.write("Config\\Cache\\User\\anna", "LONG00000001", std::string(10000, 'x'));
    CIDs appended = appendedTo({});
    std::sort(appended.begin(), appended.end()); // the order is the registry's
    EXPECT_EQ((CIDs{"EMPTY0000001", "LONG00000001", "NUMBER000001"}), appended);
}

TEST_F(CIDSourceUsers, TheKeysUnnamedValueIsNoCID)
{
    m_registry.write("Config\\Cache\\User\\anna", nullptr, "text");
    keep("anna", "QU5OQS0wMDAx", "");
    EXPECT_EQ((CIDs{"QU5OQS0wMDAx"}), appendedTo({}));
}

TEST_F(CIDSourceUsers, ValuesOfTheKeyAboveBelongToNobody)
{
    m_registry.write("Config\\Cache\\User", "TOPLEVEL0001", "");
    EXPECT_EQ(CIDs{}, appendedTo({}));
}

TEST_F(CIDSourceUsers, TenThousandOnAListOfTenThousandTakeNoMinutes)
{
    CIDs list;
    for (int i = 0; i < 10000; ++i)
        list.push_back("LISTED" + std::to_string(1000000 + i));
    keep("anna", "QU5OQS0wMDAx", "");
    for (std::size_t i = 0; i < list.size(); i += 5)
        keep("anna", list[i].c_str(), "");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(10001U, appendedTo(list).size());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}
} // namespace
