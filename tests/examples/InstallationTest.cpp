#include "tests/examples/ChildProgram.h"
#include "tests/examples/UpdateCycleFixture.h"

#include "7xAutoUpdateTools.h"

#include <objbase.h>
#include <objidl.h>

#include <fstream>
#include <string>
#include <vector>

using auttest::kCertificate;
using auttest::Registry;

namespace
{
const std::string kLedger = "C:\\Program Files (x86)\\Velmora\\Ledger";
const std::string kWords = "C:\\Program Files (x86)\\Common Files\\Velmora\\Words";
const std::string kReports = "C:\\Program Files\\Velmora Reports";
const char* const kSharedCounts = "Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
const char* const kFolders = "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion"; // of 32-bit programs
const char* const kClass = "Software\\Classes\\CLSID\\{6E0F1C52-58D5-4B0E-9A57-2F6C3B8D1E40}";
const char* const kSession = "System\\CurrentControlSet\\Control\\Session Manager";
const char* const kPending = "PendingFileRenameOperations";

std::string depotFile(const std::string& name) { return auttest::readFile(AUTOOLS_SAMPLE_DEPOT "/" + name); }

std::string component(const std::string& name, const std::string& version, const std::string& build,
                      const std::string& action = "INSTALL", const std::string& further = "")
{
    return "<Component><Name>" + name + "</Name><Language>EN</Language><Version>" + version + "</Version><Build>" +
           build + "</Build><URL>http://{{Host}}/Depot/" + name + "/" + version + build +
           "_EN/component.txt</URL><Action>" + action + "</Action>" + further + "</Component>";
}

/// The second half: what the releases ask for is done to the machine, which is this suite's own.
class Installation : public auttest::UpdateCycleFixture
{
protected:
    Installation()
    {
        server->serveDepot(AUTOOLS_SAMPLE_DEPOT);
        cleanMachine();
        // What the emulated Windows lacks of a real one.
        machine.createKey(kSharedCounts);
        machine.write(kFolders, "ProgramFilesDir", "C:\\Program Files (x86)");
        machine.write(kFolders, "CommonFilesDir", "C:\\Program Files (x86)\\Common Files");
    }
    ~Installation() override { cleanMachine(); }

    /// From now on the server has this product list.
    void serve(const std::string& list) { server->addRule("page=wcfgGetProductList.asp, file=cycle/" + list); }
    /// A product list of one release of Ledger.
    void serveLedger(const std::string& components, const std::string& action = "INSTALL",
                     const std::string& further = "")
    {
        serveProduct("Ledger", components, action, further);
    }
    void serveProduct(const std::string& product, const std::string& components, const std::string& action = "INSTALL",
                      const std::string& further = "")
    {
        std::string body = "<r><Data><NewData><ProductList><Product><Name>" + product +
                           "</Name><Language>EN</Language>"
                           "<Version>7.0.12</Version><Build>B1</Build><Action>" +
                           action + "</Action>" + further + "<ComponentList>" + components +
                           "</ComponentList></Product></ProductList></NewData></Data></r>";
        for (std::size_t at = 0; (at = body.find("{{Host}}", at)) != std::string::npos;)
            body.replace(at, 8, server->host());
        webconf_sample::Rule rule;
        rule.page = "wcfgGetProductList.asp";
        rule.answer.body = body;
        server->addRule(rule);
    }
    DWORD cycle(const std::string& further = "") { return run(cycleOptions() + further); }

    std::string productVersion(const std::string& product) const
    {
        return registry.readText("Products\\" + product, "Version").value_or("");
    }
    std::string componentText(const std::string& key, const char* name) const
    {
        return registry.readText("Components\\" + key, name).value_or("");
    }

    const Registry machine;

private:
    void cleanMachine() const
    {
        for (const std::string& path : {kLedger, kWords, kReports})
            auttest::removeAll(path);
        for (const std::string& name : machine.valueNames(kSharedCounts))
            machine.removeValue(kSharedCounts, name.c_str());
        machine.removeKey(kClass);
        machine.removeKey("Software\\Velmora\\Reports");
        machine.removeValue(kSession, kPending);
        auttest::removeAll("C:\\ledger_0.tmp");
    }
};

std::string text(const std::vector<std::string>& lines)
{
    std::string all;
    for (const std::string& line : lines)
        all += line + "\r\n";
    return all;
}
} // namespace

