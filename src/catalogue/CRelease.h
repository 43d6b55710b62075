#ifndef AUTOOLS_CATALOGUE_CRELEASE_H
#define AUTOOLS_CATALOGUE_CRELEASE_H

#include "catalogue/AutoUpdateObject.h"
#include "catalogue/CComponent.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"
#include "system/CInterruptionEvent.h"

/// A product release of the catalogue with its components, which it owns.
///
/// The layout is part of the exported interface. A default release is disabled, deliberately unlike a default
/// component. Dates are seconds since 1970; hours are local hours of the day, an end above 24 runs past midnight.
class AUTOOLS_API CRelease : public AutoUpdateObject
{
public:
    CRelease();
    CRelease(long id, const char* marketingName, const char* technicalName, const char* name, const char* version,
             const char* build, const char* language, int action, const __int64& activationDate, int enabled);
    CRelease(long id, const char* marketingName, const char* technicalName, const char* name, const char* version,
             const char* build, const char* language, const char* actionWord, const char* startDate, int enabled);
    CRelease(const CRelease& other);
    CRelease& operator=(const CRelease& other);
    ~CRelease() override;

    /// Neither touches the components, the certificate ID, pre-install only or no download. An empty or null start
    /// date keeps the date.
    void InitValues(long id, const char* marketingName, const char* technicalName, const char* name,
                    const char* version, const char* build, const char* language, int action,
                    const __int64& activationDate, int enabled, int hoursStart, int hoursEnd, bool pending, bool flagA,
                    bool flagB);
    void InitValues(long id, const char* marketingName, const char* technicalName, const char* name,
                    const char* version, const char* build, const char* language, const char* actionWord,
                    const char* startDate, int enabled, int hoursStart, int hoursEnd, bool pending, bool flagA,
                    bool flagB);

    const char* GetCertificateID() const;
    void SetCertificateID(const char* certificateId);
    const char* GetMarketingName() const;
    const char* GetTechnicalName() const;

    /// The components in order; owned by the release.
    RT_List<CComponent*, CComponent*>& GetComponentList();
    const RT_List<CComponent*, CComponent*>& GetComponentList() const;
    __int64 GetActivationDate() const;
    int IsPreInstallOnly() const;
    void SetPreInstallOnly(int on);
    int IsNoDownload() const;
    void SetNoDownload(int on);
    int GetInstallationStartHour() const;
    int GetInstallationEndHour() const;
    bool IsPending() const;
    CInterruptionEvent& GetInterruptionEvent();

    /// 1 without a date, or when the date has come by the Web Configurator's clock.
    int IsActivationDateReached();
    /// 1 when the workstation must act on this release now; also kept in the release. Before the activation date it is
    /// always 0. Outside the permitted installation hours an installation becomes pending, which nothing here takes
    /// back. Rearranges the component list (see `UpdateComponentList`) and sets the update status of the components.
    int IsUpdateNecessary();

    /// Read and write the stream record. A reader that failed leaves a partly filled release to be discarded.
    int Serialize(std::ifstream& stream);
    int Serialize(std::ofstream& stream);

protected:
    template <typename T> friend struct aut::LayoutOf;

    void DeleteComponentList();

private:
    void InitOwnValues(const char* marketingName, const char* technicalName, int hoursStart, int hoursEnd, bool pending,
                       bool flagA, bool flagB);
    /// Takes the component over; false, and deletes it, when memory runs out.
    bool AppendComponent(CComponent* component);
    bool ReadOwnValues(std::ifstream& stream, int& count);
    bool ReadComponents(std::ifstream& stream, int count);

protected:
    RT_List<CComponent*, CComponent*> m_components;
    __int64 m_activationDate;
    int m_preInstallOnly;
    int m_noDownload;
    int m_updateNecessary;
    int m_installationStartHour;
    int m_installationEndHour;
    bool m_flagA;
    bool m_flagB;
    bool m_pending;
    String m_marketingName;
    String m_technicalName;
    bool m_reservedFlag;
    int m_componentCount;
    char m_certificateId[260];
    CInterruptionEvent m_interruption;
};

#endif
