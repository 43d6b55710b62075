// Checksums and stream records, against plain loops over the same data.

#include "bench/Ratio.h"

#include "7xAutoUpdateTools.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace
{
std::string scratch(const char* name)
{
    char folder[MAX_PATH];
    ::GetTempPathA(sizeof folder, folder);
    return std::string(folder) + name;
}

bool checksum()
{
    const std::string path = scratch("checksum.bin");
    {
        std::ofstream out(path, std::ios::binary);
        const std::string block(1 << 20, 'q');
        for (int i = 0; i < 32; ++i)
            out << block;
    }
    RT_File file(path.c_str());
    const double ours = bench::seconds([&] { bench::keep(file.GetCheckSum()); });
    const double theirs = bench::seconds(
        [&]
        {
            std::vector<char> buffer(16000);
            FILE* const plain = std::fopen(path.c_str(), "rb");
            std::size_t total = 0;
            for (std::size_t got = 1; got > 0; total += got)
                got = std::fread(buffer.data(), 1, buffer.size(), plain);
            std::fclose(plain);
            bench::keep(total);
        });
    std::remove(path.c_str());
    return bench::ratio("GetCheckSum, 32 MB", ours, "fread loop, 16,000 bytes each", theirs, 1.5);
}

void fill(CRelease& release, int components)
{
    for (int i = 0; i < components; ++i)
        release.GetComponentList().AddTail(
            new CComponent(i, "Component name", "3.3.302", "B1", "EN", 0, "HTTP://depot:80/components/a b.cab"));
}

bool readWords(std::ifstream& in, std::array<std::string, 9>& record)
{
    for (std::string& word : record)
        if (!(in >> word))
            return false;
    return true;
}

bool streams()
{
    const std::string path = scratch("release.lst");
    const __int64 date = 1279800309;
    CRelease release(1, "Marketing Name", "technical", "Product", "3.3.302", "B1", "EN", 0, date, 1);
    release.SetCertificateID("ABCDEFGHIJKLMNOP");
    fill(release, 1000);

    const double write = bench::seconds(
        [&]
        {
            std::ofstream out(path, std::ios::binary);
            release.Serialize(out);
        });
    const double plainWrite = bench::seconds(
        [&]
        {
            std::ofstream out(path + ".plain", std::ios::binary);
            for (int i = 0; i < 1000; ++i)
                out << 0 << '\n'
                    << "B1" << '\n'
                    << i << '\n'
                    << "EN" << '\n'
                    << "Component%20name" << '\n'
                    << "3.3.302" << '\n'
                    << 1 << '\n'
                    << "HTTP://depot:80/components/a%20b.cab" << '\n'
                    << 0 << '\n';
        });
    const double read = bench::seconds(
        [&]
        {
            std::ifstream in(path, std::ios::binary);
            CRelease copy;
            bench::keep(copy.Serialize(in));
        });
    const double plainRead = bench::seconds(
        [&]
        {
            std::ifstream in(path + ".plain", std::ios::binary);
            std::vector<std::array<std::string, 9>> records;
            std::array<std::string, 9> record;
            while (readWords(in, record))
                records.push_back(record);
            bench::keep(records.size());
        });
    std::remove(path.c_str());
    std::remove((path + ".plain").c_str());
    const bool written =
        bench::ratio("write a release of 1,000 components", write, "plain << of the same", plainWrite, 3.0);
    return bench::ratio("read it back", read, "plain >> of the same words into strings", plainRead, 6.0) && written;
}
} // namespace

int main()
{
    const bool sums = checksum();
    return streams() && sums ? 0 : 1;
}
