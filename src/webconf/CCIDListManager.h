#ifndef AUTOOLS_WEBCONF_CCIDLISTMANAGER_H
#define AUTOOLS_WEBCONF_CCIDLISTMANAGER_H

#include "foundation/Export.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"

/// The certificate IDs (CIDs) under which this workstation asks the Web Configurator.
///
/// They come from the Web Configurator by the hardware ID, from the client's local server, from the personal
/// certificate stores of machine and user, and from the registry; revoked ones are dropped. Certificate IDs are
/// compared without regard to case. The layout is part of the exported interface. Not thread-safe.
///
/// Gathering asks other processes, the Web Configurator and the logged-on user's store, and takes as long as they do:
/// without a limit when the local server neither answers nor ends. It works on any thread, and leaves COM and the
/// thread's identity there as they were.
class AUTOOLS_API CCIDListManager
{
public:
    CCIDListManager();
    CCIDListManager(const CCIDListManager& other);
    CCIDListManager& operator=(const CCIDListManager& other);
    virtual ~CCIDListManager();

    /// Gathers the list anew; non-zero when there is one. With `emptyCID` the list is one empty CID. A walk begins
    /// again.
    int InitManager(bool emptyCID);
    /// Null when absent or not initialised.
    POSITION FindCIDInList(const String& certificateId);
    /// 0 when not initialised.
    int GetCIDsCount();

    /// The walk: `InitCIDLoop`, then `GetNextCID` until `IsEndOfTheListReached`.
    void InitCIDLoop();
    String GetNextCID();
    int IsEndOfTheListReached();

    /// 1 when a test CID is configured and in the list: it then comes first, or alone with a non-zero argument. A
    /// configured CID that is not in the list deliberately makes the manager uninitialised and gives 0.
    int IsTestCIDSet(int alone);
    /// The same for the deployment CID, which then comes first.
    int IsDeploymentCIDSet();

private:
    template <typename T> friend struct aut::LayoutOf;

    int GetCIDList();
    int GetCIDListFromHWID(long hwid);
    int GetLarkspurCIDs();
    int GetLocalCIDList();
    void SearchCIDCertificates(int machine);
    void AppendLocalUserCIDs();
    String GetValidCIDFromSubject(String subject);

    int m_initialised;
    RT_List<String, String&>* m_list; ///< owned; made by the first `InitManager`
    POSITION m_position;
    int m_counter;
    bool m_emptyCID;
};

#endif
