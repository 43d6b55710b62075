#include "platform/Xml.h"

#include "platform/BoundedText.h"
#include "platform/ComValues.h"
#include "platform/XmlDecoding.h"

#include <windows.h>

#include <comdef.h>
#include <objbase.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace aut
{
namespace
{
constexpr CLSID kDomDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

void raiseIfFailed(HRESULT status)
{
    if (FAILED(status))
        throw _com_error(status);
}

bool isAscii(std::wstring_view text) noexcept
{
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c <= 0x7F; });
}

void copyAscii(std::wstring_view text, char* out) noexcept
{
    std::transform(text.begin(), text.end(), out, [](wchar_t c) { return static_cast<char>(c); });
}

/// `ansiFromWide` into a string that keeps short texts without an allocation.
std::string narrowFromWide(const UniqueBstr& text)
{
    const std::wstring_view view(text.get(), ::SysStringLen(text.get()));
    if (!isAscii(view))
        return std::string(static_cast<const char*>(ansiFromWide(text)));
    std::string ascii(view.size(), '\0');
    copyAscii(view, ascii.data());
    return ascii;
}

/// What one of a node's text getters returns.
String nodeText(IXMLDOMNode* node, HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*getter)(BSTR*))
{
    if (node == nullptr)
        return String();
    UniqueBstr text;
    raiseIfFailed((node->*getter)(text.put()));
    return ansiFromWide(text);
}
} // namespace

// Nearly all texts and names of our documents are ASCII, and there are a hundred thousand of them in a long product
// list: those take no detour over the code page.
String ansiFromWide(const UniqueBstr& text)
{
    const std::wstring_view view(text.get(), ::SysStringLen(text.get()));
    if (isAscii(view))
    {
        String ascii;
        char* const buffer = view.empty() ? nullptr : ascii.GetBufferSetLength(static_cast<int>(view.size()));
        if (buffer != nullptr)
            copyAscii(view, buffer);
        return ascii;
    }
    const int length = static_cast<int>(::SysStringLen(text.get()));
    const int size = length == 0 ? 0
                                 : ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.get(), length, nullptr, 0,
                                                         nullptr, nullptr);
    String ansi;
    if (size <= 0)
        return ansi;
    char* const buffer = ansi.GetBufferSetLength(size);
    if (buffer != nullptr)
        ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.get(), length, buffer, size, nullptr, nullptr);
    return ansi;
}

HRESULT createXmlDocument(XmlDocumentPtr& document, DWORD classContext)
{
    return ::CoCreateInstance(kDomDocument, nullptr, classContext, IID_IXMLDOMDocument,
                              reinterpret_cast<void**>(document.ReleaseAndGetAddressOf()));
}

void setXmlSynchronous(IXMLDOMDocument* document) { raiseIfFailed(document->put_async(VARIANT_FALSE)); }

bool loadXmlText(IXMLDOMDocument* document, const char* text)
{
    return loadXmlText(document, text, std::strlen(orEmpty(text)));
}

bool loadXmlText(IXMLDOMDocument* document, const char* text, std::size_t size)
{
    if (document == nullptr)
        return false;
    UniqueBstr wide = decodeXml(text, size);
    if (!wide)
        wide.reset(::SysAllocString(L"")); // refused like any other, so that the document holds an error of its own
    VARIANT_BOOL loaded = VARIANT_FALSE;
    return SUCCEEDED(document->loadXML(wide.get(), &loaded)) && loaded != VARIANT_FALSE;
}

bool loadXmlFile(IXMLDOMDocument* document, const char* path)
{
    if (document == nullptr || isEmpty(path))
        return false;
    const UniqueVariant source(wideFromAnsi(path));
    VARIANT_BOOL loaded = VARIANT_FALSE;
    return SUCCEEDED(document->load(source.get(), &loaded)) && loaded != VARIANT_FALSE;
}

void saveXmlFile(IXMLDOMDocument* document, const char* path)
{
    const UniqueVariant target(wideFromAnsi(path));
    const HRESULT status = document != nullptr ? document->save(target.get()) : E_POINTER;
    // S_FALSE is no failure for COM, but then too the file is not what the document is.
    raiseIfFailed(status == S_FALSE ? E_FAIL : status);
}

XmlNodePtr selectXmlNode(IXMLDOMNode* node, const char* path)
{
    XmlNodePtr found;
    if (node == nullptr)
        return found;
    const UniqueBstr query = wideFromAnsi(path);
    raiseIfFailed(node->selectSingleNode(query.get(), found.GetAddressOf()));
    return found;
}

XmlNodePtr xmlRoot(IXMLDOMDocument* document)
{
    Microsoft::WRL::ComPtr<IXMLDOMElement> root;
    if (document != nullptr)
        raiseIfFailed(document->get_documentElement(root.GetAddressOf()));
    return XmlNodePtr(root.Get());
}

