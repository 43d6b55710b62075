#include "registry/CRegReport.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;

namespace
{
class CRegReportTest : public ::testing::Test
{
protected:
    CRegReportTest() { m_registry.write("", "DataPath", "C:\\AU\\Data"); }

    ClientRegistry m_registry;
};
} // namespace

TEST(CRegReport, OpensTheReportsKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "Data", [](bool readOnly) { CRegReport{readOnly}; });
}

TEST_F(CRegReportTest, StartsWithTheDataFolderAlone)
{
    CRegReport report(true);
    EXPECT_STREQ("C:\\AU\\Data", report.GetPath());
    EXPECT_STREQ("", report.GetReportName());
    EXPECT_STREQ("", report.GetFileName());
    EXPECT_STREQ("", report.GetFullPath());
    m_registry.write("", "DataPath", "C:\\Moved");
    EXPECT_STREQ("C:\\AU\\Data", report.GetPath()); // as it was at construction
}

TEST_F(CRegReportTest, ANameGivesFileAndPath)
{
    CRegReport report(true);
    report.SetReportName("2010");
    EXPECT_STREQ("2010", report.GetReportName());
    EXPECT_STREQ("2010.rep2", report.GetFileName());
    EXPECT_STREQ("C:\\AU\\Data\\2010.rep2", report.GetFullPath());
}

TEST_F(CRegReportTest, AnEmptyNameIsIgnored)
{
    CRegReport report(true);
    report.SetReportName("2010");
    report.SetReportName("");
    report.SetReportName(nullptr);
    EXPECT_STREQ("2010", report.GetReportName());
    EXPECT_STREQ("2010.rep2", report.GetFileName());
}

TEST_F(CRegReportTest, ANameThatDoesNotFitIsIgnored)
{
    CRegReport report(true);
    report.SetReportName("2010");
    report.SetReportName(std::string(255, 'x').c_str());
    report.SetReportName(std::string(10000, 'x').c_str());
    EXPECT_STREQ("2010", report.GetReportName());
    report.SetReportName(std::string(254, 'x').c_str());
    EXPECT_EQ(std::string(254, 'x') + ".rep2", report.GetFileName());
    EXPECT_STREQ("", report.GetFullPath()); // too long behind the folder
}

TEST_F(CRegReportTest, AnEntryIsItsNameAndItsFile)
{
    CRegReport report(false);
    report.CreateRegistryEntry(); // no name yet
    EXPECT_TRUE(m_registry.valueNames("Data").empty());
    report.SetReportName("2010");
    report.CreateRegistryEntry();
    EXPECT_EQ("2010.rep2", m_registry.readText("Data", "2010"));
    EXPECT_EQ(1u, m_registry.valueNames("Data").size());
}

TEST_F(CRegReportTest, AnEntryCanBeDeleted)
{
    m_registry.write("Data", "2010", "2010.rep2");
    m_registry.write("Data", "", "unnamed");
    CRegReport report(false);
    report.DeleteRegistryEntry(); // no name yet
    EXPECT_EQ(2u, m_registry.valueNames("Data").size());
    report.SetReportName("2010");
    report.DeleteRegistryEntry();
    EXPECT_EQ((std::vector<std::string>{""}), m_registry.valueNames("Data"));
}

TEST_F(CRegReportTest, TheFileCanBeTakenFromTheRegistry)
{
    m_registry.write("Data", "2010", "other.rep2");
    m_registry.write("Data", "", "unnamed");
    CRegReport report(true);
    report.InitFromRegistry(); // no name yet
    EXPECT_STREQ("", report.GetFileName());
    EXPECT_STREQ("", report.GetFullPath());
    report.SetReportName("2010");
    report.InitFromRegistry();
    EXPECT_STREQ("2010", report.GetReportName());
    EXPECT_STREQ("other.rep2", report.GetFileName());
    EXPECT_STREQ("C:\\AU\\Data\\other.rep2", report.GetFullPath());
}

TEST_F(CRegReportTest, AMissingEntryHasNoFile)
{
    CRegReport report(true);
    report.SetReportName("2010");
    report.InitFromRegistry();
    EXPECT_STREQ("", report.GetFileName());
    EXPECT_STREQ("C:\\AU\\Data\\", report.GetFullPath());
}

TEST_F(CRegReportTest, CopiesAreWhole)
{
    CRegReport original(true); // its key is missing, so it is closed
    original.SetReportName("2010");
    CRegReport copy(original);
    CRegReport assigned(true);
    assigned = original;
    for (CRegReport* report : {&copy, &assigned})
    {
        EXPECT_STREQ("2010", report->GetReportName());
        EXPECT_STREQ("C:\\AU\\Data", report->GetPath());
        EXPECT_STREQ("2010.rep2", report->GetFileName());
        EXPECT_STREQ("C:\\AU\\Data\\2010.rep2", report->GetFullPath());
        report->CreateRegistryEntry();
        EXPECT_EQ("2010.rep2", m_registry.readText("Data", "2010"));
        report->DeleteRegistryEntry();
    }
}
