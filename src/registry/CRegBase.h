#ifndef AUTOOLS_REGISTRY_CREGBASE_H
#define AUTOOLS_REGISTRY_CREGBASE_H

#include "foundation/Export.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"

#include <windows.h>

/// One open registry key of the local machine, always in its 64-bit view.
///
/// Opened read-only, a missing key leaves the object closed; opened for writing, it is created. A write on a read-only
/// object first reopens the key for writing. Every successful change is flushed, so that several processes share
/// state through the registry alone. Only true or false is reported; no error code is kept and nothing is logged.
/// Not thread-safe.
///
/// The layout is part of the exported interface. Copying deliberately copies the key handle as it is: the two objects
/// share it and the first to close it invalidates the other's, so copy closed objects only.
class AUTOOLS_API CRegBase
{
public:
    CRegBase();
    /// Joins the pieces with "\" and opens the key below HKEY_LOCAL_MACHINE. A path of 260 characters or more is
    /// refused: the object stays closed.
    CRegBase(const char* path, bool readOnly);
    CRegBase(const char* part1, const char* part2, bool readOnly);
    CRegBase(const char* part1, const char* part2, const char* part3, bool readOnly);
    CRegBase(const char* part1, const char* part2, const char* part3, const char* part4, bool readOnly);
    ~CRegBase();

    /// Closes, then opens `path` below `root` (borrowed). `access` is a registry access mask; KEY_WOW64_64KEY is
    /// added. A missing key is created unless the access is KEY_READ.
    bool Open(HKEY root, const char* path, int access);
    bool Open(const char* path, int access);
    /// Closes the key; a later write reopens it for writing.
    void Close();
    void Flush();

    /// The value's 4 bytes, whatever its type; 0 and false when missing or of another size.
    bool QueryValue(const char* name, unsigned long& value);
    /// The value's text, at most 259 characters, into a buffer of 260 bytes; "" and false when missing or longer.
    bool QueryValue(const char* name, char* buffer);
    /// The value's text of any length; emptied and false when missing. A value of size 0 deliberately leaves `text`
    /// unchanged and gives true.
    bool QueryValue(const char* name, String& text);
    /// The value as text by its type: REG_SZ the text, REG_DWORD unsigned decimal, anything else as documented in
    /// the source. True once the value exists.
    bool QueryAnyTypeValue(const char* name, String& text);

    /// Writes REG_SZ; null is written as "".
    bool SetValue(const char* name, const char* text);
    /// Writes REG_DWORD.
    bool SetValue(const char* name, unsigned long value);
    bool DeleteValue(const char* name);
    /// Removes the key with all its subkeys and closes the object.
    bool DeleteKey();

    /// Both empty `list` first and report false when the key is closed or the enumeration fails.
    bool GetSubKeys(RT_List<String, String&>& list);
    bool GetValues(RT_List<String, String&>& list);
    /// The number of values, remembered for `EnumerateStringValues`.
    unsigned long GetSubValuesCount();
    /// The name of value number `index` when it is a text value, else ""; `index` is increased unless it is at the
    /// end. Callers go on until `index` reaches `GetSubValuesCount()`, skipping "".
    String EnumerateStringValues(unsigned long& index);

protected:
    template <typename T> friend struct aut::LayoutOf;

    HKEY m_key;
    char m_value[260]; ///< what text accessors of derived classes return a pointer into
    char m_path[260];
    unsigned long m_access;
    unsigned long m_valueCount;
};

#endif
