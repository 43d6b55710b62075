#include "catalogue/CRelease.h"
#include "foundation/TimeText.h"
#include "tests/catalogue/ReleaseFixture.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"

#include <gtest/gtest.h>

using auttest::componentsOf;
using auttest::ReleaseProbe;

namespace
{
constexpr __int64 kDate = 5'000'000'000; // needs more than 32 bits

TEST(CRelease, ADefaultReleaseIsEmptyAndDisabled)
{
    ReleaseProbe release;
    EXPECT_EQ(0, release.GetId());
    EXPECT_STREQ("", release.GetName());
    EXPECT_STREQ("", release.GetFullVersion());
    EXPECT_EQ(0, release.GetAction());
    EXPECT_EQ(0, release.IsEnabled());
    EXPECT_STREQ("", release.GetCertificateID());
    EXPECT_STREQ("", release.GetMarketingName());
    EXPECT_STREQ("", release.GetTechnicalName());
    EXPECT_EQ(0, release.GetActivationDate());
    EXPECT_EQ(0, release.IsPreInstallOnly());
    EXPECT_EQ(0, release.IsNoDownload());
    EXPECT_EQ(0, release.m_updateNecessary);
    EXPECT_EQ(0, release.GetInstallationStartHour());
    EXPECT_EQ(24, release.GetInstallationEndHour());
    EXPECT_FALSE(release.m_flagA);
    EXPECT_FALSE(release.m_flagB);
    EXPECT_FALSE(release.IsPending());
    EXPECT_FALSE(release.m_reservedFlag);
    EXPECT_EQ(0, release.m_componentCount);
    EXPECT_TRUE(release.GetComponentList().IsEmpty());
}

TEST(CRelease, TheValueConstructorsTakeDateNumbersAndTexts)
{
    const CRelease byNumber(7, "Marketing name", "Technical name", "product", "3.3", "B1", "EN", 2, kDate, 1);
    EXPECT_EQ(7, byNumber.GetId());
    EXPECT_STREQ("Marketing name", byNumber.GetMarketingName());
    EXPECT_STREQ("Technical name", byNumber.GetTechnicalName());
    EXPECT_STREQ("product", byNumber.GetName());
    EXPECT_STREQ("3.3B1_EN", byNumber.GetFullVersion());
    EXPECT_EQ(2, byNumber.GetAction());
    EXPECT_EQ(kDate, byNumber.GetActivationDate());
    EXPECT_EQ(1, byNumber.IsEnabled());
    EXPECT_EQ(0, byNumber.GetInstallationStartHour());
    EXPECT_EQ(24, byNumber.GetInstallationEndHour());

    const CRelease byText(7, nullptr, nullptr, "product", "3.3", "B1", "EN", "Disable", "2010-07-22 14:05", 0);
    EXPECT_STREQ("", byText.GetMarketingName());
    EXPECT_STREQ("", byText.GetTechnicalName());
    EXPECT_EQ(3, byText.GetAction());
    EXPECT_EQ(0, byText.IsEnabled());
    EXPECT_EQ(ConvertDate("2010-07-22 14:05"), byText.GetActivationDate());
    EXPECT_NE(0, byText.GetActivationDate());
}

/// A release in which every field differs from its default, with two components.
class AFullRelease : public ::testing::Test
{
protected:
    AFullRelease()
    {
        m_release.InitValues(7, "Marketing name", "Technical name", "product", "3.3", "B1", "EN", 2, kDate, 5, 22, 30,
                             true, true, true);
        m_release.SetCertificateID("CID-1");
        m_release.SetNoDownload(3);
        m_release.SetPreInstallOnly(4);
        m_release.SetUpdateStatus(6);
        m_release.m_updateNecessary = 1;
        m_release.m_reservedFlag = true;
        for (const long id : {11, 12})
        {
            auto* const component = new CComponent(id, "comp", "1.0", "", "", 1, "there");
            component->SetShared(2);
            component->SetUpdateStatus(9);
            m_release.GetComponentList().AddTail(component);
        }
    }

