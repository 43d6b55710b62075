#include "catalogue/CRelease.h"

#include "catalogue/RecordText.h"
#include "foundation/EventLog.h"

#include <exception>
#include <memory>
#include <string_view>

namespace
{
constexpr std::size_t kMaxWordChars = 259;
}

int CRelease::Serialize(std::ifstream& stream)
{
    try
    {
        if (AutoUpdateObject::Serialize(stream) == 0)
            return 0;
        if (stream.eof())
        {
            Log(2, "CRelease::Serialize(iStream) FAILED: bad stream size");
            return 0;
        }
        int count = 0;
        if (!ReadOwnValues(stream, count) || !ReadComponents(stream, count))
            return 0;
        // A record of the older format has no names. What white space follows its components does not count.
        if (!stream.eof())
            stream >> std::ws;
        if (stream.eof())
        {
            Log(0x20000, "CRelease::Serialize(iStream) SUCCESS : old stream parsed");
            return 1;
        }
        aut::RecordReader record(stream);
        char marketingName[kMaxWordChars + 1];
        char technicalName[kMaxWordChars + 1];
        aut::unescapeOptional(marketingName, record.word(marketingName));
        aut::unescapeOptional(technicalName, record.word(technicalName));
        if (aut::isBroken(stream))
            return 0;
        m_marketingName = marketingName;
        m_technicalName = technicalName;
        Log(0x20000, "CRelease::Serialize(iStream) SUCCESS : stream parsed");
        return 1;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}

bool CRelease::ReadOwnValues(std::ifstream& stream, int& count)
{
    aut::RecordReader record(stream);
    record.number(m_activationDate);
    record.number(count);
    char certificateId[kMaxWordChars + 1];
    const std::size_t length = record.word(certificateId);
    if (!stream.good())
        return false;
    // Stored as it is, without escaping.
    SetCertificateID(std::string_view(certificateId, length) == "~" ? "" : certificateId);
    // No download stands before pre-install only, unlike their order in the object. The end is not tested again: a
    // record cut off here keeps the release's own, and fails on its first component if it has any.
    return record.number(m_noDownload) && record.number(m_preInstallOnly);
}

bool CRelease::ReadComponents(std::ifstream& stream, int count)
{
    // Nothing is set aside for the count, which is only what the file says.
    for (int i = 0; i < count; ++i)
    {
        auto component = std::make_unique<CComponent>();
        if (component->Serialize(stream) == 0)
        {
            Log(2, "CRelease::Serialize(iStream) FAILED: bad component");
            return false;
        }
        if (!AppendComponent(component.release()))
            return false;
    }
    return true;
}

int CRelease::Serialize(std::ofstream& stream)
{
    try
    {
        if (AutoUpdateObject::Serialize(stream) == 0)
            return 0;
        m_componentCount = m_components.GetCount();
        aut::RecordWriter record(stream);
        record.number(m_activationDate);
        record.number(m_componentCount);
        record.word(m_certificateId[0] != '\0' ? m_certificateId : "~");
        record.number(m_noDownload);
        record.number(m_preInstallOnly);
        record.flush();
        for (POSITION at = m_components.GetHeadPosition(); at != nullptr;)
        {
            if (m_components.GetNext(at)->Serialize(stream) == 0)
                return 0;
        }
        record.optionalText(static_cast<const char*>(m_marketingName));
        record.optionalText(static_cast<const char*>(m_technicalName));
        record.flush();
        return stream.fail() ? 0 : 1; // a record whose end is missing would read back as the older format
    }
    catch (const std::exception&)
    {
        return 0;
    }
}
