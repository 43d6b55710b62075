#include "webconf/CCIDListManager.h"

#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "platform/ComApartment.h"
#include "platform/Layout.h"
#include "registry/CRegConfig.h"
#include "webconf/CertificateIds.h"

#include <memory>
#include <new>
#include <utility>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CCIDListManager>
{
    static_assert(sizeof(CCIDListManager) == 40);
    static_assert(offsetof(CCIDListManager, m_initialised) == 8);
    static_assert(offsetof(CCIDListManager, m_list) == 16);
    static_assert(offsetof(CCIDListManager, m_position) == 24);
    static_assert(offsetof(CCIDListManager, m_counter) == 32);
    static_assert(offsetof(CCIDListManager, m_emptyCID) == 36);
};
AUT_LAYOUT_END

namespace
{
/// The position in `copy` of what stands at `position` in `list`.
POSITION samePlace(const aut::CIDList& list, POSITION position, const aut::CIDList& copy)
{
    POSITION there = copy.GetHeadPosition();
    for (POSITION here = list.GetHeadPosition(); here != nullptr && there != nullptr;
         list.GetNext(here), copy.GetNext(there))
    {
        if (here == position)
            return there;
    }
    return nullptr;
}

void moveToHead(aut::CIDList& list, POSITION position)
{
    POSITION next = position;
    aut::prependCID(list, list.GetNext(next)); // before the old place goes: when memory runs out, nothing has happened
    list.RemoveAt(position);
}

void removeAllButHead(aut::CIDList& list)
{
    POSITION next = list.GetHeadPosition();
    for (list.GetNext(next); next != nullptr;)
    {
        const POSITION position = next;
        list.GetNext(next);
        list.RemoveAt(position);
    }
}
} // namespace

CCIDListManager::CCIDListManager()
    : m_initialised(0), m_list(nullptr), m_position(nullptr), m_counter(0), m_emptyCID(false)
{
}

CCIDListManager::CCIDListManager(const CCIDListManager& other) : CCIDListManager() { *this = other; }

CCIDListManager& CCIDListManager::operator=(const CCIDListManager& other)
try
{
    if (this == &other)
        return *this;
    std::unique_ptr<aut::CIDList> list;
    POSITION position = nullptr;
    if (other.m_list != nullptr)
    {
        list = std::make_unique<aut::CIDList>();
        aut::assignCIDs(*list, *other.m_list);
        position = samePlace(*other.m_list, other.m_position, *list);
    }
    delete m_list;
    m_list = list.release();
    m_position = position;
    m_counter = other.m_counter;
    m_initialised = other.m_initialised;
    m_emptyCID = other.m_emptyCID;
    return *this;
}
catch (const std::bad_alloc&)
{
    m_initialised = 0; // half a copy would be another workstation
    return *this;
}

CCIDListManager::~CCIDListManager() { delete m_list; }

int CCIDListManager::InitManager(bool emptyCID)
try
{
    m_initialised = 0;
    m_emptyCID = emptyCID;
    m_position = nullptr;
    m_counter = 0;
    if (m_list == nullptr)
        m_list = new (std::nothrow) aut::CIDList;
    if (m_list == nullptr)
    {
        Log(2, "CCIDListManager::InitManager : CIDs List creation failed");
        return 0;
    }
    m_list->RemoveAll();

    if (m_emptyCID)
    {
        String empty;
        m_list->AddTail(empty);
        m_initialised = 1;
    }
    else
    {
        const int found = GetCIDList();
        if (found != 0)
        {
            AppendLocalUserCIDs();
            Log(0, "nb of valid Velmora Certificates: %d", m_list->GetCount());
        }
        else
            Log(1, "No valid Velmora Certificate found");
        m_initialised = found;
    }
    InitCIDLoop();
    return m_initialised;
}
catch (const std::bad_alloc&)
{
    return 0; // the flag is clear: what there is of the list is not used
}

int CCIDListManager::GetCIDList()
{
    const aut::ComApartment com;
    // Neither answer matters: what counts is whether there is a certificate ID in the end, from whichever source.
    GetCIDListFromHWID(0);
    GetLarkspurCIDs();
    if (CRegConfig(true).GetFlag("CIDHybridMode"))
        Log(0, "Hybrid Mode - Looking for CID added after migration");
    else
        Log(0, "HWID not available - Getting Local CID");
    const int found = GetLocalCIDList();
    Log(0, "CIDs List corrected with local CIDs: %s", aut::joinedCIDs(*m_list).c_str());
    return found;
}

POSITION CCIDListManager::FindCIDInList(const String& certificateId)
{
    return m_initialised != 0 && m_list != nullptr ? aut::findCID(*m_list, certificateId) : nullptr;
}

int CCIDListManager::GetCIDsCount() { return m_initialised != 0 && m_list != nullptr ? m_list->GetCount() : 0; }

void CCIDListManager::InitCIDLoop()
{
    m_position = m_list != nullptr ? m_list->GetHeadPosition() : nullptr;
    m_counter = 0;
}

String CCIDListManager::GetNextCID()
{
    if (m_initialised == 0 || m_position == nullptr)
        return String();
    ++m_counter;
    return m_list->GetNext(m_position);
}

int CCIDListManager::IsEndOfTheListReached()
{
    const int count = GetCIDsCount();
    return count == 0 || m_counter >= count ? 1 : 0;
}

int CCIDListManager::IsTestCIDSet(int alone)
try
{
    if (m_initialised == 0 || m_emptyCID)
        return 0;
    CRegConfig config(true);
    const char* const configured = config.GetTestCID();
    if (aut::isEmpty(configured))
        return 0;
    const POSITION position = aut::findCID(*m_list, configured);
    if (position == nullptr)
    {
        m_initialised = 0; // deliberately: nobody goes on in another name than the one that is to be tested
        Log(1, "testCID %s configured but not valid", configured);
        return 0;
    }
    moveToHead(*m_list, position);
    if (alone != 0)
        removeAllButHead(*m_list);
    InitCIDLoop(); // the place of a walk under way may be gone
    return 1;
}
catch (const std::bad_alloc&)
{
    return 0;
}

int CCIDListManager::IsDeploymentCIDSet()
try
{
    if (m_initialised == 0 || m_emptyCID)
        return 0;
    CRegConfig config(true);
    const char* const configured = config.GetDeploymentCID();
    if (aut::isEmpty(configured))
        return 0;
    const POSITION position = aut::findCID(*m_list, configured);
    if (position == nullptr)
    {
        m_initialised = 0;
        Log(1, "DeploymentCID %s configured but not valid", configured);
        return 0;
    }
    moveToHead(*m_list, position);
    InitCIDLoop();
    return 1;
}
catch (const std::bad_alloc&)
{
    return 0;
}
