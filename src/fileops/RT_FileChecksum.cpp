#include "fileops/RT_File.h"

#include "foundation/RT_RESULT.h"
#include "platform/UniqueResource.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace
{
constexpr unsigned long kChunkBytes = 16000;

/// The sum of the whole words of one chunk, which wraps around. The 1 to 3 bytes behind the last one do not count:
/// stored sums were made so.
std::uint32_t sumWords(const unsigned char* chunk, std::size_t bytes)
{
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at + sizeof sum <= bytes; at += sizeof sum)
    {
        std::uint32_t word = 0;
        std::memcpy(&word, chunk + at, sizeof word); // Windows is little-endian on every processor
        sum += word;
    }
    return sum;
}
} // namespace

unsigned long RT_File::GetCheckSum()
{
    if (!Open(0x20))
        return 0;
    const unsigned long length = GetLength();
    Close();
    if (length == 0)
        return 0;
    unsigned long sum = 0;
    if (GetFileCRC(m_path, m_fileName, length, &sum) != 0)
    {
        result->Set(472, "GetFileCRC failed", "RT_File::GetChecksum", "", "", m_fullPath);
        return 0;
    }
    return sum;
}

long RT_File::GetFileCRC(const char* directory, const char* fileName, unsigned long length, unsigned long* sum)
{
    *sum = 0xFFFFFFFF; // until all of the file has been read
    String path(directory);
    if (path.IsEmpty() || path.GetAt(path.GetLength() - 1) != '\\')
        path += '\\';
    path += fileName;

    const std::unique_ptr<unsigned char[]> chunk(new (std::nothrow) unsigned char[kChunkBytes]);
    const aut::UniqueStdio file(std::fopen(path, "rb"));
    if (!chunk || !file)
        return 1;
    std::setvbuf(file.get(), nullptr, _IONBF, 0); // the chunk is the buffer: nothing is copied twice

    std::uint32_t total = 0;
    for (unsigned long left = length; left > 0;)
    {
        const std::size_t read = std::fread(chunk.get(), 1, std::min(left, kChunkBytes), file.get());
        if (read == 0)
            return 1;
        total += sumWords(chunk.get(), read);
        left -= static_cast<unsigned long>(read);
    }
    *sum = total;
    return 0;
}
