#include "productlist/DocumentLoading.h"

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/Xml.h"

namespace aut
{
void reportNoDocument(const char* function, const String& url)
{
    Log(1, "Phase1: Unable for Initialize DOM Document");
    result->Set(551, "DOM initialization failed", function, "", "", url);
}

void reportUnreadable(IXMLDOMDocument* document, const char* function)
{
    Log(1, "Phase1: Unable to create XML document from data");
    Log(1, "Phase1: New log");
    result->Set(500, "Unable to create XML document from data", function, "", "", "pDoc->loadXML");
    const XmlParseError error = xmlParseError(document);
    Log(1, "Error code: %d, reason = %s, line = %d, linepos = %d", static_cast<int>(error.code),
        static_cast<const char*>(error.reason), static_cast<int>(error.line), static_cast<int>(error.column));
}

bool acceptLoaded(XmlDocumentPtr& document, const char* action)
{
    if (validatesOnParse(document.Get()))
        return true;
    const long code = xmlParseError(document.Get()).code;
    if (code != 0)
        result->Set(554, action, "pDoc->GetvalidateOnParse", code, "pDoc");
    document.Reset();
    return false;
}
} // namespace aut