TEST_F(Installation, InstallsWhatIsMissing)
{
    serve("install.xml");
    EXPECT_EQ(0u, cycle());

    const std::string components = folder / "Components";
    const std::string depot = "http://" + server->host() + "/Depot/";
    expectOutput(
        text({"Ledger 7.0.12B1_EN: install", "  decided      now: not installed", "  LedgerCore 7.0.12B1_EN: install",
              "    decided      now: not installed",
              "    brought      " + depot + "LedgerCore/7.0.12B1_EN/component.txt to " + components +
                  "\\LedgerCore\\7.0.12B1_EN",
              "    path         {HKLM\\Software\\Velmora\\Ledger\\InstallDir};%ProgramFilesDir%\\Velmora\\Ledger",
              "                 is " + kLedger, "    copied       " + kLedger + "\\ledger.txt",
              "    copied       " + kLedger + "\\accounts.txt", "    recorded     LedgerCore 7.0.12B1_EN",
              "  LedgerServer 7.0.12B1_EN: install"}));
    expectOutput("  recorded     Ledger 7.0.12B1_EN\r\n");
    expectOutput("\r\n2 done, 0 nothing to do, 0 later, 0 failed\r\n");
    expectNoOutput("Reboot Needed");

    for (const char* name : {"ledger.txt", "accounts.txt"})
        EXPECT_EQ(depotFile(std::string("LedgerCore/7.0.12B1_EN/") + name), auttest::readFile(kLedger + "\\" + name));
    EXPECT_EQ("7.0.12B1", productVersion("Ledger"));
    EXPECT_EQ("EN", registry.readText("Products\\Ledger", "Language"));
    EXPECT_EQ(kLedger, registry.readText("Products\\Ledger", "Path"));
    EXPECT_EQ(1u, registry.readNumber("Products\\Ledger", "Enable"));
    EXPECT_EQ("LedgerCore,LedgerServer,Wordlist", registry.readText("Products\\Ledger", "Components"));
    EXPECT_EQ("7.0.12B1", componentText("LedgerCore\\Ledger", "ComponentVersion"));
    EXPECT_EQ(kLedger, componentText("LedgerCore\\Ledger", "Path"));
    EXPECT_EQ("7.0.12B1_EN", componentText("LedgerCore", "Most_Recent_levels"));
    EXPECT_EQ("2.4.3P1", productVersion("Reports"));
    EXPECT_EQ(0u, registry.readNumber("IN_PROGRESS", "Phase"));
}

TEST_F(Installation, ASharedComponentIsInstalledOnceAndCountedForEachProduct)
{
    serve("install.xml");
    ASSERT_EQ(0u, cycle());
    expectOutput(text(
        {"    copied       " + kWords + "\\words.txt", "    shared       " + kWords + "\\words.txt is used by 1"}));
    expectOutput(text({"  Wordlist 1.2.0B1_EN: install, shared",
                       "    decided      nothing to do: installed 1.2.0B1 is what is asked for",
                       "    shared       " + kWords + "\\words.txt is used by 2"}));
    EXPECT_EQ(2u, machine.readNumber(kSharedCounts, (kWords + "\\words.txt").c_str()));
    EXPECT_EQ("1.2.0B1", componentText("Wordlist\\Shared", "ComponentVersion"));
    EXPECT_EQ(1u, registry.readNumber("Components\\Wordlist\\Ledger", "Shared"));
    EXPECT_EQ(1u, registry.readNumber("Components\\Wordlist\\Reports", "Shared"));
}

TEST_F(Installation, AnOlderLevelOfASharedComponentIsReplacedByTheInstalledOne)
{
    const char* const shared = "<Shared>True</Shared>";
    serveProduct("Ledger", component("Wordlist", "1.2.0", "B1", "INSTALL", shared));
    ASSERT_EQ(0u, cycle());
    serveProduct("Reports", component("Wordlist", "1.1.0", "B1", "INSTALL", shared)); // the depot has no such level
    EXPECT_EQ(0u, cycle());
    expectOutput(text({"  Wordlist 1.2.0B1_EN: install, shared",
                       "    decided      nothing to do: installed 1.2.0B1 is what is asked for",
                       "    shared       " + kWords + "\\words.txt is used by 2"}));
    EXPECT_EQ("7.0.12B1", productVersion("Reports"));
    EXPECT_EQ("1.2.0B1", componentText("Wordlist\\Shared", "ComponentVersion"));
}

