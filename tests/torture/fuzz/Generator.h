#ifndef AUTOOLS_TORTURE_GENERATOR_H
#define AUTOOLS_TORTURE_GENERATOR_H

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

namespace torture
{
/// Words that an input of a target is made of: what it understands, and what nearly is that.
using Words = std::vector<std::string>;

/// A text as a literal of C, so that an input which was printed can be pasted into a test.
inline std::string literal(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text)
    {
        const auto code = static_cast<unsigned char>(c);
        char escaped[8];
        if (c == '"' || c == '\\')
            std::snprintf(escaped, sizeof escaped, "\\%c", c);
        else if (code < 32 || code > 126 || c == '?') // "??" could begin a trigraph
            std::snprintf(escaped, sizeof escaped, "\\%03o", code);
        else
            std::snprintf(escaped, sizeof escaped, "%c", c);
        quoted += escaped;
    }
    return quoted + '"';
}

/// Where the inputs of a target come from: a seeded generator (the same seed gives the same input on every machine), or
/// the bytes that a coverage-guided fuzzer offers.
class Generator
{
public:
    explicit Generator(std::uint64_t seed) : m_state(seed) {}
    Generator(const std::uint8_t* data, std::size_t size)
        : m_data(reinterpret_cast<const char*>(data)), m_end(m_data + size)
    {
    }

    /// Prints every text and number that is drawn, before it is used.
    void tellDraws() { m_telling = true; }

    /// From 0 to `end` - 1; 0 when `end` is 0.
    unsigned below(unsigned end)
    {
        if (end == 0)
            return 0;
        if (m_data == nullptr)
            return static_cast<unsigned>((next() >> 32) % end);
        // Numbers come from the back, so that the texts in front stay readable. An exhausted input gives zeros.
        unsigned drawn = 0;
        for (unsigned most = end - 1; most != 0 && m_end != m_data; most >>= 8)
            drawn = drawn << 8 | static_cast<unsigned char>(*--m_end);
        return drawn % end;
    }

    bool oneIn(unsigned chances) { return below(chances) == 0; }

    /// An index into a text of `length` characters, mostly about its ends and sometimes far outside.
    int index(int length)
    {
        const int edges[] = {0, 1, -1, length, length - 1, length + 1, INT_MAX, INT_MIN, length / 2, 2};
        const unsigned choice = below(24);
        const int drawn =
            choice < std::size(edges) ? edges[choice] : static_cast<int>(below(static_cast<unsigned>(length) + 2U));
        return told("number", drawn);
    }

    /// One of the given numbers or texts.
    template <typename List> auto oneOf(const List& list) -> decltype(list[0])
    {
        return list[below(static_cast<unsigned>(std::size(list)))];
    }

    int number(int least, int most)
    {
        return told("number", least + static_cast<int>(below(static_cast<unsigned>(most - least) + 1U)));
    }

    /// A length up to `most`: small ones mostly, the sizes of fixed buffers and their neighbours often, long ones
    /// rarely.
    std::size_t length(std::size_t most = 10000)
    {
        static constexpr unsigned kEdges[] = {63, 64, 127, 128, 255, 256, 259, 260, 1023, 1024, 2047, 2048};
        const unsigned choice = below(100);
        unsigned drawn = 0;
        if (choice < 65)
            drawn = below(41);
        else if (choice < 88)
            drawn = below(301);
        else if (choice < 97)
            drawn = oneOf(kEdges) + below(3) - 1;
        else
            drawn = below(choice == 97 ? 10001 : 3001);
        return std::min<std::size_t>(drawn, most);
    }

    /// A text without NUL: words, mutated words, hostile bytes, digits, runs and repetitions.
    std::string text(const Words& words, std::size_t most = 10000)
    {
        std::string drawn;
        if (m_data != nullptr)
            drawn = untilNul();
        else if (!words.empty() && oneIn(4))
            drawn = mutated(oneOf(words), words);
        else
            drawn = mixture(words, length(most));
        if (drawn.size() > most)
            drawn.resize(most);
        return told("text", drawn);
    }

    /// A text that is close to `base`: one to four places of it changed.
    std::string mutation(const std::string& base, const Words& words) { return told("text", mutated(base, words)); }

