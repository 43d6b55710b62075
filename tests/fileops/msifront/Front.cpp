// Stands before Wine's Windows Installer automation object, which does not know the path of a component (dispatch id
// 31). That is answered with the installer's own function, or as the test says; everything else is Wine's.
#include "tests/fileops/msifront/Front.h"

#include "tests/support/FrontFactory.h"

#include <objbase.h>

#include <oleauto.h>

#include <cwchar>
#include <new>

namespace
{
constexpr DISPID kComponentPath = 31;
constexpr int kInstalledLocal = 3;
constexpr int kRunsFromSource = 4;

using GetComponentPath = int(WINAPI*)(const wchar_t*, const wchar_t*, wchar_t*, DWORD*);

auttest::MsiFront g_front;

template <typename Function> Function installerFunction(const char* name)
{
    static const HMODULE installer = ::LoadLibraryA("msi.dll");
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(installer, name)));
}

/// As the real object answers: an empty text for what is not installed.
BSTR installedPath(const wchar_t* product, const wchar_t* component)
{
    static const auto getPath = installerFunction<GetComponentPath>("MsiGetComponentPathW");
    wchar_t path[1024] = L"";
    DWORD length = 1024;
    const int state = getPath(product, component, path, &length);
    return ::SysAllocString(state == kInstalledLocal || state == kRunsFromSource ? path : L"");
}

void keep(wchar_t (&out)[64], const VARIANTARG& argument)
{
    const wchar_t* const text = argument.vt == VT_BSTR && argument.bstrVal != nullptr ? argument.bstrVal : L"?";
    std::wcsncpy(out, text, 63);
}

class Installer final : public IDispatch
{
public:
    explicit Installer(IDispatch* real) : m_real(real)
    {
        ++g_front.objects;
        ++g_front.created;
    }
    virtual ~Installer()
    {
        m_real->Release();
        --g_front.objects;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch))
            return m_real->QueryInterface(iid, object);
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++m_count); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const long left = --m_count;
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return m_real->GetTypeInfoCount(count); }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override
    {
        return m_real->GetTypeInfo(index, locale, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override
    {
        return m_real->GetIDsOfNames(iid, names, count, locale, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* answer, EXCEPINFO* exception, UINT* argument) override
    {
        g_front.id = id;
        g_front.flags = flags;
        g_front.arguments = parameters->cArgs;
        if (id != kComponentPath || parameters->cArgs != 2)
            return m_real->Invoke(id, iid, locale, flags, parameters, answer, exception, argument);
        ++g_front.calls;
        keep(g_front.product, parameters->rgvarg[1]); // the last argument comes first
        keep(g_front.component, parameters->rgvarg[0]);
        if (FAILED(g_front.outcome))
            return g_front.outcome;
        if (g_front.answer != nullptr)
            return ::VariantCopy(answer, const_cast<VARIANT*>(g_front.answer));
        answer->vt = VT_BSTR;
        answer->bstrVal = installedPath(g_front.product, g_front.component);
        return S_OK;
    }

private:
    IDispatch* m_real;
    std::atomic<long> m_count = 1;
};

class Factory final : public auttest::FrontFactory
{
public:
    using FrontFactory::FrontFactory;

private:
    HRESULT create(IClassFactory& wine, IUnknown* outer, REFIID iid, void** object) override
    {
        if (FAILED(g_front.creation))
            return g_front.creation;
        IDispatch* real = nullptr;
        const HRESULT made = wine.CreateInstance(outer, IID_IDispatch, reinterpret_cast<void**>(&real));
        if (FAILED(made))
            return made;
        auto* const installer = new (std::nothrow) Installer(real);
        if (installer == nullptr)
        {
            real->Release();
            return E_OUTOFMEMORY;
        }
        const HRESULT asked = installer->QueryInterface(iid, object);
        installer->Release();
        return asked;
    }
};
} // namespace

extern "C" HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object)
{
    return auttest::frontClassObject<Factory>("msi.dll", classId, iid, object);
}

extern "C" HRESULT WINAPI DllCanUnloadNow() { return S_FALSE; }

extern "C" auttest::MsiFront* msiFront() { return &g_front; }
