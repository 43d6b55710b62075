#ifndef AUTOOLS_PRODUCTLIST_DOCUMENTLOADING_H
#define AUTOOLS_PRODUCTLIST_DOCUMENTLOADING_H

#include "foundation/String.h"
#include "foundation/XmlPointers.h"

namespace aut
{
// What the members of phase1xml that load a document have in common. `function` and `action` are the texts of the
// shared result record.

/// No document could be made.
void reportNoDocument(const char* function, const String& url);
/// The data is not well formed. Raises when the parse error cannot be read.
void reportUnreadable(IXMLDOMDocument* document, const char* function);

/// Whether a document that has loaded is accepted: only one that validates while parsing, as documents do by default.
/// Raises when that cannot be read.
///
/// Loading never changes that property, so this refuses a document only where something else turned validation off.
/// It is kept because callers know the refusal by its code; a refused document is dropped.
bool acceptLoaded(XmlDocumentPtr& document, const char* action);
} // namespace aut

#endif
