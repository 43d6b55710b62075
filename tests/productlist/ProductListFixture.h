#ifndef AUTOOLS_TESTS_PRODUCTLIST_PRODUCTLISTFIXTURE_H
#define AUTOOLS_TESTS_PRODUCTLIST_PRODUCTLISTFIXTURE_H

#include "7xAutoUpdateTools.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// The private members that an update cycle reaches only through other members.
template <> struct aut::LayoutOf<phase1xml>
{
    static int initializeDocument(phase1xml& list) { return list.InitializeDOMDocument(); }
    static void readServerTime(phase1xml& list) { list.GetWebConfDateTime(); }
    static String attribute(phase1xml& list, const char* path) { return list.GetXMLAttribute(list.m_root, path); }
    static long lastComStatus(const phase1xml& list) { return list.m_lastComStatus; }
    static bool holdsDocument(const phase1xml& list) { return list.m_document != nullptr; }
};

namespace auttest
{
using Inside = aut::LayoutOf<phase1xml>;

/// A list of releases that owns them, as a caller of the library does.
class OwnedReleases
{
public:
    OwnedReleases() = default;
    OwnedReleases(const OwnedReleases&) = delete;
    OwnedReleases& operator=(const OwnedReleases&) = delete;
    ~OwnedReleases()
    {
        while (!m_list.IsEmpty())
            delete m_list.RemoveHead();
    }
    RT_List<CRelease*, CRelease*>* operator&() { return &m_list; }
    int count() const { return m_list.GetCount(); }
    CRelease& at(int index) const { return *elementAt(m_list, index); }

    template <typename T> static T* elementAt(const RT_List<T*, T*>& list, int index)
    {
        if (index >= list.GetCount())
            throw std::out_of_range("the list is shorter");
        POSITION position = list.GetHeadPosition();
        while (index-- > 0)
            list.GetNext(position);
        return list.GetNext(position);
    }

private:
    RT_List<CRelease*, CRelease*> m_list;
};

inline CComponent& componentAt(CRelease& release, int index)
{
    return *OwnedReleases::elementAt(release.GetComponentList(), index);
}

/// A client with a data folder and an empty registry; COM is initialised on the test's thread.
class ProductListTest : public ::testing::Test
{
protected:
    ProductListTest()
    {
        ::CoInitialize(nullptr);
        *result = RT_RESULT(); // what a test finds there is what it caused
        registry.write("", "DataPath", data.path());
    }
    ~ProductListTest() override
    {
        if (registry.valueExists("Config", "TestEnv"))
            logDetail(0); // kept between tests otherwise
        ::CoUninitialize();
    }

    /// Loads a document into `list` as the one of the previous cycle.
    void load(phase1xml& list, std::string_view xml)
    {
        data.writeFile("productList.xml", xml);
        data.writeFile("localProductList.xml", xml); // the one that a local installation reads
        ASSERT_EQ(1, list.GetPreviousXMLDoc());
        log.mark();
    }
    /// Parses a whole document.
    int parse(std::string_view xml, const char* certificateId = "")
    {
        phase1xml list("http://localhost/");
        load(list, xml);
        return list.ParseXMLDocument(&releases, certificateId);
    }
    /// Parses a product list with these product elements.
    void parseProducts(const std::string& products, const char* certificateId = "")
    {
        ASSERT_EQ(1, parse(answer("<ProductList>" + products + "</ProductList>"), certificateId));
    }
    /// An answer of the Web Configurator with new data.
    static std::string answer(const std::string& newData)
    {
        return "<wcfgResponse><Data><NewData>" + newData + "</NewData></Data></wcfgResponse>";
    }
    /// Makes the log take events up to this detail level; it looks at every tenth call.
    void logDetail(DWORD level)
    {
        registry.write("Config", "TestEnv", level);
        for (int call = 0; call < 10; ++call)
            Log(0xFFFF0000, "above every detail level");
        log.mark();
    }

    ClientRegistry registry;
    TestFolder data;
    LogFile log;
    OwnedReleases releases;
};

using Events = std::vector<LogEvent>;

/// Runs on a thread that has not initialised COM.
template <typename Function> void withoutCom(Function function) { std::thread(function).join(); }
} // namespace auttest

#endif
