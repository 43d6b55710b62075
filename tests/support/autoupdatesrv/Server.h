#ifndef AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_SERVER_H
#define AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_SERVER_H

#include <windows.h>

namespace autoupdatesrv
{
/// Serves until nobody has had an object for some seconds.
HRESULT serve();
} // namespace autoupdatesrv

#endif
