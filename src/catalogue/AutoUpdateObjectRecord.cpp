#include "catalogue/AutoUpdateObject.h"

#include "catalogue/RecordText.h"
#include "platform/BoundedText.h"

#include <exception>

namespace
{
// The longest words that a record may hold, blanks counted as "%20".
constexpr std::size_t kMaxBuildChars = 63;
constexpr std::size_t kMaxLanguageChars = 15;
constexpr std::size_t kMaxNameChars = 127;
constexpr std::size_t kMaxVersionChars = 63;
} // namespace

int AutoUpdateObject::Serialize(std::ifstream& stream)
{
    try
    {
        if (!stream.good())
            return 0;
        int action = 0;
        long id = 0;
        int enabled = m_enabled;
        aut::readNumber(stream, action);
        const std::string build = aut::readWord(stream, kMaxBuildChars);
        aut::readNumber(stream, id);
        const std::string language = aut::readWord(stream, kMaxLanguageChars);
        const std::string name = aut::readWord(stream, kMaxNameChars);
        const std::string version = aut::readWord(stream, kMaxVersionChars);
        if (!stream.good())
            return 0;
        // The end is not tested again: a record cut off before this number keeps the object's own.
        if (!aut::readNumber(stream, enabled))
            return 0;

        m_action = action;
        m_id = id;
        m_enabled = enabled;
        aut::copyText(m_build, aut::textOfWord(build).c_str());
        aut::copyText(m_language, aut::textOfWord(language).c_str());
        aut::copyText(m_name, aut::textOfWord(name).c_str());
        aut::copyText(m_version, aut::textOfWord(version).c_str());
        UpdateFullVersion();
        return 1;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}

int AutoUpdateObject::Serialize(std::ofstream& stream)
{
    try
    {
        // An empty text gives an empty line and so a record that does not read back: the format has no word for it.
        stream << m_action << '\n';
        aut::writeWord(stream, m_build);
        stream << m_id << '\n';
        aut::writeWord(stream, m_language);
        aut::writeWord(stream, m_name);
        aut::writeWord(stream, m_version);
        stream << m_enabled << '\n';
        return stream.fail() ? 0 : 1;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}
