#ifndef AUTOOLS_WEBCONF_AUTOUPDATESERVER_H
#define AUTOOLS_WEBCONF_AUTOUPDATESERVER_H

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <wrl/client.h>

namespace aut
{
/// The client's local server AutoUpdateSRV, which knows the workstation's hardware ID and keeps certificate IDs of its
/// own. It runs as a process of its own; a type library marshals the interface, which binds both sides to the order and
/// the types of its methods.
struct AutoUpdateServer : IUnknown
{
    /// The hardware ID under which the Web Configurator knows this workstation; 0 when it has none.
    virtual HRESULT STDMETHODCALLTYPE KxGetHWIDForDeployment(LONG* hardwareId) = 0;
    /// The certificate IDs that the server keeps, with `kCIDSeparator` between them; null or "" when there are none.
    /// Blanks and line ends around a certificate ID do not count. The caller frees the text.
    virtual HRESULT STDMETHODCALLTYPE KxGetLocalCIDList(BSTR* certificateIds) = 0;
};
using AutoUpdateServerPtr = Microsoft::WRL::ComPtr<AutoUpdateServer>;

constexpr CLSID kAutoUpdateServerClass = {0x22269CFE, 0x9C4A, 0x11D5, {0xA8, 0x3D, 0x00, 0x01, 0x02, 0xA7, 0xC9, 0x38}};
constexpr IID kAutoUpdateServerInterface = {
    0xF2707403, 0x8CA6, 0x4700, {0xBA, 0x69, 0xCE, 0xCB, 0x1D, 0x8A, 0xFF, 0xFA}};

/// No certificate ID holds it.
constexpr char kCIDSeparator = ';';

/// Starts the server, or finds the one that runs. The calling thread must have initialised COM. This and each call wait
/// as long as the server takes; a server that is gone fails at once.
inline HRESULT createAutoUpdateServer(AutoUpdateServerPtr& server)
{
    return ::CoCreateInstance(kAutoUpdateServerClass, nullptr, CLSCTX_LOCAL_SERVER, kAutoUpdateServerInterface,
                              reinterpret_cast<void**>(server.ReleaseAndGetAddressOf()));
}
} // namespace aut

#endif
