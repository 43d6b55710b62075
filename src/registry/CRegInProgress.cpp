#include "registry/CRegInProgress.h"

#include "registry/CRegAutoUpdate.h"
#include "registry/TypedValues.h"

using aut::readText;

namespace
{
constexpr char kInProgressKey[] = "Software\\Velmora\\7xAutoUpdate\\IN_PROGRESS";
constexpr char kInProgressLocalKey[] = "Software\\Velmora\\7xAutoUpdate\\IN_PROGRESS_LOCAL";
} // namespace

CRegInProgress::CRegInProgress(bool readOnly)
    : CRegInProgress(CRegAutoUpdate(true).IsLocalInstall() ? kInProgressLocalKey : kInProgressKey, readOnly)
{
}

CRegInProgress::CRegInProgress(const char* path, bool readOnly) : CRegBase(path, readOnly) {}

const char* CRegInProgress::GetProductFilePath() { return readText(*this, m_value, "ProductsFilePath"); }
void CRegInProgress::SetProductFilePath(const char* text) { SetValue("ProductsFilePath", text); }
int CRegInProgress::GetPhase() { return static_cast<int>(aut::readNumber(*this, "Phase")); }
void CRegInProgress::SetPhase(int phase) { SetValue("Phase", static_cast<unsigned long>(phase)); }
bool CRegInProgress::IsPrioA() { return aut::readFlag(*this, "PrioA"); }
const char* CRegInProgress::GetAction() { return readText(*this, m_value, "Action"); }
void CRegInProgress::SetAction(const char* text) { SetValue("Action", text); }
const char* CRegInProgress::GetObjectA() { return readText(*this, m_value, "Object"); }
void CRegInProgress::SetObject(const char* text) { SetValue("Object", text); }

void CRegInProgress::SetPrioA(bool on)
{
    if (on)
        SetValue("PrioA", 1UL);
    else
        DeleteValue("PrioA");
}

void CRegInProgress::SetAction(int number)
{
    String text;
    text.Format("%d", number);
    SetAction(text);
}

CRegInProgressLocal::CRegInProgressLocal(bool readOnly) : CRegInProgress(kInProgressLocalKey, readOnly) {}

const char* CRegInProgressLocal::GetLocation() { return readText(*this, m_value, "Location"); }

void CRegInProgressLocal::SetLocation(const char* text) { SetValue("Location", text); }
