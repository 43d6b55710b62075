#include "webconf/ConfigAnswer.h"

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/Xml.h"
#include "registry/CRegConfig.h"
#include "webconf/ConfigReader.h"

#include <cstring>

namespace aut
{
namespace
{
constexpr int kNotAnAnswer = 104;

AnswerVerdict failed()
{
    AnswerVerdict verdict;
    verdict.error = kNotAnAnswer;
    return verdict;
}

AnswerVerdict saved(const String& timeStamp)
{
    AnswerVerdict verdict;
    verdict.save = true;
    verdict.setsTimeStamp = true;
    verdict.timeStamp = timeStamp;
    return verdict;
}

/// The text between the tags, found in any case and without parsing; empty without both.
String timeStampOf(const char* answer)
{
    constexpr char kOpen[] = "<TimeStamp>";
    const char* begin = stristr(answer, kOpen);
    if (begin == nullptr)
        return String();
    begin += sizeof kOpen - 1;
    const char* const end = stristr(begin, "</TimeStamp>");
    if (end == nullptr)
        return String();
    String text = String(begin).Left(static_cast<int>(end - begin));
    text.Trim();
    return text;
}

AnswerVerdict judgeError(const char* prefix, const String& answer, IXMLDOMNode* error)
{
    // A refused certificate ID: the refusal itself is kept, and the next request asks for everything.
    if (stristr(answer, "AccessMissing") != nullptr)
    {
        Log(1, "%s Web Configurator returned an error", prefix);
        return saved(kNothingInCache);
    }
    Log(1, "Configuration not valid: %s", static_cast<const char*>(xmlText(error)));
    return failed();
}

AnswerVerdict judgeNewData(const DataExchange& request, const char* prefix, const String& answer,
                           IXMLDOMDocument* document)
{
    // Both names are compared with regard to case.
    const bool isKernel = std::strcmp(request.m_productName, kClientProduct) == 0 &&
                          std::strcmp(request.m_componentName, "AUKernelData") == 0;
    if (isKernel && configurationNode(document) == nullptr)
    {
        Log(1, "Corrupted AU kernel configuration, keep old configuration");
        return AnswerVerdict();
    }
    const bool bypass = CRegConfig(true).GetFlag("BypassDataCaching");
    const AnswerVerdict verdict = saved(bypass ? String(kNothingInCache) : timeStampOf(answer));
    Log(0, "%s New Data. TimeStamp = %s", prefix, static_cast<const char*>(verdict.timeStamp));
    return verdict;
}
} // namespace

AnswerVerdict judgeAnswer(const DataExchange& request, const char* prefix, const String& answer)
{
    XmlDocumentPtr document;
    if (FAILED(createXmlDocument(document, CLSCTX_ALL)))
    {
        Log(1, "Unable to initialize DOM Document and to check AU Validity");
        return AnswerVerdict(); // deliberately no error: the cache stays as it is
    }
    if (!loadXmlText(document.Get(), answer, static_cast<std::size_t>(answer.GetLength())))
    {
        Log(1, "TransmitRequestToWebConf: Unable to create XML document from data");
        result->Set(500, "pDOM->loadXML", "DataCaching::TransmitRequestToWebConf",
                    "Unable to create XML document from data");
        return AnswerVerdict();
    }
    const XmlNodePtr response = selectXmlNode(document.Get(), "wcfgResponse");
    if (response == nullptr)
    {
        // Something else on the way answered.
        Log(1, "Response from Web Configurator not valid (special provider or proxies authentication ?");
        return failed();
    }
    const XmlNodePtr error = selectXmlNode(response.Get(), "Status/Error");
    if (error != nullptr)
        return judgeError(prefix, answer, error.Get());
    if (selectXmlNode(response.Get(), "Data/NoChange") != nullptr)
    {
        Log(0, "%s Data not changed", prefix);
        return AnswerVerdict();
    }
    return judgeNewData(request, prefix, answer, document.Get());
}

bool isCachedAnswerValid(const String& answer)
{
    XmlDocumentPtr document;
    if (FAILED(createXmlDocument(document, CLSCTX_ALL)))
    {
        Log(1, "Unable to initialize DOM Document and to check AU Validity");
        return false;
    }
    if (!loadXmlText(document.Get(), answer, static_cast<std::size_t>(answer.GetLength())))
    {
        Log(1, "IsAUValidForWebServer: Unable to create XML document from data");
        return false;
    }
    const XmlNodePtr error = selectXmlNode(document.Get(), "wcfgResponse/Status/Error");
    if (error == nullptr)
        return true;
    Log(1, "IsAUValidForWebServer: %s", static_cast<const char*>(xmlText(error.Get())));
    return false;
}
} // namespace aut
