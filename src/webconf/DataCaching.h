#ifndef AUTOOLS_WEBCONF_DATACACHING_H
#define AUTOOLS_WEBCONF_DATACACHING_H

#include "webconf/CCIDListManager.h"
#include "webconf/DataExchange.h"

/// Asks the Web Configurator for the configuration of a product or of one of its components, keeps every answer in a
/// cache file and asks again only for what changed since.
///
/// A mark in the registry keeps two processes from asking for the same product at once. It has no expiry: one that a
/// killed process left is removed by deleting its value (docs/configuration-cache.md says which one it is). The calling
/// thread must have initialised COM. No public member throws; the entry points give 14 or false when memory runs out.
class AUTOOLS_API DataCaching : public DataExchange
{
public:
    DataCaching();
    DataCaching(const DataCaching& other);
    DataCaching& operator=(const DataCaching& other);
    ~DataCaching();

    /// Asks with the record as the caller filled it, except the versions; 953 without a request when it may not be
    /// made, else see `TransmitRequestToWebConf`.
    int GetData();
    int GetComponentData(const char* host, const char* certificateId, const char* product, const char* version,
                         const char* build, const char* language, const char* component);
    /// The client's own configuration: asks for each certificate ID until one has a deployment, and puts its answer
    /// into the client's folder as AUKernelData.xml. False when none has. A local server that neither answers nor ends
    /// is waited for without a limit. What a process that died had received and not yet put there is put there by the
    /// next call that the server answers.
    bool GetAUData(const char* host);
    /// One request: 0, or 18 when another process is asking, 104 for an answer that is none, or the transfer's status.
    int TransmitRequestToWebConf();
    /// Whether the answer cached for the client itself, from this host and for the record's certificate ID, is
    /// well-formed and no error answer. False, and logged, when there is none.
    bool IsAUValidForWebServer(const char* host);

protected:
    template <typename T> friend struct aut::LayoutOf;

    bool IsAUDataUpdated(String& certificateId, bool* stop);
    bool GetCIDs();
    String ConstructURL(String& timeStamp);
    String GetDataFilePath();

    CCIDListManager m_certificateIds;
};

/// Puts an answer into the cache: the file is replaced whole or not at all.
AUTOOLS_API void SetDataInCache(const char* host, const char* certificateId, const char* product, const char* component,
                                const String& data);

#endif
