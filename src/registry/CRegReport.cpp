#include "registry/CRegReport.h"

#include "platform/BoundedText.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/TypedValues.h"

CRegReport::CRegReport(bool readOnly)
    : CRegBase(aut::kAutoUpdateKey, "Data", readOnly), m_reportName{}, m_directory{}, m_fileName{}, m_fullPath{}
{
    CRegAutoUpdate autoUpdate(true);
    aut::copyText(m_directory, autoUpdate.GetDataPath());
}

CRegReport::CRegReport(const CRegReport& other) = default;
CRegReport& CRegReport::operator=(const CRegReport& other) = default;

void CRegReport::SetReportName(const char* name)
{
    // A name that was cut would be another report's.
    char fileName[sizeof m_fileName];
    if (aut::isEmpty(name) || !aut::formatText(fileName, sizeof fileName, "%s.rep2", name))
        return;
    aut::copyText(m_reportName, name);
    aut::copyText(m_fileName, fileName);
    BuildFullPath();
}

const char* CRegReport::GetReportName() { return m_reportName; }

const char* CRegReport::GetPath() { return m_directory; }

const char* CRegReport::GetFileName() { return m_fileName; }

const char* CRegReport::GetFullPath() { return m_fullPath; }

void CRegReport::CreateRegistryEntry()
{
    if (m_reportName[0] != '\0')
        SetValue(m_reportName, m_fileName);
}

void CRegReport::DeleteRegistryEntry()
{
    if (m_reportName[0] != '\0')
        DeleteValue(m_reportName);
}

void CRegReport::InitFromRegistry()
{
    if (m_reportName[0] == '\0')
        return;
    QueryValue(m_reportName, m_fileName);
    BuildFullPath();
}

void CRegReport::BuildFullPath()
{
    if (!aut::formatText(m_fullPath, sizeof m_fullPath, "%s\\%s", m_directory, m_fileName))
        m_fullPath[0] = '\0';
}
