#include "registry/TypedValues.h"

#include "platform/BoundedText.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace
{
using StringList = RT_List<String, String&>;

/// Of the caller's own characters: of a String made for the call nobody could tell whether it is whole.
bool addCopy(StringList& list, const char* text, POSITION (StringList::*add)(String&)) noexcept
{
    try
    {
        String copy(text);
        const POSITION added = (list.*add)(copy);
        POSITION next = added;
        if (static_cast<std::size_t>(list.GetNext(next).GetLength()) == std::strlen(aut::orEmpty(text)))
            return true;
        list.RemoveAt(added); // there was memory for the entry, but none for its text
        return false;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

POSITION find(const StringList& list, const char* text)
{
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
    {
        const POSITION current = pos;
        if (list.GetNext(pos) == text)
            return current;
    }
    return nullptr;
}
} // namespace

namespace aut
{
KeyPath entryPath(const char* root, const char* name) { return isEmpty(name) ? KeyPath{root} : KeyPath{root, name}; }

bool writeOrDelete(CRegBase& key, const char* name, const char* text)
{
    return isEmpty(text) ? key.DeleteValue(name) : key.SetValue(name, text);
}

void splitBuildAndVersion(const char* text, char* version, char* build)
{
    constexpr std::size_t kBufferSize = 260;
    const std::size_t versionLength = std::strcspn(orEmpty(text), "ABPabp");
    copyText(build, kBufferSize, orEmpty(text) + versionLength);
    copyText(version, std::min(versionLength + 1, kBufferSize), text);
}

bool appendTo(RT_List<String, String&>& list, const char* text) noexcept
{
    return addCopy(list, text, &RT_List<String, String&>::AddTail);
}

bool prependTo(RT_List<String, String&>& list, const char* text) noexcept
{
    return addCopy(list, text, &RT_List<String, String&>::AddHead);
}

bool removeFrom(RT_List<String, String&>& list, const char* text)
{
    const POSITION found = find(list, text);
    list.RemoveAt(found);
    return found != nullptr;
}

bool contains(const RT_List<String, String&>& list, const char* text) { return find(list, text) != nullptr; }
} // namespace aut
