#ifndef AUTOOLS_CATALOGUE_ACTIONS_H
#define AUTOOLS_CATALOGUE_ACTIONS_H

namespace aut
{
// What the product list asks for. A record may hold any other number, which asks for nothing.
inline constexpr int kInstall = 0;
inline constexpr int kRemove = 1;
inline constexpr int kForceReinstall = 2;
inline constexpr int kDisable = 3;
} // namespace aut

#endif
