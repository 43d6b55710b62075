#include "catalogue/ReleaseLists.h"

#include "tests/catalogue/ReleaseFixture.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

using Events = std::vector<auttest::LogEvent>;
using Names = std::vector<std::string>;

/// A client with a data folder and an empty registry.
class CertificateRecords : public ::testing::Test
{
protected:
    CertificateRecords() { registry.write("", "DataPath", data.path()); }

    /// A release that was delivered for these certificates and saved.
    void deliver(const std::string& name, const Names& certificateIds) const
    {
        const std::string key = "Data\\WebConf\\" + name;
        registry.write(key, "", "1.0");
        for (const std::string& certificateId : certificateIds)
            registry.write(key, certificateId.c_str(), certificateId);
        data.writeFile(name + ".lst", "record");
    }
    /// The value names of a key in alphabetical order.
    Names values(const std::string& key) const
    {
        Names names = registry.valueNames(key);
        std::sort(names.begin(), names.end());
        return names;
    }
    Names deliveries(const std::string& name) const { return values("Data\\WebConf\\" + name); }
    Names certificates(const std::string& name) const { return values("Products\\" + name + "\\Certificates"); }

    auttest::ClientRegistry registry;
    auttest::TestFolder data;
    auttest::LogFile log;
};

// Revoked certificates.

struct StatusRow
{
    const char* name;
    DWORD type;
    std::string bytes;
    bool revoked;
};
class RevokedStatus : public CertificateRecords, public ::testing::WithParamInterface<StatusRow>
{
};
TEST_P(RevokedStatus, IsComparedToTheLetter)
{
    registry.writeRaw("Config\\Cache\\Certificates\\CID-1", "Status", GetParam().type, GetParam().bytes);
    EXPECT_EQ(GetParam().revoked, IsCIDRevoked("CID-1"));
}
INSTANTIATE_TEST_SUITE_P(Texts, RevokedStatus,
                         ::testing::Values(StatusRow{"Exact", REG_SZ, std::string("Revoked\0", 8), true},
                                           StatusRow{"WithoutTerminator", REG_SZ, "Revoked", true},
                                           StatusRow{"LowerCase", REG_SZ, std::string("revoked\0", 8), false},
                                           StatusRow{"UpperCase", REG_SZ, std::string("REVOKED\0", 8), false},
                                           StatusRow{"Longer", REG_SZ, std::string("Revoked \0", 9), false},
                                           StatusRow{"Shorter", REG_SZ, std::string("Revoke\0", 7), false},
                                           StatusRow{"Other", REG_SZ, std::string("Valid\0", 6), false},
                                           StatusRow{"Empty", REG_SZ, std::string("\0", 1), false},
                                           StatusRow{"NoBytes", REG_SZ, "", false},
                                           StatusRow{"Number", REG_DWORD, std::string("\1\0\0\0", 4), false},
                                           StatusRow{"Long", REG_SZ, std::string(10000, 'R'), false}),
                         [](const auto& row) { return row.param.name; });

TEST_F(CertificateRecords, WithoutARecordNothingIsRevokedAndNothingIsMade)
{
    EXPECT_FALSE(IsCIDRevoked("CID-1"));
    EXPECT_FALSE(registry.keyExists("Config"));
    registry.createKey("Config\\Cache\\Certificates\\CID-1");
    EXPECT_FALSE(IsCIDRevoked("CID-1"));
}

TEST_F(CertificateRecords, TheStatusOfOneCertificateIsNotThatOfAnother)
{
    registry.write("Config\\Cache\\Certificates\\QUJD+/12345=", "Status", "Revoked");
    EXPECT_TRUE(IsCIDRevoked("QUJD+/12345="));
    EXPECT_FALSE(IsCIDRevoked("QUJD+/12345"));
}

TEST_F(CertificateRecords, TheEmptyCertificateIsNeverRevoked)
{
    registry.write("Config\\Cache\\Certificates", "Status", "Revoked");
    EXPECT_FALSE(IsCIDRevoked(""));
    EXPECT_FALSE(IsCIDRevoked(String()));
}

TEST_F(CertificateRecords, ACertificateTooLongForAKeyIsNotRevoked)
{
    EXPECT_FALSE(IsCIDRevoked(std::string(10000, 'A').c_str()));
}

// The records of earlier cycles.

