#include "state/Secrets.h"

#include "common/Text.h"
#include "machine/Text.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace autool
{
namespace
{
/// Shorter ones are hidden where they stand alone only: a password "a" would take every a out of a log.
constexpr std::size_t kShortChars = 4;

bool isWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

void replaceAll(std::string& text, const std::string& what, bool wordsOnly)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at))
    {
        const std::size_t end = at + what.size();
        const bool isWord =
            (at == 0 || !isWordCharacter(text[at - 1])) && (end >= text.size() || !isWordCharacter(text[end]));
        if (wordsOnly && !isWord)
        {
            ++at;
            continue;
        }
        text.replace(at, what.size(), kHidden);
        at += std::strlen(kHidden);
    }
}

std::string xmlEscaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text)
        switch (c)
        {
        case '"':
            escaped += "&quot;";
            break;
        case '&':
            escaped += "&amp;";
            break;
        case '\'':
            escaped += "&apos;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += c;
        }
    return escaped;
}

std::string addressEscaped(const std::string& text)
{
    static const char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text)
        if (isWordCharacter(c) || std::strchr("-.~", c) != nullptr)
            escaped += c;
        else
        {
            const auto byte = static_cast<unsigned char>(c);
            escaped.append(1, '%').append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
        }
    return escaped;
}

std::string asUtf16(const std::string& bytes)
{
    const std::wstring wide = toWide(isValidUtf8(bytes) ? bytes : fromSystem(bytes));
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)};
}

bool endsAddress(char c) { return std::strchr("/\\?#\"'<> \t\r\n", c) != nullptr; }

/// What stands between the "//" of an address and its "@", and in an address without scheme what stands before it.
void hideUsers(std::string& text)
{
    for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + 1))
    {
        std::size_t start = at;
        while (start > 0 && !endsAddress(text[start - 1]))
            --start;
        const bool hasScheme = start >= 2 && text.compare(start - 2, 2, "//") == 0;
        const bool hasPassword = text.find(':', start) < at;
        if (start == at || (!hasScheme && !hasPassword) || text.compare(start, at - start, kHidden) == 0)
            continue;
        text.replace(start, at - start, kHidden);
        at = start + std::strlen(kHidden);
    }
}
} // namespace

std::string decodedBase64(std::string_view text)
{
    static const std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string decoded;
    unsigned bits = 0;
    int count = 0;
    for (const char c : text)
    {
        if (c == '=' || std::isspace(static_cast<unsigned char>(c)) != 0)
            continue;
        const std::size_t digit = kAlphabet.find(c);
        if (digit == std::string_view::npos)
            return std::string();
        bits = (bits << 6) | static_cast<unsigned>(digit);
        count += 6;
        if (count >= 8)
        {
            count -= 8;
            decoded += static_cast<char>((bits >> count) & 0xff);
        }
    }
    return decoded;
}

bool Secrets::isSecretName(std::wstring_view name)
{
    const std::wstring lower = lowered(std::wstring(name));
    for (const wchar_t* const part :
         {L"authorization", L"authentication", L"password", L"passwd", L"pwd", L"credential", L"secret"})
        if (lower.find(part) != std::wstring::npos)
            return true;
    return false;
}

Secrets::Secrets(const RegistryKey& tree)
{
    learn(tree);
    std::sort(m_texts.begin(), m_texts.end(),
              [](const std::string& left, const std::string& right)
              { return left.size() != right.size() ? left.size() > right.size() : left < right; });
    m_texts.erase(std::unique(m_texts.begin(), m_texts.end()), m_texts.end());
}

void Secrets::learn(const RegistryKey& key)
{
    for (const RegistryValue& value : key.values)
        if (isSecretName(value.name))
            learn(value);
    for (const RegistryKey& child : key.keys)
        learn(child);
}

void Secrets::learn(const RegistryValue& value)
{
    const std::string stored = value.type == REG_BINARY
                                   ? std::string(reinterpret_cast<const char*>(value.data.data()), value.data.size())
                                   : fromWide(value.text());
    learnText(stored);
    const std::string pair = decodedBase64(stored);
    learnText(pair);
    const std::size_t colon = pair.find(':');
    if (colon == std::string::npos)
        return;
    learnText(pair.substr(0, colon));
    learnText(pair.substr(colon + 1));
}

void Secrets::learnText(const std::string& text)
{
    if (text.empty())
        return;
    for (const std::string& form : {text, fromSystem(text), xmlEscaped(text), xmlEscaped(fromSystem(text)),
                                    addressEscaped(text), addressEscaped(fromSystem(text))})
        m_texts.push_back(form);
}

std::string Secrets::mask(std::string_view utf8) const
{
    std::string masked(utf8);
    for (const std::string& secret : m_texts)
        replaceAll(masked, secret, secret.size() < kShortChars);
    hideUsers(masked);
    return masked;
}

std::string Secrets::maskBytes(std::string_view bytes) const
{
    std::string masked(bytes);
    const std::string hidden = asUtf16(kHidden);
    for (const std::string& secret : m_texts)
    {
        if (secret.size() < kShortChars)
            continue;
        const std::string wide = asUtf16(secret);
        for (std::size_t at = masked.find(wide); at != std::string::npos; at = masked.find(wide, at + hidden.size()))
            masked.replace(at, wide.size(), hidden);
    }
    return mask(masked);
}
} // namespace autool
