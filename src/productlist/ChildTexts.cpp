#include "productlist/ChildTexts.h"

#include <cassert>
#include <cstring>
#include <string>

namespace aut
{
ChildTexts::ChildTexts(IXMLDOMNode* element, std::initializer_list<const char*> names)
{
    m_fields.reserve(names.size());
    for (const char* const name : names)
        m_fields.push_back(Field{name, false, String()});

    XmlChildren children(element);
    std::size_t missing = m_fields.size();
    while (missing > 0)
    {
        const XmlNodePtr child = children.next();
        if (child == nullptr)
            return;
        Field* const field = findWanted(XmlName(child.Get()));
        if (field == nullptr || !isXmlElement(child.Get()))
            continue;
        field->text = xmlText(child.Get());
        field->found = true;
        --missing;
    }
}

const String& ChildTexts::operator[](const char* name) const
{
    for (const Field& field : m_fields)
        if (std::strcmp(field.name, name) == 0)
            return field.text;
    assert(false && "a name that was not asked for");
    static const String kNone;
    return kNone;
}

ChildTexts::Field* ChildTexts::findWanted(const XmlName& name)
{
    for (Field& field : m_fields)
        if (!field.found && name == field.name)
            return &field;
    return nullptr;
}

std::vector<XmlNodePtr> childElements(IXMLDOMNode* parent, const char* name)
{
    std::vector<XmlNodePtr> found;
    XmlChildren children(parent);
    while (XmlNodePtr child = children.next())
        if (XmlName(child.Get()) == name && isXmlElement(child.Get()))
            found.push_back(std::move(child));
    return found;
}
} // namespace aut
