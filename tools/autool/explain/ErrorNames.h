#ifndef AUTOOL_EXPLAIN_ERRORNAMES_H
#define AUTOOL_EXPLAIN_ERRORNAMES_H

#include <vector>

namespace autool
{
struct ErrorName
{
    unsigned long number;
    const char* name;
};

/// The names of the errors that an update client meets; the system gives texts, but no names.
const std::vector<ErrorName>& errorNames();
} // namespace autool

#endif
