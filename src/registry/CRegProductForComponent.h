#ifndef AUTOOLS_REGISTRY_CREGPRODUCTFORCOMPONENT_H
#define AUTOOLS_REGISTRY_CREGPRODUCTFORCOMPONENT_H

#include "registry/CRegBase.h"

/// A product's entry under a component, or the component's common "Shared" entry once the product shares it.
///
/// A process that dies within `Share` or `UnShare`: what is moved is deleted in its old place before it is written in
/// the new one, and the entry is marked in between. Before the mark, `Share` can cost the entry its `Path` only; the
/// version, language and flag of the product's own entry are never touched by it. Behind the mark, the common entry may
/// lack what was not written yet. `UnShare` of the last product can cost path, version, language and flag: they were
/// deleted with the common entry; with other products that entry stays whole. Either way both may be called again, and
/// the component then counts as not installed (no version) or gets its path with its next installation.
class AUTOOLS_API CRegProductForComponent : public CRegBase
{
public:
    /// With `followShared` an entry that is marked shared is replaced by the common one.
    CRegProductForComponent(const char* component, const char* product, bool readOnly, bool followShared);

    /// As read at construction, then as `Share` and `UnShare` leave it.
    bool IsShared();
    const char* GetComponentVersion();
    void SetComponentVersion(const char* text);
    /// Splits `ComponentVersion` at the first A, B or P of either case. Both buffers hold 260 bytes.
    void GetBuildAndVersion(char* version, char* build);
    const char* GetPath();
    void SetPath(const char* text);
    const char* GetLanguage();
    void SetLanguage(const char* text);
    /// False, and the setters do nothing, when the product name is empty.
    bool IsEnabled();
    void Enable();
    void Disable();

    /// The component's only product moves its entry to a new common one. One of several joins the common entry when its
    /// own has no version yet, or when another product shares what lies at the same path. Otherwise nothing is done. On
    /// success the accessors work on the common entry. False when an entry cannot be opened for writing, or the
    /// products cannot all be read.
    bool Share();
    /// Takes the common entry's data back into the product's own; the common entry goes with its last product. False
    /// when an entry cannot be opened for writing, or the products cannot all be read.
    bool UnShare();

private:
    struct EntryData;
    bool ShareAsFirst(const EntryData& data);
    bool IsSharedByOther(RT_List<String, String&>& products, const char* path);
    bool JoinShared();
    bool OpenCommonEntry(bool readOnly);

    bool m_shared;
    String m_component;
    String m_product;
};

#endif
