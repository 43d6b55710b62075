#ifndef AUTOOLS_PLATFORM_COMVALUES_H
#define AUTOOLS_PLATFORM_COMVALUES_H

#include "platform/UniqueResource.h"

#include <windows.h>

#include <oleauto.h>

namespace aut
{
struct BstrTraits
{
    using Type = BSTR;
    static Type none() noexcept { return nullptr; }
    static void close(Type text) noexcept { ::SysFreeString(text); }
};
/// Owns one BSTR. A null one counts as "" for COM.
using UniqueBstr = UniqueResource<BstrTraits>;

/// Owns one VARIANT.
class UniqueVariant
{
public:
    UniqueVariant() noexcept { ::VariantInit(&m_value); }
    /// Takes the text over.
    explicit UniqueVariant(UniqueBstr text) noexcept
    {
        ::VariantInit(&m_value);
        m_value.vt = VT_BSTR;
        m_value.bstrVal = text.release();
    }
    UniqueVariant(const UniqueVariant&) = delete;
    UniqueVariant& operator=(const UniqueVariant&) = delete;
    ~UniqueVariant() { ::VariantClear(&m_value); }

    const VARIANT& get() const noexcept { return m_value; }
    /// For out parameters: drops what is held.
    VARIANT* put() noexcept
    {
        ::VariantClear(&m_value);
        return &m_value;
    }
    /// Converts the value in place.
    HRESULT changeType(VARTYPE type) noexcept { return ::VariantChangeType(&m_value, &m_value, 0, type); }

private:
    VARIANT m_value;
};
} // namespace aut

#endif