TEST_F(Installation, AnInstallerChoosesTheFolderThatALaterComponentFindsInTheRegistry)
{
    serve("install.xml");
    ASSERT_EQ(0u, cycle());
    EXPECT_EQ(kReports, machine.readText("Software\\Velmora\\Reports", "InstallDir"));
    EXPECT_TRUE(auttest::fileExists(kReports + "\\reports.txt"));
    EXPECT_EQ(depotFile("ReportTemplates/2.4.3P1_EN/balance.txt"),
              auttest::readFile(kReports + "\\Templates\\balance.txt"));
    expectOutput("                 is " + kReports + "\\Templates\r\n");
}

TEST_F(Installation, AComServerIsRegisteredAndWorks)
{
    serveLedger(component("LedgerServer", "7.0.12", "B1"));
    ASSERT_EQ(0u, cycle());
    EXPECT_EQ(kLedger + "\\Bin\\LedgerServer.dll", machine.readText(std::string(kClass) + "\\InprocServer32", ""));
    expectOutput("    registered   " + kLedger + "\\Bin\\LedgerServer.dll\r\n");

    CLSID classId{};
    ASSERT_EQ(S_OK, ::CLSIDFromString(L"{6E0F1C52-58D5-4B0E-9A57-2F6C3B8D1E40}", &classId));
    ASSERT_EQ(S_OK, ::CoInitialize(nullptr));
    IPersist* object = nullptr;
    ASSERT_EQ(S_OK, ::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IPersist,
                                       reinterpret_cast<void**>(&object)));
    CLSID told{};
    EXPECT_EQ(S_OK, object->GetClassID(&told));
    EXPECT_TRUE(IsEqualCLSID(classId, told));
    object->Release();
    ::CoFreeUnusedLibrariesEx(0, 0); // or the file could not be removed
    ::CoUninitialize();
}

TEST_F(Installation, KeepsTheCertificatesAndDropsTheRecordsOfWhatIsDone)
{
    serve("install.xml");
    ASSERT_EQ(0u, cycle());
    for (const std::string product : {"Ledger", "Reports"})
    {
        EXPECT_EQ(kCertificate, registry.readText("Products\\" + product + "\\Certificates", kCertificate)) << product;
        EXPECT_FALSE(folder.exists(product + ".lst")) << product;
    }
    EXPECT_FALSE(registry.keyExists("Data\\WebConf"));
    EXPECT_FALSE(folder.exists("Download\\LedgerCore"));
}

TEST_F(Installation, TheSecondCycleFindsNothingToDo)
{
    serve("install.xml");
    ASSERT_EQ(0u, cycle());
    auttest::removeAll(kLedger + "\\accounts.txt"); // only what is recorded counts
    EXPECT_EQ(0u, cycle());
    expectOutput(
        text({"Ledger 7.0.12B1_EN: install",
              "  decided      nothing to do: installed 7.0.12B1_EN is what is asked for, with all its components", "",
              "Reports 2.4.3P1_EN: install",
              "  decided      nothing to do: installed 2.4.3P1_EN is what is asked for, with all its components", "",
              "0 done, 2 nothing to do, 0 later, 0 failed"}));
    EXPECT_FALSE(auttest::fileExists(kLedger + "\\accounts.txt"));
    EXPECT_EQ(2u, machine.readNumber(kSharedCounts, (kWords + "\\words.txt").c_str()));
    EXPECT_FALSE(folder.exists("Ledger.lst"));
}

