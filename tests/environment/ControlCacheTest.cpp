#include "environment/ControlCache.h"

#include "environment/ActiveXCache.h"
#include "tests/environment/FakeControlCache.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

TEST(ControlCache, IsNotLoadedWhereThereIsNone)
{
    const aut::ControlCache cache;
    EXPECT_FALSE(cache.isLoaded());
}

TEST(ControlCache, ATextThatFillsTheBufferIsTerminated)
{
    auttest::FakeControlCache fake;
    fake.controls = {{std::string(300, 'x')}};
    fake.unterminated = true;
    aut::ControlCache cache;
    ASSERT_TRUE(cache.isLoaded());
    const HANDLE control = cache.first();
    aut::ControlCache::Text text;
    std::memset(text, '?', sizeof text);
    EXPECT_TRUE(cache.read(control, aut::ControlCache::Info::ClassId, text));
    EXPECT_EQ(std::string(260, 'x'), text);
    cache.release(control);
}

TEST(ControlCache, TheWalkIsClosedWhereverItStops)
{
    for (const int seen : {0, 1, 2, 3})
    {
        auttest::FakeControlCache fake;
        fake.controls = {{"{A}"}, {"{B}"}};
        aut::ControlCache cache;
        for (int i = 0; i < seen; ++i)
        {
            const HANDLE control = i == 0 ? cache.first() : cache.next();
            EXPECT_EQ(i < 2, control != nullptr);
            if (control != nullptr)
                cache.release(control);
        }
    } // the fake fails the test when a walk is open
}

TEST(ControlCache, OnlyAControlInUseBlocksRemovals)
{
    auttest::FakeControlCache fake;
    fake.controls = {{"{A}", "a.ocx", "{T}", 1}};
    EXPECT_FALSE(aut::isRemovalBlocked());
    for (const unsigned long other : {0UL, 0x80004005UL, 0x80070020UL, 0x80030021UL, 32UL})
    {
        fake.removal = static_cast<HRESULT>(other);
        EXPECT_TRUE(RemoveCABFromCLSID("{A}"));
        EXPECT_FALSE(RemoveCABFromCLSID("{B}"));
        EXPECT_FALSE(aut::isRemovalBlocked()) << other;
        EXPECT_EQ(std::vector<std::string>{"a.ocx|{A}|{T}|1|1"}, fake.removed);
        fake.removed.clear();
    }
    fake.removal = static_cast<HRESULT>(0x80030020);
    EXPECT_FALSE(RemoveCABFromCLSID("{A}"));
    EXPECT_TRUE(aut::isRemovalBlocked());
    fake.removal = S_OK;
    EXPECT_TRUE(RemoveCABFromCLSID("{A}"));
    EXPECT_TRUE(aut::isRemovalBlocked()) << "for the rest of the process";
}
