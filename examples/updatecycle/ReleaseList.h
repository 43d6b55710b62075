#ifndef AUTOOLS_UPDATECYCLE_RELEASELIST_H
#define AUTOOLS_UPDATECYCLE_RELEASELIST_H

#include <7xAutoUpdateTools.h>

#include <memory>
#include <set>
#include <vector>

namespace updatecycle
{
/// The releases of the product lists. The library fills the list with releases that belong to us, and frees it.
class ReleaseList
{
public:
    ReleaseList() : m_releases(new RT_List<CRelease*, CRelease*>) {}
    ReleaseList(const ReleaseList&) = delete;
    ReleaseList& operator=(const ReleaseList&) = delete;
    ~ReleaseList() { FreeReleaseList(m_releases); }

    RT_List<CRelease*, CRelease*>* get() { return m_releases; }
    int count() const { return m_releases->GetCount(); }
    void add(std::unique_ptr<CRelease> release)
    {
        m_releases->AddTail(release.get());
        static_cast<void>(release.release()); // the list has it now
    }

    template <typename Function> void forEach(Function function) const
    {
        for (POSITION position = m_releases->GetHeadPosition(); position != nullptr;)
            function(*m_releases->GetNext(position));
    }

    /// Lets the library take releases out of the list, and deletes those, which it leaves to their owner.
    template <typename Function> void rearrange(Function function)
    {
        std::vector<CRelease*> before;
        forEach([&](CRelease& release) { before.push_back(&release); });
        function(m_releases);
        std::set<const CRelease*> still;
        forEach([&](const CRelease& release) { still.insert(&release); });
        for (CRelease* const release : before)
            if (still.count(release) == 0)
                delete release;
    }

private:
    RT_List<CRelease*, CRelease*>* m_releases;
};
} // namespace updatecycle

#endif
