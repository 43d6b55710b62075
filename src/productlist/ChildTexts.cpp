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
        m_fields.push_back(Field{name, false, std::string()});

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
        field->text = xmlShortText(child.Get());
        field->found = true;
        --missing;
    }
}

const char* ChildTexts::operator[](const char* name) const
{
    for (const Field& field : m_fields)
        if (std::strcmp(field.name, name) == 0)
            return field.text.c_str();
    assert(false && "a name that was not asked for");
    return "";
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
