#ifndef AUTOOLS_PRODUCTLIST_PHASE1XML_H
#define AUTOOLS_PRODUCTLIST_PHASE1XML_H

#include "catalogue/CRelease.h"
#include "foundation/Export.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"
#include "foundation/XmlPointers.h"

class CConfig;

/// One product-list document: fetched from the Web Configurator or loaded from the previous cycle, then parsed.
///
/// The calling thread must have initialised COM. Failures return 0, are logged and leave their details in `result`; an
/// XML call that fails otherwise raises `_com_error`. Each load discards the document held before. Not thread-safe.
class AUTOOLS_API phase1xml
{
public:
    explicit phase1xml(const String& url);
    /// The prefix, trimmed, becomes part of the saved product list's file name.
    phase1xml(const String& url, const String& namePrefix);
    phase1xml(const phase1xml& other);
    phase1xml& operator=(const phase1xml& other);
    virtual ~phase1xml();

    String GetURL();
    /// Fetches and loads the product list; 1 on success.
    int GetXMLDoc(const CConfig* config);
    /// Loads the list that the previous cycle saved; 1 on success.
    int GetPreviousXMLDoc();
    /// Appends the document's releases, each with its components, to `list`; the caller owns them. 1 on success, 0 when
    /// the document has no root. An empty selection of products gives 1.
    int ParseXMLDocument(RT_List<CRelease*, CRelease*>* list, const String& certificateId);
    /// Fetches a list of certificate IDs and appends those that are well-formed and not revoked; `masterCID` becomes
    /// the one marked as master. 1 on success.
    int GetXMLCIDListFromHWID(RT_List<String, String&>* list, String& masterCID);
    /// Does the same for a text at hand, without a master.
    int ConcatenateCIDs(RT_List<String, String&>* list, String& xmlText);
    /// Reads what the answer fetched for the certificate ID means. 1 when it is a new configuration: it is saved as the
    /// previous product list, and the certificate ID's releases are taken out of `list`. A refused or unknown
    /// certificate ID is withdrawn from `list` and the registry. What is taken out is not deleted: it is its owner's.
    int IsNewConfiguration(RT_List<CRelease*, CRelease*>* list, const String& certificateId);
    /// `ModifCounter` of the last document parsed.
    unsigned long GetModifCounter() const;

private:
    template <typename T> friend struct aut::LayoutOf;

    int InitializeDOMDocument();
    int SetReleaseAttributes(XmlNodePtr node, CRelease* release);
    int SetComponentAttributes(XmlNodePtr node, CComponent* component);
    String GetXMLAttribute(XmlNodePtr node, const char* path);
    void GetCountry();
    void GetWebConfDateTime();
    void RemoveCIDReferences(RT_List<CRelease*, CRelease*>* list, const String& certificateId);

    unsigned int m_modifCounter;
    String m_url;
    String m_namePrefix;
    XmlDocumentPtr m_document;
    XmlNodePtr m_root;
    long m_lastComStatus;
};

#endif
