#ifndef AUTOOLS_TESTS_CATALOGUE_RELEASEFIXTURE_H
#define AUTOOLS_TESTS_CATALOGUE_RELEASEFIXTURE_H

#include "catalogue/CRelease.h"
#include "tests/support/DetailedLog.h"

#include <string>
#include <vector>

namespace auttest
{
/// A release as those see it that derive from it.
class ReleaseProbe : public CRelease
{
public:
    using CRelease::CRelease;
    using CRelease::DeleteComponentList;
    using CRelease::m_activationDate;
    using CRelease::m_certificateId;
    using CRelease::m_componentCount;
    using CRelease::m_flagA;
    using CRelease::m_flagB;
    using CRelease::m_noDownload;
    using CRelease::m_pending;
    using CRelease::m_preInstallOnly;
    using CRelease::m_reservedFlag;
    using CRelease::m_updateNecessary;
};

inline std::vector<CComponent*> componentsOf(const CRelease& release)
{
    std::vector<CComponent*> components;
    const auto& list = release.GetComponentList();
    for (POSITION at = list.GetHeadPosition(); at != nullptr;)
        components.push_back(list.GetNext(at));
    return components;
}
} // namespace auttest

#endif
