#ifndef AUTOOLS_CATALOGUE_COMPONENTLIST_H
#define AUTOOLS_CATALOGUE_COMPONENTLIST_H

#include "catalogue/CComponent.h"
#include "foundation/RT_List.h"

/// Whether the list has a component of the same name, version, build and language, all ignoring case.
AUTOOLS_API bool IsComponentInList(const RT_List<CComponent*, CComponent*>& list, const CComponent* component);

/// In the client's phase 3 only: drops the component "Kernel", aligns the registry's shared state with each component
/// and puts substitutes at the tail for shared components whose common version is the one to act on. A substitute owns
/// the component that it replaces, until it is deleted or its map file is released. Components whose name, or product,
/// can have no registry entry of its own stay as they are; that is logged. When memory runs out a component is not
/// substituted. False outside phase 3 or without a product.
AUTOOLS_API bool UpdateComponentList(RT_List<CComponent*, CComponent*>& list, const char* product);

#endif
