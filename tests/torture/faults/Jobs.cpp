#include "tests/torture/faults/Jobs.h"

#include "catalogue/ReleaseLists.h"
#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"
#include "foundation/EventLog.h"
#include "productlist/phase1xml.h"
#include "registry/CRegProductForComponent.h"
#include "tests/torture/faults/Injector.h"
#include "webconf/DataCaching.h"

#include <windows.h>

#include <comdef.h>
#include <objbase.h>

#include <cstdio>
#include <exception>
#include <iterator>

namespace faults
{
namespace
{
using Begin = std::function<void()>;

class Apartment
{
public:
    Apartment() { ::CoInitialize(nullptr); }
    ~Apartment() { ::CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

int logEvents(const Job& job, const Begin& begin)
{
    begin();
    for (int i = 0; i < 4; ++i)
    {
        Log(0, "%s %d", job.extra.c_str(), i);
        g_progress = i + 1;
    }
    return 1;
}

int saveCache(const Job&, const Begin& begin)
{
    const std::string content = newContent();
    begin();
    SetDataInCache("server", "CID", "Ledger", "", content.c_str());
    return 1;
}

int updateConfiguration(const Job& job, const Begin& begin)
{
    const Apartment apartment;
    DataCaching request;
    begin();
    return request.GetAUData(job.extra.c_str()) ? 1 : 0;
}

int acceptList(const Job& job, const Begin& begin)
{
    const Apartment apartment;
    phase1xml list(("http://" + job.extra + "/list").c_str());
    if (list.GetXMLDoc(nullptr) == 0)
        return 2;
    begin();
    return list.IsNewConfiguration(nullptr, "CID");
}

int copyTree(const Job& job, const Begin& begin)
{
    RT_Dir tree((job.folder + "\\source\\Tree").c_str());
    begin();
    return tree.CopyTo((job.folder + "\\target").c_str(), OVERWRITE_NOW_ONLY);
}

int moveTree(const Job& job, const Begin& begin)
{
    RT_Dir tree((job.folder + "\\source\\Tree").c_str());
    begin();
    return tree.MoveTo((job.folder + "\\target").c_str(), OVERWRITE_NOW_ONLY);
}

int removeTree(const Job& job, const Begin& begin)
{
    RT_Dir tree((job.folder + "\\source\\Tree").c_str());
    begin();
    return tree.Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
}

template <WHEN when> int copyFile(const Job& job, const Begin& begin)
{
    RT_File file((job.folder + "\\source\\faults.bin").c_str());
    begin();
    return file.CopyTo((job.folder + "\\target").c_str(), when) ? 1 : 0;
}

template <OVERWRITEFLAG flag> int moveFile(const Job& job, const Begin& begin)
{
    RT_File file((job.folder + "\\source\\faults.bin").c_str());
    begin();
    return file.MoveTo((job.folder + "\\target").c_str(), flag) ? 1 : 0;
}

int insertLevel(const Job&, const Begin& begin)
{
    CComponent component(1, "Reader", "4.0", "", "", 0, "");
    begin();
    component.InsertLevelIntoRegistry();
    return 1;
}

int share(const Job&, const Begin& begin)
{
    CRegProductForComponent entry("Reader", "Ledger", false, false);
    begin();
    return entry.Share() ? 1 : 0;
}

int unshare(const Job&, const Begin& begin)
{
    CRegProductForComponent entry("Reader", "Ledger", false, true);
    begin();
    return entry.UnShare() ? 1 : 0;
}

int saveRelease(const Job&, const Begin& begin)
{
    CRelease release(7, "Marketing", "Technical", "Editor", "2.2", "B05", "EN", 0, 0, 1);
    release.SetCertificateID("CID");
    for (int i = 0; i < 150; ++i)
        release.GetComponentList().AddTail(
            new CComponent(i, "Component", "1.0", "B2", "EN", 0, "http://host/component"));
    begin();
    return SaveConfigFile(&release) ? 1 : 0;
}

struct Row
{
    const char* name;
    int (*function)(const Job&, const Begin&);
};

constexpr Row kRows[] = {{"log", logEvents},
                         {"cache", saveCache},
                         {"configuration", updateConfiguration},
                         {"list", acceptList},
                         {"tree", copyTree},
                         {"movetree", moveTree},
                         {"removetree", removeTree},
                         {"always", copyFile<WHEN_ALWAYS>},
                         {"newer", copyFile<WHEN_NEWER>},
                         {"move", moveFile<OVERWRITE_NOW_ONLY>},
                         {"movelater", moveFile<OVERWRITE_AT_REBOOT>},
                         {"level", insertLevel},
                         {"share", share},
                         {"unshare", unshare},
                         {"release", saveRelease}};
} // namespace

int run(const Job& job, const std::function<void()>& begin)
try
{
    for (const Row& row : kRows)
    {
        if (job.name == row.name)
            return row.function(job, begin);
    }
    return 3;
}
catch (const _com_error&)
{
    return -1;
}
catch (const std::exception&)
{
    return -1;
}

std::string newContent()
{
    std::string content;
    for (int i = 0; content.size() < 150000; ++i)
        content += "line " + std::to_string(i) + " of the new content\n";
    return content;
}
} // namespace faults
