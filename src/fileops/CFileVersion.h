#ifndef AUTOOLS_FILEOPS_CFILEVERSION_H
#define AUTOOLS_FILEOPS_CFILEVERSION_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

/// Reads the version resource of a file through Version.dll, loaded at construction. Without that library nothing can
/// be opened. A second `Open` closes first. Not copied. Not thread-safe.
class AUTOOLS_API CFileVersion
{
public:
    CFileVersion();
    CFileVersion(const CFileVersion&) = delete;
    CFileVersion& operator=(const CFileVersion&) = delete;
    ~CFileVersion();

    /// 1 on success. A file with a version record but no translation table counts as having none.
    int Open(const char* path);
    void Close();

    /// A value of the string table; `translation` is language << 16 | code page, 0 for the file's first one.
    String QueryValue(const char* name, unsigned long translation);
    int GetFixedInfo(VS_FIXEDFILEINFO& info);
    /// "a,b,c,d", or empty.
    String GetFixedFileVersion();
    String GetFixedProductVersion();

private:
    template <typename T> friend struct aut::LayoutOf;

    void* m_block;
    unsigned long m_translation;
    HMODULE m_library;
    unsigned long(__stdcall* m_getSize)(const char*, unsigned long*);
    int(__stdcall* m_getInfo)(const char*, unsigned long, unsigned long, void*);
    int(__stdcall* m_query)(const void*, const char*, void**, unsigned int*);
};

#endif
