#ifndef AUTOOLS_REGISTRY_CREGBASE_H
#define AUTOOLS_REGISTRY_CREGBASE_H

#include "foundation/Export.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"

#include <windows.h>

/// One open registry key of the local machine, always in its 64-bit view.
///
/// Opened read-only, a missing key leaves the object closed; opened for writing, it is created. A write on a read-only
/// object, open or not, first opens the key for writing, below HKEY_LOCAL_MACHINE. Every successful change is flushed,
/// so that several processes share state through the registry alone. Only true or false is reported; no error code is
/// kept and nothing is logged. A null or empty value name means the key's unnamed value. Not thread-safe.
///
/// The layout is part of the exported interface. Copying deliberately copies the key handle as it is: the two objects
/// share it and the first to close it invalidates the other's, so copy closed objects only.
class AUTOOLS_API CRegBase
{
public:
    CRegBase();
    /// Joins the pieces with "\" and opens the key below HKEY_LOCAL_MACHINE. A path of 260 characters or more is
    /// refused: the object stays closed and has no path. A null piece counts as "".
    CRegBase(const char* path, bool readOnly);
    CRegBase(const char* part1, const char* part2, bool readOnly);
    CRegBase(const char* part1, const char* part2, const char* part3, bool readOnly);
    CRegBase(const char* part1, const char* part2, const char* part3, const char* part4, bool readOnly);
    CRegBase(const CRegBase& other);
    CRegBase& operator=(const CRegBase& other);
    ~CRegBase();

    /// Closes, then opens `path` below `root` (borrowed). `access` is a registry access mask; KEY_WOW64_64KEY replaces
    /// whatever view it asks for. A missing key is created unless the access is KEY_READ.
    bool Open(HKEY root, const char* path, int access);
    bool Open(const char* path, int access);
    /// Closes the key. The access becomes read-write, so a later `SetValue` fails until the key is opened again.
    void Close();
    void Flush();

    /// The value's first bytes as a number, whatever its type, when they are at most 4; else 0 and false.
    bool QueryValue(const char* name, unsigned long& value);
    /// The value's data as text, whatever its type, at most 259 characters, into a buffer of 260 bytes; "" and false
    /// when missing or longer, and false for a null buffer.
    bool QueryValue(const char* name, char* buffer);
    /// The value's text of any length; emptied and false when missing. A value of size 0 deliberately leaves `text`
    /// unchanged and gives true.
    bool QueryValue(const char* name, String& text);
    /// The value as text by its type: REG_SZ the text, REG_DWORD unsigned decimal ("" when it is above 4 bytes),
    /// REG_BINARY its size as a hexadecimal number, which says nothing of the data, anything else "". True once the
    /// value exists.
    bool QueryAnyTypeValue(const char* name, String& text);

    /// Writes REG_SZ; null is written as "". Fails on a closed object that is not read-only.
    bool SetValue(const char* name, const char* text);
    /// Writes REG_DWORD.
    bool SetValue(const char* name, unsigned long value);
    /// False when there is no such value. On a closed object that is not read-only there is nothing to delete: true.
    bool DeleteValue(const char* name);
    /// Removes the key with all its subkeys below HKEY_LOCAL_MACHINE and closes the object; on a closed object as
    /// `DeleteValue`. False when a subkey cannot be removed, or the object has no path.
    bool DeleteKey();

    /// Both empty `list` before they fill it; a closed key or one that cannot be queried leaves it alone and gives
    /// false. A failing enumeration (a name above 259 characters) ends the walk and gives false.
    bool GetSubKeys(RT_List<String, String&>& list);
    bool GetValues(RT_List<String, String&>& list);
    /// The number of values, remembered for `EnumerateStringValues`.
    unsigned long GetSubValuesCount();
    /// The name of value number `index` when it is a text value, else ""; `index` is increased unless it is at the
    /// end. Callers go on until `index` reaches `GetSubValuesCount()`, skipping "".
    String EnumerateStringValues(unsigned long& index);

protected:
    template <typename T> friend struct aut::LayoutOf;

    /// What every write begins with: a read-only object is opened for writing; false when that fails. One that is not
    /// read-only stays as it is, open or closed.
    bool ReopenForWriting();
    /// Writes `size` bytes as a value of the given type, with the rules of `SetValue`.
    bool WriteValue(const char* name, unsigned long type, const void* data, unsigned long size);

    HKEY m_key;
    char m_value[260]; ///< what text accessors of derived classes return a pointer into
    char m_path[260];
    unsigned long m_access;
    unsigned long m_valueCount;
};

#endif
