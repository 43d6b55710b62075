#ifndef AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_TYPELIBRARY_H
#define AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_TYPELIBRARY_H

#include <windows.h>

namespace autoupdatesrv
{
constexpr GUID kLibrary = {0x6C1E3F0A, 0x52D7, 0x4B5E, {0x9D, 0x21, 0x7A, 0x0C, 0x84, 0xB1, 0x66, 0x3F}};

/// Writes the type library that describes the interface, by which Windows carries its calls from process to process.
HRESULT writeTypeLibrary(const wchar_t* path);
} // namespace autoupdatesrv

#endif
