#include "Registration.h"

#include "TypeLibrary.h"

#include "webconf/AutoUpdateServer.h"

#include <oleauto.h>

#include <string>

namespace autoupdatesrv
{
namespace
{
std::wstring programPath()
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::wstring typeLibraryPath()
{
    const std::wstring program = programPath();
    return program.substr(0, program.find_last_of(L'.')) + L".tlb";
}

std::wstring classKey()
{
    wchar_t id[39] = L"";
    ::StringFromGUID2(aut::kAutoUpdateServerClass, id, 39);
    return std::wstring(L"Software\\Classes\\CLSID\\") + id;
}

/// Writes a key's unnamed value.
HRESULT writeText(const std::wstring& key, const std::wstring& text)
{
    return HRESULT_FROM_WIN32(
        static_cast<DWORD>(::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, REG_SZ, text.c_str(),
                                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)))));
}
} // namespace

HRESULT registerServer()
{
    const std::wstring library = typeLibraryPath();
    ::DeleteFileW(library.c_str());
    HRESULT status = writeTypeLibrary(library.c_str());
    ITypeLib* loaded = nullptr;
    if (SUCCEEDED(status))
        status = ::LoadTypeLibEx(library.c_str(), REGKIND_REGISTER, &loaded);
    if (loaded != nullptr)
        loaded->Release();
    if (SUCCEEDED(status))
        status = writeText(classKey(), L"AutoUpdateSRV");
    // Quoted: the path may hold blanks.
    return SUCCEEDED(status) ? writeText(classKey() + L"\\LocalServer32", L"\"" + programPath() + L"\"") : status;
}

HRESULT unregisterServer()
{
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, classKey().c_str());
    ::UnRegisterTypeLib(kLibrary, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
    ::DeleteFileW(typeLibraryPath().c_str());
    return S_OK;
}
} // namespace autoupdatesrv
