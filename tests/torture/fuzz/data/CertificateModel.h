#ifndef AUTOOLS_TORTURE_CERTIFICATEMODEL_H
#define AUTOOLS_TORTURE_CERTIFICATEMODEL_H

#include "tests/support/ClientRegistry.h"
#include "tests/torture/fuzz/Generator.h"

#include <string>

namespace torture
{
/// Which texts are certificate IDs, and of which ones the server has said that they are revoked.
inline constexpr char kRevoked[] = "Revoked+CID/12345==";
inline constexpr char kNotRevoked[] = "OtherCID/revoked==";

inline const Words& certificateWords()
{
    static const Words all = {kRevoked,  kNotRevoked,   "ABCDEFGHIJK", "ABCDEFGHIJ", "abc+/=DEF123", "ABC-123456789",
                              "Velmora", "velmora Ltd", "The Velmora", ",",          ", ",           " ",
                              "CN",      "O",           "\"",          "\xE4"};
    return all;
}

inline std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// The certificate ID in a text, or "".
inline std::string acceptedCertificate(const std::string& text)
{
    static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    const std::string id = trimmed(text);
    std::string lower = id;
    for (char& c : lower)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    if (id.size() < 11 || id.find_first_not_of(kAlphabet) != std::string::npos)
        return "";
    return lower == "revoked+cid/12345==" ? "" : id; // names of keys ignore case
}

/// One certificate ID that the server has refused, and one of which only that is recorded that looks like it.
class Revocations
{
public:
    Revocations()
    {
        // A certificate ID may hold "/", but not "\": it is one subkey.
        m_registry.write(std::string("Config\\Cache\\Certificates\\") + kRevoked, "Status", "Revoked");
        m_registry.write(std::string("Config\\Cache\\Certificates\\") + kNotRevoked, "Status", "revoked");
    }

private:
    const auttest::ClientRegistry m_registry;
};
} // namespace torture

#endif
