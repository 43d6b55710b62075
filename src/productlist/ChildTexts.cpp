#include "productlist/ChildTexts.h"

#include <cassert>
#include <cstring>
#include <string>
#include <utility>

namespace aut
{
ChildTexts::ChildTexts(IXMLDOMNode* element, std::initializer_list<const char*> names, const char* branch)
    : m_children(element), m_branch(branch)
{
    m_fields.reserve(names.size());
    for (const char* const name : names)
        m_fields.push_back(Field{name, false, std::string()});

    std::size_t missing = m_fields.size();
    while (missing > 0)
    {
        XmlNodePtr child = m_children.next();
        if (child == nullptr)
            return;
        const XmlName name(child.Get());
        Field* const field = findWanted(name);
        if (field == nullptr)
        {
            keepBranch(name, child);
            continue;
        }
        if (!isXmlElement(child.Get()))
            continue;
        field->text = xmlShortText(child.Get());
        field->found = true;
        --missing;
    }
}

const std::vector<XmlNodePtr>& ChildTexts::branches()
{
    while (XmlNodePtr child = m_children.next())
        keepBranch(XmlName(child.Get()), child);
    return m_branches;
}

void ChildTexts::keepBranch(const XmlName& name, XmlNodePtr& child)
{
    if (m_branch != nullptr && name == m_branch && isXmlElement(child.Get()))
        m_branches.push_back(std::move(child));
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
