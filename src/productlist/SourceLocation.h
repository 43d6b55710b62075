#ifndef AUTOOLS_PRODUCTLIST_SOURCELOCATION_H
#define AUTOOLS_PRODUCTLIST_SOURCELOCATION_H

#include "foundation/String.h"

namespace aut
{
/// Where a component's files come from, for the URL that stands in the product list. On a local installation the
/// URLs FILE://./path and FILE://../path are relative to the folder of the installation source and to the one above
/// it; every other URL stays as it is.
String componentLocation(const char* url);
} // namespace aut

#endif
