#include "catalogue/CRelease.h"
#include "tests/torture/faults/Scenario.h"

#include <windows.h>

#include <fstream>

// What is recorded in the registry, with the files that belong to it.

namespace faults
{
namespace
{
class Level : public Scenario
{
public:
    void prepare() override
    {
        Scenario::prepare();
        m_registry.write("", "CompPath", m_folder->makeFolder("components"));
        m_registry.write("Components", "Max_Levels", 2);
        m_registry.write(kKey, kLevels, kOld);
        for (const char* const level : {"3.0", "2.0"})
        {
            for (const char* const file : {"one.dll", "two.dll"})
                m_folder->writeFile(file_(level, file), level);
        }
    }
    Job job() const override { return {"level", m_folder->path(), ""}; }
    void intact(Problems& problems) override
    {
        const std::string levels = m_registry.readText(kKey, kLevels).value_or("");
        problems.expect(levels == kOld || levels == kNew, "the levels are " + levels);
        problems.expect(has("3.0"), "the folder of a level that is kept has lost a file");
        // The list is written before the folder goes: what is no longer listed may stay on the disk.
        problems.expect(levels == kNew || has("2.0"), "the folder of a listed level has lost a file");
    }
    bool isDone() override { return m_registry.readText(kKey, kLevels) == kNew; }

private:
    static constexpr char kKey[] = "Components\\Reader";
    static constexpr char kLevels[] = "Most_Recent_levels";
    static constexpr char kOld[] = "3.0,2.0";
    static constexpr char kNew[] = "4.0,3.0";
    static std::string file_(const std::string& level, const std::string& name)
    {
        return "components\\Reader\\" + level + "\\" + name;
    }
    bool has(const char* level) const
    {
        return read(file_(level, "one.dll")) == level && read(file_(level, "two.dll")) == level;
    }
};

/// The entries of a component. What must never get lost is checked here; docs/reliability.md says what the order of the
/// steps can cost.
class SharedComponent : public Scenario
{
protected:
    static constexpr char kOwn[] = "Components\\Reader\\Ledger";
    static constexpr char kCommon[] = "Components\\Reader\\Shared";

    void writeEntry(const char* key) const
    {
        m_registry.write(key, "Path", "C:\\Reader");
        writeVersion(key);
    }
    void writeVersion(const char* key) const
    {
        m_registry.write(key, "ComponentVersion", "1.0B2");
        m_registry.write(key, "Language", "EN");
        m_registry.write(key, "Enable", 1);
    }
    bool isEntry(const char* key) const { return m_registry.readText(key, "Path") == "C:\\Reader" && hasVersion(key); }
    bool hasVersion(const char* key) const
    {
        return m_registry.readText(key, "ComponentVersion") == "1.0B2" &&
               m_registry.readText(key, "Language") == "EN" && m_registry.readNumber(key, "Enable") == 1U;
    }
    bool isShared(const char* key) const { return m_registry.readNumber(key, "Shared").value_or(0) != 0; }
};

class Sharing : public SharedComponent
{
public:
    void prepare() override
    {
        Scenario::prepare();
        writeEntry(kOwn);
    }
    Job job() const override { return {"share", m_folder->path(), ""}; }
    void intact(Problems& problems) override
    {
        problems.expect(hasVersion(kOwn), "the product's entry has lost its version");
        problems.expect(isEntry(kOwn) || !m_registry.valueExists(kOwn, "Path"), "the path is half written");
    }
    bool isDone() override { return isShared(kOwn) && isShared(kCommon) && isEntry(kCommon); }
    /// Cut short, it is done as far as its own mark says. The path, and what the common entry does not have yet, come
    /// back with the next installation.
    void complete(Problems& problems) override
    {
        problems.expect(isShared(kOwn), "done again, the component is not shared");
        problems.expect(hasVersion(kOwn), "done again, the product's entry has lost its version");
    }
};

class Unsharing : public SharedComponent
{
public:
    explicit Unsharing(bool isLast) : m_isLast(isLast) {}
    void prepare() override
    {
        Scenario::prepare();
        m_registry.write(kOwn, "Shared", 1);
        m_registry.write(kCommon, "Shared", 1);
        writeEntry(kCommon);
        if (!m_isLast)
            m_registry.write("Components\\Reader\\Planner", "Shared", 1);
    }
    Job job() const override { return {"unshare", m_folder->path(), ""}; }
    void intact(Problems& problems) override
    {
        if (!m_isLast)
            problems.expect(isEntry(kCommon) && isShared(kCommon), "the common entry of the others has changed");
    }
    bool isDone() override
    {
        return !m_registry.valueExists(kOwn, "Shared") && isEntry(kOwn) &&
               (!m_isLast || !m_registry.keyExists(kCommon));
    }
    /// Cut short, it is done as far as the entry's own mark says; what it does not have yet comes back with the next
    /// installation.
    void complete(Problems& problems) override
    {
        problems.expect(!m_registry.valueExists(kOwn, "Shared"), "done again, the component is shared");
        // One that could not be deleted, which was told, stays: the entry counts as not shared by then.
        problems.expect(!m_isLast || m_failed || !m_registry.keyExists(kCommon),
                        "done again, the common entry is there");
    }

private:
    const bool m_isLast;
};

class Release : public Scenario
{
public:
    void prepare() override
    {
        Scenario::prepare();
        m_folder->writeFile(kFile, "old");
        m_registry.write(kKey, "", "2.1B05_EN");
        m_registry.write(kKey, "CID", "CID");
    }
    Job job() const override { return {"release", m_folder->path(), ""}; }
    void intact(Problems& problems) override
    {
        // Written in place: cut off, it must be refused, so that the release is built anew.
        CRelease release;
        std::ifstream file(path(kFile));
        const bool isRead = release.Serialize(file) == 1;
        problems.expect(!isRead || isWhole(release), "half a release is taken for a whole one");
        const bool isNoted = m_registry.readText(kKey, "") == "2.2B05_EN";
        problems.expect(!isNoted || (isRead && isWhole(release)), "noted before it is whole");
    }
    bool isDone() override
    {
        CRelease release;
        std::ifstream file(path(kFile));
        return release.Serialize(file) == 1 && isWhole(release) && m_registry.readText(kKey, "") == "2.2B05_EN" &&
               m_registry.readText(kKey, "CID") == "CID";
    }

private:
    static constexpr char kFile[] = "data\\Editor.lst";
    static constexpr char kKey[] = "Data\\WebConf\\Editor";
    static bool isWhole(const CRelease& release)
    {
        return release.GetComponentList().GetCount() == 150 && std::string("Marketing") == release.GetMarketingName() &&
               std::string("Technical") == release.GetTechnicalName();
    }
};
} // namespace

std::unique_ptr<Scenario> makeLevel() { return std::make_unique<Level>(); }
std::unique_ptr<Scenario> makeShare() { return std::make_unique<Sharing>(); }
std::unique_ptr<Scenario> makeUnshare() { return std::make_unique<Unsharing>(false); }
std::unique_ptr<Scenario> makeLastUnshare() { return std::make_unique<Unsharing>(true); }
std::unique_ptr<Scenario> makeRelease() { return std::make_unique<Release>(); }
} // namespace faults
