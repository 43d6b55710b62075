#ifndef AUTOOL_PLAN_ASKED_H
#define AUTOOL_PLAN_ASKED_H

#include <string>
#include <vector>

namespace autool
{
// What a product list asks for. Plain records of our own: the library's release logs while it is read and destroyed,
// and looking must leave no trace. Texts are in the ANSI code page, cut as the library cuts them.

/// The actions of the catalogue; a record may hold any other number, which asks for nothing.
enum AskedAction : int
{
    kInstall = 0,
    kRemove = 1,
    kForceReinstall = 2,
    kDisable = 3
};
/// "install", "remove", "reinstall", "disable", or "action 7".
std::string actionName(int action);

struct AskedComponent
{
    long id = 0;
    std::string name;
    std::string version;
    std::string build;
    std::string language;
    std::string fullVersion;
    int action = kInstall;
    bool shared = false;
    std::string location;
    /// The full version that was asked for when the version shared by several products takes its place.
    std::string replaces;

    /// What the registry records as the component's version.
    std::string level() const { return version + build; }
};

struct AskedRelease
{
    long id = 0;
    std::string name;
    std::string version;
    std::string build;
    std::string language;
    std::string fullVersion;
    int action = kInstall;
    bool enabled = true;
    __int64 activationDate = 0;
    bool preInstallOnly = false;
    bool noDownload = false;
    int startHour = 0; ///< hours of the day; an end above 24 lies on the next day
    int endHour = 24;
    std::string certificateId;
    std::string marketingName;
    std::string technicalName;
    std::vector<AskedComponent> components;
    std::string source; ///< the file it was read from
};
} // namespace autool

#endif
