#ifndef AUTOOL_PLAN_PRODUCTLIST_H
#define AUTOOL_PLAN_PRODUCTLIST_H

#include "plan/Asked.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace autool
{
/// The releases of a product list (XML), with the rules of `phase1xml::ParseXMLDocument` but without what that logs and
/// records. The thread must be in a COM apartment.
/// @param path      In UTF-8.
/// @param progress  Called for each release.
/// @param why       Receives the reason when nothing is returned.
std::optional<std::vector<AskedRelease>> readProductList(const std::string& path, const std::function<void()>& progress,
                                                         std::string& why);
} // namespace autool

#endif
