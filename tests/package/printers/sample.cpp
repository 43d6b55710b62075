// A process to look into with the debugger: fills a few globals, says that it is ready, and waits for its input to end.
#include <7xAutoUpdateTools.h>

#include <cstdio>

String sampleText("Caf\xE9 \"au lait\"");
String sampleEmpty;
RT_List<String, const String&> sampleNames;
RT_List<int, int> sampleNothing;
CRelease* sampleRelease;
CComponent* sampleComponent;

int main()
{
    sampleNames.AddTail("first");
    sampleNames.AddTail("second");

    sampleRelease = new CRelease;
    const __int64 noDate = 0;
    sampleRelease->InitValues(1, "Ledger for Windows", "LedgerTech", "Ledger", "7.0.12", "B1", "EN", 0, noDate, 1, 22, 30,
                              false, false, false);
    sampleRelease->SetCertificateID("Q0lE");
    sampleComponent = new CComponent;
    sampleComponent->InitValues(2, "LedgerCore", "7.0.12", "B1", "EN", 2, "/Depot/LedgerCore");
    sampleRelease->GetComponentList().AddTail(sampleComponent);
    auto* removed = new CComponent;
    removed->InitValues(3, "LedgerHelp", "6.5", "", "", 1, "");
    sampleRelease->GetComponentList().AddTail(removed);

    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF)
        ;
    delete sampleRelease;
}
