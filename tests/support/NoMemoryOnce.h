#ifndef AUTOOLS_TESTS_SUPPORT_NOMEMORYONCE_H
#define AUTOOLS_TESTS_SUPPORT_NOMEMORYONCE_H

#include "tests/support/ImportPatch.h"

#include <cstdlib>

namespace auttest
{
inline int g_memoryRequests = 0;
inline int g_failingRequest = 0;

inline void* mallocButOnce(std::size_t size)
{
    return ++g_memoryRequests == g_failingRequest ? nullptr : std::malloc(size);
}
inline void* reallocButOnce(void* block, std::size_t size)
{
    return ++g_memoryRequests == g_failingRequest ? nullptr : std::realloc(block, size);
}

/// While this lives, one of the library's requests for the memory of a text finds none, from 1 on; all others do. The
/// texts that a test makes are made by the library too: they are to be there before.
class NoMemoryOnce
{
public:
    explicit NoMemoryOnce(int failing)
    {
        g_memoryRequests = 0;
        g_failingRequest = failing;
    }
    /// Whether that many were asked for: when not, all of the job has been tried.
    bool wasMet() const { return g_memoryRequests >= g_failingRequest; }

private:
    const ImportPatch m_malloc{"malloc", mallocButOnce};
    const ImportPatch m_realloc{"realloc", reallocButOnce};
};
} // namespace auttest

#endif