TEST_F(Installation, AFileInUseIsReplacedWhenWindowsStartsNext)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"));
    ASSERT_EQ(0u, cycle());
    auttest::ChildProgram holder("updatecycle.exe", "--hold \"" + kLedger + "\\ledger.txt\"");
    ASSERT_EQ("holding " + kLedger + "\\ledger.txt", holder.readLine());

    serveLedger(component("LedgerCore", "7.0.12", "B2"));
    EXPECT_EQ(8u, cycle());
    expectOutput(text(
        {"  decided      now: component LedgerCore: component build changed: installed 7.0.12B1, asked 7.0.12B2"}));
    expectOutput(text({"    reboot       " + kLedger + "\\ledger.txt is in use, replaced when Windows starts next",
                       "    copied       " + kLedger + "\\accounts.txt", "    recorded     LedgerCore 7.0.12B2_EN"}));
    expectOutput("\r\nReboot Needed: Windows must be restarted to complete this.\r\n");
    expectOutput("Warning       Reboot Needed: " + kLedger + "\\ledger.txt\r\n");

    EXPECT_EQ(depotFile("LedgerCore/7.0.12B1_EN/ledger.txt"), auttest::readFile(kLedger + "\\ledger.txt"));
    EXPECT_EQ(depotFile("LedgerCore/7.0.12B2_EN/ledger.txt"), auttest::readFile("C:\\ledger_0.tmp"));
    EXPECT_TRUE(machine.valueExists(kSession, kPending));
    EXPECT_EQ("7.0.12B2", componentText("LedgerCore\\Ledger", "ComponentVersion"));
    EXPECT_EQ("7.0.12B2_EN,7.0.12B1_EN", componentText("LedgerCore", "Most_Recent_levels"));
}

TEST_F(Installation, OutsideItsHoursAReleaseWaits)
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    const std::string hours = std::to_string((now.wHour + 2) % 24) + "-" + std::to_string((now.wHour + 4) % 24);
    serveLedger(component("LedgerCore", "7.0.12", "B1"));
    EXPECT_EQ(0u, cycle(" --hours " + hours));
    expectOutput(text({"  decided      later: outside the installation hours " + hours + " (not installed)", "",
                       "0 done, 0 nothing to do, 1 later, 0 failed"}));
    expectOutput("Installation authorized only during ");
    EXPECT_FALSE(auttest::fileExists(kLedger));
    EXPECT_EQ("", productVersion("Ledger"));
    EXPECT_TRUE(folder.exists("Ledger.lst"));

    EXPECT_EQ(0u, cycle()); // at any hour
    EXPECT_EQ("7.0.12B1", productVersion("Ledger"));
    EXPECT_FALSE(folder.exists("Ledger.lst"));
}

TEST_F(Installation, BeforeItsDateAReleaseWaits)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"), "INSTALL", "<StartDate>2090-06-01 07:30</StartDate>");
    EXPECT_EQ(0u, cycle());
    expectOutput("  decided      later: not active before 2090-06-01 07:30\r\n");
    EXPECT_FALSE(auttest::fileExists(kLedger));
    EXPECT_TRUE(folder.exists("Ledger.lst"));
}

TEST_F(Installation, RemovesWhatWasInstalled)
{
    serve("install.xml");
    ASSERT_EQ(0u, cycle());
    serve("remove.xml"); // it names LedgerCore B2: what is recorded counts
    EXPECT_EQ(0u, cycle());
    expectOutput(
        text({"Ledger 7.0.12B1_EN: remove", "  decided      now: installed 7.0.12B1_EN is the one to remove",
              "  Wordlist: remove", "    shared       " + kWords + "\\words.txt is used by 1",
              "    forgotten    Wordlist 1.2.0B1_EN", "  LedgerServer: remove",
              "    unregistered " + kLedger + "\\Bin\\LedgerServer.dll",
              "    removed      " + kLedger + "\\Bin\\LedgerServer.dll", "    forgotten    LedgerServer 7.0.12B1_EN"}));
    expectOutput(text({"    shared       " + kWords + "\\words.txt is used by 0",
                       "    removed      " + kWords + "\\words.txt", "    forgotten    Wordlist 1.2.0B1_EN"}));
    for (const std::string& path : {kLedger, kWords, kReports})
        EXPECT_FALSE(auttest::fileExists(path)) << path;
    EXPECT_FALSE(machine.keyExists(kClass));
    EXPECT_FALSE(machine.keyExists("Software\\Velmora\\Reports"));
    EXPECT_TRUE(machine.valueNames(kSharedCounts).empty());
    EXPECT_TRUE(registry.subkeys("Products").empty());
    EXPECT_TRUE(registry.subkeys("Components").empty());
    EXPECT_FALSE(folder.exists("Components\\LedgerCore"));
    EXPECT_FALSE(folder.exists("Ledger.lst"));
}

