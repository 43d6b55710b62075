#ifndef AUTOOLS_WEBCONF_CONFIGLISTS_H
#define AUTOOLS_WEBCONF_CONFIGLISTS_H

#include "foundation/RT_List.h"

#include <memory>

namespace aut
{
// Lists of pointers that own what they point to.

template <typename T> using OwnedList = RT_List<T*, T*>;

template <typename T> void freeOwnedList(OwnedList<T>& list)
{
    while (!list.IsEmpty())
        delete list.RemoveHead();
}

/// Appends the element; it is not lost when the list cannot grow.
template <typename T> void appendOwned(OwnedList<T>& list, std::unique_ptr<T> element)
{
    list.AddTail(element.get());
    (void)element.release();
}

/// Replaces the elements by copies of those of another list.
template <typename T> void copyOwnedList(OwnedList<T>& list, const OwnedList<T>& other)
{
    freeOwnedList(list);
    for (POSITION pos = other.GetHeadPosition(); pos != nullptr;)
        appendOwned(list, std::make_unique<T>(*other.GetNext(pos)));
}
} // namespace aut

#endif
