#ifndef AUTOOLS_CATALOGUE_AUTOUPDATEOBJECT_H
#define AUTOOLS_CATALOGUE_AUTOUPDATEOBJECT_H

#include "foundation/Export.h"

#include <fstream>

/// What a release and a component have in common: identity, version, language and what to do with it.
///
/// The layout is part of the exported interface. Texts are cut to 259 characters. The full version is version and
/// build, joined without a separator, and "_" and the language when there is one; it follows every change.
class AUTOOLS_API AutoUpdateObject
{
public:
    AutoUpdateObject();
    AutoUpdateObject(long id, const char* name, const char* version, const char* build, const char* language,
                     int action);
    AutoUpdateObject(long id, const char* name, const char* version, const char* build, const char* language,
                     const char* actionWord);
    AutoUpdateObject(const AutoUpdateObject& other);
    AutoUpdateObject& operator=(const AutoUpdateObject& other);
    virtual ~AutoUpdateObject();

    const char* GetName() const;
    const char* GetVersion() const;
    const char* GetBuild() const;
    const char* GetLanguage() const;
    const char* GetFullVersion() const;
    /// 0 install, 1 remove, 2 force reinstall, 3 disable.
    int GetAction() const;
    int IsEnabled() const;
    int GetUpdateStatus() const;
    void SetUpdateStatus(int status);
    long GetId() const;

    /// Read and write the 7 tokens of the record: 1 on success, 0 on failure. A record with an empty text does not
    /// read back.
    int Serialize(std::ifstream& stream);
    int Serialize(std::ofstream& stream);

protected:
    template <typename T> friend struct aut::LayoutOf;

    void InitValues(long id, const char* name, const char* version, const char* build, const char* language, int action,
                    int enabled);
    /// The action words are INSTALL, REMOVE, FORCEREINSTALL and DISABLE in any case; any other word keeps the action.
    void InitValues(long id, const char* name, const char* version, const char* build, const char* language,
                    const char* actionWord, int enabled);
    void UpdateFullVersion();

    long m_id;
    char m_name[260];
    char m_version[260];
    char m_build[260];
    char m_fullVersion[260];
    char m_language[260];
    int m_action;
    int m_enabled;
    int m_updateStatus;
};

#endif
