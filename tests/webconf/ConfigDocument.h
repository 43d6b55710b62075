#ifndef AUTOOLS_TESTS_WEBCONF_CONFIGDOCUMENT_H
#define AUTOOLS_TESTS_WEBCONF_CONFIGDOCUMENT_H

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <string>

namespace auttest
{
/// The test's thread in a single-threaded COM apartment, so that other threads have none unless they enter one.
class ComApartment
{
public:
    ComApartment() { EXPECT_GE(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), 0); }
    ~ComApartment() { ::CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

/// A whole kernel configuration document around the elements of its configuration node.
inline std::string kernelData(const std::string& elements)
{
    return "<?xml version=\"1.0\"?><wcfgResponse><Data><ComponentList><Component><Configuration><AutomaticUpdateData>" +
           elements + "</AutomaticUpdateData></Configuration></Component></ComponentList></Data></wcfgResponse>";
}
/// Sections for the configuration node.
inline constexpr char kTimers[] = "<TimersList><T><wcfgIndex>1</wcfgIndex><SecondsNumber>60</SecondsNumber></T>"
                                  "<T><wcfgIndex>2</wcfgIndex><SecondsNumber>-5</SecondsNumber></T>"
                                  "<T><wcfgIndex>3</wcfgIndex></T></TimersList>";

inline constexpr char kHotKeys[] =
    "<HotKeysList>"
    "<K><wcfgIndex>1</wcfgIndex><KeyValue>Up</KeyValue><AltKey>1</AltKey><CtrlKey>1</CtrlKey></K>"
    "<K><wcfgIndex>2</wcfgIndex><KeyValue>x</KeyValue><ShiftKey>5</ShiftKey><WinKey>-1</WinKey><AltKey>0</AltKey></K>"
    "<K/></HotKeysList>";

inline std::string server(const char* url, const char* type)
{
    return std::string("<S><URL>") + url + "</URL><DownloadServerType>" + type + "</DownloadServerType></S>";
}

inline std::string servers(const std::string& authorized, const std::string& list)
{
    return "<AuthorizedDownloadServerTypes>" + authorized + "</AuthorizedDownloadServerTypes><DownloadServers>" + list +
           "</DownloadServers>";
}
} // namespace auttest

#endif
