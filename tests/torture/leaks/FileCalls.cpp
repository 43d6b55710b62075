#include "7xAutoUpdateTools.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <windows.h>

#include <fstream>
#include <string>

namespace torture
{
namespace
{
constexpr unsigned int kReadShared = 0x20;

void addFiles(Calls& calls, const auttest::TestFolder& folder)
{
    const std::string a = folder / "files\\a.txt";
    const std::string b = folder / "files\\b.txt";
    const std::string missing = folder / "files\\missing.txt";
    const std::string target = folder.makeFolder("target");
    calls.push_back({"RT_File::Open, Read, Close", [=]
                     {
                         char buffer[100];
                         RT_File file(a.c_str());
                         file.Open(kReadShared);
                         file.Read(buffer, sizeof buffer);
                         file.Close();
                     }});
    calls.push_back({"RT_File::Open twice, closed by the destructor", [=]
                     {
                         RT_File file(a.c_str());
                         file.Open(kReadShared);
                         file.Open(kReadShared);
                     }});
    calls.push_back({"RT_File::Open of a missing file", [=] { RT_File(missing.c_str()).Open(kReadShared); }});
    calls.push_back({"RT_File::GetLength, GetCheckSum", [=]
                     {
                         RT_File file(a.c_str());
                         file.GetLength();
                         file.GetCheckSum();
                         RT_File(missing.c_str()).GetCheckSum();
                     }});
    calls.push_back({"RT_File::IsDifferent by everything", [=]
                     {
                         RT_File file(a.c_str());
                         RT_File other(b.c_str());
                         RT_File none(missing.c_str());
                         for (int when = 0; when <= WHEN_NEWER; ++when)
                         {
                             file.IsDifferent(other, static_cast<WHEN>(when));
                             file.IsDifferent(none, static_cast<WHEN>(when));
                         }
                         file.IsNewerByVersion(other);
                     }});
    calls.push_back({"RT_File::CopyTo, MoveTo, Remove", [=]
                     {
                         RT_File(a.c_str()).CopyTo(target.c_str(), WHEN_ALWAYS);
                         RT_File copy((target + "\\a.txt").c_str());
                         copy.MoveTo((target + "\\deeper").c_str(), OVERWRITE_NOW_ONLY);
                         RT_File((target + "\\deeper\\a.txt").c_str()).Remove(OVERWRITE_NOW_ONLY);
                     }});
    calls.push_back({"RT_File::CopyTo, MoveTo, Remove that fail", [=]
                     {
                         RT_File none(missing.c_str());
                         none.CopyTo(target.c_str(), WHEN_ALWAYS);
                         none.MoveTo(target.c_str(), OVERWRITE_NOW_ONLY);
                         none.Remove(OVERWRITE_NOW_ONLY);
                     }});
    calls.push_back({"RT_File::Share, UnShare", [=]
                     {
                         RT_File file(a.c_str());
                         file.Share();
                         file.UnShare();
                     }});
    calls.push_back({"RT_File::HasVersionInfo, VersionCmp, CFileVersion", []
                     {
                         char path[MAX_PATH] = "";
                         ::GetSystemDirectoryA(path, MAX_PATH);
                         const std::string kernel = std::string(path) + "\\kernel32.dll";
                         char version[MAX_PATH] = "";
                         int comparison = 0;
                         RT_File file(kernel.c_str());
                         file.HasVersionInfo(version);
                         file.VersionCmp("1.0", &comparison);
                         CFileVersion info;
                         info.Open(kernel.c_str());
                         info.GetFixedFileVersion();
                         info.Open("C:\\no such file");
                     }});
    calls.push_back({"FlushFile", [=]
                     {
                         FlushFile(a.c_str());
                         FlushFile(missing.c_str());
                     }});
}

void addFolders(Calls& calls, const auttest::TestFolder& folder)
{
    const std::string tree = folder / "tree";
    const std::string target = folder.makeFolder("trees");
    calls.push_back({"RT_Dir::CopyTo, MoveTo, IsEmpty, Remove", [=]
                     {
                         RT_Dir(tree.c_str()).CopyTo(target.c_str(), OVERWRITE_NOW_ONLY);
                         RT_Dir copy((target + "\\tree").c_str());
                         copy.IsEmpty(DIR_RECURSIVE);
                         copy.MoveTo((target + "\\moved").c_str(), OVERWRITE_NOW_ONLY);
                         RT_Dir((target + "\\moved\\tree").c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
                         RT_Dir((target + "\\moved").c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
                     }});
    calls.push_back({"RT_Dir on what is missing", [=]
                     {
                         RT_Dir missing((target + "\\missing").c_str());
                         missing.CopyTo(target.c_str(), OVERWRITE_NOW_ONLY);
                         missing.MoveTo(target.c_str(), OVERWRITE_NOW_ONLY);
                         missing.IsEmpty(DIR_RECURSIVE);
                         missing.Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
                     }});
}

CRelease* makeRelease()
{
    auto* const release = new CRelease;
    release->InitValues(1, "Marketing", "TECH", "Editor", "2.0", "B1", "EN", "INSTALL", "2026-01-01 00:00:00", 1, 0, 0,
                        false, false, false);
    release->GetComponentList().AddTail(new CComponent(2, "comp", "1.0", "B1", "EN", 0, "http://server/comp"));
    return release;
}

void addCatalogue(Calls& calls, const ClientInstallation& client)
{
    const auttest::TestFolder& folder = client.folder();
    const std::string stream = folder / "release.stream";
    calls.push_back({"SaveConfigFile, DeletePreviousRegistryEntries, FreeReleaseList", []
                     {
                         auto* list = new RT_List<CRelease*, CRelease*>;
                         CRelease* const release = makeRelease();
                         list->AddTail(release);
                         release->SetCertificateID(ClientInstallation::kCid);
                         SaveConfigFile(release);
                         UpdateCertificatesForInstalledProduct(release, true);
                         FindCIDinReleaseList(list, ClientInstallation::kCid);
                         DeletePreviousRegistryEntries(ClientInstallation::kCid);
                         IsCIDRevoked(ClientInstallation::kCid);
                         FreeReleaseList(list);
                     }});
    calls.push_back({"CRelease::Serialize both ways, IsUpdateNecessary", [=]
                     {
                         CRelease* const release = makeRelease();
                         {
                             std::ofstream out(stream);
                             release->Serialize(out);
                         }
                         CRelease read;
                         std::ifstream in(stream);
                         read.Serialize(in);
                         read.IsUpdateNecessary();
                         delete release;
                     }});
    calls.push_back({"CComponent's map file, level and entry", [=]
                     {
                         char text[MAX_PATH] = "";
                         CComponent component(5, "comp", "1.0", "B1", "EN", 0, "");
                         component.LoadMapFile(nullptr);
                         component.GetMapFileParam("server", text);
                         component.CheckMapFile(nullptr, false);
                         component.ReleaseMapFile();
                         component.InsertLevelIntoRegistry();
                         CRegProductForComponent entry("comp", "Editor", false, true);
                         entry.SetComponentVersion("1.0B1");
                         entry.Share();
                         entry.UnShare();
                     }});
    calls.push_back({"CComponent with a map file that is missing", []
                     {
                         CComponent component(5, "none", "1.0", "B1", "EN", 0, "");
                         component.CheckMapFile(nullptr, false);
                         component.ReleaseMapFile();
                     }});
}

void addEnvironment(Calls& calls, const ClientInstallation& client)
{
    const std::string mapFile = "MapFile.dll";
    calls.push_back({"LoadDLL, FreeDLL", [=] { FreeDLL(LoadDLL(mapFile.c_str(), nullptr)); }});
    calls.push_back({"LoadDLL of what is missing", [] { FreeDLL(LoadDLL("no such library.dll", nullptr)); }});
    calls.push_back({"client folders and disk", []
                     {
                         String path;
                         GetAUDataPath(path, 1);
                         GetAUDataPath(path, 0);
                         IsEnoughDiskSpace("C:\\", 5);
                         IsEnoughDiskSpace("Q:\\", 5);
                         char ini[MAX_PATH];
                         Get7xAutoUpdateIniFile(ini, sizeof ini);
                     }});
    calls.push_back({"module usage and the browser's cache", []
                     {
                         RT_List<String, String&> files;
                         GetModuleFiles(files);
                         GetCLSIDFromFileName(files, "x.ocx");
                         char path[MAX_PATH] = "";
                         SearchFileInDownloadedProgramFiles("x.ocx", path);
                         RemoveCABFromCLSID("{00000000-0000-0000-0000-000000000001}");
                     }});
    calls.push_back(
        {"RT_PathExpression", [=]
         {
             RT_PathExpression("n", "{HKLM\\Software\\Velmora\\7xAutoUpdate\\Path};%WINSYSDIR%\\x", "C:\\p").Evaluate();
             RT_PathExpression("n", "{HKLM\\no\\such\\key};{unfinished", "C:\\p").Evaluate();
         }});
    const std::string folder = client.folder().path();
    calls.push_back({"registry keys, read and written", []
                     {
                         RT_List<String, String&> names;
                         CRegAutoUpdate(true).GetKernelPath();
                         CRegAutoUpdate(false).SetZone("z");
                         CRegConfig(false).SetFlag("flag", true);
                         CRegNetwork network(false);
                         network.SetProxyAuthentication("user", "password");
                         char user[MAX_PATH] = "";
                         char password[MAX_PATH] = "";
                         network.GetProxyAuthentication(user, password);
                         CRegProduct product("Editor", false);
                         product.SetCertificateID("c");
                         product.GetProductList(names);
                         CRegLogon logon(false);
                         logon.SetLogonName("name");
                         logon.GetLogonNameList(names);
                         logon.RemoveLogonName("name");
                         CRegInProgress(false).SetPhase(0);
                         CRegBase missing("Software\\no such key", true);
                         missing.GetSubKeys(names);
                         missing.GetValues(names);
                     }});
    calls.push_back({"Log and a result with a system error", []
                     {
                         Log(0, "an event of the torture");
                         RT_RESULT record;
                         record.Set(1, "action", "function", 5L, "object");
                         record.GetErrorMessage("");
                     }});
}
} // namespace

void addFileCalls(Calls& calls, const ClientInstallation& client)
{
    addFiles(calls, client.folder());
    addFolders(calls, client.folder());
    addCatalogue(calls, client);
    addEnvironment(calls, client);
}
} // namespace torture
