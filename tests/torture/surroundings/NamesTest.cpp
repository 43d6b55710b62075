// Names that come from a server and would lead out of the client's folders.

#include "7xAutoUpdateTools.h"
#include "tests/support/LogFile.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <comdef.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace
{
using Names = std::vector<std::string>;

/// Everything below a folder, with what the files hold.
void listInto(Names& all, const std::string& folder)
{
    WIN32_FIND_DATAA found{};
    const HANDLE search = ::FindFirstFileA((folder + "\\*").c_str(), &found);
    for (bool more = search != INVALID_HANDLE_VALUE; more; more = ::FindNextFileA(search, &found) != FALSE)
    {
        const std::string name = found.cFileName;
        if (name == "." || name == "..")
            continue;
        const std::string path = folder + "\\" + name;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        {
            all.push_back(path);
            listInto(all, path);
        }
        else
            all.push_back(path + "=" + auttest::readFile(path));
    }
    if (search != INVALID_HANDLE_VALUE)
        ::FindClose(search);
}

Names namesIn(const std::string& folder)
{
    Names names;
    WIN32_FIND_DATAA found{};
    const HANDLE search = ::FindFirstFileA((folder + "\\*").c_str(), &found);
    for (bool more = search != INVALID_HANDLE_VALUE; more; more = ::FindNextFileA(search, &found) != FALSE)
        names.emplace_back(found.cFileName);
    if (search != INVALID_HANDLE_VALUE)
        ::FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

std::string escaped(const std::string& text)
{
    std::string out;
    for (const char c : text)
        out += c == '&' ? std::string("&amp;") : c == '<' ? std::string("&lt;") : std::string(1, c);
    return out;
}

struct EvilName
{
    std::string text;
    bool climbs;   ///< leads out of whatever folder it is put behind
    bool isDevice; ///< in whatever folder
};

std::vector<EvilName> evilNames()
{
    return {{"..", true, false},
            {"..\\", true, false},
            {"..\\victim", true, false},
            {"..\\..\\victim", true, false},
            {"..\\..\\..\\victim", true, false},
            {"../../victim", true, false},
            {"a\\..\\..\\..\\victim", true, false},
            {"a/../../../victim", true, false},
            {"..\\..\\..\\..\\..\\..\\..\\..\\victim", true, false},
            {".. \\.. \\victim", true, false},
            {"C:victim", true, false},
            {"C:\\victim", true, false},
            {"victim:stream", true, false},
            {"\\\\srv\\victim", false, false},
            {"\\victim", false, false},
            {"a/victim", false, false},
            {"NUL", false, true},
            {"con", false, true},
            {"COM1.txt", false, true},
            {"lpt9", false, true},
            {"victim.", false, false},
            {"victim ", false, false},
            {"victim. .", false, false},
            {std::string(10000, 'v'), false, false}};
}

/// Something of the library that takes a name from a server.
struct Taker
{
    const char* what;
    std::function<void(const std::string& name)> take;
};

class EvilNames : public ::testing::Test
{
protected:
    EvilNames()
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        // The client's folders lie two deep, with what a name might hit around them.
        m_client.registry().write("", "DataPath", m_client.folder().makeFolder("in\\client\\data"));
        m_client.registry().write("", "CompPath", m_client.folder().makeFolder("in\\client\\components"));
        m_client.folder().makeFolder("in\\client\\components\\comp");
        for (const char* folder : {"", "in\\", "in\\client\\"})
            for (const char* name : {"victim\\kept.txt", "victim.dat", "victim.lst", "victim_productList.xml"})
                m_client.folder().writeFile(std::string(folder) + name, "kept");
    }
    ~EvilNames() override { ::CoUninitialize(); }

    /// What must stay as it is: all but the two folders that the client may write to.
    Names outside() const
    {
        Names all;
        listInto(all, m_client.folder().path());
        const std::string data = m_client.folder() / "in\\client\\data\\";
        const std::string components = m_client.folder() / "in\\client\\components\\";
        all.erase(std::remove_if(all.begin(), all.end(),
                                 [&](const std::string& entry)
                                 { return entry.find(data) == 0 || entry.find(components) == 0; }),
                  all.end());
        for (const std::string& name : namesIn("C:"))
            all.push_back("C:\\" + name);
        std::sort(all.begin(), all.end());
        return all;
    }

    void parse(const std::string& product, const std::string& component) const
    {
        webconf_sample::Rule rule;
        rule.page = "evil.asp";
        rule.answer.body = "<r><Data><NewData><ProductList><Product><Name>" + escaped(product) +
                           "</Name><Version>1.0</Version><Build>B1</Build><ComponentList><Component><Name>" +
                           escaped(component) + "</Name><Version>" + escaped(component) +
                           "</Version></Component></ComponentList></Product></ProductList></NewData></Data></r>";
        m_client.server().clearRules();
        m_client.server().addRule(rule);
        auto* list = new RT_List<CRelease*, CRelease*>;
        {
            phase1xml document(m_client.server().url("evil.asp").c_str());
            EXPECT_EQ(1, document.GetXMLDoc(nullptr));
            document.ParseXMLDocument(list, m_client.kCid);
        }
        for (POSITION at = list->GetHeadPosition(); at != nullptr;)
        {
            CRelease* const release = list->GetNext(at);
            SaveConfigFile(release);
            UpdateCertificatesForInstalledProduct(release, true);
            for (POSITION next = release->GetComponentList().GetHeadPosition(); next != nullptr;)
            {
                CComponent* const each = release->GetComponentList().GetNext(next);
                each->LoadMapFile(nullptr);
                each->ReleaseMapFile();
                each->InsertLevelIntoRegistry();
            }
        }
        FreeReleaseList(list);
    }

    std::vector<Taker> takers() const
    {
        const std::string host = m_client.server().host();
        const char* const cid = m_client.kCid;
        return {
            {"cache: certificate ID",
             [=](const std::string& name) { SetDataInCache(host.c_str(), name.c_str(), "Editor", "", "evil"); }},
            {"cache: product",
             [=](const std::string& name) { SetDataInCache(host.c_str(), cid, name.c_str(), "", "evil"); }},
            {"cache: component",
             [=](const std::string& name) { SetDataInCache(host.c_str(), cid, "Editor", name.c_str(), "evil"); }},
            {"cache: host", [=](const std::string& name) { SetDataInCache(name.c_str(), cid, "Editor", "", "evil"); }},
            {"map file: component",
             [](const std::string& name)
             {
                 CComponent component(5, name.c_str(), "1.0", "B1", "EN", 0, "");
                 component.LoadMapFile(nullptr);
                 component.ReleaseMapFile();
             }},
            {"map file: version",
             [](const std::string& name)
             {
                 CComponent component(5, "comp", name.c_str(), "", "", 0, "");
                 component.LoadMapFile(nullptr);
                 component.ReleaseMapFile();
             }},
            {"levels: dropped level",
             [this](const std::string& name)
             {
                 m_client.registry().write("Components", "Max_Levels", 1);
                 m_client.registry().write("Components\\comp", "Most_Recent_levels", "0.9," + name);
                 CComponent(5, "comp", "1.0", "B1", "EN", 0, "").InsertLevelIntoRegistry();
             }},
            {"release file: name",
             [cid](const std::string& name)
             {
                 CRelease release;
                 release.InitValues(1, "M", "T", name.c_str(), "1.0", "B1", "EN", "INSTALL", "", 1, 0, 0, false, false,
                                    false);
                 release.SetCertificateID(cid);
                 SaveConfigFile(&release);
             }},
            {"product list: prefix",
             [this](const std::string& name)
             {
                 phase1xml list(m_client.server().url("wcfgGetProductList.asp").c_str(), name.c_str());
                 RT_List<CRelease*, CRelease*> none;
                 if (list.GetXMLDoc(nullptr) == 1)
                     try
                     {
                         list.IsNewConfiguration(&none, "");
                     }
                     catch (const _com_error&)
                     {
                     }
             }},
            {"product list: product", [this](const std::string& name) { parse(name, "comp"); }},
            {"product list: component", [this](const std::string& name) { parse("Editor", name); }},
        };
    }

    const torture::ClientInstallation m_client;
};
} // namespace

