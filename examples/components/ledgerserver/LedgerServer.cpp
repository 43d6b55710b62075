// LedgerServer.dll: a small COM server that registers itself, as one among a product's components does. Its one class
// tells who it is (IPersist).

#include <windows.h>

#include <objbase.h>
#include <objidl.h>
#include <olectl.h>

#include <atomic>
#include <new>
#include <string>

namespace
{
// {6E0F1C52-58D5-4B0E-9A57-2F6C3B8D1E40}
constexpr CLSID kClassId = {0x6e0f1c52, 0x58d5, 0x4b0e, {0x9a, 0x57, 0x2f, 0x6c, 0x3b, 0x8d, 0x1e, 0x40}};
constexpr char kClassKey[] = "Software\\Classes\\CLSID\\{6E0F1C52-58D5-4B0E-9A57-2F6C3B8D1E40}";

std::atomic<long> g_objects{0};
HMODULE g_module = nullptr;

/// What the object and its factory have in common: reference counting and one interface beside IUnknown.
template <typename Interface> class Counted : public Interface
{
public:
    explicit Counted(const IID& interfaceId) : m_interfaceId(interfaceId) { ++g_objects; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    virtual ~Counted() { --g_objects; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** out) override
    {
        if (out == nullptr)
            return E_POINTER;
        const bool known = IsEqualIID(wanted, IID_IUnknown) || IsEqualIID(wanted, m_interfaceId);
        *out = known ? static_cast<Interface*>(this) : nullptr;
        if (!known)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

private:
    const IID& m_interfaceId;
    std::atomic<ULONG> m_references{1};
};

class Ledger final : public Counted<IPersist>
{
public:
    Ledger() : Counted(IID_IPersist) {}
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* out) override
    {
        if (out == nullptr)
            return E_POINTER;
        *out = kClassId;
        return S_OK;
    }
};

class Factory final : public Counted<IClassFactory>
{
public:
    Factory() : Counted(IID_IClassFactory) {}
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID wanted, void** out) override
    {
        if (out == nullptr)
            return E_POINTER;
        *out = nullptr;
        if (outer != nullptr)
            return CLASS_E_NOAGGREGATION;
        auto* const ledger = new (std::nothrow) Ledger;
        if (ledger == nullptr)
            return E_OUTOFMEMORY;
        const HRESULT status = ledger->QueryInterface(wanted, out);
        ledger->Release();
        return status;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override
    {
        g_objects += lock ? 1 : -1;
        return S_OK;
    }
};

LSTATUS writeText(const std::string& key, const char* name, const std::string& text)
{
    return ::RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text.c_str(),
                             static_cast<DWORD>(text.size() + 1));
}
} // namespace

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
        g_module = module;
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID wanted, void** out)
{
    if (out == nullptr)
        return E_POINTER;
    *out = nullptr;
    if (!IsEqualCLSID(classId, kClassId))
        return CLASS_E_CLASSNOTAVAILABLE;
    auto* const factory = new (std::nothrow) Factory;
    if (factory == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT status = factory->QueryInterface(wanted, out);
    factory->Release();
    return status;
}

STDAPI DllCanUnloadNow() { return g_objects == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer()
{
    char path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameA(g_module, path, MAX_PATH);
    if (length == 0 || length == MAX_PATH)
        return SELFREG_E_CLASS;
    const std::string server = std::string(kClassKey) + "\\InprocServer32";
    const bool written = writeText(kClassKey, nullptr, "Velmora Ledger") == ERROR_SUCCESS &&
                         writeText(server, nullptr, path) == ERROR_SUCCESS &&
                         writeText(server, "ThreadingModel", "Both") == ERROR_SUCCESS;
    return written ? S_OK : SELFREG_E_CLASS;
}

STDAPI DllUnregisterServer()
{
    const LSTATUS status = ::RegDeleteTreeA(HKEY_LOCAL_MACHINE, kClassKey);
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND ? S_OK : SELFREG_E_CLASS;
}
