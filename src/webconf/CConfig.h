#ifndef AUTOOLS_WEBCONF_CCONFIG_H
#define AUTOOLS_WEBCONF_CCONFIG_H

#include "foundation/Export.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"
#include "foundation/XmlPointers.h"
#include "system/CRange.h"
#include "webconf/CHTTPServer.h"
#include "webconf/ConfigElements.h"

/// The kernel configuration document "AUKernelData.xml" in memory. The values are plainly readable members, in the
/// order that is part of the exported interface; the lists own their elements and copies are deep.
///
/// A failing XML call raises `_com_error`; a missing file or element does not. The calling thread must have entered a
/// COM apartment. A missing element clears its member, whatever the constructor gave it; only PacketSize and Wait then
/// fall back to 1200 and 400.
/// Numbers are read as atoi reads them, from the first 63 characters; texts are cut at 259 characters.
class AUTOOLS_API CConfig
{
public:
    CConfig();
    CConfig(const CConfig& other);
    CConfig& operator=(const CConfig& other);
    virtual ~CConfig();

    /// Loads the file and fills everything, the registry's mirrored switches included.
    bool GetValues();
    /// The full path of the file, in the client's install path.
    String GetConfigDataFile();
    /// Both take the configuration node; a null one makes them load the file themselves.
    bool GetTransferSettings(XmlNodePtr node);
    bool LoadServerList(XmlNodePtr node);

    bool IsHotKeyAvailable();
    /// The first element with that ID, deliberately the last element when none has it, null for an empty list.
    CHotKeyElement* GetHotKeyByID(int id);
    CTimerElement* GetTimerByID(int id);

    bool m_downloadRestricted;
    bool m_installRestricted;
    bool m_registryChanged; ///< a mirrored switch changed that needs a restart of the kernel
    RT_List<CHTTPServer*, CHTTPServer*> m_servers;
    CRange m_downloadWindow; ///< hours
    bool ForegroundMode;
    bool CacheDisabled;
    bool KeepCompressedFiles;
    int ConnectionRetries;
    int TimeOut;
    int MaxiBytes;
    int PacketSize;
    int Wait;
    bool GetClientInfo;
    CRange m_checkDelay; ///< seconds
    RT_List<CHotKeyElement*, CHotKeyElement*> m_hotKeys;
    RT_List<CTimerElement*, CTimerElement*> m_timers;
    CRange m_installWindow; ///< hours
    bool SilentInstall;
    bool CloseIE;
    RT_List<CErrorTableMember*, CErrorTableMember*> m_errorTable;

protected:
    template <typename T> friend struct aut::LayoutOf;

    XmlDocumentPtr LoadDataFile();
    bool LoadErrorSettings(XmlNodePtr node);
    bool LoadDownloadSettings(XmlNodePtr node);
    bool LoadInstallSettings(XmlNodePtr node);
    bool LoadGeneralSettings(XmlNodePtr node);
    bool UpdateRegistryKeys(XmlNodePtr node);

private:
    bool LoadHotKeysList(XmlNodePtr node);
    bool LoadTimersList(XmlNodePtr node);
    void FreeHotKeysList();
    void FreeTimersList();
};

#endif
