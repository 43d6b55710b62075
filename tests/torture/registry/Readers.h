#ifndef AUTOOLS_TORTURE_READERS_H
#define AUTOOLS_TORTURE_READERS_H

#include "registry/CRegBase.h"
#include "tests/torture/registry/StoredData.h"

#include <algorithm>
#include <string>
#include <vector>

namespace torture
{
/// One way to read one value: what the library answers, and what the rules say it answers, both as a text.
struct Reader
{
    const char* key;   ///< below the client's tree
    const char* value; ///< the value's name
    const char* name;  ///< of the operation
    std::string (*answer)();
    std::string (*documented)(const StoredData& data);
};

std::vector<Reader> baseAndKeyReaders();
std::vector<Reader> networkReaders();

/// A key opened once, as by a client who reads a value again and again.
template <typename Key> Key& opened()
{
    static Key key(true);
    return key;
}

inline std::string told(const char* text) { return text != nullptr ? text : "NULL"; }
inline std::string told(bool flag) { return flag ? "true" : "false"; }
inline std::string told(unsigned long number) { return std::to_string(number); }
inline std::string told(bool found, const std::string& text) { return told(found) + " " + text; }
inline std::string told(const RT_List<String, String&>& list)
{
    std::string texts;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
        texts.append("[").append(list.GetNext(pos)).append("]");
    return texts;
}

inline std::string documentedText(const StoredData& data) { return bufferText(data); }
inline std::string documentedNumber(const StoredData& data) { return told(number(data)); }
inline std::string documentedFlag(const StoredData& data) { return told(number(data) != 0); }
inline std::string documentedTime(const StoredData& data) { return std::to_string(timeOf(data)); }
/// The text up to the first A, B or P of either case, and the rest.
inline std::string documentedVersion(const StoredData& data)
{
    const std::string text = bufferText(data);
    const std::size_t build = std::min(text.find_first_of("ABPabp"), text.size());
    return text.substr(0, build) + "|" + text.substr(build);
}
} // namespace torture

#endif
