#include "tests/torture/registry/Readers.h"
#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/OpenHandles.h"
#include "tests/torture/AllocationBalance.h"
#include "tests/torture/Figure.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>

using namespace torture;

namespace
{
std::string shortened(const std::string& text)
{
    const std::string size = std::to_string(text.size()) + ":";
    return size + ::testing::PrintToString(text.size() <= 60 ? text : text.substr(0, 60));
}

/// Lets every reader read every shape.
class Readings
{
public:
    Readings() : m_readers(baseAndKeyReaders())
    {
        for (const Reader& reader : networkReaders())
            m_readers.push_back(reader);
        for (const Reader& reader : m_readers)
        {
            HKEY opened = nullptr;
            const std::string path = std::string(auttest::ClientRegistry::kPath) + "\\" + reader.key;
            EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0,
                                                       KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &opened, nullptr));
            m_keys[reader.key] = aut::UniqueKey(opened);
        }
    }

    void read(const Shape& shape)
    {
        std::optional<StoredData> data;
        for (const Reader& reader : m_readers)
        {
            const StoredShape stored(m_keys[reader.key].get(), reader.value, shape);
            if (!data)
                data = stored.shown();
            const std::string documented = reader.documented(*data);
            const long long before = m_balance.blocks();
            compare(reader, shape, documented);
            m_left += m_balance.blocks() - before;
            ++m_readings;
        }
    }

    /// What was counted until now were first uses, from which the runtime keeps something.
    void start()
    {
        m_left = 0;
        m_readings = 0;
        m_handles = auttest::openHandles();
    }

    std::size_t readers() const { return m_readers.size(); }
    long long readings() const { return m_readings; }
    long long differences() const { return m_differences; }
    long long blocksLeft() const { return m_left; }
    long long handlesLeft() const
    {
        return static_cast<long long>(auttest::openHandles()) - static_cast<long long>(m_handles);
    }

private:
    void compare(const Reader& reader, const Shape& shape, const std::string& documented)
    {
        const std::string answer = reader.answer();
        if (answer != documented && ++m_differences <= 20)
            ADD_FAILURE() << reader.name << " of " << shape.name << ": documented " << shortened(documented)
                          << ", answer " << shortened(answer);
    }

    const AllocationBalance m_balance;
    const auttest::ClientRegistry m_registry;
    std::vector<Reader> m_readers;
    std::map<std::string, aut::UniqueKey> m_keys;
    long long m_readings = 0;
    long long m_differences = 0;
    long long m_left = 0;
    std::size_t m_handles = 0;
};
} // namespace

TEST(RegistryTorture, EveryReaderAnswersAsDocumentedWhateverIsStored)
{
    const std::vector<Shape> all = shapes();
    Readings readings;
    readings.read(all.front());
    readings.read(all.back());
    readings.start();
    for (const Shape& shape : all)
        readings.read(shape);

    count("registry, types 0 to 11 x 12 sizes x endings: differences", readings.differences(), 0);
    figure("registry: readings by " + std::to_string(readings.readers()) + " readers",
           std::to_string(readings.readings()), ">= 30000", readings.readings() >= 30000);
    count("registry: handles left open", readings.handlesLeft(), 0);
    AllocationBalance::report("registry", readings.blocksLeft());
}
