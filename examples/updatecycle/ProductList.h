#ifndef AUTOOLS_UPDATECYCLE_PRODUCTLIST_H
#define AUTOOLS_UPDATECYCLE_PRODUCTLIST_H

#include "ExitCodes.h"

#include <7xAutoUpdateTools.h>

namespace updatecycle
{
/// The client's own transfer settings, once it is installed; null, that is the download library's, before that. The
/// pointer stays valid as long as this object.
class TransferSettings
{
public:
    TransferSettings();
    const CConfig* get() const { return m_known ? &m_config : nullptr; }

private:
    CConfig m_config;
    bool m_known = false;
};

/// Fetches the product list and leaves it in `list`; says why when that fails.
ExitCode fetchProductList(phase1xml& list, const TransferSettings& transfer);
} // namespace updatecycle

#endif