TEST_F(Installation, OnlyTheInstalledReleaseIsRemoved)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"));
    ASSERT_EQ(0u, cycle());
    registry.write("Products\\Ledger", "Version", "7.0.12B7");
    serveLedger("", "REMOVE");
    EXPECT_EQ(0u, cycle());
    expectOutput("  decided      nothing to do: installed 7.0.12B7_EN is not the one to remove\r\n");
    registry.write("Products\\Ledger", "Version", "7.0.12B1");
    EXPECT_EQ(0u, cycle());
    EXPECT_FALSE(registry.keyExists("Products\\Ledger"));
    EXPECT_EQ(0u, cycle());
    expectOutput("  decided      nothing to do: not installed\r\n");
}

TEST_F(Installation, WhatDoesNotComeLeavesTheProductUnrecordedAndIsTriedAgain)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1") + component("LedgerServer", "7.0.12", "B1"));
    server->addRule("page=LedgerServer.dll, status=404, times=1");
    EXPECT_EQ(7u, cycle());
    expectOutput(text({"    failed       http://" + server->host() +
                           "/Depot/LedgerServer/7.0.12B1_EN/LedgerServer.dll does not come: transfer status 13404",
                       "  failed       nothing is recorded of it; the next cycle tries again"}));
    expectOutput("0 done, 0 nothing to do, 0 later, 1 failed\r\n");
    expectOutput("Update cycle: http://" + server->host() +
                 "/Depot/LedgerServer/7.0.12B1_EN/LedgerServer.dll does not come: transfer status 13404\r\n");
    expectOutput("Update cycle: Ledger 7.0.12B1_EN failed, the next cycle tries again\r\n");
    EXPECT_EQ("", productVersion("Ledger"));
    EXPECT_FALSE(folder.exists("Components\\LedgerServer")); // whole or not at all
    EXPECT_FALSE(folder.exists("Download\\LedgerServer"));
    EXPECT_TRUE(folder.exists("Ledger.lst"));

    EXPECT_EQ(0u, cycle());
    expectOutput(text({"  LedgerCore 7.0.12B1_EN: install",
                       "    decided      nothing to do: installed 7.0.12B1 is what is asked for",
                       "  LedgerServer 7.0.12B1_EN: install", "    decided      now: not installed"}));
    EXPECT_EQ("7.0.12B1", productVersion("Ledger"));
}

TEST_F(Installation, AServerThatDoesNotRegisterFails)
{
    serveLedger(component("LedgerServer", "7.0.12", "B1"));
    server->addRule("page=LedgerServer.dll, body=no library");
    EXPECT_EQ(7u, cycle());
    expectOutput("    failed       Registration failed: status 470, in RT_File::Register, on " + kLedger +
                 "\\Bin\\LedgerServer.dll (Error Code:");
    EXPECT_EQ("", productVersion("Ledger"));
    EXPECT_EQ("", componentText("LedgerServer\\Ledger", "ComponentVersion"));
}

TEST_F(Installation, AnInstallerThatFailsFails)
{
    serveLedger(component("ReportsSetup", "2.4.3", "P1"));
    server->addRule("page=ReportsSetup.exe, body=no program");
    EXPECT_EQ(7u, cycle());
    expectOutput("    failed       Execution failed: status 477, in RT_File::Execute, on \"" +
                 (folder / "Components\\ReportsSetup\\2.4.3P1_EN\\ReportsSetup.exe") + "\" /AU_INSTALL\r\n");
    EXPECT_EQ("", productVersion("Ledger"));
}

struct BadDescription
{
    const char* text;
    const char* complaint;
};

class UnusableDescription : public Installation, public ::testing::WithParamInterface<BadDescription>
{
};

TEST_P(UnusableDescription, Fails)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"));
    webconf_sample::Rule rule;
    rule.page = "component.txt";
    rule.answer.body = GetParam().text;
    server->addRule(rule);
    EXPECT_EQ(7u, cycle());
    expectOutput(GetParam().complaint);
    EXPECT_FALSE(auttest::fileExists(kLedger));
    EXPECT_EQ("", productVersion("Ledger"));
}

