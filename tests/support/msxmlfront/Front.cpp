// Stands before Wine's MSXML: a `DOMDocument` made through COM has validateOnParse TRUE from the start, as on Windows,
// where Wine has FALSE. Everything else is Wine's own. Nothing here needs the C++ runtime.
#include "tests/support/FrontFactory.h"

#include <objbase.h>

#include <msxml.h>

namespace
{
class Factory final : public auttest::FrontFactory
{
public:
    using FrontFactory::FrontFactory;

private:
    HRESULT create(IClassFactory& real, IUnknown* outer, REFIID iid, void** object) override
    {
        const HRESULT created = real.CreateInstance(outer, iid, object);
        IXMLDOMDocument* document = nullptr;
        if (SUCCEEDED(created) && SUCCEEDED(static_cast<IUnknown*>(*object)->QueryInterface(
                                      IID_IXMLDOMDocument, reinterpret_cast<void**>(&document))))
        {
            document->put_validateOnParse(VARIANT_TRUE);
            document->Release();
        }
        return created;
    }
};
} // namespace

extern "C" HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object)
{
    return auttest::frontClassObject<Factory>("msxml3.dll", classId, iid, object);
}

extern "C" HRESULT WINAPI DllCanUnloadNow() { return S_FALSE; }
