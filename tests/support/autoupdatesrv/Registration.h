#ifndef AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_REGISTRATION_H
#define AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_REGISTRATION_H

#include <windows.h>

namespace autoupdatesrv
{
/// Makes this program the class's local server for the whole machine; writes its type library beside it.
HRESULT registerServer();
/// Takes back all that `registerServer` wrote. What is not there is fine.
HRESULT unregisterServer();
} // namespace autoupdatesrv

#endif
