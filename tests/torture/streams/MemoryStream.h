#ifndef AUTOOLS_TORTURE_MEMORYSTREAM_H
#define AUTOOLS_TORTURE_MEMORYSTREAM_H

#include <fstream>
#include <sstream>
#include <string>

namespace torture
{
/// A file stream whose bytes lie in memory: what is read is not a file's translation of line ends, and thousands cost
/// no disk.
class MemoryInput
{
public:
    explicit MemoryInput(const std::string& bytes) : m_bytes(bytes, std::ios_base::in)
    {
        static_cast<std::ios&>(m_stream).rdbuf(&m_bytes);
    }
    std::ifstream& stream() { return m_stream; }

private:
    std::stringbuf m_bytes;
    std::ifstream m_stream;
};

class MemoryOutput
{
public:
    MemoryOutput() { static_cast<std::ios&>(m_stream).rdbuf(&m_bytes); }
    std::ofstream& stream() { return m_stream; }
    std::string bytes() const { return m_bytes.str(); }

private:
    std::stringbuf m_bytes;
    std::ofstream m_stream;
};
} // namespace torture

#endif
