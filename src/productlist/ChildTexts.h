#ifndef AUTOOLS_PRODUCTLIST_CHILDTEXTS_H
#define AUTOOLS_PRODUCTLIST_CHILDTEXTS_H

#include "foundation/XmlPointers.h"
#include "platform/Xml.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace aut
{
/// The texts of an element's child elements of the given names, read in one walk over the children.
///
/// Each name gives what selecting it as a path from the element gives: the whole text content of the FIRST child
/// element of that name. Case and a namespace prefix count, a default namespace does not. One path query per field
/// was measured many times dearer than the walk, and a product list has tens of thousands of fields.
class ChildTexts
{
public:
    /// The names must outlive the object. `branch` names the child elements that `branches` gives. Raises.
    ChildTexts(IXMLDOMNode* element, std::initializer_list<const char*> names, const char* branch = nullptr);

    /// The text of one of the names given; "" when there is no such child.
    const char* operator[](const char* name) const;

    /// The child elements of the branch's name, in document order. The walk goes on from where the last text was
    /// found, so that no child is visited twice. Raises.
    const std::vector<XmlNodePtr>& branches();

private:
    struct Field
    {
        const char* name;
        bool found;
        std::string text;
    };
    Field* findWanted(const XmlName& name);
    /// Keeps the child when it is a branch.
    void keepBranch(const XmlName& name, XmlNodePtr& child);

    XmlChildren m_children; ///< behind the last child that was visited
    std::vector<Field> m_fields;
    const char* m_branch;
    std::vector<XmlNodePtr> m_branches;
};

/// The child elements of one name, in document order. Raises.
std::vector<XmlNodePtr> childElements(IXMLDOMNode* parent, const char* name);
} // namespace aut

#endif
