#include "filetransfer/BodyBuffer.h"

#include <cstring>
#include <gtest/gtest.h>

using filetransfer::BodyBuffer;

TEST(BodyBuffer, GrowsInPlaceUpToItsLimit)
{
    BodyBuffer buffer;
    ASSERT_TRUE(buffer.reserve(300000));
    const char* const base = buffer.data();
    while (buffer.length() < 300000)
    {
        char* const room = buffer.room(10000);
        ASSERT_NE(nullptr, room);
        std::memset(room, 'b', 10000);
        buffer.grow(10000);
    }
    EXPECT_EQ(base, buffer.data());
    EXPECT_EQ(300000u, std::strlen(buffer.data()));
    EXPECT_EQ(nullptr, buffer.room(1));
}

TEST(BodyBuffer, ClearingKeepsTheMemoryAndForgetsTheBytes)
{
    BodyBuffer buffer;
    ASSERT_TRUE(buffer.reserve(100));
    std::memcpy(buffer.room(5), "first", 5);
    buffer.grow(5);
    buffer.clear();
    EXPECT_EQ(0u, buffer.length());
    std::memcpy(buffer.room(2), "ab", 2);
    buffer.grow(2);
    EXPECT_STREQ("ab", buffer.data());
}

TEST(BodyBuffer, HasNoRoomBeforeItIsReserved)
{
    BodyBuffer buffer;
    EXPECT_EQ(nullptr, buffer.room(1));
}

TEST(BodyBuffer, AnImpossibleLimitIsRefused)
{
    BodyBuffer buffer;
    EXPECT_FALSE(buffer.reserve(SIZE_MAX / 2));
}
