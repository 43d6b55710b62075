#include "tests/torture/registry/StoredData.h"

#include "tests/torture/Figure.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace torture
{
namespace
{
/// What the data consists of before its ending is made: something each reader understands, then any bytes but NUL.
std::string understood(std::size_t size)
{
    static const std::string kPattern = "updating,proxy:80;3.3.302B1=dXNlcjpwYXNz/+";
    std::string bytes;
    while (bytes.size() < size)
        bytes += kPattern;
    bytes.resize(size);
    return bytes;
}

std::string hostile(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t state = static_cast<std::uint32_t>(size) + 1;
    for (char& c : bytes)
    {
        state = state * 1664525U + 1013904223U;
        c = static_cast<char>(1 + (state >> 24) % 255);
    }
    return bytes;
}

/// In the short form without what differs in details only.
void addEndings(std::vector<Shape>& all, DWORD type, const std::string& bytes, bool wide, const std::string& name)
{
    all.push_back({type, bytes, wide, name + ", not terminated"});
    if (bytes.empty())
        return;
    std::string terminated = bytes;
    terminated.back() = '\0';
    all.push_back({type, terminated, wide, name + ", terminated"});
    std::string inner = bytes;
    inner[bytes.size() > 8 ? 8 : bytes.size() / 2] = '\0';
    all.push_back({type, inner, wide, name + ", with an inner NUL"});
    if (!isLong())
        return;
    inner.back() = '\0';
    all.push_back({type, inner, wide, name + ", with an inner NUL and terminated"});
}

bool isText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }
} // namespace

std::vector<Shape> shapes()
{
    std::vector<Shape> all;
    for (DWORD type = 0; type <= 11; ++type)
        for (const std::size_t size : {0u, 1u, 2u, 3u, 4u, 5u, 8u, 259u, 260u, 261u, 4096u, 65536u})
        {
            const std::string name = "type " + std::to_string(type) + ", " + std::to_string(size) + " bytes";
            addEndings(all, type, understood(size), false, name);
            if (isLong())
                addEndings(all, type, hostile(size), false, name + " hostile");
            if (isText(type) && (isLong() || size % 2 == 1)) // an odd size is half a character
                addEndings(all, type, understood(size), true, name + " of wide text");
        }
    return all;
}

StoredShape::StoredShape(HKEY key, const char* name, const Shape& shape) : m_key(key), m_name(name)
{
    const std::string bytes = shape.bytes + "x"; // a NUL right behind the data would be taken for a forgotten one
    const auto* const data = reinterpret_cast<const BYTE*>(bytes.data());
    const auto size = static_cast<DWORD>(shape.bytes.size());
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    EXPECT_EQ(ERROR_SUCCESS, shape.wide ? ::RegSetValueExW(key, wideName.c_str(), 0, shape.type, data, size)
                                        : ::RegSetValueExA(key, name, 0, shape.type, data, size));
}

StoredData StoredShape::shown() const
{
    StoredData data;
    static std::string all(70000, '\0');
    auto size = static_cast<DWORD>(all.size());
    EXPECT_EQ(ERROR_SUCCESS,
              ::RegQueryValueExA(m_key, m_name, nullptr, &data.type, reinterpret_cast<BYTE*>(all.data()), &size));
    data.bytes.assign(all, 0, size);
    return data;
}

StoredShape::~StoredShape() { ::RegDeleteValueA(m_key, m_name); }

bool fitsBuffer(const StoredData& data)
{
    return data.size() < 260 || (data.size() == 260 && data.bytes.find('\0') != std::string::npos);
}

std::string bufferText(const StoredData& data) { return fitsBuffer(data) ? data.text() : ""; }

bool isNumber(const StoredData& data) { return data.size() <= 4; }

unsigned long number(const StoredData& data)
{
    unsigned long value = 0;
    for (std::size_t i = data.size(); isNumber(data) && i > 0; --i)
        value = value * 256 + static_cast<unsigned char>(data.bytes[i - 1]);
    return value;
}

long long timeOf(const StoredData& data)
{
    unsigned long long value = 0;
    if (data.size() != 4 && data.size() != 8)
        return 0;
    for (std::size_t i = data.size(); i > 0; --i)
        value = value * 256 + static_cast<unsigned char>(data.bytes[i - 1]);
    if (data.size() == 4 && value >= 0x80000000ULL)
        value += 0xFFFFFFFF00000000ULL;
    return static_cast<long long>(value);
}
} // namespace torture
