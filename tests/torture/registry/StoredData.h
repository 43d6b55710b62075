#ifndef AUTOOLS_TORTURE_STOREDDATA_H
#define AUTOOLS_TORTURE_STOREDDATA_H

#include <windows.h>

#include <string>
#include <vector>

namespace torture
{
/// Data that somebody, not this library, left in a value.
struct Shape
{
    DWORD type;
    std::string bytes;
    bool wide; ///< the bytes are stored as they are; else a text goes through the system's conversion
    std::string name;
};

/// Types 0 to 11, each in all sizes and endings.
std::vector<Shape> shapes();

/// What the system hands out of a value: its type and its data.
struct StoredData
{
    DWORD type = REG_NONE;
    std::string bytes;

    std::size_t size() const { return bytes.size(); }
    /// The data up to its first terminator.
    std::string text() const { return bytes.substr(0, bytes.find('\0')); }
};

/// A value of the client's registry tree that a shape is stored in while this lives.
class StoredShape
{
public:
    StoredShape(HKEY key, const char* name, const Shape& shape);
    ~StoredShape();
    StoredShape(const StoredShape&) = delete;
    StoredShape& operator=(const StoredShape&) = delete;

    /// The data that the system shows to one who asks for all of it.
    StoredData shown() const;

private:
    HKEY m_key;
    const char* m_name;
};

// What the rules of the registry classes make of stored data, by kind of reader.

/// A text of at most 259 characters; longer data without a terminator among its first 260 bytes is as good as missing.
bool fitsBuffer(const StoredData& data);
std::string bufferText(const StoredData& data);
/// At most four bytes are a number, whatever their type.
bool isNumber(const StoredData& data);
unsigned long number(const StoredData& data);
/// Eight bytes, or four with their sign.
long long timeOf(const StoredData& data);
} // namespace torture

#endif
