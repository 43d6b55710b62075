#include "tests/support/guard/Guard.h"

#include "foundation/String.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <direct.h>
#include <memory>
#include <new>
#include <vector>

namespace
{
// Behind these the compiler sees no allocation, and so nothing to warn of or to leave out.
void* (*volatile allocateBytes)(std::size_t) = std::malloc;
void* (*volatile allocateZeros)(std::size_t, std::size_t) = std::calloc;
void* (*volatile resize)(void*, std::size_t) = std::realloc;
void (*volatile release)(void*) = std::free;
char* (*volatile duplicate)(const char*) = _strdup;
void* (*volatile newBytes)(std::size_t) = ::operator new;
void (*volatile deleteBytes)(void*) = ::operator delete;
void* (*volatile newArray)(std::size_t) = ::operator new[];
void (*volatile deleteArray)(void*) = ::operator delete[];

char readAt(const volatile char* at) { return *at; }
void writeAt(volatile char* at) { *at = 'x'; }

std::uint64_t guarded()
{
    AutoolsGuardFigures figures{};
    autoolsGuardFigures(&figures);
    return figures.guarded;
}

/// How a program ends at a fault.
const ::testing::ExitedWithCode kCaught(static_cast<int>(EXCEPTION_ACCESS_VIOLATION));

class GuardedSize : public ::testing::TestWithParam<int>
{
protected:
    std::size_t size() const { return static_cast<std::size_t>(GetParam()); }
    char* allocate() const { return static_cast<char*>(allocateBytes(size())); }
};

TEST_P(GuardedSize, EveryByteIsTheCallers)
{
    char* const block = allocate();
    std::memset(block, 'x', size());
    EXPECT_EQ(size(), _msize(block));
    release(block);
}

TEST_P(GuardedSize, ReadOfOneByteBehindIsCaught)
{
    char* const block = allocate();
    EXPECT_EXIT(readAt(block + size()), kCaught, "read of .* behind the block of");
    release(block);
}

TEST_P(GuardedSize, WriteOfOneByteBehindIsCaught)
{
    char* const block = allocate();
    EXPECT_EXIT(writeAt(block + size()), kCaught, "write to .* behind the block of");
    release(block);
}

INSTANTIATE_TEST_SUITE_P(OddAndEven, GuardedSize,
                         ::testing::Values(0, 1, 2, 3, 7, 8, 13, 24, 260, 4095, 4096, 4097, 65536, 70001, 1000003));

class GuardedKind : public ::testing::Test
{
protected:
    /// What every kind of block must show: caught one behind its end, and caught once it is freed.
    template <typename Release> static void expectCaught(char* block, std::size_t size, Release&& freeIt)
    {
        EXPECT_EXIT(readAt(block + size), kCaught, "");
        EXPECT_EXIT(
            {
                freeIt();
                readAt(block);
            },
            kCaught, "freed block");
        freeIt();
    }
};

TEST_F(GuardedKind, Calloc)
{
    auto* const block = static_cast<char*>(allocateZeros(3, 5));
    EXPECT_EQ(0, std::memcmp(block, "\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 15));
    expectCaught(block, 15, [&] { release(block); });
}

TEST_F(GuardedKind, CallocOfMoreThanThereIsGivesNull) { EXPECT_EQ(nullptr, allocateZeros(SIZE_MAX / 2, 3)); }

TEST_F(GuardedKind, Strdup)
{
    char* const block = duplicate("abc");
    EXPECT_STREQ("abc", block);
    expectCaught(block, 4, [&] { release(block); });
}

TEST_F(GuardedKind, OperatorNew)
{
    auto* const block = static_cast<char*>(newBytes(21));
    expectCaught(block, 21, [&] { deleteBytes(block); });
}

TEST_F(GuardedKind, OperatorNewOfAnArray)
{
    auto* const block = static_cast<char*>(newArray(33));
    expectCaught(block, 33, [&] { deleteArray(block); });
}

TEST_F(GuardedKind, OperatorNewThatDoesNotThrow)
{
    auto* const block = static_cast<char*>(::operator new(21, std::nothrow));
    expectCaught(block, 21, [&] { ::operator delete(block, std::nothrow); });
}

TEST_F(GuardedKind, OperatorNewOfAGivenAlignment)
{
    auto* const block = static_cast<char*>(::operator new (192, std::align_val_t{64}));
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(block) % 64);
    expectCaught(block, 192, [&] { ::operator delete (block, std::align_val_t{64}); });
}

TEST_F(GuardedKind, Resized)
{
    auto* const first = static_cast<char*>(allocateBytes(4));
    std::memcpy(first, "abc", 4);
    auto* const block = static_cast<char*>(resize(first, 9));
    EXPECT_STREQ("abc", block);
    EXPECT_EXIT(readAt(first), kCaught, "freed block of 4 bytes") << "the block always moves";
    expectCaught(block, 9, [&] { release(block); });
}

TEST_F(GuardedKind, BlockOfTheLibrary)
{
    String text("four");
    char* const block = text.GetBuffer();
    expectCaught(block, 5, [&] { text.Empty(); });
}

TEST(Guard, SecondFreeIsCaught)
{
    void* const block = allocateBytes(10);
    EXPECT_EXIT(
        {
            release(block);
            release(block);
        },
        kCaught, "freed twice");
    release(block);
}

TEST(Guard, FreeingTheInsideOfABlockIsCaught)
{
    auto* const block = static_cast<char*>(allocateBytes(10));
    EXPECT_EXIT(release(block + 1), kCaught, "no block starts there");
    release(block);
}

TEST(Guard, WriteBeforeTheBlockIsCaughtWhenItIsFreed)
{
    auto* const block = static_cast<char*>(allocateBytes(10));
    EXPECT_EXIT(
        {
            writeAt(block - 1);
            release(block);
        },
        kCaught, "beside the block");
    release(block);
}

TEST(Guard, WriteBehindAnAlignedBlockIsCaughtAtTheLatestWhenItIsFreed)
{
    auto* const block = static_cast<char*>(::_aligned_malloc(100, 64));
    EXPECT_EXIT(
        {
            writeAt(block + 100);
            ::_aligned_free(block);
        },
        kCaught, "beside the block");
    ::_aligned_free(block);
}

TEST(Guard, FreshMemoryIsNotZero)
{
    auto* const block = static_cast<unsigned char*>(allocateBytes(3));
    EXPECT_EQ(0xCD, block[0]);
    EXPECT_EQ(0xCD, block[2]);
    release(block);
}

TEST(Guard, BlocksOfTheRuntimeItselfAreFreedByIt)
{
    const std::uint64_t before = guarded();
    char* const folder = ::_getcwd(nullptr, 0);
    ASSERT_NE(nullptr, folder);
    EXPECT_EQ(before, guarded());
    auto* const longer = static_cast<char*>(resize(folder, 5000));
    EXPECT_EQ(':', longer[1]);
    release(longer);
}

TEST(Guard, MoreBlocksThanCanBeGuardedAreLeftToTheRuntime)
{
    AutoolsGuardFigures before{};
    autoolsGuardFigures(&before);
    std::vector<void*> blocks(50'000);
    for (void*& block : blocks)
        block = allocateBytes(5);
    AutoolsGuardFigures after{};
    autoolsGuardFigures(&after);
    EXPECT_LT(20'000U, after.guarded - before.guarded);
    EXPECT_EQ(blocks.size() + 1,
              after.guarded - before.guarded + after.unguarded - before.unguarded); // and the vector's
    for (void* block : blocks)
        release(block);
    const std::uint64_t again = guarded();
    release(allocateBytes(5));
    EXPECT_EQ(again + 1, guarded());
}

TEST(Guard, AddressesAreUsedAgainOnlyAfterManyOthers)
{
    void* const first = allocateBytes(5);
    release(first);
    int others = 0;
    for (; others < 100'000; ++others)
    {
        void* const other = allocateBytes(5);
        release(other);
        if (other == first)
            break;
    }
    EXPECT_LT(30'000, others);
    EXPECT_GT(100'000, others) << "addresses must not run out";
}

TEST(Guard, ThreadsDoNotDisturbEachOther)
{
    const auto work = [](void*) -> DWORD
    {
        for (int i = 1; i < 3'000; ++i)
        {
            std::unique_ptr<char[]> block(new char[static_cast<std::size_t>(i)]);
            block[static_cast<std::size_t>(i) - 1] = 'x';
        }
        return 0;
    };
    HANDLE threads[4];
    for (HANDLE& thread : threads)
        thread = ::CreateThread(nullptr, 0, work, nullptr, 0, nullptr);
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForMultipleObjects(4, threads, TRUE, 60'000));
    for (HANDLE thread : threads)
        ::CloseHandle(thread);
}
} // namespace
