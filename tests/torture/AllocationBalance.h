#ifndef AUTOOLS_TORTURE_ALLOCATIONBALANCE_H
#define AUTOOLS_TORTURE_ALLOCATIONBALANCE_H

#include <string>
#include <vector>

namespace torture
{
/// Counts what the library and the C++ runtime that it shares with this program allocate and free while this lives.
/// Walking the heap is no substitute: it counts what the heap keeps for later, too.
class AllocationBalance
{
public:
    AllocationBalance();
    ~AllocationBalance();
    AllocationBalance(const AllocationBalance&) = delete;
    AllocationBalance& operator=(const AllocationBalance&) = delete;

    /// Blocks allocated and not freed since the start; below 0 when older blocks were freed. Always 0 under guard
    /// pages, where all of it goes another way.
    long long blocks() const;
    /// The figure that nothing is left, where it can be counted.
    static void report(const std::string& what, long long left);

private:
    struct Slot
    {
        void** place;
        void* original;
    };
    void patch(const char* module, const char* function, void* replacement);
    static void write(void** place, void* function);

    std::vector<Slot> m_slots;
};
} // namespace torture

#endif
