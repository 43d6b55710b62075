#ifndef AUTOOLS_TORTURE_HOSTILEWORDS_H
#define AUTOOLS_TORTURE_HOSTILEWORDS_H

#include <string>
#include <vector>

namespace torture
{
/// What may stand in the place of any word of a record.
inline std::vector<std::string> hostileWords()
{
    std::vector<std::string> words = {"",
                                      "~",
                                      "~~",
                                      "-1",
                                      "-0",
                                      "+7",
                                      "0",
                                      "00012",
                                      "2000000000",
                                      "2147483647",
                                      "2147483648",
                                      "-2147483648",
                                      "-2147483649",
                                      "4294967296",
                                      "9223372036854775807",
                                      "9223372036854775808",
                                      "99999999999999999999",
                                      "-99999999999999999999",
                                      "12abc",
                                      "0x10",
                                      "1e9",
                                      "1,000",
                                      "abc",
                                      "-",
                                      "+",
                                      "--1",
                                      "%20",
                                      "%20%20",
                                      "%2",
                                      "%s%n%999999d",
                                      "a b",
                                      "\xA0\xE4\xFF",
                                      "\x01\x1F\x7F",
                                      "..\\..\\x",
                                      std::string("a\0b", 3)};
    for (const std::size_t length : {15u, 16u, 63u, 64u, 127u, 128u, 259u, 260u, 261u, 780u, 781u, 10000u})
        words.push_back(std::string(length, 'x'));
    std::string blanks;
    for (int i = 0; i < 259; ++i)
        blanks += "%20";
    words.push_back(blanks); // 259 blanks
    words.push_back(blanks + "%20");
    words.push_back(std::string(10000, '9'));
    return words;
}

/// The ones that matter most, where each costs a file.
inline std::vector<std::string> worstWords()
{
    return {"",      "~",       "-1",  "2000000000",           "2147483648",          "99999999999999999999",
            "12abc", "letters", "%20", std::string("a\0b", 3), std::string(260, 'x'), std::string(10000, 'x')};
}

/// The words of a record, one a line, with one of them replaced.
inline std::string linesWith(std::vector<std::string> words, std::size_t at, const std::string& replacement)
{
    words.at(at) = replacement;
    std::string bytes;
    for (const std::string& word : words)
        bytes += word + "\n";
    return bytes;
}

inline std::vector<std::string> wordsOf(const std::string& bytes)
{
    std::vector<std::string> words(1);
    for (const char c : bytes)
    {
        if (c != '\n')
            words.back() += c;
        else
            words.emplace_back();
    }
    if (words.back().empty())
        words.pop_back();
    return words;
}
} // namespace torture

#endif
