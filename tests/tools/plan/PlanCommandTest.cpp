#include "tests/catalogue/DecisionFixture.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "tests/tools/Autool.h"
#include "tests/tools/Traces.h"

#include <7xAutoUpdateTools.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

using auttest::AutoolRun;
using auttest::runAutoolProgram;

namespace
{
const char kList[] = R"(<r><Data><NewData><ProductList>
  <Product><Name>Ledger</Name><Language>EN</Language><Version>7.0.12</Version><Build>_B1</Build><Action>INSTALL</Action>
    <ComponentList><Component><Name>Core</Name><Language>EN</Language><Version>7.0.12</Version><Build>B1</Build>
      <Action>INSTALL</Action><Shared>True</Shared></Component></ComponentList></Product>
  <Product><Name>Reports</Name><Language>EN</Language><Version>3</Version><Build>_B1</Build><Action>REMOVE</Action></Product>
</ProductList></NewData></Data></r>)";

const char kHours[] = "<wcfgResponse><Data><ComponentList><Component><Configuration><AutomaticUpdateData>"
                      "<Install><InstallStart>22</InstallStart><InstallEnd>6</InstallEnd></Install>"
                      "</AutomaticUpdateData></Configuration></Component></ComponentList></Data></wcfgResponse>";

/// A client with two delivered releases, one of them local.
class PlanCommand : public ::testing::Test
{
protected:
    /// The first program of a Windows session may start others that inherit its files and outlive it.
    static void SetUpTestSuite() { ::GetDesktopWindow(); }

    PlanCommand()
    {
        registry.write("", "Path", folder / "Client");
        registry.write("", "DataPath", folder / "Data");
        registry.write("Config", "TestEnv", 5u); // everything that is logged at all
        folder.makeFolder("Client");
        folder.makeFolder("Data");
        save("Ledger.lst", "Ledger", "TGVkZ2VyLUNJRC0x");
        save("local_Words.lst", "Words", "");
        auttest::writeShared(registry, "Core", {"7.0.13B2", "EN"}, {"Reports"});
    }
    void save(const std::string& file, const char* name, const char* certificateId) const
    {
        CRelease release;
        release.InitValues(1, "", "", name, "7.0.12", "_B1", "EN", 0, 0, 1, 0, 24, false, false, false);
        release.SetCertificateID(certificateId);
        auto* const component = new CComponent(3, "Core", "7.0.12", "B1", "EN", 0, "http://server/core");
        component->SetShared(1);
        release.GetComponentList().AddTail(component);
        std::ofstream stream(folder / ("Data\\" + file));
        ASSERT_EQ(1, release.Serialize(stream));
    }
    static nlohmann::json parsed(const AutoolRun& run) { return nlohmann::json::parse(run.out, nullptr, false); }

    const auttest::ClientRegistry registry;
    const auttest::TestFolder folder;
};

TEST_F(PlanCommand, ChangesNeitherRegistryNorFilesNorLog)
{
    registry.write("IN_PROGRESS", "Phase", 3u); // in which the library itself would share the component
    folder.writeFile("list.xml", kList);
    folder.writeFile("Data\\cut.lst", "0\nB1\n");
    runAutoolProgram("plan"); // the first program of a user makes the user's empty log folder
    const auttest::Traces before({folder.path(), auttest::userFolder()});
    EXPECT_EQ(1, runAutoolProgram("plan").code);
    EXPECT_EQ(1, runAutoolProgram("plan --json --at \"2030-01-01 12:00\"").code);
    EXPECT_EQ(0, runAutoolProgram("plan --products \"" + folder / "list.xml" + "\"").code);
    EXPECT_EQ("", before.differenceTo(auttest::Traces({folder.path(), auttest::userFolder()})));
}

TEST_F(PlanCommand, ShowsReleasesComponentsAndReasonsWithinAHundredColumns)
{
    const AutoolRun run = runAutoolProgram("plan");
    EXPECT_EQ(0, run.code) << run.error;
    EXPECT_NE(std::string::npos, run.out.find("Ledger")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("not installed")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("Releases: 2 install")) << run.out;
    for (const std::string& line : auttest::linesOf(run.out))
        EXPECT_LE(line.size(), 100u) << line;
    EXPECT_EQ("", run.error);
}

TEST_F(PlanCommand, HoldsForTheHoursOfTheClientsConfiguration)
{
    folder.writeFile("Client\\AUKernelData.xml", kHours);
    const auto day = parsed(runAutoolProgram("plan --json --at \"2026-06-10 12:34\""));
    ASSERT_TRUE(day.is_object());
    EXPECT_EQ("hold", day["releases"][0]["decision"]);
    EXPECT_EQ("2026-06-10 22:00:00", day["releases"][0]["values"]["next permitted"]);
    EXPECT_EQ("22-6 o'clock", day["releases"][0]["values"]["installation hours"]);
    EXPECT_TRUE(day["releases"][0]["pending"]);
    const auto night = parsed(runAutoolProgram("plan --json --at \"2026-06-10 23:00\""));
    EXPECT_EQ("install", night["releases"][0]["decision"]);
}

