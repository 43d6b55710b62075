#include "foundation/WholeText.h"

#include "platform/BoundedText.h"

#include <climits>
#include <cstddef>
#include <cstring>

namespace aut
{
String wholeText(std::initializer_list<const char*> pieces)
{
    String text;
    std::size_t length = 0;
    for (const char* const piece : pieces)
        length += std::strlen(orEmpty(piece));
    char* out = length > 0 && length < INT_MAX ? text.GetBufferSetLength(static_cast<int>(length)) : nullptr;
    if (out == nullptr)
        return String();
    for (const char* const piece : pieces)
    {
        const std::size_t size = std::strlen(orEmpty(piece));
        std::memcpy(out, orEmpty(piece), size);
        out += size;
    }
    return text;
}
} // namespace aut
