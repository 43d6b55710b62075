#include "plan/ReleaseFile.h"

#include "machine/Owners.h"

#include <7xAutoUpdateTools.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iomanip>

namespace autool
{
namespace
{
constexpr int kMaxWordChars = 259;

// The words of a record. White space separates them; a number behind the end keeps its value, another word where a
// number stands breaks the record.

bool isBroken(const std::istream& stream) { return stream.bad() || (stream.fail() && !stream.eof()); }

template <typename Number> bool readNumber(std::istream& stream, Number& number)
{
    if (stream.good())
        stream >> std::ws;
    if (!stream.good())
        return !isBroken(stream);
    Number read = 0;
    if (!(stream >> read))
    {
        stream.setstate(std::ios_base::badbit);
        return false;
    }
    number = read;
    return true;
}

std::string readWord(std::istream& stream)
{
    std::string word;
    if (!(stream >> std::setw(kMaxWordChars) >> word))
        return std::string();
    constexpr int kEnd = std::char_traits<char>::eof();
    const int next = stream.good() ? stream.peek() : kEnd;
    if (next != kEnd && !std::isspace(static_cast<char>(next), stream.getloc()))
        stream.setstate(std::ios_base::failbit); // longer than any
    return word;
}

std::string textOf(const std::string& word)
{
    if (word == "~")
        return std::string();
    std::string text(word.size() + 1, '\0');
    ConvertInputStreamString(word.c_str(), text.data());
    return text.c_str();
}

template <typename Record> void takeBase(Record& record, const AutoUpdateObject& object)
{
    record.id = object.GetId();
    record.name = object.GetName();
    record.version = object.GetVersion();
    record.build = object.GetBuild();
    record.language = object.GetLanguage();
    record.fullVersion = object.GetFullVersion();
    record.action = object.GetAction();
}

bool readComponents(std::ifstream& file, int count, AskedRelease& release, std::string& why)
{
    for (int i = 0; i < count; ++i)
    {
        CComponent component; // one of its own each: a record cut off keeps what a new one has
        if (component.Serialize(file) == 0)
        {
            why = "component " + std::to_string(i + 1) + " of " + std::to_string(count) + " is missing or damaged";
            return false;
        }
        AskedComponent& asked = release.components.emplace_back();
        takeBase(asked, component);
        asked.shared = component.IsShared() != 0;
        asked.location = component.GetSourceLocation();
    }
    return true;
}
} // namespace

std::optional<AskedRelease> readReleaseFile(const std::string& path, std::string& why)
{
    std::ifstream file(path);
    if (!file)
    {
        why = "cannot be opened: " + std::string(std::strerror(errno));
        return std::nullopt;
    }
    AskedRelease release;
    release.source = path;
    AutoUpdateObject base(0, "", "", "", "", 0);
    if (base.Serialize(file) == 0)
    {
        why = "no release record, or one with an empty build or language, for which the format has no word";
        return std::nullopt;
    }
    takeBase(release, base);
    release.enabled = base.IsEnabled() != 0;
    if (file.eof())
    {
        why = "cut off behind its first seven words";
        return std::nullopt;
    }

    int count = 0;
    readNumber(file, release.activationDate);
    readNumber(file, count);
    const std::string certificateId = readWord(file);
    if (!file.good())
    {
        why = "cut off or damaged before its components";
        return std::nullopt;
    }
    release.certificateId = certificateId == "~" ? "" : certificateId;
    int noDownload = 0;
    int preInstallOnly = 0;
    if (!readNumber(file, noDownload) || !readNumber(file, preInstallOnly))
    {
        why = "damaged before its components";
        return std::nullopt;
    }
    release.noDownload = noDownload != 0;
    release.preInstallOnly = preInstallOnly != 0;
    if (!readComponents(file, count, release, why))
        return std::nullopt;

    // A record of the older format has no names. What white space follows its components does not count.
    if (!file.eof())
        file >> std::ws;
    if (file.eof())
        return release;
    const std::string marketingName = readWord(file);
    const std::string technicalName = readWord(file);
    if (isBroken(file))
    {
        why = "damaged behind its components";
        return std::nullopt;
    }
    release.marketingName = textOf(marketingName);
    release.technicalName = textOf(technicalName);
    return release;
}

std::vector<std::string> releaseFilesOf(const std::string& folder)
{
    std::vector<std::string> files;
    WIN32_FIND_DATAA found{};
    const FindHandle search(::FindFirstFileA((folder + "\\*.lst").c_str(), &found));
    if (!search)
        return files;
    do
    {
        // Windows matches 8.3 names too: x.lst_old would be found.
        const std::string name = found.cFileName;
        const bool isRecord = name.size() > 4 && ::_stricmp(name.c_str() + name.size() - 4, ".lst") == 0;
        if (isRecord && (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            files.push_back(folder + "\\" + name);
    } while (::FindNextFileA(search.get(), &found));
    std::sort(files.begin(), files.end(),
              [](const std::string& left, const std::string& right)
              { return ::_stricmp(left.c_str(), right.c_str()) < 0; });
    return files;
}
} // namespace autool
