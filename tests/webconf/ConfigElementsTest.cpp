#include "webconf/ConfigElements.h"

#include <gtest/gtest.h>

namespace
{
TEST(CTimerElement, StartsAtZeroAndKeepsWhatIsSet)
{
    CTimerElement timer;
    EXPECT_EQ(0, timer.GetTimerID());
    EXPECT_EQ(0, timer.GetTimerValue());
    timer.SetTimerID(7);
    timer.SetTimerValue(-30);
    const CTimerElement copy(timer);
    CTimerElement assigned;
    assigned = copy;
    EXPECT_EQ(7, assigned.GetTimerID());
    EXPECT_EQ(-30, assigned.GetTimerValue());
}

TEST(CHotKeyElement, CopiesCarryEveryField)
{
    CHotKeyElement key;
    EXPECT_EQ(0, key.m_id);
    EXPECT_EQ('\0', key.m_key);
    EXPECT_EQ(0, key.m_modifiers);
    key.m_id = 3;
    key.m_key = 'U';
    key.m_modifiers = 5;
    const CHotKeyElement copy(key);
    CHotKeyElement assigned;
    assigned = copy;
    EXPECT_EQ(3, assigned.m_id);
    EXPECT_EQ('U', assigned.m_key);
    EXPECT_EQ(5, assigned.m_modifiers);
}

TEST(CErrorTableMember, CopiesCarryEveryField)
{
    CErrorTableMember member;
    EXPECT_EQ(0, member.MaxRetries);
    EXPECT_EQ(0, member.m_index);
    EXPECT_EQ(0, member.m_delay.m_lower);
    EXPECT_EQ(0, member.m_delay.m_upper);
    member.MaxRetries = 1;
    member.m_index = 2;
    member.m_delay.m_lower = 3;
    member.m_delay.m_upper = 4;
    const CErrorTableMember copy(member);
    CErrorTableMember assigned;
    assigned = copy;
    EXPECT_EQ(1, assigned.MaxRetries);
    EXPECT_EQ(2, assigned.m_index);
    EXPECT_EQ(3, assigned.m_delay.m_lower);
    EXPECT_EQ(4, assigned.m_delay.m_upper);
}
} // namespace
