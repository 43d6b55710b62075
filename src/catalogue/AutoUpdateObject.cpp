#include "catalogue/AutoUpdateObject.h"

#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <cstring>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<AutoUpdateObject>
{
    static_assert(sizeof(AutoUpdateObject) == 1328);
    static_assert(offsetof(AutoUpdateObject, m_id) == 8);
    static_assert(offsetof(AutoUpdateObject, m_name) == 12);
    static_assert(offsetof(AutoUpdateObject, m_version) == 272);
    static_assert(offsetof(AutoUpdateObject, m_build) == 532);
    static_assert(offsetof(AutoUpdateObject, m_fullVersion) == 792);
    static_assert(offsetof(AutoUpdateObject, m_language) == 1052);
    static_assert(offsetof(AutoUpdateObject, m_action) == 1312);
    static_assert(offsetof(AutoUpdateObject, m_enabled) == 1316);
    static_assert(offsetof(AutoUpdateObject, m_updateStatus) == 1320);
};
AUT_LAYOUT_END

namespace
{
constexpr const char* kActionWords[] = {"INSTALL", "REMOVE", "FORCEREINSTALL", "DISABLE"}; // by action number

/// The action of a word; `otherwise` for any word that names none.
int actionOf(const char* word, int otherwise)
{
    int action = 0;
    for (const char* known : kActionWords)
    {
        if (::_stricmp(known, aut::orEmpty(word)) == 0)
            return action;
        ++action;
    }
    return otherwise;
}
} // namespace

AutoUpdateObject::AutoUpdateObject()
    : m_id(0), m_name(), m_version(), m_build(), m_fullVersion(), m_language(), m_action(0), m_enabled(1),
      m_updateStatus(0)
{
}

AutoUpdateObject::AutoUpdateObject(long id, const char* name, const char* version, const char* build,
                                   const char* language, int action)
    : AutoUpdateObject()
{
    InitValues(id, name, version, build, language, action, 1);
}

AutoUpdateObject::AutoUpdateObject(long id, const char* name, const char* version, const char* build,
                                   const char* language, const char* actionWord)
    : AutoUpdateObject()
{
    InitValues(id, name, version, build, language, actionWord, 1);
}

AutoUpdateObject::AutoUpdateObject(const AutoUpdateObject& other) = default;
AutoUpdateObject& AutoUpdateObject::operator=(const AutoUpdateObject& other) = default;
AutoUpdateObject::~AutoUpdateObject() = default;

void AutoUpdateObject::InitValues(long id, const char* name, const char* version, const char* build,
                                  const char* language, int action, int enabled)
{
    m_id = id;
    aut::copyText(m_name, name);
    aut::copyText(m_version, version);
    aut::copyText(m_build, build);
    aut::copyText(m_language, language);
    m_action = action;
    m_enabled = enabled;
    m_updateStatus = 0;
    UpdateFullVersion();
}

void AutoUpdateObject::InitValues(long id, const char* name, const char* version, const char* build,
                                  const char* language, const char* actionWord, int enabled)
{
    InitValues(id, name, version, build, language, actionOf(actionWord, m_action), enabled);
}

void AutoUpdateObject::UpdateFullVersion()
{
    // Nothing stands between version and build: the decisions about updates compare exactly this text.
    // Appended, not formatted: every component of a long product list comes by here.
    aut::copyText(m_fullVersion, m_version);
    aut::appendText(m_fullVersion, m_build);
    if (m_language[0] == '\0')
        return;
    aut::appendText(m_fullVersion, "_");
    aut::appendText(m_fullVersion, m_language);
}

long AutoUpdateObject::GetId() const { return m_id; }

const char* AutoUpdateObject::GetName() const { return m_name; }

const char* AutoUpdateObject::GetVersion() const { return m_version; }

const char* AutoUpdateObject::GetBuild() const { return m_build; }

const char* AutoUpdateObject::GetLanguage() const { return m_language; }

const char* AutoUpdateObject::GetFullVersion() const { return m_fullVersion; }

int AutoUpdateObject::GetAction() const { return m_action; }

int AutoUpdateObject::IsEnabled() const { return m_enabled; }

int AutoUpdateObject::GetUpdateStatus() const { return m_updateStatus; }

void AutoUpdateObject::SetUpdateStatus(int status) { m_updateStatus = status; }