    void expectCopyOf(const ReleaseProbe& copy)
    {
        EXPECT_EQ(7, copy.GetId());
        EXPECT_STREQ("Marketing name", copy.GetMarketingName());
        EXPECT_STREQ("Technical name", copy.GetTechnicalName());
        EXPECT_STREQ("product", copy.GetName());
        EXPECT_STREQ("3.3B1_EN", copy.GetFullVersion());
        EXPECT_EQ(2, copy.GetAction());
        EXPECT_EQ(kDate, copy.GetActivationDate());
        EXPECT_EQ(5, copy.IsEnabled());
        EXPECT_EQ(22, copy.GetInstallationStartHour());
        EXPECT_EQ(30, copy.GetInstallationEndHour());
        EXPECT_TRUE(copy.IsPending());
        EXPECT_TRUE(copy.m_flagA);
        EXPECT_TRUE(copy.m_flagB);
        EXPECT_STREQ("CID-1", copy.GetCertificateID());
        EXPECT_EQ(3, copy.IsNoDownload());
        EXPECT_EQ(4, copy.IsPreInstallOnly());
        EXPECT_EQ(1, copy.m_updateNecessary);
        EXPECT_EQ(0, copy.GetUpdateStatus());
        EXPECT_FALSE(copy.m_reservedFlag);
        EXPECT_EQ(2, copy.m_componentCount);
        const std::vector<CComponent*> copies = componentsOf(copy);
        const std::vector<CComponent*> sources = componentsOf(m_release);
        ASSERT_EQ(2u, copies.size());
        for (std::size_t i = 0; i < copies.size(); ++i)
        {
            EXPECT_NE(sources[i], copies[i]);
            EXPECT_EQ(sources[i]->GetId(), copies[i]->GetId());
            EXPECT_STREQ("there", copies[i]->GetSourceLocation());
            EXPECT_EQ(1, copies[i]->IsShared());
            EXPECT_EQ(0, copies[i]->GetUpdateStatus());
        }
    }

