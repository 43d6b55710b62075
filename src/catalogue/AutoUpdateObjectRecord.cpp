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

/// Sets a field to the text of a word, which is changed.
template <std::size_t N> void setText(char (&field)[N], char* word)
{
    aut::unescape(word);
    aut::copyText(field, word);
}
} // namespace

int AutoUpdateObject::Serialize(std::ifstream& stream)
{
    try
    {
        if (!stream.good())
            return 0;
        aut::RecordReader record(stream);
        int action = 0;
        long id = 0;
        int enabled = m_enabled;
        char build[kMaxBuildChars + 1];
        char language[kMaxLanguageChars + 1];
        char name[kMaxNameChars + 1];
        char version[kMaxVersionChars + 1];
        record.number(action);
        record.word(build);
        record.number(id);
        record.word(language);
        record.word(name);
        record.word(version);
        if (!stream.good())
            return 0;
        // The end is not tested again: a record cut off before this number keeps the object's own.
        if (!record.number(enabled))
            return 0;

        m_action = action;
        m_id = id;
        m_enabled = enabled;
        setText(m_build, build);
        setText(m_language, language);
        setText(m_name, name);
        setText(m_version, version);
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
        aut::RecordWriter record(stream);
        record.number(m_action);
        record.text(m_build);
        record.number(m_id);
        record.text(m_language);
        record.text(m_name);
        record.text(m_version);
        record.number(m_enabled);
        record.flush();
        return stream.fail() ? 0 : 1;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}
