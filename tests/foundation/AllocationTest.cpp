// Searching and comparing allocate nothing; list nodes come and go one by one. The linker sends every allocation of
// this program through the counters.

#include "foundation/RT_List.h"
#include "foundation/String.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace
{
int allocations = 0;
int newCalls = 0;    ///< of the global operator new
int deleteCalls = 0; ///< of the global operator delete, with a size or without
} // namespace

extern "C"
{
    void* __real_malloc(std::size_t size);
    void* __real_realloc(void* block, std::size_t size);
    char* __real__strdup(const char* text);
    void* __real__Znwy(std::size_t size);
    void __real__ZdlPv(void* block);
    void __real__ZdlPvy(void* block, std::size_t size);

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
        ++newCalls;
        return __real__Znwy(size);
    }
    void __wrap__ZdlPv(void* block)
    {
        ++deleteCalls;
        __real__ZdlPv(block);
    }
    void __wrap__ZdlPvy(void* block, std::size_t size)
    {
        ++deleteCalls;
        __real__ZdlPvy(block, size);
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

/// How often the global operators new and delete were called, since the object was made.
class NodeCounts
{
public:
    int made() const { return newCalls - m_newCalls; }
    int freed() const { return deleteCalls - m_deleteCalls; }

private:
    int m_newCalls = newCalls;
    int m_deleteCalls = deleteCalls;
};

TEST(Allocations, EachListNodeIsOneNewAndOneDelete)
{
    String text("abc"); // its buffer comes from malloc
    int numbers[] = {1, 2, 3, 4};
    const NodeCounts all;
    {
        RT_List<String, String&> texts;
        RT_List<int*, int*> pointers;
        EXPECT_EQ(0, all.made());
        texts.AddTail(text);
        EXPECT_EQ(1, all.made());
        texts.AddHead(text);
        for (int& number : numbers)
            pointers.AddTail(&number);
        EXPECT_EQ(6, all.made());
        EXPECT_EQ(0, all.freed());

        texts.RemoveHead();
        EXPECT_EQ(1, all.freed());
        pointers.RemoveAt(pointers.GetHeadPosition());
        EXPECT_EQ(2, all.freed());
        pointers.RemoveAll();
        EXPECT_EQ(5, all.freed());
    }
    EXPECT_EQ(6, all.made());
    EXPECT_EQ(6, all.freed()) << "the destructor frees what is left";
}
} // namespace
