#ifndef AUTOOLS_TESTS_PRODUCTLIST_STANDINDOCUMENT_H
#define AUTOOLS_TESTS_PRODUCTLIST_STANDINDOCUMENT_H

#include <windows.h>

namespace auttest
{
/// How a stand-in document differs from the system's own. Everything else is the real thing.
struct DocumentChanges
{
    bool validatesOnParse = true;
    HRESULT validateOnParseStatus = S_OK; ///< what reading that property returns
    HRESULT documentElementStatus = S_OK; ///< what asking for the document element returns
    HRESULT parseErrorStatus = S_OK;      ///< what asking for the parse error returns
    HRESULT saveStatus = S_OK;            ///< what saving returns; the file is left empty unless this is S_OK
    HRESULT selectStatus = S_OK;          ///< what selecting a node from the document returns
    HRESULT attributesStatus = S_OK;      ///< what asking an element for its attributes returns; S_FALSE: it has none
    bool ownParseError = false;           ///< the four values below instead of the parser's own
    long errorCode = 0;
    const wchar_t* errorReason = L"";
    long errorLine = 0;
    long errorColumn = 0;
};

/// As long as it lives, every document that this process creates is a changed one.
///
/// COM asks the classes that a process has registered itself before those of the registry: that is how documents come
/// with errors and settings that this system's parser never has.
class StandInDocument
{
public:
    explicit StandInDocument(const DocumentChanges& changes);
    ~StandInDocument();
    StandInDocument(const StandInDocument&) = delete;
    StandInDocument& operator=(const StandInDocument&) = delete;

private:
    DWORD m_cookie = 0;
};
} // namespace auttest

#endif
