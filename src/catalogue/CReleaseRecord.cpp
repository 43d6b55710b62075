#include "catalogue/CRelease.h"

#include "catalogue/RecordText.h"
#include "foundation/EventLog.h"

#include <exception>
#include <memory>

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
        const std::string marketingName = aut::readWord(stream, kMaxWordChars);
        const std::string technicalName = aut::readWord(stream, kMaxWordChars);
        if (aut::isBroken(stream))
            return 0;
        m_marketingName = aut::textOfOptionalWord(marketingName).c_str();
        m_technicalName = aut::textOfOptionalWord(technicalName).c_str();
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
    aut::readNumber(stream, m_activationDate);
    aut::readNumber(stream, count);
    const std::string certificateId = aut::readWord(stream, kMaxWordChars);
    if (!stream.good())
        return false;
    SetCertificateID(certificateId == "~" ? "" : certificateId.c_str()); // stored as it is, without escaping
    // No download stands before pre-install only, unlike their order in the object. The end is not tested again: a
    // record cut off here keeps the release's own, and fails on its first component if it has any.
    return aut::readNumber(stream, m_noDownload) && aut::readNumber(stream, m_preInstallOnly);
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
        stream << m_activationDate << '\n'
               << m_componentCount << '\n'
               << (m_certificateId[0] != '\0' ? m_certificateId : "~") << '\n'
               << m_noDownload << '\n'
               << m_preInstallOnly << '\n';
        for (POSITION at = m_components.GetHeadPosition(); at != nullptr;)
        {
            if (m_components.GetNext(at)->Serialize(stream) == 0)
                return 0;
        }
        aut::writeOptionalWord(stream, m_marketingName);
        aut::writeOptionalWord(stream, m_technicalName);
        return stream.fail() ? 0 : 1; // a record whose end is missing would read back as the older format
    }
    catch (const std::exception&)
    {
        return 0;
    }
}
