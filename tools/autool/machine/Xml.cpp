#include "machine/Xml.h"

#include "common/Text.h"
#include "machine/Text.h"

#include <oleauto.h>

namespace autool
{
namespace
{
// Headers of some compilers declare these without defining them.
constexpr CLSID kDomDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
constexpr IID kDomDocumentInterface = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

/// Text that COM gave away.
class ComText
{
public:
    ComText() = default;
    ComText(const ComText&) = delete;
    ComText& operator=(const ComText&) = delete;
    ~ComText() { ::SysFreeString(m_text); }
    BSTR* put() { return &m_text; }
    std::wstring text() const { return {m_text != nullptr ? m_text : L"", ::SysStringLen(m_text)}; }

private:
    BSTR m_text = nullptr;
};

std::string parseErrorOf(const XmlDocument& document)
{
    Microsoft::WRL::ComPtr<IXMLDOMParseError> error;
    if (FAILED(document->get_parseError(error.GetAddressOf())) || error == nullptr)
        return "not well formed";
    long line = 0;
    ComText reason;
    error->get_line(&line);
    error->get_reason(reason.put());
    std::string text = fromWide(reason.text());
    text.erase(text.find_last_not_of("\r\n ") + 1);
    return (text.empty() ? "not well formed" : text) + (line > 0 ? " (line " + std::to_string(line) + ")" : "");
}

bool isElement(const XmlNode& node)
{
    DOMNodeType type = NODE_INVALID;
    return SUCCEEDED(node->get_nodeType(&type)) && type == NODE_ELEMENT;
}
} // namespace

HRESULT createXml(XmlDocument& document)
{
    return ::CoCreateInstance(kDomDocument, nullptr, CLSCTX_ALL, kDomDocumentInterface,
                              reinterpret_cast<void**>(document.ReleaseAndGetAddressOf()));
}

XmlDocument loadXml(const std::string& path, std::string& why)
{
    // Asked first: the parser would look for a missing file's name as an address.
    if (::GetFileAttributesW(toWide(path).c_str()) == INVALID_FILE_ATTRIBUTES)
    {
        why = "there is no such file";
        return nullptr;
    }
    XmlDocument document;
    if (FAILED(createXml(document)) || document == nullptr)
    {
        why = "the system's XML parser cannot be created";
        return nullptr;
    }
    document->put_async(VARIANT_FALSE);
    document->put_resolveExternals(VARIANT_FALSE);
    VARIANT source;
    ::VariantInit(&source);
    source.vt = VT_BSTR;
    source.bstrVal = ::SysAllocString(toWide(path).c_str());
    VARIANT_BOOL loaded = VARIANT_FALSE;
    const HRESULT status = document->load(source, &loaded);
    ::VariantClear(&source);
    if (FAILED(status) || loaded == VARIANT_FALSE)
    {
        why = parseErrorOf(document);
        return nullptr;
    }
    return document;
}

XmlNode rootOf(const XmlDocument& document)
{
    Microsoft::WRL::ComPtr<IXMLDOMElement> element;
    if (document == nullptr || FAILED(document->get_documentElement(element.GetAddressOf())))
        return nullptr;
    return element;
}

void eachChild(const XmlNode& parent, const std::function<bool(const std::wstring& name, const XmlNode& child)>& visit)
{
    XmlNode child;
    if (parent == nullptr || FAILED(parent->get_firstChild(child.GetAddressOf())))
        return;
    while (child != nullptr)
    {
        ComText name;
        if (isElement(child) && SUCCEEDED(child->get_nodeName(name.put())) && !visit(name.text(), child))
            return;
        XmlNode next;
        if (FAILED(child->get_nextSibling(next.GetAddressOf())))
            return;
        child = std::move(next);
    }
}

XmlNode childOf(const XmlNode& parent, const wchar_t* name)
{
    XmlNode found;
    eachChild(parent,
              [&](const std::wstring& childName, const XmlNode& child)
              {
                  if (childName != name)
                      return true;
                  found = child;
                  return false;
              });
    return found;
}

XmlNode elementAt(XmlNode node, std::initializer_list<const wchar_t*> path)
{
    for (const wchar_t* const name : path)
        node = childOf(node, name);
    return node;
}

std::string textOf(const XmlNode& node)
{
    ComText text;
    return node != nullptr && SUCCEEDED(node->get_text(text.put())) ? systemFromWide(text.text()) : std::string();
}
} // namespace autool
