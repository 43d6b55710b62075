#ifndef AUTOOLS_FOUNDATION_CVERSION_H
#define AUTOOLS_FOUNDATION_CVERSION_H

#include "foundation/Export.h"

#include <memory>

/// A version text taken apart: major, minor, the character between minor and build, build, then either (full, as in
/// 3.3.302B1.2) a second such character and two further numbers, or one further number (3.3.302.1), or nothing (short,
/// as in 3.3.302 or 3.3.302B).
class CVersion
{
public:
    static constexpr int kPartCount = 7;

    CVersion();
    CVersion(const CVersion&) = delete;
    CVersion& operator=(const CVersion&) = delete;
    virtual ~CVersion();

    /// False for a null text and for one that is no version: all parts are then 0 and no flag is set.
    bool parse(const char* text);

    /// 0 before the first parse. Separators are their character codes.
    int part(int index) const { return m_parts ? m_parts[static_cast<unsigned>(index)] : 0; }
    bool isFull() const { return m_full != 0; }
    bool isShort() const { return m_short != 0; }

private:
    template <typename T> friend struct aut::LayoutOf;

    int scanBase(const char*& text);
    int scanFull(const char* text);
    int scanShort(const char* text);
    void clear();

    [[maybe_unused]] int m_count;   ///< part of the layout; always the number of parts
    std::unique_ptr<int[]> m_parts; ///< allocated on the first parse
    int m_full;
    int m_short;
};

#endif