    ReleaseProbe m_release;
};

TEST_F(AFullRelease, CopiesWithItsComponents)
{
    const ReleaseProbe copy(m_release);
    expectCopyOf(copy);
    EXPECT_EQ(6, m_release.GetUpdateStatus());
}

TEST_F(AFullRelease, IsAssignedWithItsComponents)
{
    ReleaseProbe assigned;
    assigned.GetComponentList().AddTail(new CComponent(99, "old", "1.0", "", "", 1, ""));
    assigned.m_reservedFlag = true;
    assigned.SetUpdateStatus(1);
    assigned = m_release;
    expectCopyOf(assigned);
    assigned = ReleaseProbe();
    EXPECT_EQ(0, assigned.m_componentCount);
    EXPECT_TRUE(assigned.GetComponentList().IsEmpty());
    EXPECT_STREQ("", assigned.GetCertificateID());
    EXPECT_STREQ("", assigned.GetMarketingName());
    EXPECT_EQ(0, assigned.IsEnabled());
}

TEST_F(AFullRelease, IsUnharmedByAssignmentToItself)
{
    const std::vector<CComponent*> before = componentsOf(m_release);
    const ReleaseProbe& same = m_release;
    m_release = same;
    EXPECT_EQ(before, componentsOf(m_release));
    EXPECT_STREQ("Marketing name", m_release.GetMarketingName());
    EXPECT_STREQ("CID-1", m_release.GetCertificateID());
    EXPECT_EQ(11, before.front()->GetId());
}

TEST_F(AFullRelease, InitValuesLeavesComponentsCertificateAndTheTwoFlags)
{
    for (const bool byText : {false, true})
    {
        m_release.m_reservedFlag = true;
        m_release.SetUpdateStatus(6);
        if (byText)
            m_release.InitValues(8, "m", "t", "n", "v", "b", "l", "Remove", "2010-07-22", 0, 1, 2, false, false, false);
        else
            m_release.InitValues(8, "m", "t", "n", "v", "b", "l", 1, 17, 0, 1, 2, false, false, false);
        EXPECT_EQ(8, m_release.GetId());
        EXPECT_STREQ("m", m_release.GetMarketingName());
        EXPECT_STREQ("t", m_release.GetTechnicalName());
        EXPECT_STREQ("vb_l", m_release.GetFullVersion());
        EXPECT_EQ(1, m_release.GetAction());
        EXPECT_EQ(byText ? ConvertDate("2010-07-22") : 17, m_release.GetActivationDate());
        EXPECT_EQ(0, m_release.IsEnabled());
        EXPECT_EQ(0, m_release.GetUpdateStatus());
        EXPECT_EQ(1, m_release.GetInstallationStartHour());
        EXPECT_EQ(2, m_release.GetInstallationEndHour());
        EXPECT_FALSE(m_release.IsPending());
        EXPECT_FALSE(m_release.m_flagA);
        EXPECT_FALSE(m_release.m_flagB);
        EXPECT_FALSE(m_release.m_reservedFlag);
        EXPECT_EQ(2u, componentsOf(m_release).size());
        EXPECT_STREQ("CID-1", m_release.GetCertificateID());
        EXPECT_EQ(3, m_release.IsNoDownload());
        EXPECT_EQ(4, m_release.IsPreInstallOnly());
    }
}

TEST_F(AFullRelease, EachOfTheThreeFlagsHasItsPlace)
{
    const auto init = [this](bool pending, bool a, bool b)
    {
        m_release.InitValues(8, "m", "t", "n", "v", "b", "l", 1, 17, 0, 1, 2, pending, a, b);
        return std::vector<bool>{m_release.m_pending, m_release.m_flagA, m_release.m_flagB};
    };
    EXPECT_EQ((std::vector<bool>{true, false, false}), init(true, false, false));
    EXPECT_EQ((std::vector<bool>{false, true, false}), init(false, true, false));
    EXPECT_EQ((std::vector<bool>{false, false, true}), init(false, false, true));
}

TEST_F(AFullRelease, AnEmptyStartDateAndAnUnknownActionKeepTheFields)
{
    for (const char* date : {"", static_cast<const char*>(nullptr)})
    {
        m_release.InitValues(8, "m", "t", "n", "v", "b", "l", "unknown", date, 0, 1, 2, false, false, false);
        EXPECT_EQ(kDate, m_release.GetActivationDate());
        EXPECT_EQ(2, m_release.GetAction());
    }
}

TEST_F(AFullRelease, NamesMayBeLongHoldPercentSignsAndBeItsOwn)
{
    const std::string longName(10'000, 'm');
    m_release.InitValues(8, longName.c_str(), "100 %s %n", "n", "v", "b", "l", 1, kDate, 0, 1, 2, false, false, false);
    EXPECT_EQ(longName, m_release.GetMarketingName());
    EXPECT_STREQ("100 %s %n", m_release.GetTechnicalName());
    m_release.InitValues(8, m_release.GetMarketingName(), m_release.GetTechnicalName(), m_release.GetName(), "v", "b",
                         "l", 1, m_release.m_activationDate, 0, 1, 2, false, false, false);
    EXPECT_EQ(longName, m_release.GetMarketingName());
    EXPECT_STREQ("100 %s %n", m_release.GetTechnicalName());
    EXPECT_STREQ("n", m_release.GetName());
}

TEST_F(AFullRelease, TheCertificateIdIsCutTo259Characters)
{
    m_release.SetCertificateID(std::string(10'000, 'c').c_str());
    EXPECT_EQ(std::string(259, 'c'), m_release.GetCertificateID());
    m_release.SetCertificateID(nullptr);
    EXPECT_STREQ("", m_release.GetCertificateID());
}

const std::vector<auttest::LogEvent> kDeletionOfTwo = {
    {"Info", "CRelease::DeleteComponentList - START"},
    {"Info", "CRelease::DeleteComponentList - 2 components"},
    {"Info", "CRelease::DeleteComponentList - END"},
};

TEST_F(AFullRelease, DeletingItsComponentsIsLogged)
{
    const auttest::DetailedLog detailed;
    auttest::LogFile log;
    m_release.DeleteComponentList();
    EXPECT_EQ(kDeletionOfTwo, log.events());
    EXPECT_EQ(0, m_release.m_componentCount);
    EXPECT_TRUE(m_release.GetComponentList().IsEmpty());
    log.mark();
    m_release.DeleteComponentList(); // an empty list is not worth a word
    EXPECT_TRUE(log.events().empty());
}

TEST_F(AFullRelease, TheDestructorDeletesTheComponents)
{
    const auttest::DetailedLog detailed;
    auttest::LogFile log;
    {
        const ReleaseProbe copy(m_release);
    }
    EXPECT_EQ(kDeletionOfTwo, log.events());
}

TEST_F(AFullRelease, DeletingIsLoggedFromDetailLevelThreeOn)
{
    for (const DWORD level : {0U, 2U, 3U})
    {
        ReleaseProbe copy(m_release);
        const auttest::DetailedLog detailed(level);
        const auttest::LogFile log;
        copy.DeleteComponentList();
        EXPECT_EQ(level == 3 ? kDeletionOfTwo : std::vector<auttest::LogEvent>(), log.events()) << level;
    }
}

TEST_F(AFullRelease, AThousandCopiesLeaveNoHandle)
{
    const auto round = [this]
    {
        ReleaseProbe copy(m_release);
        copy = m_release;
    };
    round();
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 1000; ++i)
        round();
    EXPECT_EQ(before, auttest::openHandles());
}
} // namespace
