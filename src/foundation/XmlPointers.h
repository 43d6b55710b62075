#ifndef AUTOOLS_FOUNDATION_XMLPOINTERS_H
#define AUTOOLS_FOUNDATION_XMLPOINTERS_H

#include <windows.h>

#include <msxml.h>
#include <wrl/client.h>

/// The XML interfaces that cross the boundary, as counting pointers of the size of one pointer.
typedef Microsoft::WRL::ComPtr<IXMLDOMDocument> XmlDocumentPtr;
typedef Microsoft::WRL::ComPtr<IXMLDOMNode> XmlNodePtr;

#endif
