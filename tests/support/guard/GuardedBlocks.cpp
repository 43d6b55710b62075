#include "GuardedBlocks.h"

#include <windows.h>

namespace guard
{
namespace
{
constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kChunkPages = std::size_t{1} << 20; // 4 GB of addresses
constexpr std::size_t kChunks = 64;
/// Each living block splits the address space twice, and the host gives a process 65,530 pieces. What comes on top of
/// this many is left to the C runtime.
constexpr std::uint64_t kMostAlive = 24'000;
/// Freed addresses of one size that stay untouched before the oldest of them are used again, in pages: 256 MB.
constexpr std::size_t kQuarantinePages = std::size_t{1} << 16;
constexpr std::size_t kExactPages = 16; // up to here each number of pages has a list of its own
constexpr std::size_t kLists = kExactPages + 1 + 20;
/// How many bytes before a block are watched. They are looked at when it is freed.
constexpr std::size_t kWatchedBytes = 64;
constexpr unsigned char kFresh = 0xCD;
constexpr unsigned char kWatched = 0xFD;

enum class State : std::uint32_t
{
    unused,
    alive,
    freed
};

/// Stands at the page of a block's first byte (of the guard page, for a block of no bytes).
struct Note
{
    std::uint64_t sizeBytes;
    Note* next; // in the list of freed ranges
    std::uint32_t rangeFirst;
    std::uint32_t list;
    State state;
    std::uint32_t padBytes; // between the block's end and the guard page
};

struct Chunk
{
    char* base;
    Note* notes;
};

/// Ranges of addresses of one length, the longest freed first.
struct Quarantine
{
    Note* oldest;
    Note* newest;
    std::size_t count;
};

SRWLOCK g_lock = SRWLOCK_INIT;
Chunk g_chunks[kChunks];
volatile LONG g_chunkCount = 0;
std::size_t g_nextPage = kChunkPages; // in the last chunk
Quarantine g_quarantines[kLists];
Figures g_figures;

class Locked
{
public:
    Locked() { ::AcquireSRWLockExclusive(&g_lock); }
    ~Locked() { ::ReleaseSRWLockExclusive(&g_lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

/// Pages of a range that can hold so many, and the number of its list.
std::size_t capacity(std::size_t pages, std::uint32_t& list)
{
    if (pages <= kExactPages)
    {
        list = static_cast<std::uint32_t>(pages);
        return pages;
    }
    std::size_t rounded = kExactPages * 2;
    list = kExactPages + 1;
    while (rounded < pages)
    {
        rounded *= 2;
        ++list;
    }
    return rounded;
}

const Chunk* chunkOf(const void* address, std::size_t& page)
{
    const LONG count = g_chunkCount;
    for (LONG i = 0; i < count; ++i)
    {
        const auto offset = static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(address) -
                                                     reinterpret_cast<std::uintptr_t>(g_chunks[i].base));
        if (offset < kChunkPages * kPageBytes)
        {
            page = offset / kPageBytes;
            return &g_chunks[i];
        }
    }
    return nullptr;
}

bool addChunk()
{
    const auto index = static_cast<std::size_t>(g_chunkCount);
    if (index == kChunks)
        return false;
    void* const base = ::VirtualAlloc(nullptr, kChunkPages * kPageBytes, MEM_RESERVE, PAGE_NOACCESS);
    void* const notes = ::VirtualAlloc(nullptr, kChunkPages * sizeof(Note), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (base == nullptr || notes == nullptr)
        return false;
    g_chunks[index] = {static_cast<char*>(base), static_cast<Note*>(notes)};
    ::InterlockedIncrement(&g_chunkCount);
    g_nextPage = 0;
    return true;
}

/// A range of `pages` pages and one more that is never opened. Null when there is no room.
char* takeRange(std::size_t pages, std::uint32_t list)
{
    Quarantine& quarantine = g_quarantines[list];
    if (quarantine.count > 64 && quarantine.count * (pages + 1) > kQuarantinePages)
    {
        Note* const oldest = quarantine.oldest;
        quarantine.oldest = oldest->next;
        --quarantine.count;
        for (LONG i = 0; i < g_chunkCount; ++i)
            if (oldest >= g_chunks[i].notes && oldest < g_chunks[i].notes + kChunkPages)
            {
                oldest->state = State::unused;
                return g_chunks[i].base + oldest->rangeFirst * kPageBytes;
            }
        return nullptr;
    }
    if (pages + 1 > kChunkPages || (kChunkPages - g_nextPage < pages + 1 && !addChunk()))
        return nullptr;
    char* const range = g_chunks[g_chunkCount - 1].base + g_nextPage * kPageBytes;
    g_nextPage += pages + 1;
    return range;
}

void putBack(Note* note)
{
    Quarantine& quarantine = g_quarantines[note->list];
    note->next = nullptr;
    if (quarantine.count == 0)
        quarantine.oldest = note;
    else
        quarantine.newest->next = note;
    quarantine.newest = note;
    ++quarantine.count;
}

void fill(void* from, std::size_t bytes, unsigned char value) { __builtin_memset(from, value, bytes); }

bool isWatched(const char* from, const char* end)
{
    for (; from < end; ++from)
        if (static_cast<unsigned char>(*from) != kWatched)
            return false;
    return true;
}

std::size_t watchedBefore(const char* block)
{
    const std::size_t before = reinterpret_cast<std::uintptr_t>(block) % kPageBytes;
    return before < kWatchedBytes ? before : kWatchedBytes;
}

/// The note of the block that starts at this very address, or null.
Note* noteOf(const void* block, const Chunk*& chunk)
{
    std::size_t page = 0;
    chunk = chunkOf(block, page);
    if (chunk == nullptr)
        return nullptr;
    Note& note = chunk->notes[page];
    if (note.state == State::unused)
        return nullptr;
    std::uint32_t list = 0;
    const std::size_t pages = (note.sizeBytes + note.padBytes + kPageBytes - 1) / kPageBytes;
    const std::size_t room = capacity(pages, list);
    const char* const end = chunk->base + (note.rangeFirst + room) * kPageBytes;
    return end - note.padBytes - note.sizeBytes == block ? &note : nullptr;
}
} // namespace

void* allocate(std::size_t size, std::size_t alignment)
{
    if (size >= kChunkPages * kPageBytes / 4 || alignment > kPageBytes)
        return nullptr;
    const std::size_t pad = (alignment - size % alignment) % alignment;
    const std::size_t pages = (size + pad + kPageBytes - 1) / kPageBytes;
    std::uint32_t list = 0;
    const std::size_t room = capacity(pages, list);
    char* range = nullptr;
    {
        const Locked locked;
        if (g_figures.alive >= kMostAlive)
            return nullptr;
        range = takeRange(room, list);
        if (range == nullptr)
            return nullptr;
        ++g_figures.alive;
        ++g_figures.guarded;
    }
    char* const end = range + room * kPageBytes;
    char* const block = end - pad - size;
    // When this fails the range is lost for good, which is a matter of addresses only.
    if (pages != 0 &&
        ::VirtualAlloc(end - pages * kPageBytes, pages * kPageBytes, MEM_COMMIT, PAGE_READWRITE) == nullptr)
    {
        const Locked locked;
        --g_figures.alive;
        --g_figures.guarded;
        return nullptr;
    }
    if (pages != 0)
    {
        const std::size_t watched = watchedBefore(block);
        fill(block - watched, watched, kWatched);
        fill(block, size, kFresh);
        fill(block + size, pad, kWatched);
    }
    std::size_t page = 0;
    const Chunk* const chunk = chunkOf(block, page);
    const Locked locked;
    Note& note = chunk->notes[page];
    note.sizeBytes = size;
    note.rangeFirst = static_cast<std::uint32_t>(static_cast<std::size_t>(range - chunk->base) / kPageBytes);
    note.list = list;
    note.padBytes = static_cast<std::uint32_t>(pad);
    note.state = State::alive;
    return block;
}

bool isGuarded(const void* block)
{
    std::size_t page = 0;
    return chunkOf(block, page) != nullptr;
}

std::size_t sizeOf(const void* block)
{
    const Locked locked;
    const Chunk* chunk = nullptr;
    const Note* const note = noteOf(block, chunk);
    return note != nullptr && note->state == State::alive ? note->sizeBytes : 0;
}

Fault release(void* block)
{
    Note* note = nullptr;
    const Chunk* chunk = nullptr;
    {
        const Locked locked;
        note = noteOf(block, chunk);
        if (note == nullptr)
            return Fault::notABlock;
        if (note->state == State::freed)
            return Fault::freedBefore;
        note->state = State::freed;
        --g_figures.alive;
    }
    const auto* const start = static_cast<const char*>(block);
    const char* const end = start + note->sizeBytes + note->padBytes;
    const std::size_t pages = (note->sizeBytes + note->padBytes + kPageBytes - 1) / kPageBytes;
    if (pages != 0)
    {
        if (!isWatched(start - watchedBefore(start), start) || !isWatched(start + note->sizeBytes, end))
            return Fault::damaged;
        ::VirtualFree(const_cast<char*>(end) - pages * kPageBytes, pages * kPageBytes, MEM_DECOMMIT);
    }
    const Locked locked;
    putBack(note);
    return Fault::none;
}

bool describe(const void* address, std::size_t& size, const void*& start, bool& freed)
{
    std::size_t page = 0;
    const Chunk* const chunk = chunkOf(address, page);
    if (chunk == nullptr)
        return false;
    // The note stands at the block's first page: here, or before.
    for (std::size_t at = page + 1; at-- > 0 && page - at < kChunkPages / 4;)
    {
        const Note& note = chunk->notes[at];
        if (note.state == State::unused)
            continue;
        std::uint32_t list = 0;
        const std::size_t pages = (note.sizeBytes + note.padBytes + kPageBytes - 1) / kPageBytes;
        size = note.sizeBytes;
        start = chunk->base + (note.rangeFirst + capacity(pages, list)) * kPageBytes - note.padBytes - note.sizeBytes;
        freed = note.state == State::freed;
        return true;
    }
    return false;
}

void countUnguarded()
{
    const Locked locked;
    ++g_figures.unguarded;
}

Figures figures()
{
    const Locked locked;
    return g_figures;
}
} // namespace guard
