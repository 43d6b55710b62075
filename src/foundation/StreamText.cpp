#include "foundation/StreamText.h"

#include "platform/BoundedText.h"

#include <cstring>

namespace
{
constexpr char kBlank[] = "%20";
constexpr std::size_t kBlankLength = sizeof kBlank - 1;
} // namespace

void ConvertOutputStreamString(const char* in, char* out)
{
    if (out == nullptr)
        return;
    for (in = aut::orEmpty(in); *in != '\0'; ++in)
    {
        if (*in != ' ')
        {
            *out++ = *in;
            continue;
        }
        std::memcpy(out, kBlank, kBlankLength);
        out += kBlankLength;
    }
    *out = '\0';
}

void ConvertInputStreamString(const char* in, char* out)
{
    if (out == nullptr)
        return;
    for (in = aut::orEmpty(in); *in != '\0';)
    {
        const bool blank = std::strncmp(in, kBlank, kBlankLength) == 0;
        *out++ = blank ? ' ' : *in;
        in += blank ? kBlankLength : 1;
    }
    *out = '\0';
}
