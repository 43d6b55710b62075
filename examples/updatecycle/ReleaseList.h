#ifndef AUTOOLS_UPDATECYCLE_RELEASELIST_H
#define AUTOOLS_UPDATECYCLE_RELEASELIST_H

#include <7xAutoUpdateTools.h>

namespace updatecycle
{
/// The releases of a product list. The library fills the list with releases that belong to us, and frees it.
class ReleaseList
{
public:
    ReleaseList() : m_releases(new RT_List<CRelease*, CRelease*>) {}
    ReleaseList(const ReleaseList&) = delete;
    ReleaseList& operator=(const ReleaseList&) = delete;
    ~ReleaseList() { FreeReleaseList(m_releases); }

    RT_List<CRelease*, CRelease*>* get() { return m_releases; }
    int count() const { return m_releases->GetCount(); }

    template <typename Function> void forEach(Function function) const
    {
        for (POSITION position = m_releases->GetHeadPosition(); position != nullptr;)
            function(*m_releases->GetNext(position));
    }

private:
    RT_List<CRelease*, CRelease*>* m_releases;
};
} // namespace updatecycle

#endif