TEST_F(PlanCommand, TellsTheTimeByTheServersClock)
{
    const __int64 ahead = 3600;
    registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD, {reinterpret_cast<const char*>(&ahead), sizeof ahead});
    const auto plan = parsed(runAutoolProgram("plan --json --at \"2026-06-10 12:00\""));
    EXPECT_EQ("2026-06-10 12:00:00", plan["time"]);
    EXPECT_EQ("2026-06-10 13:00:00", plan["serverTime"]);
}

TEST_F(PlanCommand, NamesTheSharedVersionThatTakesThePlace)
{
    const auto plan = parsed(runAutoolProgram("plan --json"));
    const auto& component = plan["releases"][0]["components"][0];
    EXPECT_EQ("7.0.13B2_EN", component["version"]);
    EXPECT_EQ("7.0.12B1_EN", component["values"]["replaces"]);
    EXPECT_EQ("7.0.13B2", component["values"]["shared version"]);
}

TEST_F(PlanCommand, NotesARevokedCertificate)
{
    registry.write("Config\\Cache\\Certificates\\TGVkZ2VyLUNJRC0x", "Status", "Revoked");
    const AutoolRun run = runAutoolProgram("plan");
    EXPECT_NE(std::string::npos, run.out.find("revoked")) << run.out;
}

TEST_F(PlanCommand, LeavesOutWhatCannotBeReadAndSaysSo)
{
    folder.writeFile("Data\\Broken.lst", "0\nB1\n7\nEN\n");
    registry.write("Data\\WebConf\\Gone", "X", "X");
    const AutoolRun run = runAutoolProgram("plan");
    EXPECT_EQ(1, run.code);
    EXPECT_NE(std::string::npos, run.out.find("Broken.lst: no release record")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("Gone: noted in the registry as delivered, but its file is missing"))
        << run.out;
}

TEST_F(PlanCommand, ReadsAnotherFolder)
{
    folder.makeFolder("Empty");
    const AutoolRun run = runAutoolProgram("plan --data \"" + folder / "Empty" + "\"");
    EXPECT_EQ(0, run.code);
    EXPECT_NE(std::string::npos, run.out.find("No releases")) << run.out;
}

TEST_F(PlanCommand, CopesWithValuesOfWrongTypesAndLengths)
{
    const std::string longText(10'000, 'v');
    registry.write("Products\\Ledger", "Version", longText);
    registry.writeRaw("Products\\Words", "Version", REG_BINARY, std::string("\x01\x80\xff", 3));
    registry.writeRaw("Components\\Core\\Ledger", "Enable", REG_SZ, "x");
    registry.writeRaw("Config", "DiffWebConfDate", REG_BINARY, "abc");
    registry.write("IN_PROGRESS", "Phase", "three");
    const AutoolRun run = runAutoolProgram("plan --json");
    EXPECT_EQ(0, run.code) << run.error;
    EXPECT_FALSE(parsed(run).is_discarded());
    EXPECT_EQ(0, runAutoolProgram("plan").code);
}

TEST_F(PlanCommand, RefusesWrongUse)
{
    EXPECT_EQ(2, runAutoolProgram("plan --at yesterday").code);
    EXPECT_EQ(2, runAutoolProgram("plan --at \"2026-02-30 10:00\"").code);
    EXPECT_EQ(2, runAutoolProgram("plan --products a --data b").code);
    EXPECT_EQ(2, runAutoolProgram("plan --wrong").code);
}

TEST_F(PlanCommand, SaysWhyItCannotRun)
{
    const auto refusal = [](const std::string& arguments)
    {
        const AutoolRun run = runAutoolProgram(arguments);
        EXPECT_EQ(3, run.code) << run.out;
        EXPECT_EQ("", run.out);
        return run.error;
    };
    EXPECT_NE(std::string::npos, refusal("plan --data \"" + folder / "missing" + "\"").find("there is no folder"));
    EXPECT_NE(std::string::npos, refusal("plan --products missing.xml").find("there is no such file"));
    registry.removeValue("", "DataPath");
    EXPECT_NE(std::string::npos, refusal("plan").find("data folder is not set"));
}

TEST(PlanWithoutClient, CannotRunButPlansForAList)
{
    {
        const auttest::ClientRegistry none;
    }
    auttest::Registry().removeKey(auttest::ClientRegistry::kPath);
    const auttest::TestFolder folder;
    folder.writeFile("list.xml", kList);
    const AutoolRun none = runAutoolProgram("plan");
    EXPECT_EQ(3, none.code);
    EXPECT_NE(std::string::npos, none.error.find("this machine has no client")) << none.error;
    const AutoolRun list = runAutoolProgram("plan --products \"" + folder / "list.xml" + "\"");
    EXPECT_EQ(0, list.code) << list.error;
    EXPECT_NE(std::string::npos, list.out.find("This machine has no client: nothing counts as installed.")) << list.out;
}
} // namespace
