#ifndef AUTOOLS_WEBCONF_CONFIGREADER_H
#define AUTOOLS_WEBCONF_CONFIGREADER_H

#include "foundation/XmlPointers.h"

#include <cstddef>

namespace aut
{
// Reading one element of the configuration document. All raise `_com_error`; a null node has no elements.

constexpr std::size_t kConfigNumberSize = 64; ///< room for the text of a number or flag; the rest is cut off
constexpr std::size_t kConfigTextSize = 260;  ///< room for any other text

/// The configuration node of the document, null when it (or the document) is missing.
XmlNodePtr configurationNode(IXMLDOMDocument* document);

/// The element called `name` (with regard to case) that is looked up from `node` on: the node itself, else the first of
/// its children of that name, else what the same lookup finds in its children in order, depth first. Null when there
/// is none. Costs one visit of each node at most and no recursion, however deep the document is.
XmlNodePtr findConfigElement(IXMLDOMNode* node, const char* name);

/// Each stores 0, false or "" first and then, when the element exists, its value; returns whether it exists.
bool readConfigInt(IXMLDOMNode* node, const char* name, int& value);
bool readConfigFlag(IXMLDOMNode* node, const char* name, bool& value);
bool readConfigText(IXMLDOMNode* node, const char* name, char (&text)[kConfigTextSize]);

/// The child elements of a section in document order; comments and other nodes between them do not count.
class ConfigSection
{
public:
    /// Looks the section up from `node` on.
    ConfigSection(IXMLDOMNode* node, const char* name);
    bool exists() const { return m_exists; }
    /// The next child element, null at the end.
    XmlNodePtr next();

private:
    bool m_exists = false;
    XmlNodePtr m_next;
};
} // namespace aut

#endif