INSTANTIATE_TEST_SUITE_P(
    Installation, UnusableDescription,
    ::testing::Values(BadDescription{"Path=C:\\x\n", " names no file"},
                      BadDescription{"File=..\n", "has a line that cannot be used: File=.."},
                      BadDescription{"File=..\\ledger.txt\n", "has a line that cannot be used: File=..\\ledger.txt"},
                      BadDescription{"Type=odd\nFile=ledger.txt\n", "has a line that cannot be used: Type=odd"},
                      BadDescription{"Odd=1\nFile=ledger.txt\n", "has a line that cannot be used: Odd=1"},
                      BadDescription{"Path={x\nFile=ledger.txt\n", "has a line that cannot be used: Path={x"},
                      BadDescription{"Path=%Unknown%\\x\nFile=ledger.txt\n", "its path leads nowhere: %Unknown%\\x"},
                      BadDescription{"Path=relative\nFile=ledger.txt\n", "its path leads nowhere: relative"},
                      BadDescription{"Path={HKLM\\No\\Where};%Unknown%\nFile=ledger.txt\n",
                                     "its path leads nowhere: {HKLM\\No\\Where};%Unknown%"},
                      BadDescription{"File=ledger.txt\n", "its path leads nowhere: "}));

TEST_F(Installation, NamesThatWouldLeaveTheirFolderFail)
{
    serveLedger(component("..\\..\\x", "7.0.12", "B1"));
    EXPECT_EQ(7u, cycle());
    expectOutput("    failed       its name or version is no folder name\r\n");
}

TEST_F(Installation, AForcedReleaseIsInstalledAgain)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"));
    ASSERT_EQ(0u, cycle());
    std::ofstream(kLedger + "\\ledger.txt") << "spoilt";
    serveLedger(component("LedgerCore", "7.0.12", "B1"), "FORCEREINSTALL");
    EXPECT_EQ(0u, cycle());
    expectOutput("  decided      now: to be installed again in any case\r\n");
    EXPECT_EQ(depotFile("LedgerCore/7.0.12B1_EN/ledger.txt"), auttest::readFile(kLedger + "\\ledger.txt"));
}

TEST_F(Installation, AComponentThatTheReleaseNoLongerHasIsRemoved)
{
    const std::string core = component("LedgerCore", "7.0.12", "B1");
    serveLedger(core + component("LedgerServer", "7.0.12", "B1"));
    ASSERT_EQ(0u, cycle());
    serveLedger(core + component("LedgerServer", "7.0.12", "B1", "REMOVE"));
    EXPECT_EQ(0u, cycle());
    expectOutput("    decided      now: installed 7.0.12B1 is the one to remove\r\n");
    EXPECT_EQ("LedgerCore", registry.readText("Products\\Ledger", "Components"));
    EXPECT_FALSE(machine.keyExists(kClass));
    EXPECT_FALSE(auttest::fileExists(kLedger + "\\Bin"));
    EXPECT_TRUE(auttest::fileExists(kLedger + "\\ledger.txt"));
}

TEST_F(Installation, AReleaseIsDisabled)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"));
    ASSERT_EQ(0u, cycle());
    serveLedger("", "DISABLE");
    EXPECT_EQ(0u, cycle());
    expectOutput(text({"  decided      now: enabled, to be disabled", "  disabled     Ledger"}));
    EXPECT_EQ(0u, registry.readNumber("Products\\Ledger", "Enable"));
    EXPECT_EQ(0u, cycle());
    expectOutput("  decided      nothing to do: not enabled\r\n");
}

TEST_F(Installation, APreInstallOnlyReleaseIsBroughtAndNotInstalled)
{
    const std::string core = component("LedgerCore", "7.0.12", "B1");
    serveLedger(core, "INSTALL", "<PreInstallOnly>TRUE</PreInstallOnly>");
    EXPECT_EQ(0u, cycle());
    expectOutput("  waits        pre-install only: its files are there, nothing is installed\r\n");
    EXPECT_TRUE(folder.exists("Components\\LedgerCore\\7.0.12B1_EN\\ledger.txt"));
    EXPECT_FALSE(auttest::fileExists(kLedger));

    server->clearRequests();
    serveLedger(core, "INSTALL", "<NoDownload>TRUE</NoDownload>");
    EXPECT_EQ(0u, cycle());
    EXPECT_EQ(1u, server->requests().size()); // the list
    EXPECT_TRUE(auttest::fileExists(kLedger + "\\ledger.txt"));
}

TEST_F(Installation, WhatMustNotBeDownloadedAndIsNotThereFails)
{
    serveLedger(component("LedgerCore", "7.0.12", "B1"), "INSTALL", "<NoDownload>TRUE</NoDownload>");
    EXPECT_EQ(7u, cycle());
    expectOutput("    failed       there is no " + (folder / "Components\\LedgerCore\\7.0.12B1_EN\\component.txt"));
    EXPECT_EQ(1u, server->requests().size());
}
