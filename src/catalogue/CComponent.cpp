#include "catalogue/CComponent.h"

#include "catalogue/RecordText.h"
#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <cstring>
#include <exception>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CComponent>
{
    static_assert(offsetof(CComponent, m_mapFile) == 1328);
    static_assert(offsetof(CComponent, m_attachment) == 1336);
    static_assert(offsetof(CComponent, m_reserved) == 1344);
    static_assert(offsetof(CComponent, m_shared) == 1348);
    static_assert(offsetof(CComponent, m_sourceLocation) == 1352);
    static_assert(offsetof(CComponent, m_interruption) == 1616);
    static_assert(sizeof(CComponent) == 1616 + sizeof(CInterruptionEvent));
};
AUT_LAYOUT_END

CComponentAttachment::~CComponentAttachment() = default;

CComponent::CComponent() : m_mapFile(0), m_attachment(nullptr), m_reserved(0), m_shared(0), m_sourceLocation() {}

CComponent::CComponent(long id, const char* name, const char* version, const char* build, const char* language,
                       int action, const char* sourceLocation)
    : CComponent()
{
    InitValues(id, name, version, build, language, action, sourceLocation);
}

CComponent::CComponent(const CComponent& other) : CComponent()
{
    *this = other;
    m_shared = other.m_shared != 0 ? 1 : 0;
}

CComponent& CComponent::operator=(const CComponent& other)
{
    if (this == &other)
        return *this;
    // The shared flag and the map file deliberately stay this component's own.
    InitValues(other.m_id, other.m_name, other.m_version, other.m_build, other.m_language, other.m_action,
               other.m_sourceLocation);
    m_reserved = other.m_reserved;
    return *this;
}

CComponent::~CComponent()
{
    if (m_mapFile != 0)
        ReleaseMapFile();
    m_mapFile = 0;
    delete m_attachment;
}

void CComponent::InitValues(long id, const char* name, const char* version, const char* build, const char* language,
                            int action, const char* sourceLocation)
{
    AutoUpdateObject::InitValues(id, name, version, build, language, action, 1);
    InitOwnValues(sourceLocation);
}

void CComponent::InitValues(long id, const char* name, const char* version, const char* build, const char* language,
                            const char* actionWord, const char* sourceLocation)
{
    AutoUpdateObject::InitValues(id, name, version, build, language, actionWord, 1);
    InitOwnValues(sourceLocation);
}

void CComponent::InitOwnValues(const char* sourceLocation)
{
    if (sourceLocation != nullptr)
        aut::copyText(m_sourceLocation, sourceLocation);
    m_reserved = 0;
    m_updateStatus = 0;
}

int CComponent::IsShared() const { return m_shared; }

void CComponent::SetShared(int shared) { m_shared = shared; }

const char* CComponent::GetSourceLocation() const { return m_sourceLocation; }

CInterruptionEvent& CComponent::GetInterruptionEvent() { return m_interruption; }

int CComponent::Serialize(std::ifstream& stream)
{
    try
    {
        if (AutoUpdateObject::Serialize(stream) == 0)
            return 0;
        // Room for a location of nothing but blanks; what then is longer than the field is no location of ours.
        aut::RecordReader record(stream);
        char location[3 * sizeof m_sourceLocation + 1];
        aut::unescapeOptional(location, record.word(location));
        if (!stream.good() || std::strlen(location) >= sizeof m_sourceLocation)
            return 0;
        aut::copyText(m_sourceLocation, location);

        int shared = m_shared;
        // The end is not tested again: a record cut off here keeps the component's own flag.
        if (!record.number(shared))
            return 0;
        m_shared = shared;
        return 1;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}

int CComponent::Serialize(std::ofstream& stream)
{
    try
    {
        if (AutoUpdateObject::Serialize(stream) == 0)
            return 0;
        aut::RecordWriter record(stream);
        record.optionalText(m_sourceLocation);
        record.number(m_shared);
        record.flush();
        return 1;
    }
    catch (const std::exception&)
    {
        return 0;
    }
}
