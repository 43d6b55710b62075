#include "registry/CRegProduct.h"

#include "registry/TypedValues.h"

CRegProduct::CRegProduct(bool readOnly) : CRegProduct(nullptr, readOnly) {}

CRegProduct::CRegProduct(const char* product, bool readOnly)
    : CRegBase(aut::entryPath(aut::kProductsKey, product), readOnly), m_product(product)
{
}

const char* CRegProduct::GetVersion() { return TextOfProduct("Version"); }
void CRegProduct::SetVersion(const char* text) { SetValue("Version", text); } // on the root too
const char* CRegProduct::GetPath() { return TextOfProduct("Path"); }
void CRegProduct::SetPath(const char* text) { SetTextOfProduct("Path", text); }
const char* CRegProduct::GetLanguage() { return TextOfProduct("Language"); }
void CRegProduct::SetLanguage(const char* text) { SetTextOfProduct("Language", text); }
const char* CRegProduct::GetActiveLanguage() { return TextOfProduct("ActiveLanguage"); }
void CRegProduct::SetActiveLanguage(const char* text) { SetTextOfProduct("ActiveLanguage", text); }
const char* CRegProduct::GetCertificateID() { return TextOfProduct("CertificateID"); }
void CRegProduct::SetCertificateID(const char* text) { SetTextOfProduct("CertificateID", text); }
const char* CRegProduct::GetComponentList() { return TextOfProduct("Components"); }
void CRegProduct::SetComponentList(const char* text) { SetTextOfProduct("Components", text); }
const char* CRegProduct::GetMarketingName() { return TextOfProduct("MarketingName"); }
void CRegProduct::SetMarketingName(const char* text) { SetTextOfProduct("MarketingName", text); }
const char* CRegProduct::GetTechnicalName() { return TextOfProduct("TechnicalName"); }
void CRegProduct::SetTechnicalName(const char* text) { SetTextOfProduct("TechnicalName", text); }

void CRegProduct::GetBuildAndVersion(char* version, char* build)
{
    aut::splitBuildAndVersion(GetVersion(), version, build);
}

bool CRegProduct::IsEnabled() { return !m_product.IsEmpty() && aut::readFlag(*this, "Enable"); }

void CRegProduct::Enable()
{
    if (!m_product.IsEmpty())
        aut::writeFlag(*this, "Enable", true);
}

void CRegProduct::Disable()
{
    if (!m_product.IsEmpty())
        aut::writeFlag(*this, "Enable", false);
}

bool CRegProduct::GetProductList(RT_List<String, String&>& list)
{
    return m_product.IsEmpty() ? GetSubKeys(list) : CRegProduct(false).GetSubKeys(list);
}

const char* CRegProduct::TextOfProduct(const char* name)
{
    return m_product.IsEmpty() ? "" : aut::readText(*this, m_value, name);
}

void CRegProduct::SetTextOfProduct(const char* name, const char* text)
{
    if (!m_product.IsEmpty())
        SetValue(name, text);
}
