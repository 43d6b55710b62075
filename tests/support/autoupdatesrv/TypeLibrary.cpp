#include "TypeLibrary.h"

#include "webconf/AutoUpdateServer.h"

#include <oleauto.h>
#include <wrl/client.h>

#include <string>

// The interface is described here, from its declaration in C++, and not in a language of its own: one declaration less,
// and no further compiler to build it with.

namespace autoupdatesrv
{
namespace
{
using Microsoft::WRL::ComPtr;

/// A method with one argument, which is what it returns.
struct Method
{
    const wchar_t* name;
    const wchar_t* argument;
    VARTYPE type;
};
/// In the order of the interface.
const Method kMethods[] = {{L"KxGetHWIDForDeployment", L"hardwareId", VT_I4},
                           {L"KxGetLocalCIDList", L"certificateIds", VT_BSTR}};

/// COM's own base interface as the system's type library describes it.
HRESULT findUnknown(ComPtr<ITypeInfo>& info)
{
    ComPtr<ITypeLib> library;
    const HRESULT status = ::LoadTypeLibEx(L"stdole2.tlb", REGKIND_NONE, library.GetAddressOf());
    return FAILED(status) ? status : library->GetTypeInfoOfGuid(IID_IUnknown, info.GetAddressOf());
}

HRESULT addMethod(ICreateTypeInfo& info, UINT index, const Method& method)
{
    TYPEDESC target{};
    target.vt = method.type;
    ELEMDESC argument{};
    argument.tdesc.vt = VT_PTR;
    argument.tdesc.lptdesc = &target;
    argument.paramdesc.wParamFlags = PARAMFLAG_FOUT | PARAMFLAG_FRETVAL;

    FUNCDESC description{};
    description.memid = static_cast<MEMBERID>(index) + 1;
    description.funckind = FUNC_PUREVIRTUAL;
    description.invkind = INVOKE_FUNC;
    description.callconv = CC_STDCALL;
    description.cParams = 1;
    description.lprgelemdescParam = &argument;
    description.elemdescFunc.tdesc.vt = VT_HRESULT;
    const HRESULT status = info.AddFuncDesc(index, &description);
    if (FAILED(status))
        return status;
    std::wstring name(method.name);
    std::wstring argumentName(method.argument);
    LPOLESTR names[] = {name.data(), argumentName.data()};
    return info.SetFuncAndParamNames(index, names, 2);
}

HRESULT addInterface(ICreateTypeLib2& library)
{
    std::wstring name(L"IAutoUpdateSRV");
    ComPtr<ICreateTypeInfo> info;
    HRESULT status = library.CreateTypeInfo(name.data(), TKIND_INTERFACE, info.GetAddressOf());
    if (SUCCEEDED(status))
        status = info->SetGuid(aut::kAutoUpdateServerInterface);
    if (SUCCEEDED(status))
        status = info->SetTypeFlags(TYPEFLAG_FOLEAUTOMATION); // this makes the type library carry its calls
    ComPtr<ITypeInfo> base;
    HREFTYPE baseReference = 0;
    if (SUCCEEDED(status))
        status = findUnknown(base);
    if (SUCCEEDED(status))
        status = info->AddRefTypeInfo(base.Get(), &baseReference);
    if (SUCCEEDED(status))
        status = info->AddImplType(0, baseReference);
    UINT index = 0;
    for (const Method& method : kMethods)
    {
        if (SUCCEEDED(status))
            status = addMethod(*info.Get(), index++, method);
    }
    return SUCCEEDED(status) ? info->LayOut() : status;
}
} // namespace

HRESULT writeTypeLibrary(const wchar_t* path)
{
    std::wstring name(L"AutoUpdateSRVLib");
    ComPtr<ICreateTypeLib2> library;
    HRESULT status = ::CreateTypeLib2(SYS_WIN64, path, library.GetAddressOf());
    if (SUCCEEDED(status))
        status = library->SetGuid(kLibrary);
    if (SUCCEEDED(status))
        status = library->SetVersion(1, 0);
    if (SUCCEEDED(status))
        status = library->SetName(name.data());
    if (SUCCEEDED(status))
        status = addInterface(*library.Get());
    return SUCCEEDED(status) ? library->SaveAllChanges() : status;
}
} // namespace autoupdatesrv
