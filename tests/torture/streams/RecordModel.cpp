#include "tests/torture/streams/RecordModel.h"

#include <algorithm>
#include <cctype>

namespace torture
{
namespace
{
bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// A text from its word: each "%20" is a blank; nothing follows a NUL.
std::string unescaped(const std::string& word)
{
    std::string text;
    for (std::size_t at = 0; at < word.size() && word[at] != '\0'; ++at)
    {
        const bool blank = word.compare(at, 3, "%20") == 0;
        text += blank ? ' ' : word[at];
        at += blank ? 2 : 0;
    }
    return text;
}

std::string escaped(const std::string& text)
{
    std::string word;
    for (const char c : text)
        word += c == ' ' ? std::string("%20") : std::string(1, c);
    return word;
}

std::string optional(const std::string& text) { return text.empty() ? "~" : escaped(text); }
} // namespace

void Tape::skipBlanks()
{
    while (readable() && m_at < m_text.size() && isBlank(m_text[m_at]))
        ++m_at;
    m_ended = m_ended || m_at >= m_text.size();
}

std::string Tape::word(std::size_t mostChars)
{
    std::string read;
    if (!readable())
        return read;
    skipBlanks();
    while (m_at < m_text.size() && !isBlank(m_text[m_at]))
        read += m_text[m_at++];
    if (read.size() > mostChars)
        m_broken = true;
    else
        m_ended = m_at == m_text.size();
    return m_broken ? std::string() : read;
}

void Tape::number(std::int64_t least, std::int64_t most, std::int64_t& value)
{
    if (!readable())
        return;
    skipBlanks();
    if (m_ended)
        return;
    const bool negative = m_text[m_at] == '-';
    if (negative || m_text[m_at] == '+')
        ++m_at;
    std::string digits;
    while (m_at < m_text.size() && m_text[m_at] >= '0' && m_text[m_at] <= '9')
        digits += m_text[m_at++];
    if (digits.empty())
    {
        m_broken = true;
        return;
    }
    // As texts, for no type holds every number that may stand here.
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    const std::string limit = negative ? std::to_string(least).substr(1) : std::to_string(most);
    if (digits.size() > limit.size() || (digits.size() == limit.size() && digits > limit))
    {
        m_broken = true;
        return;
    }
    value = std::stoll((negative ? "-" : "") + digits);
    m_ended = m_at == m_text.size();
}

std::string ObjectModel::fullVersion() const
{
    return (version + build + (language.empty() ? "" : "_" + language)).substr(0, 259);
}

bool ObjectModel::read(Tape& tape)
{
    if (!tape.readable())
        return false;
    ObjectModel object = *this;
    tape.integer(object.action);
    object.build = unescaped(tape.word(63));
    tape.integer(object.id);
    object.language = unescaped(tape.word(15));
    object.name = unescaped(tape.word(127));
    object.version = unescaped(tape.word(63));
    if (!tape.readable())
        return false;
    tape.integer(object.enabled);
    if (tape.broken())
        return false;
    *this = object;
    return true;
}

std::string ObjectModel::written() const
{
    return std::to_string(action) + "\n" + escaped(build) + "\n" + std::to_string(id) + "\n" + escaped(language) +
           "\n" + escaped(name) + "\n" + escaped(version) + "\n" + std::to_string(enabled) + "\n";
}

bool ComponentModel::read(Tape& tape)
{
    if (!ObjectModel::read(tape))
        return false;
    const std::string word = tape.word(780);
    if (!tape.readable())
        return false;
    location = word == "~" ? "" : unescaped(word);
    if (location.size() > 259)
        return false;
    tape.integer(shared);
    return !tape.broken();
}

std::string ComponentModel::written() const
{
    return ObjectModel::written() + optional(location) + "\n" + std::to_string(shared) + "\n";
}

bool ReleaseModel::readOwn(Tape& tape, std::int64_t& count)
{
    tape.number(INT64_MIN, INT64_MAX, date);
    tape.integer(count);
    const std::string cid = tape.word(259);
    if (!tape.readable())
        return false;
    certificateId = cid == "~" ? "" : cid.substr(0, cid.find('\0'));
    tape.integer(noDownload);
    tape.integer(preInstallOnly);
    return !tape.broken();
}

int ReleaseModel::read(const std::string& text)
{
    Tape tape(text);
    if (!ObjectModel::read(tape))
        return 0;
    if (tape.ended())
    {
        event = "CRelease::Serialize(iStream) FAILED: bad stream size";
        return 0;
    }
    std::int64_t count = 0;
    if (!readOwn(tape, count))
        return 0;
    for (std::int64_t i = 0; i < count; ++i)
    {
        ComponentModel component;
        component.enabled = 1;
        ++componentsMade;
        if (!component.read(tape))
        {
            event = "CRelease::Serialize(iStream) FAILED: bad component";
            return 0;
        }
        components.push_back(component);
    }
    tape.skipBlanks();
    if (tape.ended())
    {
        event = "CRelease::Serialize(iStream) SUCCESS : old stream parsed";
        return 1;
    }
    const std::string first = tape.word(259);
    const std::string second = tape.word(259);
    if (tape.broken())
        return 0;
    marketingName = first == "~" ? "" : unescaped(first);
    technicalName = second == "~" ? "" : unescaped(second);
    event = "CRelease::Serialize(iStream) SUCCESS : stream parsed";
    return 1;
}

std::string ReleaseModel::written() const
{
    std::string text = ObjectModel::written() + std::to_string(date) + "\n" + std::to_string(components.size()) + "\n" +
                       (certificateId.empty() ? "~" : certificateId) + "\n" + std::to_string(noDownload) + "\n" +
                       std::to_string(preInstallOnly) + "\n";
    for (const ComponentModel& component : components)
        text += component.written();
    return text + optional(marketingName) + "\n" + optional(technicalName) + "\n";
}

namespace
{
std::string toldObject(std::int64_t action, std::int64_t id, std::int64_t enabled, const std::string& build,
                       const std::string& language, const std::string& name, const std::string& version,
                       const std::string& fullVersion)
{
    return "action " + std::to_string(action) + ", id " + std::to_string(id) + ", enabled " + std::to_string(enabled) +
           ", build " + build + ", language " + language + ", name " + name + ", version " + version + ", full " +
           fullVersion;
}

std::string toldObject(const ObjectModel& object)
{
    return toldObject(object.action, object.id, object.enabled, object.build, object.language, object.name,
                      object.version, object.fullVersion());
}

std::string toldObject(const AutoUpdateObject& object)
{
    return toldObject(object.GetAction(), object.GetId(), object.IsEnabled(), object.GetBuild(), object.GetLanguage(),
                      object.GetName(), object.GetVersion(), object.GetFullVersion());
}
} // namespace

std::string told(const ReleaseModel& model)
{
    std::string text = toldObject(model) + ", date " + std::to_string(model.date) + ", cid " + model.certificateId +
                       ", no download " + std::to_string(model.noDownload) + ", pre-install " +
                       std::to_string(model.preInstallOnly) + ", names " + model.marketingName + ", " +
                       model.technicalName;
    for (const ComponentModel& component : model.components)
        text += "\n" + toldObject(component) + ", from " + component.location + ", shared " +
                std::to_string(component.shared);
    return text;
}

std::string told(const CRelease& release)
{
    std::string text = toldObject(release) + ", date " + std::to_string(release.GetActivationDate()) + ", cid " +
                       release.GetCertificateID() + ", no download " + std::to_string(release.IsNoDownload()) +
                       ", pre-install " + std::to_string(release.IsPreInstallOnly()) + ", names " +
                       release.GetMarketingName() + ", " + release.GetTechnicalName();
    const auto& components = release.GetComponentList();
    for (POSITION at = components.GetHeadPosition(); at != nullptr;)
    {
        const CComponent& component = *components.GetNext(at);
        text += "\n" + toldObject(component) + ", from " + component.GetSourceLocation() + ", shared " +
                std::to_string(component.IsShared());
    }
    return text;
}
} // namespace torture
