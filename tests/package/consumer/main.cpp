// A program of another project: uses a little of everything that crosses the library's boundary.
#include <7xAutoUpdateTools.h>

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace
{
int failures = 0;

void expect(bool holds, const char* claim)
{
    if (holds)
        return;
    ++failures;
    std::printf("does not hold: %s\n", claim);
}
} // namespace

int main()
{
    // An imported class, with memory that goes from one module to the other.
    String name("tools");
    name += " of the client";
    expect(name == "TOOLS OF THE CLIENT", "a String compares without regard to case");

    // A template that is compiled here.
    RT_List<String, const String&> list;
    list.AddTail(name);
    expect(list.GetCount() == 1, "a list holds what was added");

    // Imported data.
    expect(result != nullptr, "the result record is there");

    // An imported function.
    expect(IsVersionNewer("1.2.3.3", "1.2.3.4"), "1.2.3.4 is newer than 1.2.3.3");

    // A class over the registry.
    {
        CRegAutoUpdate settings(false);
        settings.SetDataPath("C:\\data");
    }
    CRegAutoUpdate settings(true);
    expect(std::strcmp(settings.GetDataPath(), "C:\\data") == 0, "a setting is read back");

    // The download library is found by its name alone.
    expect(::LoadLibraryA("7xFileTransfer.dll") != nullptr, "the download library can be loaded");
    return failures;
}
