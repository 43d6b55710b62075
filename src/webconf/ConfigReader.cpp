#include "webconf/ConfigReader.h"

#include "platform/BoundedText.h"
#include "platform/Xml.h"

#include <comdef.h>

#include <cstdlib>
#include <utility>

namespace aut
{
namespace
{
using Step = HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*)(IXMLDOMNode**);

XmlNodePtr follow(const XmlNodePtr& node, Step step)
{
    XmlNodePtr next;
    const HRESULT status = (node.Get()->*step)(next.GetAddressOf());
    if (FAILED(status))
        throw _com_error(status);
    return next;
}

XmlNodePtr nextElement(XmlNodePtr node)
{
    while (node != nullptr && !isXmlElement(node.Get()))
        node = follow(node, &IXMLDOMNode::get_nextSibling);
    return node;
}

/// What selectSingleNode finds for a plain name, without compiling a query for every node of a document.
XmlNodePtr childElement(const XmlNodePtr& parent, const char* name)
{
    XmlNodePtr child = nextElement(follow(parent, &IXMLDOMNode::get_firstChild));
    while (child != nullptr && !(XmlName(child.Get()) == name))
        child = nextElement(follow(child, &IXMLDOMNode::get_nextSibling));
    return child;
}

/// The node behind `node` in document order, within what lies below the node at depth 0.
XmlNodePtr nextInDocumentOrder(XmlNodePtr node, long& depth)
{
    XmlNodePtr next = follow(node, &IXMLDOMNode::get_firstChild);
    if (next != nullptr)
    {
        ++depth;
        return next;
    }
    while (depth > 0)
    {
        next = follow(node, &IXMLDOMNode::get_nextSibling);
        if (next != nullptr)
            return next;
        node = follow(node, &IXMLDOMNode::get_parentNode);
        --depth;
    }
    return nullptr;
}

XmlNodePtr findAndRead(IXMLDOMNode* node, const char* name, String& text)
{
    XmlNodePtr element = findConfigElement(node, name);
    text = xmlTypedText(element.Get());
    return element;
}
} // namespace

XmlNodePtr configurationNode(IXMLDOMDocument* document)
{
    return selectXmlNode(document, "wcfgResponse/Data/ComponentList/Component/Configuration/AutomaticUpdateData");
}

XmlNodePtr findConfigElement(IXMLDOMNode* node, const char* name)
{
    long depth = 0;
    for (XmlNodePtr current(node); current != nullptr; current = nextInDocumentOrder(std::move(current), depth))
    {
        if (XmlName(current.Get()) == name)
            return current;
        XmlNodePtr child = childElement(current, name);
        if (child != nullptr)
            return child;
    }
    return nullptr;
}

bool readConfigInt(IXMLDOMNode* node, const char* name, int& value)
{
    value = 0;
    String text;
    if (findAndRead(node, name, text) == nullptr)
        return false;
    char number[kConfigNumberSize];
    copyText(number, text);
    value = static_cast<int>(std::strtol(number, nullptr, 10)); // as atoi, but defined for numbers that do not fit
    return true;
}

bool readConfigFlag(IXMLDOMNode* node, const char* name, bool& value)
{
    int number = 0;
    const bool exists = readConfigInt(node, name, number);
    value = number != 0;
    return exists;
}

bool readConfigText(IXMLDOMNode* node, const char* name, char (&text)[kConfigTextSize])
{
    String whole;
    const bool exists = findAndRead(node, name, whole) != nullptr;
    copyText(text, whole);
    return exists;
}

ConfigSection::ConfigSection(IXMLDOMNode* node, const char* name)
{
    const XmlNodePtr section = findConfigElement(node, name);
    m_exists = section != nullptr;
    if (m_exists)
        m_next = nextElement(follow(section, &IXMLDOMNode::get_firstChild));
}

XmlNodePtr ConfigSection::next()
{
    XmlNodePtr current = std::move(m_next);
    m_next = current != nullptr ? nextElement(follow(current, &IXMLDOMNode::get_nextSibling)) : nullptr;
    return current;
}
} // namespace aut
