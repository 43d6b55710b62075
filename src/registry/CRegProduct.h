#ifndef AUTOOLS_REGISTRY_CREGPRODUCT_H
#define AUTOOLS_REGISTRY_CREGPRODUCT_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Products" or one product below it: what is installed.
///
/// On an object opened on the root every getter returns "" or false and every setter does nothing, except that
/// `SetVersion` deliberately writes on the root key itself.
class AUTOOLS_API CRegProduct : public CRegBase
{
public:
    explicit CRegProduct(bool readOnly);
    /// A null or empty name opens the root.
    CRegProduct(const char* product, bool readOnly);

    const char* GetVersion();
    void SetVersion(const char* text);
    /// Splits `Version` at the first A, B or P of either case: what stands before it, and the build from there on.
    /// Both buffers hold 260 bytes.
    void GetBuildAndVersion(char* version, char* build);
    const char* GetPath();
    void SetPath(const char* text);
    const char* GetLanguage();
    void SetLanguage(const char* text);
    const char* GetActiveLanguage();
    void SetActiveLanguage(const char* text);
    const char* GetCertificateID();
    void SetCertificateID(const char* text);
    const char* GetComponentList();
    void SetComponentList(const char* text);
    bool IsEnabled();
    void Enable();
    void Disable();
    const char* GetMarketingName();
    void SetMarketingName(const char* text);
    const char* GetTechnicalName();
    void SetTechnicalName(const char* text);

    /// The names of all products, whichever product this object is opened on.
    bool GetProductList(RT_List<String, String&>& list);

private:
    const char* TextOfProduct(const char* name);
    void SetTextOfProduct(const char* name, const char* text);

    String m_product;
};

#endif
