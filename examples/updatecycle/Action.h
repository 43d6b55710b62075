#ifndef AUTOOLS_UPDATECYCLE_ACTION_H
#define AUTOOLS_UPDATECYCLE_ACTION_H

namespace updatecycle
{
/// The catalogue's actions by number.
enum Action
{
    kInstall = 0,
    kRemove = 1,
    kForceReinstall = 2,
    kDisable = 3
};

inline const char* actionWord(int action)
{
    static const char* const kWords[] = {"install", "remove", "reinstall", "disable"};
    return action >= 0 && action < 4 ? kWords[action] : "?";
}
} // namespace updatecycle

#endif
