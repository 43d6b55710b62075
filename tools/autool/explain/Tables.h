#ifndef AUTOOL_EXPLAIN_TABLES_H
#define AUTOOL_EXPLAIN_TABLES_H

#include "explain/Explanations.h"

// The parts of the table, one file each; Explanations.cpp puts them together.
namespace autool
{
using ExplanationRows = std::vector<Explanation>;

ExplanationRows statusCodeRows();
ExplanationRows transferRows();
ExplanationRows registrationRows();
ExplanationRows fileLogRows();
ExplanationRows productListLogRows();
ExplanationRows catalogueLogRows();
ExplanationRows configurationLogRows();
ExplanationRows certificateLogRows();
ExplanationRows systemLogRows();

constexpr Explanation statusCode(long long code, const char* action, const char* reporter, const char* meaning,
                                 const char* advice)
{
    return {Kind::StatusCode, code, code, "", action, reporter, meaning, advice};
}
constexpr Explanation logText(const char* type, const char* text, const char* reporter, const char* meaning,
                              const char* advice = "")
{
    return {Kind::LogText, 0, 0, type, text, reporter, meaning, advice};
}
} // namespace autool

#endif