String xmlText(IXMLDOMNode* node) { return nodeText(node, &IXMLDOMNode::get_text); }

String xmlTypedText(IXMLDOMNode* node)
{
    if (node == nullptr)
        return String();
    UniqueVariant value;
    raiseIfFailed(node->get_nodeTypedValue(value.put()));
    if (value.get().vt == VT_NULL || value.get().vt == VT_EMPTY)
        return String();
    raiseIfFailed(value.changeType(VT_BSTR));
    const UniqueBstr text(::SysAllocStringLen(value.get().bstrVal, ::SysStringLen(value.get().bstrVal)));
    return ansiFromWide(text);
}

String xmlMarkup(IXMLDOMNode* node) { return nodeText(node, &IXMLDOMNode::get_xml); }

std::string xmlName(IXMLDOMNode* node)
{
    UniqueBstr name;
    if (node != nullptr)
        raiseIfFailed(node->get_nodeName(name.put()));
    return narrowFromWide(name);
}

std::string xmlShortText(IXMLDOMNode* node)
{
    UniqueBstr text;
    if (node != nullptr)
        raiseIfFailed(node->get_text(text.put()));
    return narrowFromWide(text);
}

XmlName::XmlName(IXMLDOMNode* node)
{
    if (node != nullptr)
        raiseIfFailed(node->get_nodeName(m_name.put()));
}

bool XmlName::operator==(const char* ascii) const noexcept
{
    const std::wstring_view name(m_name.get(), ::SysStringLen(m_name.get()));
    const std::string_view other(ascii);
    return std::equal(name.begin(), name.end(), other.begin(), other.end(),
                      [](wchar_t wide, char narrow) { return wide == static_cast<unsigned char>(narrow); });
}

bool isXmlElement(IXMLDOMNode* node)
{
    DOMNodeType type = NODE_INVALID;
    if (node != nullptr)
        raiseIfFailed(node->get_nodeType(&type));
    return type == NODE_ELEMENT;
}

bool validatesOnParse(IXMLDOMDocument* document)
{
    VARIANT_BOOL validates = VARIANT_FALSE;
    raiseIfFailed(document->get_validateOnParse(&validates));
    return validates != VARIANT_FALSE;
}

XmlParseError xmlParseError(IXMLDOMDocument* document)
{
    XmlParseError error;
    Microsoft::WRL::ComPtr<IXMLDOMParseError> parser;
    if (document == nullptr)
        return error;
    raiseIfFailed(document->get_parseError(parser.GetAddressOf()));
    UniqueBstr reason;
    raiseIfFailed(parser->get_errorCode(&error.code));
    raiseIfFailed(parser->get_reason(reason.put()));
    raiseIfFailed(parser->get_line(&error.line));
    raiseIfFailed(parser->get_linepos(&error.column));
    error.reason = ansiFromWide(reason);
    error.reason.TrimRight('\n');
    error.reason.TrimRight('\r');
    return error;
}

XmlChildren::XmlChildren(IXMLDOMNode* parent)
{
    if (parent != nullptr)
        raiseIfFailed(parent->get_firstChild(m_next.GetAddressOf()));
}

XmlNodePtr XmlChildren::next()
{
    XmlNodePtr current = std::move(m_next);
    m_next.Reset();
    if (current != nullptr)
        raiseIfFailed(current->get_nextSibling(m_next.GetAddressOf()));
    return current;
}

bool XmlSelection::select(IXMLDOMNode* node, const char* path)
{
    m_nodes.Reset();
    if (node == nullptr)
        return false;
    const UniqueBstr query = wideFromAnsi(path);
    raiseIfFailed(node->selectNodes(query.get(), m_nodes.GetAddressOf()));
    return m_nodes != nullptr;
}

long XmlSelection::count() const
{
    long length = 0;
    if (m_nodes != nullptr)
        raiseIfFailed(m_nodes->get_length(&length));
    return length;
}

XmlNodePtr XmlSelection::next()
{
    XmlNodePtr node;
    if (m_nodes != nullptr)
        raiseIfFailed(m_nodes->nextNode(node.GetAddressOf()));
    return node;
}

XmlAttributes::XmlAttributes(IXMLDOMNode* node)
{
    if (node != nullptr)
        raiseIfFailed(node->get_attributes(m_attributes.GetAddressOf()));
}

String XmlAttributes::text(const char* name) const
{
    XmlNodePtr attribute;
    if (m_attributes != nullptr)
        raiseIfFailed(m_attributes->getNamedItem(wideFromAnsi(name).get(), attribute.GetAddressOf()));
    return xmlText(attribute.Get());
}
} // namespace aut
