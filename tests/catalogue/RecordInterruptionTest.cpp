// The interruption event that every component and release carries.
#include "catalogue/CRelease.h"
#include "platform/UniqueResource.h"
#include "tests/support/OpenHandles.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <memory>
#include <string>
#include <type_traits>

namespace
{
constexpr char kName[] = "RecordInterruptionTest";

bool eventExists() { return static_cast<bool>(aut::UniqueHandle{::OpenEventA(SYNCHRONIZE, FALSE, kName)}); }

int createEvent(CInterruptionEvent& event)
{
    String name = kName;
    return event.Create(name);
}

template <typename Record> class RecordInterruption : public ::testing::Test
{
};
struct RecordName
{
    template <typename Record> static std::string GetName(int)
    {
        return std::is_same_v<Record, CComponent> ? "CComponent" : "CRelease";
    }
};
using Records = ::testing::Types<CComponent, CRelease>;
TYPED_TEST_SUITE(RecordInterruption, Records, RecordName);

TYPED_TEST(RecordInterruption, IsThereWithTheRecordAndNotYetCreated)
{
    const std::size_t before = auttest::openHandles();
    TypeParam record;
    EXPECT_EQ(before, auttest::openHandles());
    EXPECT_EQ(nullptr, record.GetInterruptionEvent().GetEventHandle());
    EXPECT_EQ(0, record.GetInterruptionEvent().IsITRaised());
}

TYPED_TEST(RecordInterruption, IsGoneWithTheRecordThoughItIsWatched)
{
    const std::size_t before = auttest::openHandles();
    {
        TypeParam record;
        ASSERT_EQ(1, createEvent(record.GetInterruptionEvent()));
        ASSERT_EQ(1, record.GetInterruptionEvent().StartPooling());
        EXPECT_TRUE(eventExists());
    }
    EXPECT_FALSE(eventExists());
    EXPECT_EQ(before, auttest::openHandles());
}

TYPED_TEST(RecordInterruption, IsACopysOwn)
{
    TypeParam record;
    ASSERT_EQ(1, createEvent(record.GetInterruptionEvent()));
    record.GetInterruptionEvent().SetFlag();
    const void* const handle = record.GetInterruptionEvent().GetEventHandle();
    auto copy = std::make_unique<TypeParam>(record);
    EXPECT_EQ(nullptr, copy->GetInterruptionEvent().GetEventHandle());
    EXPECT_EQ(0, copy->GetInterruptionEvent().IsITRaised());
    *copy = record;
    EXPECT_EQ(nullptr, copy->GetInterruptionEvent().GetEventHandle());
    copy.reset();
    EXPECT_EQ(handle, record.GetInterruptionEvent().GetEventHandle());
    EXPECT_TRUE(eventExists());
}
} // namespace
