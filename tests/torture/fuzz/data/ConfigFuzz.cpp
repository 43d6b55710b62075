// The kernel configuration document: settings, windows, and the lists of timers, hot keys, retry policies and servers.

#include "registry/CRegAutoUpdate.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/fuzz/data/Batches.h"
#include "tests/torture/fuzz/data/XmlText.h"
#include "tests/webconf/ConfigDocument.h"
#include "webconf/CConfig.h"

#include <map>
#include <set>

namespace
{
using torture::Differences;
using torture::Generator;

constexpr int kEach = 20; ///< elements of each of the four lists

const torture::Words& words()
{
    static const torture::Words all = {"0",
                                       "1",
                                       "-1",
                                       "-5",
                                       "22",
                                       "24",
                                       "28",
                                       "6",
                                       "12abc",
                                       " 7",
                                       "+3",
                                       "x",
                                       "",
                                       "2147483647",
                                       "-2147483648",
                                       "99999999999999999999",
                                       "1.9",
                                       "00000000000000000000000000000000000000000000000000000000000000017"};
    return all;
}

/// As atoi reads the first 63 characters; what does not fit is the nearest number that does.
int numberOf(const std::string& text)
{
    const std::string number = text.substr(0, 63);
    std::size_t at = number.find_first_not_of(' ');
    if (at == std::string::npos)
        return 0;
    const bool negative = number[at] == '-';
    at += negative || number[at] == '+' ? 1 : 0;
    long long value = 0;
    for (; at < number.size() && number[at] >= '0' && number[at] <= '9'; ++at)
        value = std::min(value * 10 + (number[at] - '0'), 2147483648LL);
    return static_cast<int>(negative ? -value : std::min(value, 2147483647LL));
}

/// Elements with texts, each name once or missing.
class Elements
{
public:
    /// Adds it or leaves it out.
    void draw(Generator& input, const std::string& name)
    {
        std::string text = input.oneIn(5) ? input.text(words(), 70) : input.oneOf(words());
        torture::keepXmlText(text);
        if (!input.oneIn(6))
            put(input, name, text);
    }
    void put(Generator& input, const std::string& name, const std::string& text)
    {
        m_texts[name] = text;
        const std::string element = "<" + name + ">" + torture::xmlText(input, text) + "</" + name + ">";
        m_xml += input.oneIn(10) ? "<Deeper>" + element + "</Deeper>" : element; // found wherever it lies
    }
    bool has(const std::string& name) const { return m_texts.count(name) != 0; }
    std::string text(const std::string& name) const { return has(name) ? m_texts.at(name) : ""; }
    int number(const std::string& name) const { return numberOf(text(name)); }
    bool flag(const std::string& name) const { return number(name) != 0; }
    const std::string& xml() const { return m_xml; }

private:
    std::map<std::string, std::string> m_texts;
    std::string m_xml;
};

void window(const Elements& elements, const char* name, int& start, int& end, bool& restricted)
{
    start = elements.number(std::string(name) + "Start");
    end = elements.number(std::string(name) + "End");
    if (end <= start)
        end = end > 2147483647 - 24 ? 2147483647 : end + 24;
    restricted = start != end % 24;
}

std::string told(std::initializer_list<long long> numbers)
{
    std::string text;
    for (const long long number : numbers)
        text += std::to_string(number) + " ";
    return text;
}

int hoursToSeconds(int hours)
{
    const long long seconds = 3600LL * hours;
    return static_cast<int>(std::min(std::max(seconds, -2147483648LL), 2147483647LL));
}

std::string documentedSettings(const Elements& e)
{
    int minHours = e.number("MinHours");
    int maxHours = e.number("MaxHours");
    if (minHours > maxHours)
    {
        minHours = 22;
        maxHours = 28;
    }
    int window1[2];
    int window2[2];
    bool restricted[2];
    window(e, "Download", window1[0], window1[1], restricted[0]);
    window(e, "Install", window2[0], window2[1], restricted[1]);
    return told({e.number("ConnectionRetries"), e.number("TimeOut"), e.number("MaxiBytes"),
                 e.number("PacketSize") == 0 ? 1200 : e.number("PacketSize"), e.has("Wait") ? e.number("Wait") : 400,
                 hoursToSeconds(minHours), hoursToSeconds(maxHours), e.flag("GetClientInfo"), window1[0], window1[1],
                 restricted[0], window2[0], window2[1], restricted[1], e.flag("SilentInstall"), e.flag("CloseIE"),
                 e.flag("ForegroundMode"), e.flag("CacheDisabled"), e.flag("KeepCompressedFiles")});
}

std::string settingsOf(const CConfig& c)
{
    return told({c.ConnectionRetries, c.TimeOut, c.MaxiBytes, c.PacketSize, c.Wait, c.m_checkDelay.m_lower,
                 c.m_checkDelay.m_upper, c.GetClientInfo, c.m_downloadWindow.m_lower, c.m_downloadWindow.m_upper,
                 c.m_downloadRestricted, c.m_installWindow.m_lower, c.m_installWindow.m_upper, c.m_installRestricted,
                 c.SilentInstall, c.CloseIE, c.ForegroundMode, c.CacheDisabled, c.KeepCompressedFiles});
}

/// The lists, one element a line.
struct Lists
{
    std::string timers;
    std::string hotKeys;
    std::string errors;
    std::string servers;
};

std::string drawTimers(Generator& input, Lists& documented)
{
    std::string xml = "<TimersList>";
    for (int i = 0; i < kEach; ++i)
    {
        Elements timer;
        timer.draw(input, "wcfgIndex");
        timer.draw(input, "SecondsNumber");
        xml += "<T>" + timer.xml() + "</T>\n";
        documented.timers += told({timer.number("wcfgIndex"), std::max(timer.number("SecondsNumber"), -1)}) + "\n";
    }
    return xml + "</TimersList>";
}

std::string drawHotKeys(Generator& input, Lists& documented)
{
    std::string xml = "<HotKeysList>";
    for (int i = 0; i < kEach; ++i)
    {
        Elements key;
        for (const char* name : {"AltKey", "CtrlKey", "wcfgIndex", "ShiftKey", "WinKey", "KeyValue"})
            key.draw(input, name);
        xml += "<K>" + key.xml() + "</K>";
        const int modifiers = (key.flag("AltKey") ? 1 : 0) + (key.flag("CtrlKey") ? 2 : 0) +
                              (key.flag("ShiftKey") ? 4 : 0) + (key.flag("WinKey") ? 8 : 0);
        const std::string value = key.text("KeyValue");
        documented.hotKeys += told({key.number("wcfgIndex"), value.empty() ? 0 : value[0], modifiers}) + "\n";
    }
    return xml + "</HotKeysList>";
}

std::string drawErrors(Generator& input, Lists& documented)
{
    std::string xml = "<ErrorSettings>";
    for (int i = 0; i < kEach; ++i)
    {
        Elements error;
        for (const char* name : {"MaxRetries", "MinDelay", "MaxDelay", "wcfgIndex"})
            error.draw(input, name);
        xml += "<!-- one --><E>" + error.xml() + "</E>";
        documented.errors += told({error.number("MaxRetries"), error.number("MinDelay"), error.number("MaxDelay"),
                                   error.number("wcfgIndex")}) +
                             "\n";
    }
    return xml + "</ErrorSettings>";
}

std::string drawServers(Generator& input, Lists& documented)
{
    // What the addresses become is known; parsing them is not what is tried here. Only an empty one is refused.
    struct Address
    {
        const char* url;
        const char* complete;
    };
    constexpr Address kAddresses[] = {{"http://host/path", "HTTP://host:80/path"},
                                      {"ftp://depot:2121/dir/sub?x=1", "FTP://depot:2121/dir/sub?x=1"},
                                      {"server\\share", "HTTP://server:80/share"},
                                      {"", ""}};
    const torture::Words types = {"HTTP", "FTP", "http", "File", ""};
    std::set<std::string> authorized;
    std::string xml = "<AuthorizedDownloadServerTypes>";
    for (const char* name : {"HTTPServer", "FTPServer", "File"})
    {
        if (input.oneIn(4))
            continue;
        std::string text = input.oneOf(words());
        torture::keepXmlText(text);
        xml += std::string("<") + name + ">" + text + "</" + name + ">";
        if (numberOf(text) != 0)
            authorized.insert(std::string(name).substr(0, std::string(name).find("Server")));
    }
    xml += "</AuthorizedDownloadServerTypes><DownloadServers>";
    for (int i = 0; i < kEach; ++i)
    {
        const Address& address = input.oneOf(kAddresses);
        const std::string type = input.oneOf(types);
        Elements server;
        if (!input.oneIn(8))
            server.put(input, "DownloadServerType", type);
        if (!input.oneIn(8))
            server.put(input, "URL", address.url);
        xml += "<S>" + server.xml() + "</S>";
        if (authorized.count(server.text("DownloadServerType")) != 0 && !server.text("URL").empty())
            documented.servers += type + " " + address.complete + "\n";
    }
    return xml + "</DownloadServers>";
}

Lists listsOf(CConfig& config)
{
    Lists lists;
    for (POSITION at = config.m_timers.GetHeadPosition(); at != nullptr;)
    {
        CTimerElement& timer = *config.m_timers.GetNext(at);
        lists.timers += told({timer.GetTimerID(), timer.GetTimerValue()}) + "\n";
    }
    for (POSITION at = config.m_hotKeys.GetHeadPosition(); at != nullptr;)
    {
        const CHotKeyElement& key = *config.m_hotKeys.GetNext(at);
        lists.hotKeys += told({key.m_id, key.m_key, key.m_modifiers}) + "\n";
    }
    for (POSITION at = config.m_errorTable.GetHeadPosition(); at != nullptr;)
    {
        const CErrorTableMember& error = *config.m_errorTable.GetNext(at);
        lists.errors += told({error.MaxRetries, error.m_delay.m_lower, error.m_delay.m_upper, error.m_index}) + "\n";
    }
    for (POSITION at = config.m_servers.GetHeadPosition(); at != nullptr;)
    {
        CHTTPServer& server = *config.m_servers.GetNext(at);
        lists.servers +=
            std::string(server.GetServiceTypeString()) + " " + std::string(server.GetCompleteURL("")) + "\n";
    }
    return lists;
}

const auttest::TestFolder* folder = nullptr;

void checkConfiguration(Generator& input, Differences& differences)
{
    Elements settings;
    for (const char* name : {"ConnectionRetries", "TimeOut", "MaxiBytes", "PacketSize", "Wait", "MinHours", "MaxHours",
                             "GetClientInfo", "InstallStart", "InstallEnd", "SilentInstall", "CloseIE", "DownloadStart",
                             "DownloadEnd", "ForegroundMode", "CacheDisabled", "KeepCompressedFiles"})
        settings.draw(input, name);
    Lists documented;
    std::string xml = settings.xml();
    xml += drawTimers(input, documented);
    xml += drawErrors(input, documented);
    xml += drawServers(input, documented);
    xml += drawHotKeys(input, documented);
    folder->writeFile("AUKernelData.xml", auttest::kernelData(xml));

    CConfig config;
    differences.expect("loading", true, config.GetValues());
    differences.expect("settings", documentedSettings(settings), settingsOf(config));
    const Lists lists = listsOf(config);
    differences.expect("timers", documented.timers, lists.timers);
    differences.expect("hot keys", documented.hotKeys, lists.hotKeys);
    differences.expect("retry policies", documented.errors, lists.errors);
    differences.expect("servers", documented.servers, lists.servers);
    if (!differences.text().empty())
        differences.note("document", torture::literal(xml), "");
}
} // namespace

TEST(Fuzz, ConfigurationsAnswerAsTheModelDoes)
{
    const auttest::ComApartment apartment;
    const auttest::ClientRegistry registry;
    const auttest::TestFolder install;
    folder = &install;
    registry.write("", "Path", install.path());
    torture::fuzzBatches("kernel configurations", "list elements beside 17 settings", checkConfiguration, 4 * kEach);
}
