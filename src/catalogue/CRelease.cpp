#include "catalogue/CRelease.h"

#include "foundation/EventLog.h"
#include "foundation/TimeText.h"
#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <memory>
#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CRelease>
{
    static_assert(sizeof(RT_List<CComponent*, CComponent*>) == 24);
    static_assert(offsetof(CRelease, m_components) == 1328);
    static_assert(offsetof(CRelease, m_activationDate) == 1352);
    static_assert(offsetof(CRelease, m_preInstallOnly) == 1360);
    static_assert(offsetof(CRelease, m_noDownload) == 1364);
    static_assert(offsetof(CRelease, m_updateNecessary) == 1368);
    static_assert(offsetof(CRelease, m_installationStartHour) == 1372);
    static_assert(offsetof(CRelease, m_installationEndHour) == 1376);
    static_assert(offsetof(CRelease, m_flagA) == 1380);
    static_assert(offsetof(CRelease, m_flagB) == 1381);
    static_assert(offsetof(CRelease, m_pending) == 1382);
    static_assert(offsetof(CRelease, m_marketingName) == 1384);
    static_assert(offsetof(CRelease, m_technicalName) == 1400);
    static_assert(offsetof(CRelease, m_reservedFlag) == 1416);
    static_assert(offsetof(CRelease, m_componentCount) == 1420);
    static_assert(offsetof(CRelease, m_certificateId) == 1424);
    static_assert(offsetof(CRelease, m_interruption) == 1688);
    static_assert(sizeof(CRelease) == 1688 + sizeof(CInterruptionEvent));
};
AUT_LAYOUT_END

namespace
{
constexpr int kFirstHour = 0;
constexpr int kEndOfDay = 24;
} // namespace

CRelease::CRelease()
    : m_activationDate(0), m_preInstallOnly(0), m_noDownload(0), m_updateNecessary(0),
      m_installationStartHour(kFirstHour), m_installationEndHour(kEndOfDay), m_flagA(false), m_flagB(false),
      m_pending(false), m_reservedFlag(false), m_componentCount(0), m_certificateId()
{
    m_enabled = 0; // deliberately unlike a component
}

CRelease::CRelease(long id, const char* marketingName, const char* technicalName, const char* name, const char* version,
                   const char* build, const char* language, int action, const __int64& activationDate, int enabled)
    : CRelease()
{
    InitValues(id, marketingName, technicalName, name, version, build, language, action, activationDate, enabled,
               kFirstHour, kEndOfDay, false, false, false);
}

CRelease::CRelease(long id, const char* marketingName, const char* technicalName, const char* name, const char* version,
                   const char* build, const char* language, const char* actionWord, const char* startDate, int enabled)
    : CRelease()
{
    InitValues(id, marketingName, technicalName, name, version, build, language, actionWord, startDate, enabled,
               kFirstHour, kEndOfDay, false, false, false);
}

CRelease::CRelease(const CRelease& other) : CRelease() { *this = other; }

CRelease& CRelease::operator=(const CRelease& other)
{
    if (this == &other) // whose components would be deleted before they are copied
        return *this;
    InitValues(other.m_id, other.m_marketingName, other.m_technicalName, other.m_name, other.m_version, other.m_build,
               other.m_language, other.m_action, other.m_activationDate, other.m_enabled, other.m_installationStartHour,
               other.m_installationEndHour, other.m_pending, other.m_flagA, other.m_flagB);
    SetCertificateID(other.m_certificateId);
    m_updateNecessary = other.m_updateNecessary;
    m_preInstallOnly = other.m_preInstallOnly;
    m_noDownload = other.m_noDownload;

    DeleteComponentList();
    for (POSITION at = other.m_components.GetHeadPosition(); at != nullptr;)
    {
        if (!AppendComponent(new (std::nothrow) CComponent(*other.m_components.GetNext(at))))
            break; // out of memory
    }
    return *this;
}

CRelease::~CRelease() { DeleteComponentList(); }

bool CRelease::AppendComponent(CComponent* component)
{
    std::unique_ptr<CComponent> owned(component);
    if (!owned)
        return false;
    try
    {
        m_components.AddTail(owned.get());
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    static_cast<void>(owned.release()); // the list's from now on
    m_componentCount = m_components.GetCount();
    return true;
}

void CRelease::DeleteComponentList()
{
    if (!m_components.IsEmpty())
    {
        Log(0x30000, "CRelease::DeleteComponentList - START");
        Log(0x30000, "CRelease::DeleteComponentList - %d components", m_components.GetCount());
        while (!m_components.IsEmpty())
            delete m_components.RemoveHead();
        Log(0x30000, "CRelease::DeleteComponentList - END");
    }
    m_componentCount = 0;
}

void CRelease::InitValues(long id, const char* marketingName, const char* technicalName, const char* name,
                          const char* version, const char* build, const char* language, int action,
                          const __int64& activationDate, int enabled, int hoursStart, int hoursEnd, bool pending,
                          bool flagA, bool flagB)
{
    AutoUpdateObject::InitValues(id, name, version, build, language, action, enabled);
    m_activationDate = activationDate;
    InitOwnValues(marketingName, technicalName, hoursStart, hoursEnd, pending, flagA, flagB);
}

void CRelease::InitValues(long id, const char* marketingName, const char* technicalName, const char* name,
                          const char* version, const char* build, const char* language, const char* actionWord,
                          const char* startDate, int enabled, int hoursStart, int hoursEnd, bool pending, bool flagA,
                          bool flagB)
{
    AutoUpdateObject::InitValues(id, name, version, build, language, actionWord, enabled);
    if (!aut::isEmpty(startDate))
        m_activationDate = ConvertDate(startDate);
    InitOwnValues(marketingName, technicalName, hoursStart, hoursEnd, pending, flagA, flagB);
}

void CRelease::InitOwnValues(const char* marketingName, const char* technicalName, int hoursStart, int hoursEnd,
                             bool pending, bool flagA, bool flagB)
{
    m_installationStartHour = hoursStart;
    m_installationEndHour = hoursEnd;
    m_pending = pending;
    m_flagA = flagA;
    m_flagB = flagB;
    m_marketingName = marketingName;
    m_technicalName = technicalName;
    m_reservedFlag = false;
}

const char* CRelease::GetCertificateID() const { return m_certificateId; }

void CRelease::SetCertificateID(const char* certificateId) { aut::copyText(m_certificateId, certificateId); }

const char* CRelease::GetMarketingName() const { return m_marketingName; }

const char* CRelease::GetTechnicalName() const { return m_technicalName; }

RT_List<CComponent*, CComponent*>& CRelease::GetComponentList() { return m_components; }

const RT_List<CComponent*, CComponent*>& CRelease::GetComponentList() const { return m_components; }

__int64 CRelease::GetActivationDate() const { return m_activationDate; }

int CRelease::IsPreInstallOnly() const { return m_preInstallOnly; }

void CRelease::SetPreInstallOnly(int on) { m_preInstallOnly = on; }

int CRelease::IsNoDownload() const { return m_noDownload; }

void CRelease::SetNoDownload(int on) { m_noDownload = on; }

int CRelease::GetInstallationStartHour() const { return m_installationStartHour; }

int CRelease::GetInstallationEndHour() const { return m_installationEndHour; }

bool CRelease::IsPending() const { return m_pending; }

CInterruptionEvent& CRelease::GetInterruptionEvent() { return m_interruption; }
