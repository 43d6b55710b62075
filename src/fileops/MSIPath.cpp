#include "fileops/MSIPath.h"

#include "platform/ComApartment.h"
#include "platform/ComValues.h"
#include "platform/WideText.h"

#include <windows.h>

#include <wrl/client.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace
{
constexpr CLSID kInstallerClass = {0x000C1090, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr DISPID kComponentPath = 31;

aut::UniqueBstr bstrOf(const String& text)
{
    return aut::UniqueBstr(::SysAllocString(aut::widened(static_cast<const char*>(text)).c_str()));
}

/// The installer's answer, not yet looked at. Each object is released when it goes, before COM is.
HRESULT askForComponentPath(const String& product, const String& component, VARIANT* answer)
{
    Microsoft::WRL::ComPtr<IDispatch> installer;
    const HRESULT created = ::CoCreateInstance(kInstallerClass, nullptr, CLSCTX_SERVER, IID_PPV_ARGS(&installer));
    if (FAILED(created))
        return created;
    const aut::UniqueVariant productArgument(bstrOf(product));
    const aut::UniqueVariant componentArgument(bstrOf(component));
    VARIANTARG lastFirst[] = {componentArgument.get(), productArgument.get()}; // the order of a call's arguments
    DISPPARAMS parameters = {lastFirst, nullptr, 2, 0};
    return installer->Invoke(kComponentPath, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &parameters, answer,
                             nullptr, nullptr);
}

/// What stands before the last backslash; nothing when there is none, or when the code page cannot express it: another
/// folder is worse than none.
String folderOf(std::wstring_view path)
{
    const std::size_t last = path.rfind(L'\\');
    if (last == std::wstring_view::npos)
        return String();
    const std::optional<std::string> folder = aut::narrowed(path.substr(0, last));
    return folder ? String(folder->c_str()) : String();
}
} // namespace

bool MSIExtractProductIDAndMainCompID(const String& text, String& product, String& component)
{
    std::string_view codes(static_cast<const char*>(text));
    codes.remove_prefix(std::min<std::size_t>(codes.size(), std::strlen("MSI(")));
    codes.remove_suffix(codes.empty() ? 0 : 1);
    const std::size_t colon = codes.find(':');
    if (colon == std::string_view::npos)
        return false;
    try
    {
        const std::string first(codes.substr(0, colon)); // copies: the text may be one of the two that are written
        const std::string second(codes.substr(colon + 1));
        product.Format("{%s}", first.c_str());
        component.Format("{%s}", second.c_str());
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

String MSIEvaluatePath(const String& text)
{
    String product;
    String component;
    if (!MSIExtractProductIDAndMainCompID(text, product, component))
        return String();
    try
    {
        const aut::ComApartment com;
        aut::UniqueVariant answer;
        if (FAILED(askForComponentPath(product, component, answer.put())) || answer.get().vt != VT_BSTR)
            return String();
        return folderOf({answer.get().bstrVal, ::SysStringLen(answer.get().bstrVal)});
    }
    catch (const std::bad_alloc&)
    {
        return String();
    }
}
