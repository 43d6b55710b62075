// Searching and comparing allocate nothing. The linker sends every allocation of this program through the counters.

#include "foundation/String.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace
{
int allocations = 0;
}

extern "C"
{
    void* __real_malloc(std::size_t size);
    void* __real_realloc(void* block, std::size_t size);
    char* __real__strdup(const char* text);
    void* __real__Znwy(std::size_t size);

    void* __wrap_malloc(std::size_t size)
    {
        ++allocations;
        return __real_malloc(size);
    }
    void* __wrap_realloc(void* block, std::size_t size)
    {
        ++allocations;
        return __real_realloc(block, size);
    }
    char* __wrap__strdup(const char* text)
    {
        ++allocations;
        return __real__strdup(text);
    }
    void* __wrap__Znwy(std::size_t size)
    {
        ++allocations;
        return __real__Znwy(size);
    }
}

namespace
{
template <typename Work> int allocationsOf(Work&& work)
{
    const int before = allocations;
    work();
    return allocations - before;
}

TEST(Allocations, AreCounted)
{
    EXPECT_EQ(1, allocationsOf([] { String s("abc"); }));
}

TEST(Allocations, SearchAllocatesNothing)
{
    const String text("the quick brown fox jumps over the lazy dog");
    EXPECT_EQ(0, allocationsOf(
                     [&]
                     {
                         EXPECT_EQ(40, text.Find("DOG"));
                         EXPECT_EQ(-1, text.Find("cat", 3));
                         EXPECT_EQ(4, text.Find('q'));
                         EXPECT_NE(nullptr, stristr(text, "FOX"));
                     }));
}

TEST(Allocations, ComparisonAllocatesNothing)
{
    const String a("abc");
    const String b("ABC");
    EXPECT_EQ(0, allocationsOf(
                     [&]
                     {
                         EXPECT_EQ(1, a == b);
                         EXPECT_EQ(1, a == "aBc");
                         EXPECT_EQ(0, a != b);
                     }));
}
} // namespace