TEST_F(EvilNames, LeadNowhereAndAreLogged)
{
    int harmed = 0;
    int silent = 0;
    int tried = 0;
    int next = 0;
    Names before = outside();
    for (const Taker& taker : takers())
        for (const EvilName& name : evilNames())
        {
            if (!torture::isLong() && next++ % 5 != 0) // every name meets a few takers, every taker a few names
                continue;
            const auttest::LogFile log;
            taker.take(name.text);
            const Names after = outside();
            const std::string shown = std::string(taker.what) + " \"" + name.text.substr(0, 60) + "\"";
            EXPECT_EQ(before, after) << shown;
            harmed += before == after ? 0 : 1;
            bool logged = false;
            for (const auttest::LogEvent& event : log.events())
                logged = logged || event.type == "Error";
            EXPECT_TRUE(logged || !name.climbs) << shown << " is not in the log";
            silent += logged || !name.climbs ? 0 : 1;
            ++tried;
            before = after;
        }
    torture::count(std::to_string(tried) + " evil names that reach outside of the client's folders", harmed, 0);
    torture::count("evil names refused without a level-2 event", silent, 0);
    const auttest::Registry machine;
    EXPECT_EQ((Names{"7xAutoUpdate"}), machine.subkeys("Software\\Velmora"));
}
