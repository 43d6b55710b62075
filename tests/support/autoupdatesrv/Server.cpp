#include "Server.h"

#include "Settings.h"

#include "platform/UniqueResource.h"
#include "webconf/AutoUpdateServer.h"

#include <atomic>
#include <string>

namespace autoupdatesrv
{
namespace
{
/// Starting the program takes Windows much longer than any call: it stays for the next client.
constexpr DWORD kIdleMs = 10000;

std::atomic<long> objects{0};
std::atomic<ULONGLONG> lastUse{0};
DWORD registration = 0;

/// Ends the process in the middle of whatever it does. The class object goes first: Windows forgets a dead server's,
/// Wine would hand it out for ever.
void die()
{
    ::CoRevokeClassObject(registration);
    ::TerminateProcess(::GetCurrentProcess(), 1);
}

/// Counts an object as long as it lives.
class Use
{
public:
    Use() { ++objects; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use()
    {
        lastUse = ::GetTickCount64();
        --objects;
    }
};

/// Misbehaves as told: `call` is the prefix of the call's settings.
HRESULT enter(const std::string& call)
{
    const std::string calls = call + "Calls";
    writeNumber(calls.c_str(), numberSetting(calls.c_str()) + 1);
    ::Sleep(numberSetting("DelayMs"));
    if (textSetting("DieIn") == call)
        die();
    return static_cast<HRESULT>(numberSetting((call + "Status").c_str()));
}

BSTR wideText(const std::string& text)
{
    const int size = static_cast<int>(text.size());
    const int length = ::MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
    const BSTR wide = ::SysAllocStringLen(nullptr, static_cast<UINT>(length));
    if (wide != nullptr)
        ::MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide, length);
    return wide;
}

template <typename Interface> class Counted : public Interface
{
public:
    virtual ~Counted() = default;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    HRESULT answerQuery(REFIID wanted, REFIID own, void** out)
    {
        if (out == nullptr)
            return E_POINTER;
        *out = nullptr;
        if (wanted != own && wanted != IID_IUnknown)
            return E_NOINTERFACE;
        AddRef();
        *out = this;
        return S_OK;
    }

private:
    std::atomic<ULONG> m_references{1};
};

class Server final : public Counted<aut::AutoUpdateServer>
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** out) override
    {
        return answerQuery(wanted, aut::kAutoUpdateServerInterface, out);
    }
    HRESULT STDMETHODCALLTYPE KxGetHWIDForDeployment(LONG* hardwareId) override
    {
        *hardwareId = static_cast<LONG>(numberSetting("HWID"));
        return enter("HWID");
    }
    HRESULT STDMETHODCALLTYPE KxGetLocalCIDList(BSTR* certificateIds) override
    {
        *certificateIds = nullptr;
        const HRESULT status = enter("CIDs");
        if (SUCCEEDED(status) && hasSetting("CIDs"))
            *certificateIds = wideText(textSetting("CIDs"));
        return status;
    }

private:
    Use m_use;
};

class Factory final : public Counted<IClassFactory>
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** out) override
    {
        return answerQuery(wanted, IID_IClassFactory, out);
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID wanted, void** out) override
    {
        *out = nullptr;
        if (outer != nullptr)
            return CLASS_E_NOAGGREGATION;
        const auto status = static_cast<HRESULT>(numberSetting("CreateStatus"));
        if (FAILED(status))
            return status;
        auto* const server = new Server;
        const HRESULT found = server->QueryInterface(wanted, out);
        server->Release();
        return found;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override
    {
        objects += lock ? 1 : -1;
        return S_OK;
    }
};

bool isIdle() { return objects == 0 && ::GetTickCount64() - lastUse >= kIdleMs; }

/// Waits until nobody needs the server any more, or it is told to end. New clients are kept out on return.
void waitUntilIdle()
{
    const aut::UniqueHandle end(::CreateEventA(nullptr, TRUE, FALSE, kEndEvent));
    while (::WaitForSingleObject(end.get(), 500) == WAIT_TIMEOUT)
    {
        if (!isIdle())
            continue;
        ::CoSuspendClassObjects();
        if (isIdle())
            return;
        ::CoResumeClassObjects(); // a client was quicker
    }
}
} // namespace

HRESULT serve()
{
    if (textSetting("DieIn") == "start")
        return E_FAIL;
    writeNumber("Pid", ::GetCurrentProcessId());
    lastUse = ::GetTickCount64();
    Microsoft::WRL::ComPtr<IClassFactory> factory;
    factory.Attach(new Factory);
    const HRESULT status = ::CoRegisterClassObject(aut::kAutoUpdateServerClass, factory.Get(), CLSCTX_LOCAL_SERVER,
                                                   REGCLS_MULTIPLEUSE, &registration);
    if (FAILED(status))
        return status;
    waitUntilIdle();
    return ::CoRevokeClassObject(registration);
}
} // namespace autoupdatesrv
