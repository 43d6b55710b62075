#ifndef AUTOOL_CHECK_USERPROXY_H
#define AUTOOL_CHECK_USERPROXY_H

#include <string>

namespace autool
{
/// What this user's Internet settings say, as the client's transfers take it.
struct UserProxy
{
    std::wstring proxy; ///< "" is none; may list one for each scheme
    std::wstring bypass;
    std::wstring script; ///< address of a configuration script
};
UserProxy readUserProxy();
} // namespace autool

#endif
