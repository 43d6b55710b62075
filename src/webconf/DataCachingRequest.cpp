#include "webconf/DataCaching.h"

#include "fileops/FileState.h"
#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/BoundedText.h"
#include "registry/CRegConfig.h"
#include "registry/CRegDataCaching.h"
#include "registry/CRegUpdatingConfigs.h"
#include "registry/TypedValues.h"
#include "webconf/CConfig.h"
#include "webconf/CacheFile.h"
#include "webconf/ConfigAnswer.h"
#include "webconf/Network.h"

// One request: the mark that keeps others away, the time stamp, the answer, the cache file.

namespace
{
constexpr unsigned long kTrace = 0x20000;
constexpr int kAlreadyUpdating = 18;
constexpr char kFunction[] = "DataCaching::TransmitRequestToWebConf";

String logPrefix(const DataExchange& request)
{
    String prefix("GetLocalData(Host=");
    prefix += request.m_host;
    prefix += ", CID=";
    prefix += request.m_certificateId;
    prefix += ", Product=";
    prefix += request.m_productName;
    if (request.m_componentName[0] != '\0')
    {
        prefix += ", Component=";
        prefix += request.m_componentName;
    }
    prefix += "): ";
    return prefix;
}

CRegUpdatingConfigs markKey(const DataExchange& request, bool readOnly)
{
    return CRegUpdatingConfigs(request.m_host, request.m_certificateId, request.m_productName, readOnly);
}

/// Tests and sets the mark, which are two steps: two processes may meet in a rare race. False, and reported, when
/// another request holds it.
bool takeMark(const DataExchange& request)
{
    if (markKey(request, true).IsUpdatingConfigForCID(request.m_certificateId))
    {
        Log(1, "TransmitRequestToWebConf: Config already updating. Error Code = %d. Host=%s, CID=%s, Product=%s",
            kAlreadyUpdating, request.m_host, request.m_certificateId, request.m_productName);
        result->Set(kAlreadyUpdating, "Config already updating", kFunction, request.m_productName);
        return false;
    }
    Log(kTrace, "Set ConfigUpdating registry key for Product=%s, CID=%s to prohibit concurrent config update",
        request.m_productName, request.m_certificateId);
    markKey(request, false).SetUpdatingConfigForCID(request.m_certificateId);
    return true;
}

/// Requests for a component deliberately clear the mark, too, which they never set.
void clearMark(const DataExchange& request, unsigned long level)
{
    Log(level, "Delete ConfigUpdating registry key for Product=%s, CID=%s", request.m_productName,
        request.m_certificateId);
    markKey(request, false).DeleteUpdatingConfigForCID(request.m_certificateId);
}

CRegDataCaching stampKey(const DataExchange& request, bool readOnly)
{
    return CRegDataCaching(request.m_host, request.m_certificateId, request.m_productName, request.m_componentName,
                           readOnly);
}

void storeTimeStamp(const DataExchange& request, String timeStamp) { stampKey(request, false).SetTimeStamp(timeStamp); }

/// A time stamp without its cache file would make the server say "no change" to nothing.
String currentTimeStamp(const DataExchange& request)
{
    String timeStamp = stampKey(request, true).GetTimeStamp();
    if (timeStamp == aut::kNothingInCache || aut::pathExists(aut::cacheFilePath(request)))
        return timeStamp;
    storeTimeStamp(request, aut::kNothingInCache);
    return String(aut::kNothingInCache);
}

/// With the flag set, the kernel's transfer settings are loaded and deliberately not used: the transfer runs with the
/// download library's own. Without it, it gets the settings that a new configuration has.
int fetchAnswer(const String& url, bool transferFlag, String& answer)
{
    int status = 0;
    CConfig config;
    if (transferFlag)
        config.GetTransferSettings(nullptr);
    GetDataFromStream(url, &status, transferFlag ? nullptr : &config, answer);
    return status;
}

void reportFailure(DataExchange& request, const char* prefix, const char* url, const String& timeStamp, int error)
{
    constexpr char kMessage[] = "GetDataConfiguration - Web Configurator not available";
    result->Set(error, kMessage, kFunction, url);
    aut::copyText(request.m_resultText, kMessage);

    // The two notes stand the other way round than one would expect; both are kept.
    const char* note = "No data in Local";
    unsigned long level = 2;
    if (timeStamp == aut::kOldestTimeStamp)
    {
        note = "Use Local Data";
        level = 1;
        Log(level,
            "GetDataConfiguration: Web Configurator not available. Use Local Configuration. Error Code = %d. "
            "Message=%s",
            error, kMessage);
    }
    Log(level, "%s - [%d], Web Configurator not available. %s. Message=%s", prefix, error, note, kMessage);
    CRegConfig counter(false);
    counter.SetValue("WebConfCnxFail", aut::readNumber(counter, "WebConfCnxFail") + 1);
}

/// The file goes first: what ends the process between the two leaves an old time stamp, which costs one more transfer,
/// and never a new one with an old file, which would hide the change for good. For the same reason the time stamp stays
/// when the new answer cannot be written and an older one is in its place.
void keepAnswer(const DataExchange& request, const aut::AnswerVerdict& verdict, const String& answer)
{
    const bool saved = answer.IsEmpty() || !verdict.save || aut::writeCacheFile(request, answer);
    const bool isStale = !saved && aut::pathExists(aut::cacheFilePath(request));
    if (verdict.setsTimeStamp && (!isStale || verdict.timeStamp == aut::kNothingInCache))
        storeTimeStamp(request, verdict.timeStamp);
}
/// After an exception, wherever it came from: nobody else would clear the mark.
void abandon(const DataExchange& request) noexcept
try
{
    Log(2, "Exception occured in DataCaching::TransmitRequestToWebConf()");
    clearMark(request, 2);
}
catch (...)
{
    // no memory even for that
}
} // namespace

String DataCaching::ConstructURL(String& timeStamp)
{
    if (timeStamp == aut::kNothingInCache)
        timeStamp = aut::kOldestTimeStamp;
    const bool ofPackage = m_packageTechnicalName[0] != '\0';
    const char* page = ofPackage ? "wcfgPPGetConfigForProduct.asp" : "wcfgGetConfigForProduct.asp";
    if (IsComponentSpecified())
        page = ofPackage ? "wcfgPPGetConfigForComponent.asp" : "wcfgGetConfigForComponent.asp";
    String url = DataExchange::ConstructURL(page);
    url += "&TimeStamp=";
    url += timeStamp;
    return url;
}

int DataCaching::TransmitRequestToWebConf()
{
    int error = 0;
    try
    {
        m_resultText[0] = '\0';
        const String prefix = logPrefix(*this);
        if (!IsComponentSpecified() && !takeMark(*this))
            return kAlreadyUpdating;

        String timeStamp = currentTimeStamp(*this);
        String url = ConstructURL(timeStamp);
        url.Replace("+", "%2B"); // the only character that is escaped

        String answer;
        aut::AnswerVerdict verdict;
        error = fetchAnswer(url, m_transferFlag != 0, answer);
        if (error == 0)
        {
            verdict = aut::judgeAnswer(*this, prefix, answer);
            error = verdict.error;
        }
        if (error != 0)
            reportFailure(*this, prefix, url, timeStamp, error);
        keepAnswer(*this, verdict, answer);
        clearMark(*this, kTrace);
    }
    catch (...)
    {
        abandon(*this);
    }
    return error;
}
