#ifndef AUTOOLS_TESTS_SUPPORT_FRONTFACTORY_H
#define AUTOOLS_TESTS_SUPPORT_FRONTFACTORY_H

#include <objbase.h>

#include <new>

namespace auttest
{
/// The class factory of a DLL that stands before a class of Wine's: it has Wine's factory and decides in `create` what
/// is made. It lives as long as the module, so there is nothing to count. Needs no C++ runtime.
class FrontFactory : public IClassFactory
{
public:
    explicit FrontFactory(IClassFactory* real) : m_real(real) {}
    virtual ~FrontFactory() = default;
    FrontFactory(const FrontFactory&) = delete;
    FrontFactory& operator=(const FrontFactory&) = delete;

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
        *object = nullptr;
        return create(*m_real, outer, iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override { return m_real->LockServer(lock); }

protected:
    virtual HRESULT create(IClassFactory& real, IUnknown* outer, REFIID iid, void** object) = 0;

private:
    IClassFactory* m_real;
};

/// What the DLL's own `DllGetClassObject` answers: `Factory` before the class that `library` implements.
template <typename Factory> HRESULT frontClassObject(const char* library, REFCLSID classId, REFIID iid, void** object)
{
    static Factory* const factory = [&]() -> Factory*
    {
        using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
        const HMODULE module = ::LoadLibraryA(library);
        const auto getClassObject = module != nullptr ? reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(
                                                            ::GetProcAddress(module, "DllGetClassObject")))
                                                      : nullptr;
        IClassFactory* real = nullptr;
        if (getClassObject == nullptr ||
            FAILED(getClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&real))))
            return nullptr;
        return new (std::nothrow) Factory(real);
    }();
    if (factory != nullptr)
        return factory->QueryInterface(iid, object);
    *object = nullptr;
    return CLASS_E_CLASSNOTAVAILABLE;
}
} // namespace auttest

#endif
