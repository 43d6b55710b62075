#ifndef AUTOOLS_WEBCONF_DATAEXCHANGE_H
#define AUTOOLS_WEBCONF_DATAEXCHANGE_H

#include "foundation/Export.h"
#include "foundation/String.h"

/// The identity of one configuration request, and the request URL built from it. All fields are terminated texts.
class AUTOOLS_API DataExchange
{
public:
    DataExchange();
    DataExchange(const DataExchange& other);
    DataExchange& operator=(const DataExchange& other);

    /// True when the component name is not empty.
    bool IsComponentSpecified();
    /// Fills version, build, language and package technical name from the registry; tells whether the request may be
    /// made.
    bool UpdateVersions();
    /// http://host/virtual directory/page and the identity as parameters, inserted as they stand, without escaping.
    String ConstructURL(const char* page);
    String ConstructShortURL(const char* page);
    /// The markup of the node at `xpath` in the text; empty on failure, which is logged.
    static String ExtractXmlNode(String xml, String xpath);

    char m_entryFlag;    ///< set by the entry points of the configuration cache
    char m_transferFlag; ///< decides the transfer settings of the configuration cache
    char m_host[256];    ///< host name, optionally with ":" and a port
    char m_certificateId[64];
    char m_productName[128]; ///< registry name, or "Automatic Update" for the client itself
    char m_version[64];
    char m_build[64];
    char m_language[64];
    char m_packageTechnicalName[128]; ///< selects the pages for packages
    char m_componentName[128];        ///< optional; "Kernel" is the client's own component
    char m_resultText[260];
};

#endif
