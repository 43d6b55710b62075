#ifndef AUTOOLS_TESTS_SUPPORT_GUARD_GUARDEDBLOCKS_H
#define AUTOOLS_TESTS_SUPPORT_GUARD_GUARDEDBLOCKS_H

#include <cstddef>
#include <cstdint>

/// Blocks of memory whose last byte is the last byte of a page, with a page behind it that nobody may touch. A freed
/// block may not be touched either; its addresses are used again only after many others have been freed.
///
/// Nothing here uses the C or C++ runtime: it stands below both. Thread-safe.
namespace guard
{
/// What has been handed out in this process.
struct Figures
{
    std::uint64_t guarded;   ///< Blocks that end at a no-access page.
    std::uint64_t unguarded; ///< Blocks left to the C runtime: too large, or too many alive at once.
    std::uint64_t alive;     ///< Guarded blocks not yet freed.
};

/// What is wrong with a block that is given back.
enum class Fault
{
    none,
    notABlock,   ///< An address inside the region that is not the start of a block.
    freedBefore, ///< The block has been freed already.
    damaged      ///< Bytes just before the block (or between its end and the page's) were overwritten.
};

/// A block of exactly `size` bytes, filled with 0xCD, or null when it cannot be guarded: the caller then asks the C
/// runtime. The alignment is the lowest set bit of the size, at most 16, so that the block ends at the very end of its
/// page; when a greater one is asked for, up to `alignment` - 1 bytes behind the block are watched instead.
void* allocate(std::size_t size, std::size_t alignment = 1);
/// Whether the address lies where such blocks lie.
bool isGuarded(const void* block);
/// The size that was asked for; 0 when it is no living block.
std::size_t sizeOf(const void* block);
/// Gives a block back: from now on any access to it is a fault.
Fault release(void* block);
/// Says in `size` and `start` which block (living or freed) the page of an address belongs to or stands behind.
bool describe(const void* address, std::size_t& size, const void*& start, bool& freed);
/// Counts one block that the C runtime gave in our place.
void countUnguarded();
Figures figures();
} // namespace guard

#endif
