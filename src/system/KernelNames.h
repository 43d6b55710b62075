#ifndef AUTOOLS_SYSTEM_KERNELNAMES_H
#define AUTOOLS_SYSTEM_KERNELNAMES_H

namespace aut
{
constexpr char kKernelProcess[] = "AutoUpdate.exe";
/// The kernel's service, its mutex and (with more or less behind it) the title of its main window.
constexpr char kKernelName[] = "Velmora Automatic Update";
} // namespace aut

#endif
