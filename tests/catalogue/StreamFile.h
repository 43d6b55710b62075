#ifndef AUTOOLS_TESTS_CATALOGUE_STREAMFILE_H
#define AUTOOLS_TESTS_CATALOGUE_STREAMFILE_H

#include "tests/support/TestFolder.h"

#include <fstream>
#include <string>
#include <vector>

namespace auttest
{
/// One file that a record is written to and read from.
class StreamFile
{
public:
    /// What the record's `Serialize` writes, byte for byte; "<failed>" when it fails.
    template <typename Record> std::string write(Record& record) const
    {
        std::ofstream stream(m_folder / "record.lst", std::ios::binary);
        const int written = record.Serialize(stream);
        stream.close();
        return written == 1 ? m_folder.readFile("record.lst") : "<failed>";
    }

    /// What the record's `Serialize` answers to a file of these bytes.
    template <typename Record> int read(Record& record, const std::string& bytes) const
    {
        m_folder.writeFile("record.lst", bytes);
        std::ifstream stream(m_folder / "record.lst");
        return record.Serialize(stream);
    }

    const TestFolder& folder() const { return m_folder; }

private:
    const TestFolder m_folder;
};

/// The words of a record, one a line.
inline std::string lines(const std::vector<std::string>& words)
{
    std::string bytes;
    for (const std::string& word : words)
        bytes += word + "\n";
    return bytes;
}
} // namespace auttest

#endif
