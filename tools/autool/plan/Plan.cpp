#include "plan/Plan.h"

#include "common/Text.h"
#include "machine/Text.h"
#include "machine/Xml.h"
#include "plan/ProductList.h"
#include "plan/ReleaseFile.h"

#include <7xAutoUpdateTools.h>

#include <comdef.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace autool
{
namespace
{
constexpr char kClientKey[] = "Software\\Velmora\\7xAutoUpdate";
constexpr char kDeliveries[] = "Software\\Velmora\\7xAutoUpdate\\Data\\WebConf";
constexpr char kLocalReleases[] = "Software\\Velmora\\7xAutoUpdate\\Data\\Local";

bool hasClient()
{
    RT_List<String, String&> keys;
    return CRegBase(kClientKey, true).GetSubKeys(keys);
}

/// The installation hours of the client's configuration document, as the library reads them.
class InstallationHours : public CConfig
{
public:
    /// False when the document restricts nothing; `why` says when it cannot be read.
    bool load(std::string& why)
    {
        const XmlDocument document = loadXml(fromSystem(static_cast<const char*>(GetConfigDataFile())), why);
        if (document == nullptr)
            return false;
        const XmlNode node = elementAt(XmlNode(document), {L"wcfgResponse", L"Data", L"ComponentList", L"Component",
                                                           L"Configuration", L"AutomaticUpdateData"});
        if (node == nullptr)
        {
            why = "it has no element AutomaticUpdateData";
            return false;
        }
        try
        {
            return LoadInstallSettings(node) && m_installRestricted;
        }
        catch (const _com_error&)
        {
            why = "its installation hours cannot be read";
            return false;
        }
    }
    int start() const { return m_installWindow.m_lower; }
    int end() const { return m_installWindow.m_upper; }
};

class Planner
{
public:
    Planner(const PlanOptions& options, const std::function<void(const std::string&)>& progress)
        : m_options(options), m_progress(progress)
    {
    }

    Plan make()
    {
        readConditions();
        std::vector<AskedRelease> releases = m_options.products.empty() ? fromFiles() : fromProductList();
        applyHours(releases);
        Installed installed;
        for (AskedRelease& release : releases)
        {
            m_progress("Deciding on " + fromSystem(release.name));
            decideOn(std::move(release), installed);
        }
        return std::move(m_plan);
    }

private:
    void readConditions()
    {
        Conditions& conditions = m_plan.conditions;
        conditions.time = m_options.at ? *m_options.at : ::_time64(nullptr);
        conditions.serverTime = LocalTimeToWebConfTime(conditions.time);
        std::tm local{};
        if (::_localtime64_s(&local, &conditions.time) != 0)
            throw NoPlan("this time has no local form");
        conditions.hour = local.tm_hour;
        conditions.anyHour = CRegConfig(true).GetFlag("BFU9K");
        m_plan.clientPhase = CRegInProgress(true).GetPhase();
        if (!hasClient())
            m_plan.notes.emplace_back("This machine has no client: nothing counts as installed.");
    }

    void addProblem(const std::string& what, const std::string& why) { m_plan.problems.push_back({what, why}); }

    std::vector<AskedRelease> fromProductList()
    {
        m_plan.source = m_options.products;
        std::string why;
        auto releases = readProductList(
            m_options.products, [this] { m_progress("Reading the product list"); }, why);
        if (!releases)
            throw NoPlan(m_options.products + ": " + why);
        return std::move(*releases);
    }

    std::vector<AskedRelease> fromFiles()
    {
        std::string folder = toSystem(m_options.data);
        const bool isOwn = folder.empty();
        if (isOwn && !hasClient())
            throw NoPlan("this machine has no client: the key HKLM\\" + std::string(kClientKey) + " is missing");
        if (isOwn)
            folder = CRegAutoUpdate(true).GetDataPath();
        if (folder.empty())
            throw NoPlan("the client's data folder is not set (DataPath)");
        const DWORD attributes = ::GetFileAttributesA(folder.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            throw NoPlan("there is no folder " + fromSystem(folder));
        m_plan.source = fromSystem(folder);

        std::vector<AskedRelease> releases;
        std::vector<std::string> files = releaseFilesOf(folder);
        for (const std::string& file : files)
        {
            m_progress("Reading " + fromSystem(file));
            std::string why;
            if (auto release = readReleaseFile(file, why))
                releases.push_back(std::move(*release));
            else
                addProblem(fromSystem(file), why);
        }
        if (isOwn)
            findMissing(folder, files);
        return releases;
    }

    /// Releases that the registry notes and that have lost their file: the client does not see them any more.
    void findMissing(const std::string& folder, const std::vector<std::string>& files)
    {
        RT_List<String, String&> delivered;
        CRegBase(kDeliveries, true).GetSubKeys(delivered);
        RT_List<String, String&> local;
        CRegBase(kLocalReleases, true).GetValues(local);
        const auto check = [&](RT_List<String, String&>& names, const char* prefix, const char* noted)
        {
            for (POSITION at = names.GetHeadPosition(); at != nullptr;)
            {
                const std::string name = static_cast<const char*>(names.GetNext(at));
                const std::string path = std::string(folder).append("\\").append(prefix).append(name).append(".lst");
                const auto isIt = [&](const std::string& file) { return isSameText(file, path); };
                if (!name.empty() && std::none_of(files.begin(), files.end(), isIt))
                    addProblem(fromSystem(name), std::string(noted) + ", but its file is missing");
            }
        };
        check(delivered, "", "noted in the registry as delivered");
        check(local, "local_", "noted in the registry as a local release");
    }

    /// Neither release files nor product lists carry hours: the client puts in those of its configuration.
    void applyHours(std::vector<AskedRelease>& releases)
    {
        InstallationHours hours;
        std::string why;
        const std::string file = fromSystem(static_cast<const char*>(hours.GetConfigDataFile()));
        if (!hours.load(why))
        {
            if (!why.empty() && hasClient())
                m_plan.notes.push_back("No installation hours: " + file + ": " + why + ".");
            return;
        }
        m_plan.hours = hoursText(hours.start(), hours.end()) + ", from " + file;
        for (AskedRelease& release : releases)
        {
            release.startHour = hours.start();
            release.endHour = hours.end();
        }
    }

    void decideOn(AskedRelease release, Installed& installed)
    {
        const std::string certificateId = release.certificateId;
        ReleaseDecision& decision =
            m_plan.releases.emplace_back(decide(std::move(release), installed, m_plan.conditions));
        if (!certificateId.empty() && IsCIDRevoked(certificateId.c_str()))
            decision.notes.push_back("its certificate ID " + certificateId +
                                     " is revoked: the client leaves the release out");
    }

    const PlanOptions& m_options;
    const std::function<void(const std::string&)>& m_progress;
    Plan m_plan;
};
} // namespace

Plan makePlan(const PlanOptions& options, const std::function<void(const std::string&)>& progress)
{
    return Planner(options, progress).make();
}

std::optional<__int64> parseTime(const std::string& text)
{
    std::tm wanted{};
    char separator = ' ';
    int length = 0;
    const int fields =
        std::sscanf(text.c_str(), "%4d-%2d-%2d%n%c%2d:%2d%n:%2d%n", &wanted.tm_year, &wanted.tm_mon, &wanted.tm_mday,
                    &length, &separator, &wanted.tm_hour, &wanted.tm_min, &length, &wanted.tm_sec, &length);
    const bool isWhole = fields == 3 || fields == 6 || fields == 7;
    if (!isWhole || static_cast<std::size_t>(length) != text.size() || (separator != ' ' && separator != 'T'))
        return std::nullopt;
    wanted.tm_year -= 1900;
    wanted.tm_mon -= 1;
    wanted.tm_isdst = -1;
    std::tm made = wanted;
    const __int64 time = ::_mktime64(&made);
    // What is no date would be taken for another one: the 31st of April for the 1st of May.
    const bool isDate = made.tm_year == wanted.tm_year && made.tm_mon == wanted.tm_mon &&
                        made.tm_mday == wanted.tm_mday && wanted.tm_hour < 24 && wanted.tm_hour >= 0 &&
                        wanted.tm_min < 60 && wanted.tm_min >= 0 && wanted.tm_sec < 60 && wanted.tm_sec >= 0;
    return time >= 0 && isDate ? std::optional<__int64>(time) : std::nullopt;
}
} // namespace autool
