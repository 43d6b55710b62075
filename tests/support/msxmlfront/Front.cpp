// Stands before Wine's MSXML: a `DOMDocument` made through COM has validateOnParse TRUE from the start, as on Windows,
// where Wine has FALSE. Everything else is Wine's own. Nothing here needs the C++ runtime.
#include <objbase.h>

#include <msxml.h>

#include <new>

namespace
{
using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);

/// Wine's factory with one more step. It lives as long as the module, so there is nothing to count.
class Factory final : public IClassFactory
{
public:
    explicit Factory(IClassFactory* real) : m_real(real) {}
    virtual ~Factory() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory))
        {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        const HRESULT created = m_real->CreateInstance(outer, iid, object);
        IXMLDOMDocument* document = nullptr;
        if (SUCCEEDED(created) && SUCCEEDED(static_cast<IUnknown*>(*object)->QueryInterface(
                                      IID_IXMLDOMDocument, reinterpret_cast<void**>(&document))))
        {
            document->put_validateOnParse(VARIANT_TRUE);
            document->Release();
        }
        return created;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override { return m_real->LockServer(lock); }

private:
    IClassFactory* m_real;
};

Factory* makeFactory(REFCLSID classId)
{
    const HMODULE msxml = ::LoadLibraryA("msxml3.dll");
    const auto getClassObject =
        msxml != nullptr
            ? reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(::GetProcAddress(msxml, "DllGetClassObject")))
            : nullptr;
    IClassFactory* real = nullptr;
    if (getClassObject == nullptr ||
        FAILED(getClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&real))))
        return nullptr;
    return new (std::nothrow) Factory(real);
}
} // namespace

extern "C" HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object)
{
    static Factory* const factory = makeFactory(classId);
    if (factory == nullptr)
    {
        *object = nullptr;
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    return factory->QueryInterface(iid, object);
}

extern "C" HRESULT WINAPI DllCanUnloadNow() { return S_FALSE; }
