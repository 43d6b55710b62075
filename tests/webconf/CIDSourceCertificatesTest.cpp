#include "tests/webconf/CIDManager.h"

#include "tests/support/Certificates.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/OpenHandles.h"

#include <new>

using auttest::InstalledCertificate;
using auttest::Store;

namespace
{
// --- Subjects ----------------------------------------------------------------------------------------------------

struct SubjectCase
{
    const char* name;
    std::string subject;
    std::string cid;
};
void PrintTo(const SubjectCase& row, std::ostream* out) { *out << row.name; }

class CIDSubject : public CIDTest, public ::testing::WithParamInterface<SubjectCase>
{
};

TEST_P(CIDSubject, GivesItsCIDOrNothing)
{
    Steps::startList(m_manager);
    EXPECT_EQ(GetParam().cid, Steps::valid(m_manager, GetParam().subject));
    EXPECT_EQ(Events{}, m_log.events());
}

const std::string kLongCID(10000, 'A');

INSTANTIATE_TEST_SUITE_P(
    All, CIDSubject,
    ::testing::Values(
        SubjectCase{"FifthField", "Name, B, C, Unit, QUJDREVGR0hJ", "QUJDREVGR0hJ"},
        SubjectCase{"WholeAlphabet", "n,b,c,d,azAZ09+/=xx", "azAZ09+/=xx"},
        SubjectCase{"TrimmedOfBlanks", "n,b,c,d,   QUJDREVGR0hJ  ", "QUJDREVGR0hJ"},
        SubjectCase{"ElevenCharacters", "n,b,c,d,12345678901", "12345678901"},
        SubjectCase{"TenCharacters", "n,b,c,d,1234567890", ""},
        SubjectCase{"TenCharactersAndBlanks", "n,b,c,d, 1234567890 ", ""},
        SubjectCase{"Hyphen", "n,b,c,d,QUJDREVG-R0hJ", ""}, SubjectCase{"Underscore", "n,b,c,d,QUJDREVG_R0hJ", ""},
        SubjectCase{"BlankInside", "n,b,c,d,QUJDREV GR0hJ", ""}, SubjectCase{"Tab", "n,b,c,d,QUJDREVGR0hJ\t", ""},
        SubjectCase{"QuotationMarks", "n,b,c,d,\"QUJDREVGR0hJ\"", ""},
        SubjectCase{"Umlaut", "n,b,c,d,QUJDREVGR0h\xC4", ""}, SubjectCase{"NoFifthField", "n,b,c,d", ""},
        SubjectCase{"EmptyFifthField", "n,b,c,d,", ""},
        SubjectCase{"SixFields", "n,b,c,d,QUJDREVGR0hJ,f", "QUJDREVGR0hJ"},
        SubjectCase{"EmptyFourthField", "n,b,c,,QUJDREVGR0hJ", ""},
        SubjectCase{"BlankInTheFourthField", "n, b, c, , QUJDREVGR0hJ", "QUJDREVGR0hJ"}, SubjectCase{"Nothing", "", ""},
        SubjectCase{"OnlyTheCID", "QUJDREVGR0hJ", ""}, SubjectCase{"OnlyCommas", ",,,,,,", ""},
        // The maker's name counts at the very first position of the fourth field only.
        SubjectCase{"MakerFirst", "n,b,c,Velmora,QUJDREVGR0hJ", ""},
        SubjectCase{"MakerFirstInAnyCase", "n,b,c,vELMORA,QUJDREVGR0hJ", ""},
        SubjectCase{"MakerFirstOfMore", "n,b,c,Velmora Update,QUJDREVGR0hJ", ""},
        SubjectCase{"MakerBehindABlank", "n, b, c, Velmora, QUJDREVGR0hJ", "QUJDREVGR0hJ"},
        SubjectCase{"MakerLater", "n,b,c,The Velmora,QUJDREVGR0hJ", "QUJDREVGR0hJ"},
        SubjectCase{"MakerInAnotherField", "Velmora,Velmora,Velmora,d,QUJDREVGR0hJ", "QUJDREVGR0hJ"},
        SubjectCase{"AnotherMaker", "n,b,c,Velm,QUJDREVGR0hJ", "QUJDREVGR0hJ"},
        SubjectCase{"VeryLong", "n,b,c,d," + kLongCID, kLongCID},
        SubjectCase{"VeryLongName", std::string(10000, ' ') + ",b,c,d,QUJDREVGR0hJ", "QUJDREVGR0hJ"}),
    [](const auto& row) { return row.param.name; });

using CIDSourceCertificates = CIDTest;

TEST_F(CIDSourceCertificates, ARevokedCIDIsRejectedAndLogged)
{
    revoke("QUJDREVGR0hJ");
    EXPECT_EQ("", Steps::valid(m_manager, "n,b,c,d, QUJDREVGR0hJ"));
    EXPECT_EQ((Events{{"Info", "CID QUJDREVGR0hJ revoked or expired"}}), m_log.events());
}

TEST_F(CIDSourceCertificates, AMalformedCIDIsNotLookedUpAmongTheRevoked)
{
    revoke("ABC-123456789");
    EXPECT_EQ("", Steps::valid(m_manager, "n,b,c,d,ABC-123456789"));
    EXPECT_EQ(Events{}, m_log.events());
}

// --- Stores ------------------------------------------------------------------------------------------------------

TEST_F(CIDSourceCertificates, WithoutAListThereIsNothingToFill)
{
    EXPECT_EQ(0, Steps::fromCertificates(m_manager));
    EXPECT_EQ((Events{{"Error", "CCIDListManager::GetLocalCIDList - List not initialized"}}), m_log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(CIDSourceCertificates, AnEmptyListIsRecorded)
{
    Steps::startList(m_manager);
    EXPECT_EQ(0, Steps::fromCertificates(m_manager));
    expectEmptyListRecorded("GetLocalCIDList");
}

TEST_F(CIDSourceCertificates, WhatTheListHadBeforeIsEnough)
{
    Steps::startList(m_manager, {"BEFORE000001"});
    EXPECT_NE(0, Steps::fromCertificates(m_manager));
    EXPECT_EQ((CIDs{"BEFORE000001"}), Steps::list(m_manager));
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(CIDSourceCertificates, TheMachinesCertificateGivesItsCID)
{
    const InstalledCertificate certificate(Store::machine, {"Workstation", "B", "C", "Velmora", "TUFDSElORS1D"});
    Steps::startList(m_manager);
    Steps::search(m_manager, 1);
    EXPECT_EQ((CIDs{"TUFDSElORS1D"}), Steps::list(m_manager));
    EXPECT_EQ((Events{{"Info", "Physical CID added = TUFDSElORS1D"}}), m_log.events());
}

TEST_F(CIDSourceCertificates, TheMachinesStoreHasNoneOfTheUsersCertificates)
{
    const InstalledCertificate certificate(Store::user, {"User", "B", "C", "Velmora", "VVNFUi1DSUQw"});
    Steps::startList(m_manager);
    Steps::search(m_manager, 1);
    EXPECT_EQ(CIDs{}, Steps::list(m_manager));
    Steps::search(m_manager, 0);
    EXPECT_EQ((CIDs{"VVNFUi1DSUQw"}), Steps::list(m_manager));
    EXPECT_EQ((Events{{"Info", "Physical CID added = VVNFUi1DSUQw"}}), m_log.events());
}

TEST_F(CIDSourceCertificates, TheMachinesStoreComesBeforeTheUsers)
{
    const InstalledCertificate user(Store::user, {"User", "B", "C", "Velmora", "VVNFUi1DSUQw"});
    const InstalledCertificate machine(Store::machine, {"Workstation", "B", "C", "Velmora", "TUFDSElORS1D"});
    Steps::startList(m_manager);
    EXPECT_NE(0, Steps::fromCertificates(m_manager));
    EXPECT_EQ((CIDs{"TUFDSElORS1D", "VVNFUi1DSUQw"}), Steps::list(m_manager));
    EXPECT_EQ((Events{{"Info", "Physical CID added = TUFDSElORS1D"},
                      {"Warning", "No explorer processfound for impersonation"},
                      {"Info", "Physical CID added = VVNFUi1DSUQw"}}),
              m_log.events());
}

TEST_F(CIDSourceCertificates, ACIDThatTheListHasInAnyCaseIsNotAddedAgain)
{
    const InstalledCertificate first(Store::machine, {"One", "B", "C", "Velmora", "TUFDSElORS1D"});
    const InstalledCertificate second(Store::machine, {"Two", "B", "C", "Velmora", "TUFDSElORS1D"});
    const InstalledCertificate known(Store::machine, {"Three", "B", "C", "Velmora", "KNOWN0000001"});
    Steps::startList(m_manager, {"known0000001"});
    Steps::search(m_manager, 1);
    EXPECT_EQ((CIDs{"known0000001", "TUFDSElORS1D"}), Steps::list(m_manager));
    EXPECT_EQ((Events{{"Info", "Physical CID added = TUFDSElORS1D"}}), m_log.events());
}

/// The CIDs that a certificate with this subject gives.
CIDs installed(CCIDListManager& manager, const auttest::Subject& subject)
{
    const InstalledCertificate certificate(Store::machine, subject);
    Steps::startList(manager);
    Steps::search(manager, 1);
    return Steps::list(manager);
}

TEST_F(CIDSourceCertificates, ACIDWithPlusSlashAndEqualsSignComesOutWhole)
{
    EXPECT_EQ((CIDs{"QUJD+EVGR0g/Zm8="}), installed(m_manager, {"Name", "B", "C", "Velmora", "QUJD+EVGR0g/Zm8="}));
}

TEST_F(CIDSourceCertificates, QuotationMarksInAnotherValueDoNotMatter)
{
    EXPECT_EQ((CIDs{"QUJDREVGR0hJ"}), installed(m_manager, {"A \"B\"\"", "\"", "C+", "Velmora", "QUJDREVGR0hJ"}));
    EXPECT_EQ((CIDs{"QUJDREVGR0hJ="}), installed(m_manager, {"#N", "\"B\"", "C", "Velmora", "QUJDREVGR0hJ="}));
}

TEST_F(CIDSourceCertificates, QuotationMarksAroundTheCIDItselfAreNotItsOwn)
{
    EXPECT_EQ(CIDs{}, installed(m_manager, {"Name", "B", "C", "Velmora", "\"QUJDREVGR0hJ\""}));
}

TEST_F(CIDSourceCertificates, ACommaInAValueSeparatesToo)
{
    // Five fields of four values, and the maker's name at the very first position of the fourth.
    EXPECT_EQ((CIDs{"QUJDREVGR0hJ"}), installed(m_manager, {"N,B", "C", "Unit", "QUJDREVGR0hJ"}));
    EXPECT_EQ(CIDs{}, installed(m_manager, {"Name", "B", "C,Velmora", "QUJDREVGR0hJ"}));
}

TEST_F(CIDSourceCertificates, ASubjectOfFewerThanFiveValuesAddsNothing)
{
    EXPECT_EQ(CIDs{}, installed(m_manager, {"Name", "B", "C", "QUJDREVGR0hJ"}));
    EXPECT_EQ(CIDs{}, installed(m_manager, {"QUJDREVGR0hJ"}));
}

TEST_F(CIDSourceCertificates, AMalformedCIDAddsNothing)
{
    EXPECT_EQ(CIDs{}, installed(m_manager, {"Name", "B", "C", "Velmora", "QUJD-REVGR0hJ"}));
    EXPECT_EQ(CIDs{}, installed(m_manager, {"Name", "B", "C", "Velmora", "1234567890"}));
}

TEST_F(CIDSourceCertificates, ARevokedCIDAddsNothing)
{
    revoke("QUJDREVGR0hJ");
    EXPECT_EQ(CIDs{}, installed(m_manager, {"Name", "B", "C", "Velmora", "QUJDREVGR0hJ"}));
    EXPECT_EQ((Events{{"Info", "CID QUJDREVGR0hJ revoked or expired"}}), m_log.events());
}

TEST_F(CIDSourceCertificates, ALongSubjectIsReadWhole)
{
    const std::string value(3000, 'x');
    EXPECT_EQ((CIDs{"QUJDREVGR0hJ"}), installed(m_manager, {value, value, value, value, "QUJDREVGR0hJ"}));
}

// --- Opening stores, impersonation -------------------------------------------------------------------------------

struct OpenedStore
{
    LPCSTR provider;
    DWORD flags;
    std::string name;
    bool impersonating;

    bool operator==(const OpenedStore& other) const
    {
        return provider == other.provider && flags == other.flags && name == other.name &&
               impersonating == other.impersonating;
    }
};
void PrintTo(const OpenedStore& store, std::ostream* out)
{
    *out << std::hex << store.flags << ' ' << store.name << (store.impersonating ? " impersonating" : "");
}

std::vector<OpenedStore> openedStores;
int openStores;

HCERTSTORE WINAPI openCounted(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY key, DWORD flags, const void* name)
{
    openedStores.push_back({provider, flags, static_cast<const char*>(name), auttest::impersonating()});
    ++openStores;
    return ::CertOpenStore(provider, encoding, key, flags, name);
}
HCERTSTORE WINAPI openFailing(LPCSTR, DWORD, HCRYPTPROV_LEGACY, DWORD, const void*) { return nullptr; }
BOOL WINAPI closeCounted(HCERTSTORE store, DWORD flags)
{
    --openStores;
    EXPECT_EQ(0UL, flags);
    return ::CertCloseStore(store, flags);
}
BOOL WINAPI refuseToken(HANDLE, DWORD, BOOL, HANDLE*)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

/// A predefined key that was closed: the next use opens it anew, in the name that the thread has then.
struct ClosedRoot
{
    HKEY root;
    bool impersonating;

    bool operator==(const ClosedRoot& other) const
    {
        return root == other.root && impersonating == other.impersonating;
    }
};
void PrintTo(const ClosedRoot& closed, std::ostream* out)
{
    *out << closed.root << (closed.impersonating ? " impersonating" : "");
}

std::vector<ClosedRoot> closedRoots;

LSTATUS WINAPI closeKeyWatched(HKEY key)
{
    if (key == HKEY_CURRENT_USER || key == HKEY_USERS)
        closedRoots.push_back({key, auttest::impersonating()});
    return ::RegCloseKey(key);
}

/// The number of the token that the calling thread works with; 0 when it is the process's own.
LONGLONG threadToken()
{
    aut::UniqueHandle token;
    TOKEN_STATISTICS statistics{};
    DWORD size = 0;
    if (!::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, token.put()))
        return 0;
    EXPECT_TRUE(::GetTokenInformation(token.get(), TokenStatistics, &statistics, sizeof statistics, &size));
    LARGE_INTEGER number;
    number.LowPart = statistics.TokenId.LowPart;
    number.HighPart = statistics.TokenId.HighPart;
    return number.QuadPart;
}
PCCERT_CONTEXT WINAPI enumerateWithoutMemory(HCERTSTORE, PCCERT_CONTEXT) { throw std::bad_alloc(); }

class CIDStores : public CIDTest
{
protected:
    CIDStores()
    {
        openedStores.clear();
        openStores = 0;
        Steps::startList(m_manager);
        m_log.mark();
    }
    ~CIDStores() override { ::RevertToSelf(); }

    auttest::IdleProcesses m_shells{"Explorer.exe"};
};

TEST_F(CIDStores, TheUsersStoreIsSearchedInTheUsersName)
{
    const auttest::ImportPatch patch("CertOpenStore", openCounted);
    const auttest::Child shell = m_shells.start();
    Steps::fromCertificates(m_manager);
    const LPCSTR system = CERT_STORE_PROV_SYSTEM_A;
    // 0x20000 and 0x10000 are the machine's and the user's location, 0x8000 is read-only.
    EXPECT_EQ((std::vector<OpenedStore>{{system, 0x28000, "MY", false}, {system, 0x10000, "MY", true}}), openedStores);
    EXPECT_FALSE(auttest::impersonating());
}

TEST_F(CIDStores, WhenNobodyIsLoggedOnTheProcessOwnStoreIsSearched)
{
    const auttest::ImportPatch patch("CertOpenStore", openCounted);
    Steps::fromCertificates(m_manager);
    ASSERT_EQ(2U, openedStores.size());
    EXPECT_FALSE(openedStores[1].impersonating);
    EXPECT_EQ((Events{{"Warning", "No explorer processfound for impersonation"}}), m_log.events());
}

TEST_F(CIDStores, AStoreThatCannotBeOpenedIsLogged)
{
    const auttest::ImportPatch patch("CertOpenStore", openFailing);
    const auttest::Child shell = m_shells.start();
    EXPECT_EQ(0, Steps::fromCertificates(m_manager));
    EXPECT_EQ((Events{{"Warning", "Unable to open certificate store [LocalMachine = 1]"},
                      {"Warning", "Unable to open certificate store [LocalMachine = 0]"}}),
              m_log.events());
    EXPECT_FALSE(auttest::impersonating());
    expectEmptyListRecorded("GetLocalCIDList");
}

TEST_F(CIDStores, ACallerWhoImpersonatesGoesOnDoingSo)
{
    const auttest::Child shell = m_shells.start();
    ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
    const LONGLONG token = threadToken();
    ASSERT_NE(0, token);
    Steps::fromCertificates(m_manager);
    EXPECT_EQ(token, threadToken());
}

TEST_F(CIDStores, ACallerWhoseNameCouldNotBeGivenBackKeepsIt)
{
    const auttest::ImportPatch openPatch("CertOpenStore", openCounted);
    const auttest::ImportPatch tokenPatch("OpenThreadToken", refuseToken);
    const auttest::Child shell = m_shells.start();
    ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
    const LONGLONG token = threadToken();
    Steps::fromCertificates(m_manager);
    EXPECT_EQ(token, threadToken());
    EXPECT_EQ(2U, openedStores.size());
}

TEST_F(CIDStores, NoHiveOfTheUserIsLeftOpen)
{
    closedRoots.clear();
    const auttest::ImportPatch patch("RegCloseKey", closeKeyWatched);
    const auttest::Child shell = m_shells.start();
    Steps::fromCertificates(m_manager);
    EXPECT_EQ((std::vector<ClosedRoot>{
                  {HKEY_CURRENT_USER, true}, {HKEY_USERS, true}, {HKEY_CURRENT_USER, false}, {HKEY_USERS, false}}),
              closedRoots);
}

TEST_F(CIDStores, NobodyStaysImpersonatedWhenMemoryRunsOut)
{
    const InstalledCertificate certificate(Store::machine, {"Name", "B", "C", "Velmora", "QUJDREVGR0hJ"});
    const auttest::ImportPatch openPatch("CertOpenStore", openCounted);
    const auttest::ImportPatch closePatch("CertCloseStore", closeCounted);
    const auttest::Child shell = m_shells.start();
    {
        const auttest::ImportPatch patch("CertEnumCertificatesInStore", enumerateWithoutMemory);
        EXPECT_EQ(0, m_manager.InitManager(false));
    }
    EXPECT_FALSE(auttest::impersonating());
    EXPECT_EQ(0, openStores);
    EXPECT_EQ(1, m_manager.IsEndOfTheListReached());
    EXPECT_NE(0, m_manager.InitManager(false)) << "the next attempt";
}

TEST_F(CIDStores, NothingStaysOpen)
{
    const InstalledCertificate first(Store::machine, {"Name", "B", "C", "Velmora", "QUJDREVGR0hJ"});
    const InstalledCertificate second(Store::user, {"Name", "B", "C", "Velmora", "VVNFUi1DSUQw"});
    const auttest::ImportPatch openPatch("CertOpenStore", openCounted);
    const auttest::ImportPatch closePatch("CertCloseStore", closeCounted);
    const auttest::Child shell = m_shells.start();
    Steps::fromCertificates(m_manager);
    const std::size_t handles = auttest::openHandles();
    for (int round = 0; round < 20; ++round)
        Steps::fromCertificates(m_manager);
    EXPECT_EQ(handles, auttest::openHandles());
    EXPECT_EQ(42U, openedStores.size());
    EXPECT_EQ(0, openStores);
}
} // namespace
