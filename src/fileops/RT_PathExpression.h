#ifndef AUTOOLS_FILEOPS_RT_PATHEXPRESSION_H
#define AUTOOLS_FILEOPS_RT_PATHEXPRESSION_H

#include "fileops/RT_Expression.h"

/// The path of a component: adds %Product%, %ProductPath%, %VelmoraPath% and %MSI(product:component)%, and alternatives
/// separated by ";", of which the first that is fully resolved wins. A well-known folder whose value is its own name is
/// taken as the name of a product and stands for that product's path.
class AUTOOLS_API RT_PathExpression : public RT_Expression
{
public:
    RT_PathExpression(const String& name, const String& expression, const String& productPath);
    RT_PathExpression(const RT_PathExpression& other);
    RT_PathExpression& operator=(const RT_PathExpression& other);

    /// Trimmed of blanks; empty when there are alternatives and none is fully resolved.
    String Evaluate() override;
    ~RT_PathExpression() override;

protected:
    template <typename T> friend struct aut::LayoutOf;

    String EvaluateEnvironmentVariable(const String& name) override;

    int m_alternatives;
    String m_productPath;
};

#endif
