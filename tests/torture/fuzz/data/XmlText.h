#ifndef AUTOOLS_TORTURE_XMLTEXT_H
#define AUTOOLS_TORTURE_XMLTEXT_H

#include "tests/torture/fuzz/Generator.h"

#include <algorithm>

namespace torture
{
/// Leaves the characters that a document of any encoding may hold in a text: printable ones of ASCII. What an XML
/// parser does to white space and to the ends of texts is its own affair.
inline void keepXmlCharacters(std::string& text)
{
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c < 32 || c > 126; }), text.end());
}

/// A text without blanks at its ends and without runs of blanks, which XML parsers may take away.
inline void keepXmlText(std::string& text)
{
    keepXmlCharacters(text);
    text.erase(std::unique(text.begin(), text.end(), [](char a, char b) { return a == ' ' && b == ' '; }), text.end());
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    if (!text.empty() && text.front() == ' ')
        text.erase(0, 1);
}

/// The text as a document may write it: as it is, with references, in a section of its own, in pieces.
inline std::string xmlText(Generator& input, const std::string& text)
{
    const bool section = input.oneIn(6) && text.find("]]>") == std::string::npos && !text.empty();
    if (section)
        return "<![CDATA[" + text + "]]>";
    const std::size_t comment = input.oneIn(8) && text.find(' ') == std::string::npos ? text.size() / 2 : text.size();
    std::string written;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        const char c = text[at];
        if (at == comment)
            written += "<!-- x -->";
        if (c == '&')
            written += input.oneIn(2) ? "&amp;" : "&#38;";
        else if (c == '<')
            written += "&lt;";
        else if (c == '>')
            written += "&gt;";
        else if (c == '"' && input.oneIn(2))
            written += "&quot;";
        else if (c != ' ' && input.oneIn(20))
            written += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else
            written += c;
    }
    return written;
}
} // namespace torture

#endif
