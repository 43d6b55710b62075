#include "webconf/DataCaching.h"

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "foundation/WholeText.h"
#include "platform/BoundedText.h"
#include "platform/FileReplacement.h"
#include "platform/Layout.h"
#include "registry/CRegDataCaching.h"
#include "registry/CRegProduct.h"
#include "webconf/CConfig.h"
#include "webconf/CacheFile.h"
#include "webconf/ConfigAnswer.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <new>
#include <string>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<DataCaching>
{
    static_assert(offsetof(DataCaching, m_certificateIds) == 1160);
    static_assert(sizeof(DataCaching) == 1160 + sizeof(CCIDListManager));
};
AUT_LAYOUT_END

namespace
{
constexpr int kRequestNotAllowed = 953;
constexpr char kConfigurationFile[] = "AUKernelData.xml";

String timeStampOf(const DataExchange& request)
{
    return CRegDataCaching(request.m_host, request.m_certificateId, request.m_productName, request.m_componentName,
                           true)
        .GetTimeStamp();
}

/// Notes in the registry, beside the time stamp and before anything is asked, which answer the kernel configuration
/// goes with. The request stores its new time stamp long before the answer is in the configuration's place: a process
/// that died in between would otherwise leave the old configuration until the server has the next one.
class InstallationNote
{
public:
    explicit InstallationNote(const DataExchange& request)
        : m_key(request.m_host, request.m_certificateId, request.m_productName, request.m_componentName, false),
          m_name(aut::wholeText({request.m_certificateId, "__", kConfigurationFile}))
    {
        if (*request.m_certificateId == '\0' || m_name.IsEmpty() || m_key.QueryValue(m_name, m_installed))
            return; // left by a process that died
        m_installed = m_key.GetTimeStamp();
        m_key.SetValue(m_name, m_installed);
    }
    bool isOutdated() { return *m_key.GetEntryName() != '\0' && m_key.GetTimeStamp() != m_installed; }
    bool isOfNothing() { return m_key.GetTimeStamp() == aut::kNothingInCache; }
    void drop() { m_key.DeleteValue(m_name); }

private:
    CRegDataCaching m_key;
    const String m_name;
    String m_installed;
};

/// Puts the cached answer in the place of the kernel configuration. The old one stays when that fails, and the time
/// stamp is dropped, so that the next request brings the answer once more.
void installConfiguration(const DataExchange& request)
{
    const String target = CConfig().GetConfigDataFile();
    aut::FileReplacement file(target);
    ::SetFileAttributesA(target, FILE_ATTRIBUTE_NORMAL);
    if (file.copyFrom(aut::cacheFilePath(request)) && file.commit())
    {
        ::SetFileAttributesA(target, FILE_ATTRIBUTE_NORMAL);
        Log(0, "New AU Data saved in %s file", kConfigurationFile);
        return;
    }
    Log(2, "Unable to save new AU Data in %s", static_cast<const char*>(target));
    String nothing(aut::kNothingInCache);
    CRegDataCaching(request.m_host, request.m_certificateId, request.m_productName, request.m_componentName, false)
        .SetTimeStamp(nothing);
}
} // namespace

DataCaching::DataCaching() = default;
DataCaching::DataCaching(const DataCaching& other) = default;
DataCaching& DataCaching::operator=(const DataCaching& other) = default;
DataCaching::~DataCaching() = default;

String DataCaching::GetDataFilePath() { return aut::cacheFilePath(*this); }

int DataCaching::GetData()
try
{
    // The record is as the caller filled it, its flags included.
    if (UpdateVersions())
        return TransmitRequestToWebConf();
    result->Set(kRequestNotAllowed, "Request not allowed", "DataCaching::GetData", m_productName);
    return kRequestNotAllowed;
}
catch (const std::bad_alloc&)
{
    return ERROR_OUTOFMEMORY;
}

int DataCaching::GetComponentData(const char* host, const char* certificateId, const char* product, const char* version,
                                  const char* build, const char* language, const char* component)
try
{
    m_entryFlag = 1;
    m_transferFlag = 0;
    aut::copyText(m_host, host);
    aut::copyText(m_certificateId, certificateId);
    aut::copyText(m_productName, product);
    aut::copyText(m_version, version);
    aut::copyText(m_build, build);
    aut::copyText(m_language, language);
    aut::copyText(m_componentName, component);
    aut::copyText(m_packageTechnicalName, CRegProduct(m_productName, true).GetTechnicalName());
    return TransmitRequestToWebConf();
}
catch (const std::bad_alloc&)
{
    return ERROR_OUTOFMEMORY;
}

bool DataCaching::GetAUData(const char* host)
try
{
    m_entryFlag = 1;
    m_transferFlag = 0;
    aut::copyText(m_host, host);
    aut::copyText(m_productName, aut::kClientProduct);
    m_componentName[0] = '\0';
    UpdateVersions(); // of the client itself

    GetCIDs();
    bool stop = false;
    m_certificateIds.InitCIDLoop();
    while (!stop && m_certificateIds.IsEndOfTheListReached() == 0)
    {
        String certificateId = m_certificateIds.GetNextCID();
        aut::copyText(m_certificateId, certificateId);
        InstallationNote note(*this);
        const bool updated = IsAUDataUpdated(certificateId, &stop);
        if (stop && (updated || note.isOutdated()))
            installConfiguration(*this);
        else if (note.isOutdated() && !note.isOfNothing())
            continue; // not answered: what a process that died has left is still to be done
        note.drop();
    }
    if (!stop)
    {
        Log(1, "AU Data: No data returned by Web Conf because of no ID deployments");
        return false;
    }
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool DataCaching::GetCIDs()
{
    if (m_certificateIds.InitManager(false) == 0)
    {
        Log(1, "DataCaching : Error during CIDs list manager initialization");
        return false;
    }
    // A configured test ID goes first, else a configured deployment ID.
    if (m_certificateIds.IsTestCIDSet(0) == 0)
        m_certificateIds.IsDeploymentCIDSet();
    return true;
}

bool DataCaching::IsAUDataUpdated(String& certificateId, bool* stop)
{
    aut::copyText(m_certificateId, certificateId);
    const String before = timeStampOf(*this);
    if (TransmitRequestToWebConf() != 0)
        return false;
    const String after = timeStampOf(*this);
    const bool deployed = !(after == aut::kNothingInCache);
    if (stop != nullptr)
        *stop = deployed; // without a deployment the next certificate ID is asked for
    return deployed && after != before;
}

bool DataCaching::IsAUValidForWebServer(const char* host)
{
    try
    {
        const String path = aut::cacheFilePath(host, m_certificateId, aut::kClientProduct, "");
        std::ifstream file(path, std::ios::binary);
        const std::string answer{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        return aut::isCachedAnswerValid(answer.c_str());
    }
    catch (...)
    {
        return false;
    }
}
