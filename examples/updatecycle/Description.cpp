#include "Description.h"

#include "Steps.h"

#include <7xAutoUpdateTools.h>

namespace updatecycle
{
const char kDescriptionName[] = "component.txt";

namespace
{
/// One line of a description. The library splits it; what it holds is there for derived classes.
class Line : public RT_Expression
{
public:
    explicit Line(const char* text) : RT_Expression(text) {}
    std::string name() const { return static_cast<const char*>(m_name); }
    std::string expression() const { return static_cast<const char*>(m_expression); }
    bool isNamed(const char* name) const { return m_name == name; }
};

std::optional<Description::Type> typeOf(const std::string& word)
{
    if (word == "files")
        return Description::kFiles;
    if (word == "server")
        return Description::kServer;
    if (word == "installer")
        return Description::kInstaller;
    return std::nullopt;
}

/// False when the line makes no sense.
bool take(Line& line, Description& description)
{
    if (!line.Analyse())
        return false;
    if (line.isNamed("Path"))
    {
        description.path = line.expression();
        return true;
    }
    const std::string value = static_cast<const char*>(line.Evaluate());
    if (line.isNamed("File") && isPlainName(value))
    {
        description.files.push_back(value);
        return true;
    }
    const std::optional<Description::Type> type = typeOf(value);
    if (line.isNamed("Type") && type)
        description.type = *type;
    return line.isNamed("Type") && type;
}
} // namespace

bool isPlainName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find_first_of("\\/:*?\"<>|") == std::string::npos;
}

std::optional<Description> readDescription(const std::string& folder)
{
    RT_File file(folder.c_str(), kDescriptionName);
    if (file.Open(0x20) == 0) // for reading, others may read
    {
        componentStep("failed", std::string("there is no ") + file.GetFullPath());
        return std::nullopt;
    }
    Description description;
    char text[1025];
    while (file.ReadLine(text) != 0)
    {
        Line line(text);
        if (*text != '\0' && *text != '#' && !take(line, description))
        {
            componentStep("failed", std::string(file.GetFullPath()) + " has a line that cannot be used: " + text);
            return std::nullopt;
        }
    }
    if (!description.files.empty())
        return description;
    componentStep("failed", std::string(file.GetFullPath()) + " names no file");
    return std::nullopt;
}
} // namespace updatecycle
