#include "registry/CRegProductForComponent.h"

#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "registry/CRegComponent.h"
#include "registry/TypedValues.h"

#include <cstddef>
#include <cstring>

namespace
{
constexpr char kShared[] = "Shared";
constexpr char kVersion[] = "ComponentVersion";
constexpr char kPath[] = "Path";
constexpr char kLanguage[] = "Language";
constexpr char kEnable[] = "Enable";

aut::KeyPath entryOf(const char* component, const char* product)
{
    return aut::entryPath(aut::KeyPath{aut::kComponentsKey, component}, product);
}

bool writeUnlessEmpty(CRegBase& key, const char* name, const char* text)
{
    return aut::isEmpty(text) || key.SetValue(name, text);
}

/// What could not be written is lost: what it was moved from is gone already. The result deliberately says only whether
/// the entry could be opened.
void tellUnless(bool written, const char* function, const char* component, const char* product)
{
    if (!written)
        Log(2, "CRegProductForComponent::%s - entry of component %s for product %s not wholly written", function,
            component, product);
}
} // namespace

/// What moves between a product's own entry and the common one. Held without memory of its own, so that nothing is lost
/// for want of it.
struct CRegProductForComponent::EntryData
{
    /// An entry of no product counts as not enabled.
    EntryData(CRegBase& entry, bool ofProduct) : enabled(ofProduct && aut::readFlag(entry, kEnable))
    {
        aut::readText(entry, path, kPath);
        aut::readText(entry, language, kLanguage);
        aut::readText(entry, version, kVersion);
    }

    /// All that can be written is; false when that is not everything.
    bool writeTo(CRegBase& entry) const
    {
        bool written = writeUnlessEmpty(entry, kPath, path);
        written &= writeUnlessEmpty(entry, kLanguage, language);
        written &= writeUnlessEmpty(entry, kVersion, version);
        return (!enabled || aut::writeFlag(entry, kEnable, true)) && written;
    }

    bool enabled;
    char path[260];
    char language[260];
    char version[260];
};

CRegProductForComponent::CRegProductForComponent(const char* component, const char* product, bool readOnly,
                                                 bool followShared)
    : CRegBase(entryOf(component, product), readOnly), m_shared(aut::readFlag(*this, kShared)), m_component(component),
      m_product(product)
{
    // By the names given: m_component may have found no memory, and "Components\Shared" is nobody's entry.
    if (m_shared && followShared)
        Open(entryOf(component, aut::kSharedEntry), aut::accessFor(readOnly));
    // Without its product's name, sharing would write to the component itself: without the component's it fails.
    if (static_cast<std::size_t>(m_product.GetLength()) != std::strlen(aut::orEmpty(product)))
        m_component.Empty();
}

bool CRegProductForComponent::IsShared() { return m_shared; }
const char* CRegProductForComponent::GetComponentVersion() { return aut::readText(*this, m_value, kVersion); }
void CRegProductForComponent::SetComponentVersion(const char* text) { SetValue(kVersion, text); }
const char* CRegProductForComponent::GetPath() { return aut::readText(*this, m_value, kPath); }
void CRegProductForComponent::SetPath(const char* text) { SetValue(kPath, text); }
const char* CRegProductForComponent::GetLanguage() { return aut::readText(*this, m_value, kLanguage); }
void CRegProductForComponent::SetLanguage(const char* text) { SetValue(kLanguage, text); }

void CRegProductForComponent::GetBuildAndVersion(char* version, char* build)
{
    aut::splitBuildAndVersion(GetComponentVersion(), version, build);
}

bool CRegProductForComponent::IsEnabled() { return !m_product.IsEmpty() && aut::readFlag(*this, kEnable); }

void CRegProductForComponent::Enable()
{
    if (!m_product.IsEmpty())
        aut::writeFlag(*this, kEnable, true);
}

void CRegProductForComponent::Disable()
{
    if (!m_product.IsEmpty())
        aut::writeFlag(*this, kEnable, false);
}

bool CRegProductForComponent::Share()
{
    if (m_shared)
        return true;
    if (!ReopenForWriting() || m_key == nullptr)
        return false;
    const EntryData data(*this, !m_product.IsEmpty());
    RT_List<String, String&> products;
    if (!CRegComponent(m_component, true).GetProductList(products))
        return false; // the products read are not all

    if (products.GetCount() == 1)
        return !aut::contains(products, m_product) || ShareAsFirst(data);
    if (products.GetCount() > 1 && (aut::isEmpty(data.version) || IsSharedByOther(products, data.path)))
        return JoinShared();
    return true;
}

/// Moves the only product's entry into a new common one.
bool CRegProductForComponent::ShareAsFirst(const EntryData& data)
{
    DeleteValue(kPath);
    bool written = aut::writeFlag(*this, kShared, true);
    m_shared = true;
    if (!OpenCommonEntry(false))
        return false;
    written &= aut::writeFlag(*this, kShared, true);
    written &= data.writeTo(*this);
    tellUnless(written, "Share", m_component, m_product);
    return true;
}

/// Whether another of the products shares what lies at `path`.
bool CRegProductForComponent::IsSharedByOther(RT_List<String, String&>& products, const char* path)
{
    for (POSITION pos = products.GetHeadPosition(); pos != nullptr;)
    {
        const String& name = products.GetNext(pos);
        if (name == m_product)
            continue;
        CRegProductForComponent other(m_component, name, true, true);
        if (other.IsShared() && !aut::isEmpty(path) && _stricmp(path, other.GetPath()) == 0)
            return true;
    }
    return false;
}

bool CRegProductForComponent::JoinShared()
{
    const bool written = aut::writeFlag(*this, kShared, true);
    tellUnless(written, "Share", m_component, m_product);
    m_shared = true;
    return OpenCommonEntry(false);
}

bool CRegProductForComponent::UnShare()
{
    if (!m_shared)
        return true;
    if (!ReopenForWriting() || m_key == nullptr)
        return false;
    CRegBase common(entryOf(m_component, aut::kSharedEntry), true);
    const EntryData data(common, !m_product.IsEmpty());
    RT_List<String, String&> products;
    if (!CRegComponent(m_component, true).GetProductList(products))
        return false; // the products read are not all: the only one read need not be the last
    if (products.IsEmpty())
        return true;

    // The number of product entries is the share count: the last one takes the common entry with it.
    bool written = products.GetCount() != 1 || common.DeleteKey();
    if (!Open(entryOf(m_component, m_product), aut::kReadWriteAccess))
        return false;
    written &= DeleteValue(kShared);
    m_shared = false;
    written &= data.writeTo(*this);
    tellUnless(written, "UnShare", m_component, m_product);
    return true;
}

bool CRegProductForComponent::OpenCommonEntry(bool readOnly)
{
    return Open(entryOf(m_component, aut::kSharedEntry), aut::accessFor(readOnly));
}
