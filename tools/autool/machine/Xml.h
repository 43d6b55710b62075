#ifndef AUTOOL_MACHINE_XML_H
#define AUTOOL_MACHINE_XML_H

#include <windows.h>

#include <msxml.h>
#include <wrl/client.h>

#include <functional>
#include <string>

namespace autool
{
using XmlDocument = Microsoft::WRL::ComPtr<IXMLDOMDocument>;
using XmlNode = Microsoft::WRL::ComPtr<IXMLDOMNode>;

/// COM on this thread while it lives.
class ComApartment
{
public:
    ComApartment() : m_status(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ComApartment()
    {
        if (SUCCEEDED(m_status))
            ::CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    HRESULT m_status;
};

// All of these give null, "" or false for what is not there; nothing throws. The thread must be in an apartment.

/// An empty document of the system's XML parser, the one that the library uses.
HRESULT createXml(XmlDocument& document);
/// Loads a file. Null, and the reason with its line in `why`, when it is missing or not well formed.
XmlDocument loadXml(const std::string& path, std::string& why);
/// The document element.
XmlNode rootOf(const XmlDocument& document);
/// The first child element of that name.
XmlNode childOf(const XmlNode& parent, const wchar_t* name);
/// The element at a path of names, the first one of each name: "Data/NewData" is the one below the one.
XmlNode elementAt(XmlNode node, std::initializer_list<const wchar_t*> path);
/// Calls `visit` with the name of each child element, in document order, until it gives false.
void eachChild(const XmlNode& parent, const std::function<bool(const std::wstring& name, const XmlNode& child)>& visit);
/// The text content, in the system's code page.
std::string textOf(const XmlNode& node);
} // namespace autool

#endif
