#include "fileops/RT_PathExpression.h"

#include "fileops/MSIPath.h"
#include "platform/Layout.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/CRegProduct.h"

#include <cstring>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<RT_PathExpression>
{
    static_assert(sizeof(RT_PathExpression) == 80);
    static_assert(offsetof(RT_PathExpression, m_alternatives) == 56);
    static_assert(offsetof(RT_PathExpression, m_productPath) == 64);
};
AUT_LAYOUT_END

namespace
{
bool isResolved(const String& text) { return std::strpbrk(text, "{}%") == nullptr; }

String productPath(const char* product) { return String(CRegProduct(product, true).GetPath()); }
} // namespace

RT_PathExpression::RT_PathExpression(const String& name, const String& expression, const String& productPath)
    : RT_Expression(name, expression), m_alternatives(1), m_productPath(productPath)
{
}

RT_PathExpression::RT_PathExpression(const RT_PathExpression& other) = default;
RT_PathExpression& RT_PathExpression::operator=(const RT_PathExpression& other) = default;
RT_PathExpression::~RT_PathExpression() = default;

String RT_PathExpression::Evaluate()
{
    String text = RT_Expression::Evaluate();
    if (m_alternatives == 0 || text.Find(';') == -1)
    {
        text.Trim();
        return text;
    }
    int begin = 0;
    for (;;)
    {
        const int end = text.Find(';', begin);
        String alternative = end == -1 ? text.Mid(begin) : text.Mid(begin, end - begin);
        alternative.Trim();
        if (isResolved(alternative))
            return alternative; // an empty one too
        if (end == -1)
            return String();
        begin = end + 1;
    }
}

String RT_PathExpression::EvaluateEnvironmentVariable(const String& name)
{
    if (name == "Product")
        return productPath(""); // the root of the products, which deliberately has no path
    if (name == "ProductPath")
        return m_productPath;
    if (name == "VelmoraPath")
        return String(CRegAutoUpdate(true).GetVelmoraPath());
    if (name.Find("MSI(") == 0)
        // Without its closing parenthesis the name is deliberately its own value: the block loses its percent signs.
        return name.GetAt(name.GetLength() - 1) == ')' ? MSIEvaluatePath(name) : name;

    const String value = RT_Expression::EvaluateEnvironmentVariable(name);
    return value == name ? productPath(name) : value;
}
