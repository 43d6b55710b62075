#ifndef AUTOOLS_FILEOPS_RT_EXPRESSION_H
#define AUTOOLS_FILEOPS_RT_EXPRESSION_H

#include "foundation/Export.h"
#include "foundation/String.h"

/// Evaluates the blocks `%NAME%`, `{HKLM\key\value}`, `{HKCU\key\value}` and `{file [section] key}` in a text.
///
/// What cannot be resolved stays as it is written, and so does everything from a block on that is never closed (see
/// `Analyse`) or that would take the text beyond a megabyte. The layout and the order of the virtual operations are
/// part of the exported interface. Not thread-safe.
class AUTOOLS_API RT_Expression
{
public:
    RT_Expression();
    RT_Expression(const String& name, const String& expression);
    /// Splits "name=expression". An expression that itself contains "=" is deliberately cut there.
    RT_Expression(const char* line);
    RT_Expression(const RT_Expression& other);
    RT_Expression& operator=(const RT_Expression& other);

    /// Evaluates round by round, at most 10 times, until a round changes nothing.
    virtual String Evaluate();
    virtual ~RT_Expression();

    /// Whether braces are balanced and every variable is closed at the depth at which it was opened.
    bool Analyse();

protected:
    template <typename T> friend struct aut::LayoutOf;

    virtual String EvaluateFile(const String& inner);
    virtual String EvaluateReg(const String& inner);
    virtual String EvaluateEnvironmentVariable(const String& name);

    /// One pass over the blocks of a text.
    String Evaluate(String& text);
    String EvaluateRegOrFile(const String& inner);

private:
    int SearchPosEndBlock(const String& text, char open, char close, int start);

protected:
    String m_expression;
    String m_name;
    String m_value; ///< scratch
};

#endif
