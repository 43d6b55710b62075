// Expressions of install locations: well-formedness, splitting of lines, and evaluation by the rules over the same
// environment, registry and ini file. The system's own part (expanding variables, reading a value or an entry) is asked
// of the system.

#include "fileops/RT_PathExpression.h"
#include "registry/CRegAutoUpdate.h"
#include "tests/fileops/ExpressionFixture.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/fuzz/Fuzz.h"

namespace
{
using torture::Differences;
using torture::Generator;

constexpr char kVelmoraPath[] = "C:\\Velmora {x}";
constexpr char kProductPath[] = "D:\\Product\\%FUZZA%";

const std::string& iniFile()
{
    static const std::string path = auttest::tempPath() + "\\fuzz.ini";
    return path;
}

/// The variables, keys and entries that the expressions name.
class Surroundings
{
public:
    Surroundings()
    {
        auttest::writeFile(iniFile(), "[Paths]\r\nData=C:\\ini data\r\nBack=%FUZZB%\r\n[E]\r\nData=\r\n");
        m_keys.machine.write("", "Text", "machine text");
        m_keys.machine.write("Sub", "Ref", "%FUZZA%\\{HKCU\\Software\\Velmora\\ExpressionTest\\User}");
        m_keys.machine.write("", "Open", "{HKLM\\");
        m_keys.user.write("", "User", "user;text");
        CRegAutoUpdate(false).SetVelmoraPath(kVelmoraPath);
    }
    ~Surroundings() { auttest::removeAll(iniFile()); }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

private:
    const auttest::ClientRegistry m_registry;
    const auttest::ExpressionKeys m_keys;
    const auttest::Variable m_first{"FUZZA", "value a"};
    const auttest::Variable m_second{"FUZZB", "%FUZZA%\\b;%FuzzNone%"};
    const auttest::Variable m_third{"FUZZR", "r%FUZZR%"};
    const auttest::Variable m_fourth{"FUZZK", "{HKLM\\Software\\Velmora\\ExpressionTest\\Text}"};
    const auttest::BorrowedValue m_programs{HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "ProgramFilesDir",
                                            "C:\\Programs 32"};
    const auttest::BorrowedValue m_common{HKEY_LOCAL_MACHINE, auttest::kCurrentVersion32, "CommonFilesDir",
                                          "%ProgramFilesDir%\\Common"};
    const auttest::BorrowedValue m_downloaded{HKEY_LOCAL_MACHINE,
                                              std::string(auttest::kCurrentVersion64) + "\\Internet Settings",
                                              "ActiveXCache", "C:\\Downloaded"};
};

const torture::Words& words()
{
    static const torture::Words all = {"%FUZZA%",
                                       "%fuzzb%",
                                       "%FUZZR%",
                                       "%FUZZK%",
                                       "%FuzzNone%",
                                       "%WINSYSDIR%",
                                       "%ProgramFilesDir%",
                                       "%commonfilesdir%",
                                       "%DownloadedProgramFilesDir%",
                                       "%Product%",
                                       "%ProductPath%",
                                       "%velmorapath%",
                                       "%MSI(abc)%",
                                       "%MSI(abc%",
                                       "{HKLM\\Software\\Velmora\\ExpressionTest\\Text}",
                                       "{HKLM\\Software\\Velmora\\ExpressionTest\\Sub\\Ref}",
                                       "{hklm\\ Software\\Velmora\\ExpressionTest \\ Text }",
                                       "{x HKCU\\Software\\Velmora\\ExpressionTest\\User}",
                                       "{HKLM\\Software\\Velmora\\ExpressionTest\\Open}",
                                       "{HKLM\\Software\\Nothing\\Value}",
                                       "{HKLM\\Text}",
                                       "{HKCU\\}",
                                       "{" + iniFile() + " [Paths] Data}",
                                       "{ " + iniFile() + "[ paths ]back}",
                                       "{" + iniFile() + " [None] Data}",
                                       "{" + iniFile() + "]Paths[ Data}",
                                       "{no ini [file",
                                       "{%FUZZA%}",
                                       "{{nested}}",
                                       "%",
                                       "{",
                                       "}",
                                       "[",
                                       "]",
                                       ";",
                                       " ",
                                       "=",
                                       "\\x",
                                       "C:\\App"};
    return all;
}

std::string drawn(Generator& input)
{
    std::string text;
    if (input.oneIn(3))
        return input.text(words(), 1500);
    for (int left = input.number(1, 6); left > 0; --left)
        text += input.oneOf(words());
    return input.oneIn(2) ? text : input.mutation(text, words());
}

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return text;
}
bool same(const std::string& left, const std::string& right) { return lower(left) == lower(right); }

