#ifndef AUTOOLS_TESTS_FILEOPS_EXPRESSIONFIXTURE_H
#define AUTOOLS_TESTS_FILEOPS_EXPRESSIONFIXTURE_H

#include "fileops/RT_Expression.h"
#include "tests/support/ClientRegistry.h"

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace auttest
{
/// What a test writes into the registry for {HKLM\...} and {HKCU\...}: empty at its start, gone at its end.
inline constexpr char kExpressionKey[] = "Software\\Velmora\\ExpressionTest";
class ExpressionKeys
{
public:
    ExpressionKeys() { clear(); }
    ~ExpressionKeys() { clear(); }
    ExpressionKeys(const ExpressionKeys&) = delete;
    ExpressionKeys& operator=(const ExpressionKeys&) = delete;

    const Registry machine{HKEY_LOCAL_MACHINE, kExpressionKey};
    const Registry user{HKEY_CURRENT_USER, kExpressionKey};

private:
    void clear() const
    {
        machine.removeKey("");
        user.removeKey("");
    }
};

/// One value of the system's own, put back at the end of the test.
class BorrowedValue
{
public:
    BorrowedValue(HKEY root, std::string key, std::string name)
        : m_registry(root), m_key(std::move(key)), m_name(std::move(name)),
          m_before(m_registry.readRaw(m_key, m_name.c_str()))
    {
    }
    BorrowedValue(HKEY root, std::string key, std::string name, const char* text)
        : BorrowedValue(root, std::move(key), std::move(name))
    {
        write(text);
    }
    ~BorrowedValue()
    {
        if (m_before)
            m_registry.writeRaw(m_key, m_name.c_str(), m_before->type, m_before->bytes);
        else
            remove();
    }
    BorrowedValue(const BorrowedValue&) = delete;
    BorrowedValue& operator=(const BorrowedValue&) = delete;

    void write(const char* text) const { m_registry.write(m_key, m_name.c_str(), text); }
    void writeRaw(DWORD type, std::string_view bytes) const { m_registry.writeRaw(m_key, m_name.c_str(), type, bytes); }
    void remove() const { m_registry.removeValue(m_key, m_name.c_str()); }

private:
    Registry m_registry;
    std::string m_key;
    std::string m_name;
    std::optional<StoredValue> m_before;
};
inline constexpr char kCurrentVersion64[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
inline constexpr char kCurrentVersion32[] = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion";

/// A variable of this process's environment for one test.
class Variable
{
public:
    Variable(const char* name, const std::string& value) : m_name(name)
    {
        ::SetEnvironmentVariableA(name, value.c_str());
    }
    ~Variable() { ::SetEnvironmentVariableA(m_name, nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
};

/// Takes a variable out of the environment for one test: not every system has WINSYSDIR there, but some have.
class Unset
{
public:
    explicit Unset(const char* name) : m_name(name)
    {
        char value[MAX_PATH];
        const DWORD length = ::GetEnvironmentVariableA(name, value, MAX_PATH);
        m_wasSet = length != 0;
        m_value.assign(value, length);
        ::SetEnvironmentVariableA(name, nullptr);
    }
    ~Unset() { ::SetEnvironmentVariableA(m_name, m_wasSet ? m_value.c_str() : nullptr); }
    Unset(const Unset&) = delete;
    Unset& operator=(const Unset&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    std::string m_value;
};

/// An expression as those see it that derive from it.
class ExpressionProbe : public RT_Expression
{
public:
    using RT_Expression::Evaluate;
    using RT_Expression::EvaluateEnvironmentVariable;
    using RT_Expression::EvaluateFile;
    using RT_Expression::EvaluateReg;
    using RT_Expression::EvaluateRegOrFile;
    using RT_Expression::m_expression;
    using RT_Expression::m_name;
    using RT_Expression::m_value;
    using RT_Expression::RT_Expression;
};

/// Answers from a table (with regard to case) and remembers what it was asked: "%name" for a variable, "[inner" for a
/// file, "{inner" for the registry.
class RecordingExpression : public ExpressionProbe
{
public:
    explicit RecordingExpression(const std::string& expression, std::map<std::string, std::string> values = {})
        : ExpressionProbe("", expression.c_str()), m_values(std::move(values))
    {
    }
    std::vector<std::string> asked;

protected:
    String EvaluateFile(const String& inner) override { return answer('[', inner); }
    String EvaluateReg(const String& inner) override { return answer('{', inner); }
    String EvaluateEnvironmentVariable(const String& name) override { return answer('%', name); }

private:
    String answer(char kind, const String& inner)
    {
        asked.push_back(kind + std::string(inner));
        const auto found = m_values.find(asked.back());
        return found != m_values.end() ? String(found->second.c_str()) : String();
    }
    std::map<std::string, std::string> m_values;
};

inline std::string evaluated(const std::string& expression)
{
    return std::string(RT_Expression("", expression.c_str()).Evaluate());
}
} // namespace auttest

#endif
