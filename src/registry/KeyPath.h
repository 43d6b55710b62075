#ifndef AUTOOLS_REGISTRY_KEYPATH_H
#define AUTOOLS_REGISTRY_KEYPATH_H

#include "platform/BoundedText.h"

#include <initializer_list>

namespace aut
{
/// The path of a key, its pieces joined with "\"; a null piece counts as "". It asks for no memory: a path that lost a
/// piece for want of it would name another key, and keys are deleted with all that is below them.
class KeyPath
{
public:
    KeyPath(std::initializer_list<const char*> pieces) noexcept : m_text{}
    {
        const char* separator = "";
        for (const char* const piece : pieces)
        {
            appendText(m_text, separator);
            appendText(m_text, piece);
            separator = "\\";
        }
    }
    operator const char*() const noexcept { return m_text; }

private:
    char m_text[261]; // one more than a path may have, so that one that had to be cut is refused as too long
};
} // namespace aut

#endif
