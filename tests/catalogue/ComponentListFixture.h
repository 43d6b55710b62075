#ifndef AUTOOLS_TESTS_CATALOGUE_COMPONENTLISTFIXTURE_H
#define AUTOOLS_TESTS_CATALOGUE_COMPONENTLISTFIXTURE_H

#include "catalogue/ComponentList.h"
#include "tests/catalogue/DecisionFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace auttest
{
/// The list of a product "P1" in the client's phase 3; it deletes what is in it at the end.
class ComponentListFixture : public ::testing::Test
{
protected:
    ComponentListFixture() { setPhase(3); }
    ~ComponentListFixture() override { clear(); }

    void setPhase(DWORD phase) const { m_registry.write("IN_PROGRESS", "Phase", phase); }
    void clear()
    {
        while (!m_list.IsEmpty())
            delete m_list.RemoveHead();
    }

    /// Appends a component whose deletion is counted.
    CComponent* add(const char* name, const char* version, const char* build, int action, bool shared)
    {
        auto* const component = new ComponentProbe(1, name, version, build, "EN", action, "there");
        component->m_attachment = new Attachment(m_deleted);
        component->SetShared(shared ? 1 : 0);
        m_list.AddTail(component);
        return component;
    }
    std::vector<CComponent*> elements() const
    {
        std::vector<CComponent*> found;
        for (POSITION at = m_list.GetHeadPosition(); at != nullptr;)
            found.push_back(m_list.GetNext(at));
        return found;
    }
    /// Name and full version of each element; "null" for a null pointer.
    std::vector<std::string> texts() const
    {
        std::vector<std::string> found;
        for (const CComponent* const component : elements())
            found.push_back(
                component == nullptr ? "null" : std::string(component->GetName()) + " " + component->GetFullVersion());
        return found;
    }

    using Texts = std::vector<std::string>;

    const ClientRegistry m_registry;
    RT_List<CComponent*, CComponent*> m_list;
    int m_deleted = 0;
};
} // namespace auttest

#endif
