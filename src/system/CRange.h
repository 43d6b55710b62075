#ifndef AUTOOLS_SYSTEM_CRANGE_H
#define AUTOOLS_SYSTEM_CRANGE_H

#include "foundation/Export.h"

/// A range of integers from which a random value is drawn. The upper bound itself is never drawn.
class AUTOOLS_API CRange
{
public:
    /// Both bounds 0. Seeds the C runtime's random generator with the current time.
    CRange();
    CRange(const CRange& other);
    CRange& operator=(const CRange& other);
    virtual ~CRange();

    /// Reads "low-high"; a text without "-" is the upper bound. The first "-" always separates, so that negative
    /// lower bounds cannot be written.
    void SetRange(const char* text);
    /// At least the lower bound and below the upper one; the bound when both are equal.
    int Random();

    int m_upper;
    int m_lower;
};

#endif