std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Evaluation as the rules tell it.
class Model
{
public:
    explicit Model(bool path) : m_path(path) {}

    std::string evaluated(const std::string& expression) const
    {
        std::string text = expression;
        for (int round = 0; round < 10; ++round)
        {
            const std::string before = text;
            text = pass(expanded(text));
            if (text == before)
                break;
        }
        return m_path ? chosen(text) : text;
    }

private:
    static std::string expanded(const std::string& text)
    {
        static std::string buffer(1 << 20, '\0');
        const DWORD size = ::ExpandEnvironmentStringsA(text.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
        return size == 0 ? text : buffer.substr(0, buffer.find('\0'));
    }

    /// Of the alternatives the first without a block left.
    static std::string chosen(const std::string& text)
    {
        if (text.find(';') == std::string::npos)
            return trimmed(text);
        std::string rest = text + ";";
        for (std::size_t end = rest.find(';'); end != std::string::npos; end = rest.find(';'))
        {
            const std::string alternative = trimmed(rest.substr(0, end));
            if (alternative.find_first_of("{}%") == std::string::npos)
                return alternative;
            rest.erase(0, end + 1);
        }
        return "";
    }

    std::string pass(const std::string& text) const
    {
        std::string output;
        for (std::size_t at = 0; at < text.size();)
        {
            const std::size_t end = text[at] == '%' ? text.find('%', at + 1) : text[at] == '{' ? closing(text, at) : at;
            if (end == std::string::npos)
                return output + text.substr(at); // never closed
            const std::string block = text.substr(at, end - at + 1);
            std::string value;
            if (end != at)
                value = text[at] == '%' ? variable(block.substr(1, block.size() - 2))
                                        : stored(block.substr(1, block.size() - 2));
            output += value.empty() ? block : value;
            at = end + 1;
        }
        return output;
    }

    static std::size_t closing(const std::string& text, std::size_t open)
    {
        int depth = 0;
        for (std::size_t at = open; at < text.size(); ++at)
        {
            depth += text[at] == '{' ? 1 : text[at] == '}' ? -1 : 0;
            if (depth == 0)
                return at;
        }
        return std::string::npos;
    }

    std::string variable(const std::string& name) const
    {
        if (m_path && same(name, "Product"))
            return "";
        if (m_path && same(name, "ProductPath"))
            return kProductPath;
        if (m_path && same(name, "VelmoraPath"))
            return kVelmoraPath;
        if (m_path && same(name.substr(0, 4), "MSI("))
            return name.back() == ')' ? "" : name; // no such component is installed
        char folder[MAX_PATH] = "";
        if (same(name, "WINSYSDIR"))
            return ::GetSystemWow64DirectoryA(folder, MAX_PATH) != 0 ? folder : "";
        if (same(name, "ProgramFilesDir"))
            return "C:\\Programs 32";
        if (same(name, "CommonFilesDir"))
            return "%ProgramFilesDir%\\Common";
        return same(name, "DownloadedProgramFilesDir") ? "C:\\Downloaded" : "";
    }

    static std::string stored(const std::string& inner)
    {
        const std::size_t open = inner.find('[');
        if (open == std::string::npos)
            return registryValue(inner);
        const std::size_t close = inner.find(']', open);
        if (close == std::string::npos)
            return inner;
        const std::string file = trimmed(inner.substr(0, open));
        char value[1024] = "";
        if (file.size() < 200) // a longer one cannot be a file here
            ::GetPrivateProfileStringA(trimmed(inner.substr(open + 1, close - open - 1)).c_str(),
                                       trimmed(inner.substr(close + 1)).c_str(), "", value, sizeof value, file.c_str());
        return value;
    }

    static std::string registryValue(const std::string& inner)
    {
        HKEY root = HKEY_LOCAL_MACHINE;
        std::size_t prefix = lower(inner).find("hklm\\");
        if (prefix == std::string::npos)
        {
            root = HKEY_CURRENT_USER;
            prefix = lower(inner).find("hkcu\\");
        }
        if (prefix == std::string::npos)
            return "";
        const std::size_t first = prefix + 5;
        const std::size_t last = inner.rfind('\\');
        const std::string key = last > first ? trimmed(inner.substr(first, last - first)) : "";
        const std::string name = trimmed(inner.substr(last + 1));
        char value[2000] = "";
        DWORD size = sizeof value - 1;
        HKEY opened = nullptr;
        if (::RegOpenKeyExA(root, key.c_str(), 0, KEY_QUERY_VALUE, &opened) != ERROR_SUCCESS)
            return "";
        const LSTATUS status =
            ::RegQueryValueExA(opened, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(value), &size);
        ::RegCloseKey(opened);
        return status == ERROR_SUCCESS ? value : "";
    }

    bool m_path;
};

/// Braces balanced, and each variable closed at the depth at which it was opened: by taking closed pairs away.
bool wellFormed(const std::string& text)
{
    std::string open; // one character for each brace and variable that is open
    for (const char c : text)
    {
        if (c == '{')
            open += c;
        if (c == '%')
        {
            const std::size_t variable = open.rfind('%');
            const auto braces = [&open](std::size_t from)
            {
                int depth = 0;
                for (; from < open.size(); ++from)
                    depth += open[from] == '{' ? 1 : open[from] == '}' ? -1 : 0;
                return depth;
            };
            if (variable == std::string::npos)
                open += c;
            else if (braces(variable) != 0)
                return false;
            else
                open.erase(variable, 1);
        }
        if (c == '}')
        {
            int depth = -1;
            for (const char other : open)
                depth += other == '{' ? 1 : other == '}' ? -1 : 0;
            if (depth < 0)
                return false;
            open += c;
        }
    }
    int depth = 0;
    for (const char c : open)
        depth += c == '{' ? 1 : c == '}' ? -1 : 1000000;
    return depth == 0;
}

void checkForm(Generator& input, Differences& differences)
{
    const std::string text = drawn(input);
    differences.expect("well-formed", wellFormed(text), RT_Expression("", text.c_str()).Analyse());

    // A line: the pieces between runs of "=".
    std::vector<std::string> pieces;
    std::string piece;
    for (const char c : text + "=")
    {
        if (c != '=')
            piece += c;
        else if (!piece.empty())
        {
            pieces.push_back(piece);
            piece.clear();
        }
    }
    pieces.resize(2);
    const std::size_t first = pieces[1].find_first_not_of(' ');
    const auttest::ExpressionProbe line(text.c_str());
    differences.expect("name", trimmed(pieces[0]), std::string(line.m_name));
    differences.expect("expression", first == std::string::npos ? "" : pieces[1].substr(first),
                       std::string(line.m_expression));
}

void checkValue(Generator& input, Differences& differences)
{
    const std::string text = drawn(input);
    differences.expect("expression", Model(false).evaluated(text),
                       std::string(RT_Expression("name", text.c_str()).Evaluate()));
    differences.expect("path expression", Model(true).evaluated(text),
                       std::string(RT_PathExpression("name", text.c_str(), kProductPath).Evaluate()));
}
} // namespace

AUTOOLS_FUZZ_TARGET(ExpressionForms, "expression forms", checkForm)

TEST(Fuzz, ExpressionsAnswerAsTheModelDoes)
{
    const Surroundings surroundings;
    torture::fuzz("expressions", checkValue);
}