TEST_F(CertificateRecords, ACertificateIsWithdrawnAndEveryFileGoes)
{
    deliver("Editor", {"CID-1", "CID-2"});
    deliver("Ledger", {"CID-1"});
    deliver("Other", {"CID-2"});
    data.writeFile("local_Ledger.lst", "record");
    registry.write("Data\\Local", "Ledger", "1.0");

    DeletePreviousRegistryEntries("CID-1");

    EXPECT_EQ((Names{"", "CID-2"}), deliveries("Editor"));
    EXPECT_EQ("1.0", registry.readText("Data\\WebConf\\Editor", ""));
    EXPECT_EQ("CID-2", registry.readText("Data\\WebConf\\Editor", "CID-2"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\Ledger"));
    EXPECT_EQ((Names{"", "CID-2"}), deliveries("Other"));
    for (const char* const name : {"Editor.lst", "Ledger.lst", "Other.lst"})
        EXPECT_FALSE(data.exists(name)) << name;
    EXPECT_TRUE(data.exists("local_Ledger.lst"));
    EXPECT_EQ(Names{"Ledger"}, values("Data\\Local"));
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(CertificateRecords, AKeyWithAtMostOneValueLeftGoes)
{
    deliver("OnlyVersion", {});
    registry.createKey("Data\\WebConf\\Empty");
    registry.write("Data\\WebConf\\OnlyOther", "CID-2", "CID-2"); // without a version
    deliver("Sub", {"CID-1"});
    registry.createKey("Data\\WebConf\\Sub\\below");
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_TRUE(registry.subkeys("Data\\WebConf").empty());
    EXPECT_TRUE(registry.keyExists("Data\\WebConf"));
}

TEST_F(CertificateRecords, ValueNamesAreComparedAsTheRegistryDoes)
{
    deliver("Editor", {"cid-1", "QUJD+/12345="});
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_EQ((Names{"", "QUJD+/12345="}), deliveries("Editor"));
    DeletePreviousRegistryEntries("QUJD+/12345=");
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\Editor"));
}

TEST_F(CertificateRecords, StartAndEndAreTraced)
{
    const auttest::DetailedLog detailed(2);
    log.mark();
    DeletePreviousRegistryEntries("CID-1");
    DeletePreviousRegistryEntries("");
    const auttest::LogEvent start{"Info", "DeletePreviousRegistryEntries - START"};
    const auttest::LogEvent end{"Info", "DeletePreviousRegistryEntries - END"};
    EXPECT_EQ((Events{start, end, start, end}), log.events());
}

TEST_F(CertificateRecords, TheTraceNeedsLevel2)
{
    const auttest::DetailedLog detailed(1);
    log.mark();
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(CertificateRecords, WithTheEmptyCertificateNothingIsDeleted)
{
    deliver("Editor", {"CID-1"});
    deliver("OnlyVersion", {});
    DeletePreviousRegistryEntries("");
    EXPECT_EQ((Names{"", "CID-1"}), deliveries("Editor"));
    EXPECT_EQ(Names{""}, deliveries("OnlyVersion"));
    EXPECT_TRUE(data.exists("Editor.lst"));
    EXPECT_TRUE(data.exists("OnlyVersion.lst"));
}

TEST_F(CertificateRecords, WithoutRecordsNothingIsMade)
{
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_FALSE(registry.keyExists("Data"));
}

TEST_F(CertificateRecords, AThousandReleasesAreWithdrawn)
{
    for (int i = 0; i < 1000; ++i)
        deliver("Release " + std::to_string(i), i % 2 == 0 ? Names{"CID-1"} : Names{"CID-1", "CID-2"});
    const std::size_t before = auttest::openHandles();
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_EQ(before, auttest::openHandles());
    EXPECT_EQ(500u, registry.subkeys("Data\\WebConf").size());
    for (int i = 0; i < 1000; ++i)
        ASSERT_FALSE(data.exists("Release " + std::to_string(i) + ".lst")) << i;
    DeletePreviousRegistryEntries("CID-2");
    EXPECT_TRUE(registry.subkeys("Data\\WebConf").empty());
}

TEST_F(CertificateRecords, AKeyWhoseValuesCannotAllBeReadStays)
{
    deliver("Editor", {"CID-1", std::string(300, 'C')}); // longer than the names that are read
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_EQ((Names{"", std::string(300, 'C')}), deliveries("Editor"));
}

TEST_F(CertificateRecords, AKeysNameThatLeadsOutOfTheDataFolderDeletesNoFile)
{
    registry.write("", "DataPath", data.makeFolder("data"));
    data.writeFile("outside.lst", "mine");
    data.writeFile("data\\sub\\inside.lst", "mine");
    registry.write("Data\\WebConf\\../outside", "CID-1", "CID-1");
    registry.write("Data\\WebConf\\sub/inside", "CID-1", "CID-1");
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_TRUE(data.exists("outside.lst"));
    EXPECT_TRUE(data.exists("data\\sub\\inside.lst"));
    EXPECT_TRUE(registry.subkeys("Data\\WebConf").empty()) << "the records are the client's own";
}

TEST_F(CertificateRecords, AFileThatCannotBeDeletedIsLogged)
{
    deliver("Editor", {"CID-1"});
    const std::string path = data / "Editor.lst";
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_TRUE(data.exists("Editor.lst"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\Editor"));
    EXPECT_EQ((Events{{"Error", "Release file " + path + " not deleted: error 5"}}), log.events());
}

TEST_F(CertificateRecords, AFileThatIsNotThereIsNoFailure)
{
    deliver("Editor", {"CID-1"});
    ::DeleteFileA((data / "Editor.lst").c_str());
    DeletePreviousRegistryEntries("CID-1");
    EXPECT_EQ(Events{}, log.events());
}

// A release that has been processed.

class ProcessedRelease : public CertificateRecords
{
protected:
    static void update(const char* name, const char* certificateId, bool installed, int action = 0)
    {
        CRelease release(7, "", "", name, "2.1", "B05", "EN", action, 0, 1);
        release.SetCertificateID(certificateId);
        UpdateCertificatesForInstalledProduct(&release, installed);
    }
    /// What is recorded of a product goes, and with it what held nothing else.
    void expectForgotten(const std::string& name)
    {
        EXPECT_FALSE(registry.keyExists("Data\\WebConf\\" + name));
        EXPECT_FALSE(data.exists(name + ".lst"));
    }
};

TEST_F(ProcessedRelease, AnInstalledOneKeepsAllItsCertificatesWithTheProduct)
{
    deliver("Editor", {"A", "B"});
    update("Editor", "A", true);
    EXPECT_EQ((Names{"A", "B"}), certificates("Editor"));
    EXPECT_EQ("A", registry.readText("Products\\Editor\\Certificates", "A"));
    EXPECT_EQ("B", registry.readText("Products\\Editor\\Certificates", "B"));
    expectForgotten("Editor");
    EXPECT_FALSE(registry.keyExists("Data\\WebConf")) << "no release is left";
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(ProcessedRelease, TheCertificateItWasInstalledUnderMovesIntoTheList)
{
    deliver("Editor", {"B"});
    registry.write("Products\\Editor", "CertificateID", "Old+/=");
    registry.write("Products\\Editor", "Version", "1.0");
    registry.write("Products\\Editor\\Certificates", "Kept", "Kept");
    update("Editor", "B", true);
    EXPECT_EQ((Names{"B", "Kept", "Old+/="}), certificates("Editor"));
    EXPECT_EQ("Old+/=", registry.readText("Products\\Editor\\Certificates", "Old+/="));
    EXPECT_EQ(Names{"Version"}, values("Products\\Editor"));
}

TEST_F(ProcessedRelease, AnEmptyEarlierCertificateIsDeletedAndNotKept)
{
    registry.write("Products\\Editor", "CertificateID", "");
    update("Editor", "A", true);
    EXPECT_EQ(Names{"A"}, certificates("Editor"));
    EXPECT_EQ(Names{}, values("Products\\Editor"));
}

TEST_F(ProcessedRelease, TheReleasesOwnCertificateIsKeptAlsoWithoutADelivery)
{
    update("Editor", "A", true);
    EXPECT_EQ(Names{"A"}, certificates("Editor"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf"));
}

TEST_F(ProcessedRelease, CertificatesThatTheRegistryDoesNotTakeAreLogged)
{
    const std::string name(210, 'n'); // fits the delivery's key, but not the longer one of the product's certificates
    registry.write("Data\\WebConf\\" + name, "A", "A");
    registry.write("Data\\WebConf\\" + name, "B", "B");
    update(name.c_str(), "A", true);
    const std::string end = " of product " + name + " not recorded";
    EXPECT_EQ(
        (Events{{"Error", "Certificate A" + end}, {"Error", "Certificate B" + end}, {"Error", "Certificate A" + end}}),
        log.events());
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\" + name));
}

TEST_F(ProcessedRelease, OneNotInstalledOnlyLosesItsRecords)
{
    deliver("Editor", {"A", "B"});
    registry.write("Products\\Editor", "CertificateID", "Old");
    update("Editor", "A", false);
    expectForgotten("Editor");
    EXPECT_EQ("Old", registry.readText("Products\\Editor", "CertificateID"));
    EXPECT_FALSE(registry.keyExists("Products\\Editor\\Certificates"));
}

TEST_F(ProcessedRelease, ARemovedOneOnlyLosesItsRecords)
{
    deliver("Editor", {"A"});
    update("Editor", "A", true, 1);
    expectForgotten("Editor");
    EXPECT_FALSE(registry.keyExists("Products"));
}

TEST_F(ProcessedRelease, EveryOtherActionKeepsTheCertificates)
{
    for (const int action : {0, 2, 3})
    {
        const std::string name = "Editor" + std::to_string(action);
        deliver(name, {"A"});
        update(name.c_str(), "A", true, action);
        EXPECT_EQ(Names{"A"}, certificates(name)) << action;
        expectForgotten(name);
    }
}

TEST_F(ProcessedRelease, OtherReleasesKeepTheirRecords)
{
    deliver("Editor", {"A"});
    deliver("Ledger", {"A"});
    data.writeFile("local_Editor.lst", "record");
    update("Editor", "A", true);
    expectForgotten("Editor");
    EXPECT_EQ((Names{"", "A"}), deliveries("Ledger"));
    EXPECT_TRUE(data.exists("Ledger.lst"));
    EXPECT_TRUE(data.exists("local_Editor.lst"));
}

TEST_F(ProcessedRelease, ALocalOneLosesItsValueAndFileOnly)
{
    registry.write("Data\\Local", "Editor", "1.0");
    registry.write("Data\\Local", "Ledger", "1.0");
    data.writeFile("local_Editor.lst", "record");
    deliver("Editor", {"A"});
    registry.write("Products\\Editor", "CertificateID", "Old");
    update("Editor", "", true);
    EXPECT_EQ(Names{"Ledger"}, values("Data\\Local"));
    EXPECT_FALSE(data.exists("local_Editor.lst"));
    EXPECT_EQ((Names{"", "A"}), deliveries("Editor"));
    EXPECT_TRUE(data.exists("Editor.lst"));
    EXPECT_EQ("Old", registry.readText("Products\\Editor", "CertificateID"));
    EXPECT_FALSE(registry.keyExists("Products\\Editor\\Certificates"));
}

TEST_F(ProcessedRelease, TheLastLocalOneTakesTheKeyAlong)
{
    registry.write("Data\\Local", "Editor", "1.0");
    data.writeFile("local_Editor.lst", "record");
    update("Editor", "", false);
    EXPECT_FALSE(registry.keyExists("Data\\Local"));
    EXPECT_TRUE(registry.keyExists("Data"));
    EXPECT_FALSE(data.exists("local_Editor.lst"));
}

TEST_F(ProcessedRelease, ALocalOneThatWasNeverNotedIsFine)
{
    update("Editor", "", true);
    EXPECT_FALSE(registry.keyExists("Data\\Local"));
    EXPECT_EQ(Events{}, log.events());
}

class ProcessedName : public ProcessedRelease, public ::testing::WithParamInterface<const char*>
{
};
TEST_P(ProcessedName, ThatIsNoneTouchesNothing)
{
    const std::string name = GetParam();
    deliver("Editor", {"A"});
    registry.write("Products", "CertificateID", "mine");
    registry.write("Config", "ShowDialog", 1);
    const auttest::LogEvent event{"Error", "UpdateCertificatesForInstalledProduct: release name " + name + " refused"};
    update(name.c_str(), "A", true);
    update(name.c_str(), "", true);
    EXPECT_EQ((Events{event, event}), log.events());
    EXPECT_EQ((Names{"", "A"}), deliveries("Editor"));
    EXPECT_EQ("mine", registry.readText("Products", "CertificateID"));
    EXPECT_TRUE(registry.keyExists("Config"));
}
INSTANTIATE_TEST_SUITE_P(Names, ProcessedName, ::testing::Values("", "..\\..\\Config", "Editor\\", "a/b", "C:", ".."));

TEST_F(ProcessedRelease, NullIsNone) { UpdateCertificatesForInstalledProduct(nullptr, true); }

TEST_F(ProcessedRelease, AReleaseSavedAndInstalledLeavesOnlyItsCertificate)
{
    CRelease release(7, "", "", "Editor", "2.1", "B05", "EN", 0, 0, 1);
    release.SetCertificateID("A");
    ASSERT_TRUE(SaveConfigFile(&release));
    UpdateCertificatesForInstalledProduct(&release, true);
    expectForgotten("Editor");
    EXPECT_FALSE(registry.keyExists("Data\\WebConf"));
    EXPECT_EQ(Names{"A"}, certificates("Editor"));
}
