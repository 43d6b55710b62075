#include "Registration.h"
#include "Server.h"

#include "platform/ComApartment.h"

#include <cstdio>
#include <string_view>

// A stand-in for the client's local server AutoUpdateSRV: a COM server in a process of its own.
//
//     autoupdatesrv -RegServer      makes it the machine's server
//     autoupdatesrv -UnregServer    takes that back
//
// Windows starts it with "-Embedding" when a client wants an object. Settings.h says what it answers.

namespace
{
HRESULT run(std::string_view what)
{
    const aut::ComApartment com;
    if (what == "-RegServer")
        return autoupdatesrv::registerServer();
    if (what == "-UnregServer")
        return autoupdatesrv::unregisterServer();
    if (what == "-Embedding")
        return autoupdatesrv::serve();
    std::fputs("autoupdatesrv -RegServer | -UnregServer\n", stderr);
    return E_INVALIDARG;
}
} // namespace

int main(int argc, char** argv)
{
    const HRESULT status = run(argc == 2 ? argv[1] : "");
    if (SUCCEEDED(status))
        return 0;
    std::fprintf(stderr, "autoupdatesrv: error %08lX\n", static_cast<unsigned long>(status));
    return 1;
}
