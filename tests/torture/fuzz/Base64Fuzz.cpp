#include "tests/torture/fuzz/Fuzz.h"

#include "webconf/Base64Coder.h"

#include <cstring>
#include <memory>
#include <string>

namespace
{
using torture::Differences;
using torture::Generator;

const torture::Words kWords = {"QUJD",
                               "Zg==",
                               "Zm8=",
                               "Zm9v",
                               "=",
                               "==",
                               "\r\n",
                               " ",
                               "\t",
                               "QUI9\xc2",
                               "-_",
                               "+/",
                               "user:password",
                               ":",
                               "\xbd\xd1",
                               "dXNlcjpwYXNzd29yZA==",
                               "====",
                               "Q=JD",
                               "\x07\x0d",
                               "\x06\x0e"};

/// What only a derived class sees: the lengths, because bytes may be zero.
struct Coder : Base64Coder
{
    std::string decoded() const { return std::string(reinterpret_cast<const char*>(m_decoded), m_decodedLength); }
    std::string encoded() const { return std::string(reinterpret_cast<const char*>(m_encoded), m_encodedLength); }
};

// The model writes every byte as its eight digits and reads them six by six, and the other way round.

std::string digits(unsigned value, int count)
{
    std::string text;
    for (int bit = count - 1; bit >= 0; --bit)
        text += (value >> bit & 1U) != 0 ? '1' : '0';
    return text;
}

unsigned valueOf(const std::string& bits) { return static_cast<unsigned>(std::stoul(bits, nullptr, 2)); }

const std::string& alphabet()
{
    static const std::string kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    return kLetters;
}

std::string encoded(const std::string& bytes)
{
    std::string bits;
    for (const char byte : bytes)
        bits += digits(static_cast<unsigned char>(byte), 8);
    std::string text;
    for (std::size_t at = 0; at < bits.size(); at += 6)
    {
        std::string six = bits.substr(at, 6);
        six.resize(6, '0');
        text += alphabet()[valueOf(six)];
    }
    while (text.size() % 4 != 0)
        text += '=';
    return text;
}

std::string withoutWhiteSpace(const std::string& text)
{
    std::string kept;
    for (const char c : text)
        if (std::strchr("\a\b\t\n\v\f\r ", c) == nullptr || c == '\0')
            kept += c;
    return kept;
}

/// One group of at most four characters. Padding at its end holds nothing; what is of no meaning elsewhere counts as
/// zeros.
std::string decodedGroup(std::string group)
{
    for (char& c : group)
        c = static_cast<char>(c & 0x7F); // the top bit does not count
    while (!group.empty() && group.back() == '=')
        group.pop_back();
    std::string bits;
    for (const char c : group)
    {
        const std::size_t at = alphabet().find(c);
        bits += at == std::string::npos ? "000000" : digits(static_cast<unsigned>(at), 6);
    }
    std::string bytes;
    for (; bits.size() >= 8; bits.erase(0, 8))
        bytes += static_cast<char>(valueOf(bits.substr(0, 8)));
    return bytes;
}

std::string decoded(const std::string& text)
{
    const std::string kept = withoutWhiteSpace(text);
    std::string bytes;
    for (std::size_t at = 0; at < kept.size(); at += 4)
        bytes += decodedGroup(kept.substr(at, 4));
    return bytes;
}

/// A copy that ends where it ends: nothing behind it may be read.
std::unique_ptr<unsigned char[]> exactCopy(const std::string& bytes)
{
    std::unique_ptr<unsigned char[]> copy(new unsigned char[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return copy;
}

void checkEncoding(Generator& input, Differences& differences)
{
    const std::string bytes = input.bytes();
    const std::string text = encoded(bytes);
    Coder coder;
    coder.Encode(exactCopy(bytes).get(), static_cast<unsigned long>(bytes.size()));
    differences.expect("encoded", text, coder.encoded());
    differences.expect("EncodedMessage", text, std::string(coder.EncodedMessage()));
    differences.expect("DecodedMessage", std::string(bytes.c_str()), std::string(coder.DecodedMessage()));
    coder.Decode(coder.EncodedMessage()); // its own buffer
    differences.expect("a round", bytes, coder.decoded());
}

void checkDecoding(Generator& input, Differences& differences)
{
    const bool isText = input.oneIn(2);
    const std::string text = isText ? input.text(kWords) : input.bytes(300);
    Coder coder;
    if (isText)
        coder.Decode(text.c_str());
    else
        coder.Decode(exactCopy(text).get(), static_cast<unsigned long>(text.size()));
    differences.expect("decoded", decoded(text), coder.decoded());
    differences.expect("kept", withoutWhiteSpace(text), coder.encoded());
}

void checkCredentials(Generator& input, Differences& differences)
{
    const std::string user = input.text(kWords, 300);
    const std::string password = input.text(kWords, 300);
    String packed;
    differences.expect("packed", true, Base64Encode(user.c_str(), password.c_str(), packed));
    differences.expect("packed", encoded(user + ":" + password), std::string(static_cast<const char*>(packed)));

    const std::string text = input.oneIn(2) ? std::string(static_cast<const char*>(packed)) : input.text(kWords, 300);
    const std::string plain = decoded(text).c_str(); // up to the first zero
    const std::size_t colon = std::min(plain.find(':'), plain.size());
    String libraryUser("old");
    String libraryPassword("old");
    differences.expect("unpacked", !text.empty(), Base64Decode(text.c_str(), libraryUser, libraryPassword));
    differences.expect("user", plain.substr(0, colon), std::string(static_cast<const char*>(libraryUser)));
    differences.expect("password", colon < plain.size() ? plain.substr(colon + 1) : std::string(),
                       std::string(static_cast<const char*>(libraryPassword)));
}

void checkBase64(Generator& input, Differences& differences)
{
    switch (input.number(0, 2))
    {
    case 0:
        return checkEncoding(input, differences);
    case 1:
        return checkDecoding(input, differences);
    default:
        return checkCredentials(input, differences);
    }
}
} // namespace

AUTOOLS_FUZZ_TARGET(Base64, "Base64", checkBase64)
