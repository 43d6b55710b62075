#ifndef AUTOOLS_PRODUCTLIST_PRODUCTLISTFILE_H
#define AUTOOLS_PRODUCTLIST_PRODUCTLISTFILE_H

#include "foundation/String.h"

namespace aut
{
/// The file in the client's data folder that keeps the product list of the previous cycle: one file for a local
/// installation, else one per name prefix (which may be empty). Empty, and logged, when the prefix would lead
/// elsewhere.
String productListFile(const String& namePrefix);
} // namespace aut

#endif
