#ifndef AUTOOLS_PLATFORM_XML_H
#define AUTOOLS_PLATFORM_XML_H

#include "foundation/String.h"
#include "foundation/XmlPointers.h"

#include <string>

namespace aut
{
// MSXML in one place. Texts are 8-bit in the ANSI code page outside and wide inside. Where a function is said to
// raise, a failing HRESULT becomes a thrown `_com_error`; "not found" is never an error.

/// Creates an empty document with the given class context; the HRESULT is the creation's own.
HRESULT createXmlDocument(XmlDocumentPtr& document, DWORD classContext);
/// Loads 8-bit text, decoded as the document's own declaration or byte order mark says (UTF-8 without either). False when it is not well formed.
bool loadXmlText(IXMLDOMDocument* document, const char* text);
/// Loads a file synchronously or as the document is set to. False when it is missing or not well formed.
bool loadXmlFile(IXMLDOMDocument* document, const char* path);

/// The first node at `path`, null when there is none (or no node). Raises.
XmlNodePtr selectXmlNode(IXMLDOMNode* node, const char* path);
/// The document element, null when there is none. Raises.
XmlNodePtr xmlRoot(IXMLDOMDocument* document);
/// The node's text content in the ANSI code page; "" for null. Raises.
String xmlText(IXMLDOMNode* node);
/// The node's own name; "" for null. Raises.
std::string xmlName(IXMLDOMNode* node);

/// What the parser said about the last load.
struct XmlParseError
{
    long code = 0;
    String reason; ///< without the trailing line end
    long line = 0;
    long column = 0;
};
XmlParseError xmlParseError(IXMLDOMDocument* document);

/// Walks a node's child elements in order, once, handing out each: O(children).
class XmlChildren
{
public:
    explicit XmlChildren(IXMLDOMNode* parent);
    /// The next child node of any kind, null at the end. Raises.
    XmlNodePtr next();

private:
    XmlNodePtr m_next;
};
} // namespace aut

#endif
