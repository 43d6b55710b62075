#ifndef AUTOOLS_REGISTRY_CREGPRODUCTFORCOMPONENT_H
#define AUTOOLS_REGISTRY_CREGPRODUCTFORCOMPONENT_H

#include "registry/CRegBase.h"

/// A product's entry under a component, or the component's common "Shared" entry once the product shares it.
class AUTOOLS_API CRegProductForComponent : public CRegBase
{
public:
    /// With `followShared` an entry that is marked shared is replaced by the common one.
    CRegProductForComponent(const char* component, const char* product, bool readOnly, bool followShared);

    bool IsShared();
    const char* GetComponentVersion();
    void SetComponentVersion(const char* text);
    /// Splits `ComponentVersion` at the first A, B or P of either case. Both buffers hold 260 bytes.
    void GetBuildAndVersion(char* version, char* build);
    const char* GetPath();
    void SetPath(const char* text);
    const char* GetLanguage();
    void SetLanguage(const char* text);
    bool IsEnabled();
    void Enable();
    void Disable();

    /// Moves the entry to the common one, or joins that; true when done or when there was nothing to do.
    bool Share();
    /// Takes the common entry's data back; the common entry goes with its last product.
    bool UnShare();

private:
    bool m_shared;
    String m_component;
    String m_product;
};

#endif
