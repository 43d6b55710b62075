// The C view of the interfaces: tables of named functions, of which single entries can be exchanged.
#define CINTERFACE
#include "tests/productlist/StandInDocument.h"

#include <windows.h>

#include <msxml.h>
#include <objbase.h>

#include <gtest/gtest.h>

namespace auttest
{
namespace
{
const CLSID kDomDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

DocumentChanges changes;      // COM calls the functions below without an object of ours
IClassFactory* systemFactory; // makes the real documents
IXMLDOMDocumentVtbl changedTable;
IXMLDOMDocumentVtbl systemTable;

// The parse error: one object for the life of the process.

HRESULT STDMETHODCALLTYPE errorQueryInterface(IXMLDOMParseError* self, REFIID, void** out)
{
    *out = self;
    return S_OK;
}
ULONG STDMETHODCALLTYPE errorReference(IXMLDOMParseError*) { return 1; }
HRESULT STDMETHODCALLTYPE errorCode(IXMLDOMParseError*, LONG* out)
{
    *out = changes.errorCode;
    return changes.errorCode != 0 ? S_OK : S_FALSE;
}
HRESULT STDMETHODCALLTYPE errorReason(IXMLDOMParseError*, BSTR* out)
{
    *out = ::SysAllocString(changes.errorReason);
    return S_OK;
}
HRESULT STDMETHODCALLTYPE errorLine(IXMLDOMParseError*, LONG* out)
{
    *out = changes.errorLine;
    return S_OK;
}
HRESULT STDMETHODCALLTYPE errorColumn(IXMLDOMParseError*, LONG* out)
{
    *out = changes.errorColumn;
    return S_OK;
}

IXMLDOMParseError* parseError()
{
    static IXMLDOMParseErrorVtbl table = {};
    static IXMLDOMParseError error = {&table};
    table.QueryInterface = errorQueryInterface;
    table.AddRef = errorReference;
    table.Release = errorReference;
    table.get_errorCode = errorCode;
    table.get_reason = errorReason;
    table.get_line = errorLine;
    table.get_linepos = errorColumn;
    return &error;
}

// The changed entry of the elements. They share one table, the system's own: it is patched for as long as a stand-in
// lives.

HRESULT(STDMETHODCALLTYPE** attributesEntry)(IXMLDOMElement*, IXMLDOMNamedNodeMap**);
HRESULT(STDMETHODCALLTYPE* systemAttributes)(IXMLDOMElement*, IXMLDOMNamedNodeMap**);

HRESULT STDMETHODCALLTYPE elementAttributes(IXMLDOMElement*, IXMLDOMNamedNodeMap** out)
{
    *out = nullptr;
    return changes.attributesStatus;
}
void setAttributesEntry(HRESULT(STDMETHODCALLTYPE* function)(IXMLDOMElement*, IXMLDOMNamedNodeMap**))
{
    DWORD protection = 0;
    EXPECT_TRUE(::VirtualProtect(attributesEntry, sizeof *attributesEntry, PAGE_READWRITE, &protection));
    *attributesEntry = function;
    ::VirtualProtect(attributesEntry, sizeof *attributesEntry, protection, &protection);
}
void changeAttributes(IXMLDOMElement* element)
{
    if (changes.attributesStatus == S_OK || systemAttributes != nullptr)
        return;
    attributesEntry = &element->lpVtbl->get_attributes;
    systemAttributes = *attributesEntry;
    setAttributesEntry(elementAttributes);
}
void restoreAttributes()
{
    if (systemAttributes != nullptr)
        setAttributesEntry(systemAttributes);
    systemAttributes = nullptr;
}

// The changed entries of the document.

HRESULT STDMETHODCALLTYPE documentValidateOnParse(IXMLDOMDocument*, VARIANT_BOOL* out)
{
    if (FAILED(changes.validateOnParseStatus))
        return changes.validateOnParseStatus;
    *out = changes.validatesOnParse ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}
HRESULT STDMETHODCALLTYPE documentElement(IXMLDOMDocument* self, IXMLDOMElement** out)
{
    if (FAILED(changes.documentElementStatus))
        return changes.documentElementStatus;
    const HRESULT status = systemTable.get_documentElement(self, out);
    if (status == S_OK)
        changeAttributes(*out);
    return status;
}
HRESULT STDMETHODCALLTYPE documentSave(IXMLDOMDocument* self, VARIANT destination)
{
    if (changes.saveStatus == S_OK)
        return systemTable.save(self, destination);
    const HANDLE file = ::CreateFileW(destination.bstrVal, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE)
        ::CloseHandle(file); // with nothing in it, as when the disk is full
    return changes.saveStatus;
}
HRESULT STDMETHODCALLTYPE documentSelect(IXMLDOMDocument* self, BSTR path, IXMLDOMNode** out)
{
    return changes.selectStatus == S_OK ? systemTable.selectSingleNode(self, path, out) : changes.selectStatus;
}
HRESULT STDMETHODCALLTYPE documentParseError(IXMLDOMDocument* self, IXMLDOMParseError** out)
{
    if (FAILED(changes.parseErrorStatus))
        return changes.parseErrorStatus;
    if (!changes.ownParseError)
        return systemTable.get_parseError(self, out);
    *out = parseError();
    return S_OK;
}

// The factory: one object too.

HRESULT STDMETHODCALLTYPE factoryQueryInterface(IClassFactory* self, REFIID, void** out)
{
    *out = self;
    return S_OK;
}
ULONG STDMETHODCALLTYPE factoryReference(IClassFactory*) { return 1; }
HRESULT STDMETHODCALLTYPE factoryLock(IClassFactory*, BOOL) { return S_OK; }
HRESULT STDMETHODCALLTYPE factoryCreate(IClassFactory*, IUnknown* outer, REFIID, void** out)
{
    IXMLDOMDocument* document = nullptr;
    const HRESULT status = systemFactory->lpVtbl->CreateInstance(systemFactory, outer, IID_IXMLDOMDocument,
                                                                 reinterpret_cast<void**>(&document));
    if (FAILED(status))
        return status;
    systemTable = *document->lpVtbl;
    changedTable = systemTable;
    changedTable.get_validateOnParse = documentValidateOnParse;
    changedTable.get_documentElement = documentElement;
    changedTable.get_parseError = documentParseError;
    changedTable.save = documentSave;
    changedTable.selectSingleNode = documentSelect;
    document->lpVtbl = &changedTable;
    *out = document;
    return S_OK;
}

IClassFactory* factory()
{
    static IClassFactoryVtbl table = {};
    static IClassFactory object = {&table};
    table.QueryInterface = factoryQueryInterface;
    table.AddRef = factoryReference;
    table.Release = factoryReference;
    table.CreateInstance = factoryCreate;
    table.LockServer = factoryLock;
    return &object;
}
} // namespace

StandInDocument::StandInDocument(const DocumentChanges& wanted)
{
    changes = wanted;
    EXPECT_EQ(S_OK, ::CoGetClassObject(kDomDocument, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                       reinterpret_cast<void**>(&systemFactory)));
    EXPECT_EQ(S_OK, ::CoRegisterClassObject(kDomDocument, reinterpret_cast<IUnknown*>(factory()), CLSCTX_INPROC_SERVER,
                                            REGCLS_MULTIPLEUSE, &m_cookie));
}

StandInDocument::~StandInDocument()
{
    restoreAttributes();
    ::CoRevokeClassObject(m_cookie);
    systemFactory->lpVtbl->Release(systemFactory);
    systemFactory = nullptr;
}
} // namespace auttest
