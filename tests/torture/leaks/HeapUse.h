#ifndef AUTOOLS_TORTURE_LEAKS_HEAPUSE_H
#define AUTOOLS_TORTURE_LEAKS_HEAPUSE_H

#include <cstddef>

namespace torture
{
/// What is allocated: the busy blocks of all heaps of the process, walked one by one, and what the process has
/// committed.
struct HeapUse
{
    long long blocks = 0;
    long long bytes = 0;
    long long committed = 0; ///< private bytes
};
HeapUse heapUse();
} // namespace torture

#endif
