#ifndef AUTOOL_STATE_SECRETS_H
#define AUTOOL_STATE_SECRETS_H

#include "machine/RegistryReader.h"

#include <string>
#include <string_view>
#include <vector>

namespace autool
{
/// What stands in place of a credential, everywhere.
constexpr char kHidden[] = "(hidden)";

/// Keeps credentials out of everything that is shown or written.
///
/// A registry value is a credential by its name. What such values hold is hidden wherever it appears: as it is stored,
/// decoded from Base64, its user and its password, each also escaped as in XML and as in an address. So is what stands
/// before the "@" of an address.
class Secrets
{
public:
    /// Nothing known but names and addresses.
    Secrets() = default;
    /// Learns the credentials that the tree holds.
    explicit Secrets(const RegistryKey& tree);

    static bool isSecretName(std::wstring_view name);

    /// UTF-8 without what must not be seen.
    std::string mask(std::string_view utf8) const;
    /// The same for bytes in any 8-bit encoding or UTF-16.
    std::string maskBytes(std::string_view bytes) const;
    bool appearIn(std::string_view bytes) const { return maskBytes(bytes) != bytes; }

private:
    void learn(const RegistryKey& key);
    void learn(const RegistryValue& value);
    void learnText(const std::string& text);

    std::vector<std::string> m_texts; ///< longest first
};

/// The bytes of a Base64 text; "" when it is none.
std::string decodedBase64(std::string_view text);
} // namespace autool

#endif
