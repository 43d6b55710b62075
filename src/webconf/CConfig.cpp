#include "webconf/CConfig.h"

#include "foundation/EventLog.h"
#include "foundation/WholeText.h"
#include "platform/Layout.h"
#include "platform/Xml.h"
#include "registry/CRegAutoUpdate.h"
#include "webconf/ConfigLists.h"
#include "webconf/ConfigReader.h"

#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CConfig>
{
    static_assert(offsetof(CConfig, m_downloadRestricted) == 8);
    static_assert(offsetof(CConfig, m_installRestricted) == 9);
    static_assert(offsetof(CConfig, m_registryChanged) == 10);
    static_assert(offsetof(CConfig, m_servers) == 16);
    static_assert(offsetof(CConfig, m_downloadWindow) == 40);
    static_assert(offsetof(CConfig, ForegroundMode) == 56);
    static_assert(offsetof(CConfig, CacheDisabled) == 57);
    static_assert(offsetof(CConfig, KeepCompressedFiles) == 58);
    static_assert(offsetof(CConfig, ConnectionRetries) == 60);
    static_assert(offsetof(CConfig, TimeOut) == 64);
    static_assert(offsetof(CConfig, MaxiBytes) == 68);
    static_assert(offsetof(CConfig, PacketSize) == 72);
    static_assert(offsetof(CConfig, Wait) == 76);
    static_assert(offsetof(CConfig, GetClientInfo) == 80);
    static_assert(offsetof(CConfig, m_checkDelay) == 88);
    static_assert(offsetof(CConfig, m_hotKeys) == 104);
    static_assert(offsetof(CConfig, m_timers) == 128);
    static_assert(offsetof(CConfig, m_installWindow) == 152);
    static_assert(offsetof(CConfig, SilentInstall) == 168);
    static_assert(offsetof(CConfig, CloseIE) == 169);
    static_assert(offsetof(CConfig, m_errorTable) == 176);
    static_assert(sizeof(CConfig) == 200);
};
AUT_LAYOUT_END

namespace
{
constexpr char kFileName[] = "AUKernelData.xml";

CRange rangeOf(int lower, int upper)
{
    CRange range;
    range.m_lower = lower;
    range.m_upper = upper;
    return range;
}
} // namespace

CConfig::CConfig()
    : m_downloadRestricted(false), m_installRestricted(false), m_registryChanged(false),
      m_downloadWindow(rangeOf(0, 24)), ForegroundMode(true), CacheDisabled(true), KeepCompressedFiles(false),
      ConnectionRetries(5), TimeOut(0), MaxiBytes(0), PacketSize(700), Wait(100), GetClientInfo(false),
      m_checkDelay(rangeOf(20 * 3600, 30 * 3600)), m_installWindow(rangeOf(0, 24)), SilentInstall(false), CloseIE(false)
{
}

CConfig::CConfig(const CConfig& other) : CConfig() // delegating, so that the destructor runs if a copy below throws
{
    *this = other;
}

CConfig& CConfig::operator=(const CConfig& other)
{
    if (this == &other)
        return *this;
    m_downloadRestricted = other.m_downloadRestricted;
    m_installRestricted = other.m_installRestricted;
    m_registryChanged = other.m_registryChanged;
    m_downloadWindow = other.m_downloadWindow;
    ForegroundMode = other.ForegroundMode;
    CacheDisabled = other.CacheDisabled;
    KeepCompressedFiles = other.KeepCompressedFiles;
    ConnectionRetries = other.ConnectionRetries;
    TimeOut = other.TimeOut;
    MaxiBytes = other.MaxiBytes;
    PacketSize = other.PacketSize;
    Wait = other.Wait;
    GetClientInfo = other.GetClientInfo;
    m_checkDelay = other.m_checkDelay;
    m_installWindow = other.m_installWindow;
    SilentInstall = other.SilentInstall;
    CloseIE = other.CloseIE;
    aut::copyOwnedList(m_servers, other.m_servers);
    aut::copyOwnedList(m_hotKeys, other.m_hotKeys);
    aut::copyOwnedList(m_timers, other.m_timers);
    aut::copyOwnedList(m_errorTable, other.m_errorTable);
    return *this;
}

CConfig::~CConfig()
{
    aut::freeOwnedList(m_servers);
    FreeHotKeysList();
    FreeTimersList();
    aut::freeOwnedList(m_errorTable);
}

bool CConfig::GetValues()
try
{
    const XmlDocumentPtr document = LoadDataFile();
    if (document == nullptr)
    {
        Log(2, "Unable to load configuration data from : %s", static_cast<const char*>(GetConfigDataFile()));
        return false;
    }
    const XmlNodePtr node = aut::configurationNode(document.Get());
    if (node == nullptr)
    {
        Log(2, "Load Configuration: no 'AutomaticUpdate' tag in the XML file : %s",
            static_cast<const char*>(GetConfigDataFile()));
        return false;
    }
    // A section that is missing or fails leaves its defaults and stops nothing.
    LoadErrorSettings(node);
    LoadDownloadSettings(node);
    LoadInstallSettings(node);
    LoadGeneralSettings(node);
    UpdateRegistryKeys(node);
    LoadTimersList(node);
    LoadHotKeysList(node);
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

String CConfig::GetConfigDataFile() { return aut::wholeText({CRegAutoUpdate(true).GetPath(), "\\", kFileName}); }

XmlDocumentPtr CConfig::LoadDataFile()
{
    XmlDocumentPtr document;
    if (FAILED(aut::createXmlDocument(document, CLSCTX_ALL)))
    {
        Log(2, "CConfig::LoadDataFile() - Failed to instanciate MSXML::DOMDocument");
        return nullptr;
    }
    aut::setXmlSynchronous(document.Get());
    const String path = GetConfigDataFile();
    if (!aut::loadXmlFile(document.Get(), path))
    {
        Log(1, "Failed to load file: %s", static_cast<const char*>(path));
        return nullptr;
    }
    Log(0, "%s configuration file loaded", static_cast<const char*>(path));
    return document;
}

bool CConfig::IsHotKeyAvailable() { return !m_hotKeys.IsEmpty(); }

CHotKeyElement* CConfig::GetHotKeyByID(int id)
{
    CHotKeyElement* key = nullptr;
    for (POSITION pos = m_hotKeys.GetHeadPosition(); pos != nullptr;)
    {
        key = m_hotKeys.GetNext(pos);
        if (key->m_id == id)
            break;
    }
    return key;
}

CTimerElement* CConfig::GetTimerByID(int id)
{
    CTimerElement* timer = nullptr;
    for (POSITION pos = m_timers.GetHeadPosition(); pos != nullptr;)
    {
        timer = m_timers.GetNext(pos);
        if (timer->GetTimerID() == id)
            break;
    }
    return timer;
}
