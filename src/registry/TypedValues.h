#ifndef AUTOOLS_REGISTRY_TYPEDVALUES_H
#define AUTOOLS_REGISTRY_TYPEDVALUES_H

#include "registry/CRegBase.h"
#include "registry/KeyPath.h"

// What the accessors of the key classes are made of: one typed read or write each, so that an accessor names its value
// and nothing else. The common defaults live here: "" for a text, 0 for a number and false for a flag that is missing.

namespace aut
{
inline constexpr char kAutoUpdateKey[] = "Software\\Velmora\\7xAutoUpdate";
inline constexpr char kProductsKey[] = "Software\\Velmora\\7xAutoUpdate\\Products";
inline constexpr char kComponentsKey[] = "Software\\Velmora\\7xAutoUpdate\\Components";
/// The entry below a component that all products sharing it have in common.
inline constexpr char kSharedEntry[] = "Shared";

/// Everything but KEY_CREATE_LINK and WRITE_DAC, which the library never needs.
inline constexpr int kReadWriteAccess =
    DELETE | READ_CONTROL | KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY;
constexpr int accessFor(bool readOnly) { return readOnly ? KEY_READ : kReadWriteAccess; }

/// The path of one entry below `root`; for a null or empty name the root itself.
KeyPath entryPath(const char* root, const char* name);

inline const char* readText(CRegBase& key, char (&buffer)[260], const char* name)
{
    key.QueryValue(name, buffer);
    return buffer;
}
inline unsigned long readNumber(CRegBase& key, const char* name)
{
    unsigned long number = 0;
    key.QueryValue(name, number);
    return number;
}
inline bool readFlag(CRegBase& key, const char* name) { return readNumber(key, name) != 0; }
inline bool writeFlag(CRegBase& key, const char* name, bool on) { return key.SetValue(name, on ? 1UL : 0UL); }
/// An empty text is no value: it deletes what is stored.
bool writeOrDelete(CRegBase& key, const char* name, const char* text);

/// Cuts a version text before the first A, B or P of either case; `build` receives the rest. Each buffer holds 260
/// bytes, a null one is skipped.
void splitBuildAndVersion(const char* text, char* version, char* build);

/// Add a copy at the end (in front); false when memory runs out.
bool appendTo(RT_List<String, String&>& list, const char* text) noexcept;
bool prependTo(RT_List<String, String&>& list, const char* text) noexcept;
/// Removes the first entry equal to `text` without regard to case; false when there is none.
bool removeFrom(RT_List<String, String&>& list, const char* text);
/// The same as a question.
bool contains(const RT_List<String, String&>& list, const char* text);
} // namespace aut

#endif
