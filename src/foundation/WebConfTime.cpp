#include "foundation/TimeText.h"
#include "registry/CRegConfig.h"

#include <cstdint>

__int64 LocalTimeToWebConfTime(__int64 t)
{
    const __int64 local = t != 0 ? t : ::_time64(nullptr);
    CRegConfig config(true);
    // Unsigned, because a damaged registry value may hold any number.
    return static_cast<__int64>(static_cast<std::uint64_t>(local) +
                                static_cast<std::uint64_t>(config.GetWebConfDiffDate()));
}
