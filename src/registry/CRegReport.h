#ifndef AUTOOLS_REGISTRY_CREGREPORT_H
#define AUTOOLS_REGISTRY_CREGREPORT_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Data": one text value per pending report, named by the report, whose data is the
/// report's file name. The texts returned live as long as the object and change with the report name.
class AUTOOLS_API CRegReport : public CRegBase
{
public:
    explicit CRegReport(bool readOnly);
    CRegReport(const CRegReport& other);
    CRegReport& operator=(const CRegReport& other);

    /// Names the report and its file "name.rep2" in the data folder; an empty name is ignored, and so is one whose
    /// file name is 260 characters or longer.
    void SetReportName(const char* name);
    const char* GetReportName();
    /// The data folder, read at construction.
    const char* GetPath();
    const char* GetFileName();
    /// The data folder and the file name joined by "\"; "" when that is 260 characters or longer.
    const char* GetFullPath();

    /// Both do nothing without a report name.
    void CreateRegistryEntry();
    void DeleteRegistryEntry();
    /// Takes the file name from the registry ("" when missing); needs a report name.
    void InitFromRegistry();

private:
    void BuildFullPath();

    char m_reportName[260];
    char m_directory[260];
    char m_fileName[260];
    char m_fullPath[260];
};

#endif
