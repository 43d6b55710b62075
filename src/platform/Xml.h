#ifndef AUTOOLS_PLATFORM_XML_H
#define AUTOOLS_PLATFORM_XML_H

#include "foundation/String.h"
#include "foundation/XmlPointers.h"
#include "platform/ComValues.h"

#include <cstddef>
#include <string>

namespace aut
{
// MSXML in one place. Texts are 8-bit in the ANSI code page outside and wide inside. Where a function is said to
// raise, a failing HRESULT becomes a thrown `_com_error`; "not found" is never an error. The calling thread's COM
// apartment is the caller's business.

/// Wide text in the ANSI code page, as all texts below come out. What has no place in it becomes "?", and never a
/// character that merely looks alike: that could be a backslash or a quote, and these texts become paths and command
/// lines.
String ansiFromWide(const UniqueBstr& text);

/// Creates an empty document with the given class context; the HRESULT is the creation's own.
HRESULT createXmlDocument(XmlDocumentPtr& document, DWORD classContext);
/// Switches asynchronous loading off. Raises.
void setXmlSynchronous(IXMLDOMDocument* document);
/// Loads 8-bit text of any size, decoded as its byte order mark or declaration says (see XmlDecoding.h for the rule).
/// False when it is null, contradicts its encoding or is not well formed. With a size, an embedded NUL counts as not
/// well formed, and UTF-16 can be given; without one the text ends at its NUL.
bool loadXmlText(IXMLDOMDocument* document, const char* text);
bool loadXmlText(IXMLDOMDocument* document, const char* text, std::size_t size);
/// Loads a file, synchronously or as the document is set to. False when it is missing or not well formed.
bool loadXmlFile(IXMLDOMDocument* document, const char* path);
/// Writes the document to a file, which it replaces. Raises; then the file may be cut off.
void saveXmlFile(IXMLDOMDocument* document, const char* path);

/// The first node at `path`, null when there is none (or no node). Raises.
XmlNodePtr selectXmlNode(IXMLDOMNode* node, const char* path);
/// The document element, null when there is none. Raises.
XmlNodePtr xmlRoot(IXMLDOMDocument* document);
/// The node's text content in the ANSI code page; "" for null. Raises.
String xmlText(IXMLDOMNode* node);
/// The same for reading many short texts: those below 16 characters need no allocation.
std::string xmlShortText(IXMLDOMNode* node);
/// The node's typed value as text; "" for a null node or value. Raises.
String xmlTypedText(IXMLDOMNode* node);
/// The node's markup; "" for null. Raises.
String xmlMarkup(IXMLDOMNode* node);
/// The node's own name; "" for null. Raises.
std::string xmlName(IXMLDOMNode* node);
/// The same for comparing with the ASCII names of our documents, without a copy.
class XmlName
{
public:
    /// Raises.
    explicit XmlName(IXMLDOMNode* node);
    bool operator==(const char* ascii) const noexcept;

private:
    UniqueBstr m_name;
};
/// Whether the node is an element: not text, a comment or a processing instruction. False for null. Raises.
bool isXmlElement(IXMLDOMNode* node);
/// The document's setting that it validates while parsing. Raises.
bool validatesOnParse(IXMLDOMDocument* document);

/// What the parser said about the last load.
struct XmlParseError
{
    long code = 0;
    String reason; ///< without the trailing line end
    long line = 0;
    long column = 0;
};
/// All zero for null. Raises.
XmlParseError xmlParseError(IXMLDOMDocument* document);

/// Walks a node's children in order, once, handing out each: O(children).
class XmlChildren
{
public:
    /// A null parent has no children. Raises.
    explicit XmlChildren(IXMLDOMNode* parent);
    /// The next child node of any kind, null at the end. Raises.
    XmlNodePtr next();

private:
    XmlNodePtr m_next;
};

/// The nodes at a path, handed out one after another in document order.
class XmlSelection
{
public:
    /// False when there is no list of nodes at all; an empty list is one. Raises.
    bool select(IXMLDOMNode* node, const char* path);
    /// How many nodes there are, handed out or not. Raises.
    long count() const;
    /// The next node, null at the end. Raises.
    XmlNodePtr next();

private:
    Microsoft::WRL::ComPtr<IXMLDOMNodeList> m_nodes;
};

/// The XML attributes of a node.
class XmlAttributes
{
public:
    /// Raises.
    explicit XmlAttributes(IXMLDOMNode* node);
    /// Whether the node has a collection of attributes, which may be empty.
    bool exist() const noexcept { return m_attributes != nullptr; }
    /// "" when there is no such attribute. Raises.
    String text(const char* name) const;

private:
    Microsoft::WRL::ComPtr<IXMLDOMNamedNodeMap> m_attributes;
};
} // namespace aut

#endif
