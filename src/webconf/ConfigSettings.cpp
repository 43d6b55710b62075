#include "webconf/CConfig.h"

#include "foundation/EventLog.h"
#include "platform/Xml.h"
#include "registry/CRegConfig.h"
#include "webconf/ConfigReader.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>

// The loaders of single elements. A missing element clears its member whatever its constructor gave it; only the
// fall-backs named below give it another value.

namespace
{
struct IntElement
{
    const char* name;
    int CConfig::*member;
};
struct FlagElement
{
    const char* name;
    bool CConfig::*member;
};

template <std::size_t N> void readFlags(CConfig& config, const XmlNodePtr& node, const FlagElement (&elements)[N])
{
    for (const FlagElement& element : elements)
        aut::readConfigFlag(node.Get(), element.name, config.*element.member);
}

void logMissing(const char* name) { Log(1, "Load Configuration: No XML value for %s", name); }

/// Keeps numbers from the document that are too large for an int at the int's bounds.
int saturated(std::int64_t value) { return static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX)); }

/// Reads a window of hours: an end at or before the start lies on the next day.
/// @return whether it restricts anything, which one of 24 hours does not.
bool readWindow(const XmlNodePtr& node, const char* startName, const char* endName, CRange& window)
{
    aut::readConfigInt(node.Get(), startName, window.m_lower);
    aut::readConfigInt(node.Get(), endName, window.m_upper);
    if (window.m_upper <= window.m_lower)
        window.m_upper = saturated(std::int64_t{window.m_upper} + 24);
    return window.m_lower != window.m_upper % 24;
}
} // namespace

bool CConfig::GetTransferSettings(XmlNodePtr node)
try
{
    constexpr int kPacketSizeFallback = 1200;
    constexpr int kWaitFallback = 400;
    if (node == nullptr)
        node = aut::configurationNode(LoadDataFile().Get());
    if (node == nullptr)
        return false;
    constexpr IntElement kElements[] = {{"ConnectionRetries", &CConfig::ConnectionRetries},
                                        {"TimeOut", &CConfig::TimeOut},
                                        {"MaxiBytes", &CConfig::MaxiBytes}};
    for (const IntElement& element : kElements)
        aut::readConfigInt(node.Get(), element.name, this->*element.member);
    aut::readConfigInt(node.Get(), "PacketSize", PacketSize);
    if (PacketSize == 0)
    {
        logMissing("PacketSize");
        PacketSize = kPacketSizeFallback;
    }
    if (!aut::readConfigInt(node.Get(), "Wait", Wait))
    {
        logMissing("PacketSize"); // deliberate: whoever searches the log knows the message under this name
        Wait = kWaitFallback;
    }
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool CConfig::LoadDownloadSettings(XmlNodePtr node)
{
    constexpr FlagElement kFlags[] = {{"ForegroundMode", &CConfig::ForegroundMode},
                                      {"CacheDisabled", &CConfig::CacheDisabled},
                                      {"KeepCompressedFiles", &CConfig::KeepCompressedFiles}};
    m_downloadRestricted = readWindow(node, "DownloadStart", "DownloadEnd", m_downloadWindow);
    readFlags(*this, node, kFlags);
    return LoadServerList(node);
}

bool CConfig::LoadInstallSettings(XmlNodePtr node)
{
    constexpr FlagElement kFlags[] = {{"SilentInstall", &CConfig::SilentInstall}, {"CloseIE", &CConfig::CloseIE}};
    m_installRestricted = readWindow(node, "InstallStart", "InstallEnd", m_installWindow);
    readFlags(*this, node, kFlags);
    return true;
}

bool CConfig::LoadGeneralSettings(XmlNodePtr node)
{
    const bool loaded = GetTransferSettings(node);
    int minHours = 0;
    int maxHours = 0;
    aut::readConfigInt(node.Get(), "MinHours", minHours);
    aut::readConfigInt(node.Get(), "MaxHours", maxHours);
    if (minHours > maxHours)
    {
        Log(1, "Load Configuration: unexpected data values, %s > %s. Use default values", "MinHours", "MaxHours");
        minHours = 22;
        maxHours = 28;
    }
    m_checkDelay.m_lower = saturated(std::int64_t{minHours} * 3600);
    m_checkDelay.m_upper = saturated(std::int64_t{maxHours} * 3600);

    const bool before = GetClientInfo;
    aut::readConfigFlag(node.Get(), "GetClientInfo", GetClientInfo);
    if (GetClientInfo != before || !GetClientInfo)
        CRegConfig(false).DeleteValue("UploadInfo"); // what was uploaded under another setting counts no more
    return loaded;
}
