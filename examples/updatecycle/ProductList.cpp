#include "ProductList.h"

#include "Progress.h"
#include "Steps.h"

#include <cstdio>
#include <filesystem>

namespace updatecycle
{
TransferSettings::TransferSettings()
{
    std::error_code error;
    m_known =
        std::filesystem::exists(static_cast<const char*>(m_config.GetConfigDataFile()), error) && m_config.GetValues();
}

ExitCode fetchProductList(phase1xml& list, const TransferSettings& transfer)
{
    int fetched = 0;
    {
        const Progress progress("Downloading the product list");
        fetched = list.GetXMLDoc(transfer.get());
    }
    if (fetched == 1)
        return kDone;
    const int status = result->GetStatusCode();
    const bool notUnderstood = status == 500 || status == 554;
    std::printf(notUnderstood ? "What the server sent is no product list.\n" : "No product list came.\n");
    std::printf("  %s\n", lastFailure().c_str());
    if (status == 551)
        return kUnexpected;
    return notUnderstood ? kBadAnswer : kNoAnswer;
}
} // namespace updatecycle