    /// Any bytes, NUL among them.
    std::string bytes(std::size_t most = 10000)
    {
        std::string drawn;
        if (m_data != nullptr)
        {
            drawn.assign(m_data, m_end);
            m_data = m_end;
        }
        else
        {
            drawn.resize(length(most));
            for (char& c : drawn)
                c = static_cast<char>(next() >> 56);
        }
        if (drawn.size() > most)
            drawn.resize(most);
        return told("bytes", drawn);
    }

private:
    std::uint64_t next()
    {
        std::uint64_t z = m_state += 0x9E3779B97F4A7C15U;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31);
    }

    std::string untilNul()
    {
        const char* const end = std::find(m_data, m_end, '\0');
        const std::string drawn(m_data, end);
        m_data = end == m_end ? m_end : end + 1;
        return drawn;
    }

    char hostileByte()
    {
        static constexpr char kHostile[] = "\"\\/%&<>' \t\r\n,;:.-_?*=+#|@$[]{}()!~^`\x01\x1f\x7f\x80\xa0\xe4\xff";
        return kHostile[below(sizeof kHostile - 1)];
    }

    std::string piece(const Words& words)
    {
        const unsigned choice = below(10);
        if (choice < 5 && !words.empty())
            return oneOf(words);
        if (choice < 7)
            return std::string(1, hostileByte());
        if (choice == 7)
            return std::to_string(oneIn(3) ? next() >> 32 : below(300));
        if (choice == 8)
            return std::string(1 + below(oneIn(8) ? 400 : 6),
                               oneIn(2) ? hostileByte() : static_cast<char>('a' + below(26)));
        std::string letters;
        for (unsigned left = below(9); left != 0; --left)
            letters += static_cast<char>(1 + below(255));
        return letters;
    }

    std::string mixture(const Words& words, std::size_t length)
    {
        std::string drawn;
        while (drawn.size() < length)
        {
            if (drawn.size() > 8 && oneIn(12))
                drawn += drawn.substr(below(static_cast<unsigned>(drawn.size())));
            else
                drawn += piece(words);
        }
        drawn.resize(length);
        return drawn;
    }

    std::string mutated(std::string text, const Words& words)
    {
        for (unsigned left = below(4) + 1; left != 0; --left)
        {
            const std::size_t at = below(static_cast<unsigned>(text.size()) + 1U);
            switch (below(6))
            {
            case 0:
                text.insert(at, piece(words));
                break;
            case 1:
                text.erase(at, 1 + below(4));
                break;
            case 2:
                text.insert(at, text.substr(at, 1 + below(6)));
                break;
            case 3:
                text.resize(at);
                break;
            case 4:
                if (at < text.size())
                    text[at] = hostileByte();
                break;
            default:
                if (at < text.size() && text[at] != ' ' && (text[at] & 0x40) != 0)
                    text[at] = static_cast<char>(text[at] ^ 0x20); // the other case of a letter
                break;
            }
        }
        std::replace(text.begin(), text.end(), '\0', '0');
        return text;
    }

    template <typename T> T told(const char* kind, const T& drawn)
    {
        if (!m_telling)
            return drawn;
        if constexpr (std::is_same_v<T, std::string>)
            std::printf("  %s of %u: %s\n", kind, static_cast<unsigned>(drawn.size()), literal(drawn).c_str());
        else
            std::printf("  %s: %d\n", kind, drawn);
        std::fflush(stdout);
        return drawn;
    }

    std::uint64_t m_state = 0;
    const char* m_data = nullptr; ///< null: the numbers come from the seed
    const char* m_end = nullptr;
    bool m_telling = false;
};

/// What differed between the model and the library for one input; empty when nothing did.
class Differences
{
public:
    template <typename T, typename U> void expect(const char* what, const T& model, const U& library)
    {
        if (!(model == library))
            note(what, shown(model), shown(library));
    }
    void note(const char* what, const std::string& model, const std::string& library)
    {
        m_text += std::string("  ") + what + ": expected " + model + ", got " + library + "\n";
    }
    const std::string& text() const { return m_text; }

private:
    static std::string shown(const std::string& text) { return std::to_string(text.size()) + ":" + literal(text); }
    static std::string shown(const char* text) { return text != nullptr ? shown(std::string(text)) : "null"; }
    template <typename T> static std::string shown(const T& number) { return std::to_string(number); }

    std::string m_text;
};
} // namespace torture

#endif
