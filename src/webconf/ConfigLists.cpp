#include "webconf/ConfigLists.h"

#include "foundation/EventLog.h"
#include "platform/Xml.h"
#include "webconf/CConfig.h"
#include "webconf/ConfigReader.h"

#include <algorithm>
#include <new>
#include <set>
#include <string>

namespace
{
constexpr char kIndex[] = "wcfgIndex";

/// The names of the switched-on children, without what follows the transfer: HTTPServer allows "HTTP".
std::set<std::string> authorizedTypes(const XmlNodePtr& node)
{
    std::set<std::string> types;
    aut::ConfigSection section(node.Get(), "AuthorizedDownloadServerTypes");
    while (const XmlNodePtr child = section.next())
    {
        const std::string name = aut::xmlName(child.Get());
        bool authorized = false;
        aut::readConfigFlag(child.Get(), name.c_str(), authorized);
        if (authorized)
            types.insert(name.substr(0, name.find("Server")));
    }
    if (types.empty())
        Log(1, "Load configuration: No Authorized Download Server Types specified");
    return types;
}

std::unique_ptr<CHTTPServer> readServer(const XmlNodePtr& child, const std::set<std::string>& types)
{
    char url[aut::kConfigTextSize];
    char type[aut::kConfigTextSize];
    aut::readConfigText(child.Get(), "URL", url);
    aut::readConfigText(child.Get(), "DownloadServerType", type);
    if (types.count(type) == 0)
        return nullptr;
    auto server = std::make_unique<CHTTPServer>();
    if (!server->ParseServerURL(url))
        return nullptr;
    server->SetServiceTypeString(type);
    return server;
}

unsigned short readModifiers(const XmlNodePtr& child)
{
    struct Modifier
    {
        const char* element;
        unsigned bit;
    };
    constexpr Modifier kModifiers[] = {{"AltKey", 1}, {"CtrlKey", 2}, {"ShiftKey", 4}, {"WinKey", 8}};
    unsigned modifiers = 0;
    for (const Modifier& modifier : kModifiers)
    {
        bool pressed = false;
        aut::readConfigFlag(child.Get(), modifier.element, pressed);
        if (pressed)
            modifiers |= modifier.bit;
    }
    return static_cast<unsigned short>(modifiers);
}
} // namespace

bool CConfig::LoadServerList(XmlNodePtr node)
try
{
    if (node == nullptr)
        node = aut::configurationNode(LoadDataFile().Get());
    if (node == nullptr)
        return false;
    const std::set<std::string> types = authorizedTypes(node);
    aut::freeOwnedList(m_servers);
    aut::ConfigSection section(node.Get(), "DownloadServers");
    while (const XmlNodePtr child = section.next())
    {
        std::unique_ptr<CHTTPServer> server = readServer(child, types);
        if (server != nullptr)
            aut::appendOwned(m_servers, std::move(server));
    }
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool CConfig::LoadErrorSettings(XmlNodePtr node)
{
    aut::freeOwnedList(m_errorTable);
    aut::ConfigSection section(node.Get(), "ErrorSettings");
    while (const XmlNodePtr child = section.next())
    {
        auto member = std::make_unique<CErrorTableMember>();
        aut::readConfigInt(child.Get(), "MaxRetries", member->MaxRetries);
        aut::readConfigInt(child.Get(), "MinDelay", member->m_delay.m_lower);
        aut::readConfigInt(child.Get(), "MaxDelay", member->m_delay.m_upper);
        aut::readConfigInt(child.Get(), kIndex, member->m_index);
        aut::appendOwned(m_errorTable, std::move(member));
    }
    return section.exists();
}

bool CConfig::LoadTimersList(XmlNodePtr node)
{
    FreeTimersList();
    aut::ConfigSection section(node.Get(), "TimersList");
    while (const XmlNodePtr child = section.next())
    {
        int id = 0;
        int seconds = 0;
        aut::readConfigInt(child.Get(), kIndex, id);
        aut::readConfigInt(child.Get(), "SecondsNumber", seconds);
        auto timer = std::make_unique<CTimerElement>();
        timer->SetTimerID(id);
        timer->SetTimerValue(std::max(seconds, -1));
        aut::appendOwned(m_timers, std::move(timer));
    }
    return section.exists();
}

bool CConfig::LoadHotKeysList(XmlNodePtr node)
{
    FreeHotKeysList();
    aut::ConfigSection section(node.Get(), "HotKeysList");
    while (const XmlNodePtr child = section.next())
    {
        char keyValue[aut::kConfigTextSize];
        auto key = std::make_unique<CHotKeyElement>();
        aut::readConfigInt(child.Get(), kIndex, key->m_id);
        aut::readConfigText(child.Get(), "KeyValue", keyValue);
        key->m_key = keyValue[0];
        key->m_modifiers = readModifiers(child);
        aut::appendOwned(m_hotKeys, std::move(key));
    }
    return section.exists();
}

void CConfig::FreeHotKeysList() { aut::freeOwnedList(m_hotKeys); }

void CConfig::FreeTimersList() { aut::freeOwnedList(m_timers); }
