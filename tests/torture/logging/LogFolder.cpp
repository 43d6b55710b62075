#include "tests/torture/logging/LogFolder.h"

#include "foundation/XmlPointers.h"

#include <objbase.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace torture
{
namespace
{
constexpr int kMaxArchives = 99; ///< more than the longest run makes
const CLSID kDomDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
const IID kDomDocumentInterface = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

/// Asked of the parser that the log's readers use.
bool isWellFormed(const std::string& bytes)
{
    const bool initialised = SUCCEEDED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    bool wellFormed = false;
    {
        Microsoft::WRL::ComPtr<IXMLDOMDocument> document;
        void* created = nullptr;
        EXPECT_EQ(S_OK,
                  ::CoCreateInstance(kDomDocument, nullptr, CLSCTX_INPROC_SERVER, kDomDocumentInterface, &created));
        document.Attach(static_cast<IXMLDOMDocument*>(created));
        const std::wstring wide(bytes.begin(), bytes.end()); // the events of these tests are ASCII
        BSTR const text = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
        VARIANT_BOOL loaded = VARIANT_FALSE;
        wellFormed = document != nullptr && document->loadXML(text, &loaded) == S_OK && loaded == VARIANT_TRUE;
        ::SysFreeString(text);
    }
    if (initialised)
        ::CoUninitialize();
    return wellFormed;
}

/// Takes the prefix away; false when the text has another one.
bool take(std::string_view& text, std::string_view prefix)
{
    if (text.substr(0, prefix.size()) != prefix)
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

/// Reads one log file, strictly line by line: a file can be well formed and still hold a torn event.
bool readLines(std::string_view text, LogContent& content)
{
    if (!take(text, "<LogAutoUpdate>\r\n<Environment>\r\n"))
        return false;
    ++content.headers;
    const std::size_t end = text.find("</Environment>\r\n");
    if (end == std::string_view::npos)
        return false;
    text.remove_prefix(end + 16);
    while (take(text, "<LogEvent><Date>"))
    {
        text.remove_prefix(std::min<std::size_t>(text.size(), 17));
        if (!take(text, "</Date><Type>Info</Type><Event>"))
            return false;
        const std::size_t close = text.find("</Event></LogEvent>\r\n");
        const std::string event(text.substr(0, close));
        const std::size_t blank = event.find(' ');
        if (close == std::string_view::npos || blank == std::string::npos || event.find('<') != std::string::npos)
            return false;
        content.events[event.substr(0, blank)].push_back(std::atoi(event.c_str() + blank + 1));
        text.remove_prefix(close + 21);
    }
    return text == "</LogAutoUpdate>\r\n";
}
} // namespace

long long LogContent::inOrder(const std::string& tag, int count) const
{
    const auto found = events.find(tag);
    if (found == events.end())
        return 0;
    int next = 0;
    for (const int number : found->second)
        next += number == next ? 1 : 0;
    const auto others = static_cast<long long>(found->second.size()) - next;
    return std::min(next, count) - others;
}

bool LogContent::countsUp(const std::string& tag) const
{
    const auto found = events.find(tag);
    const int there = found == events.end() ? 0 : static_cast<int>(found->second.size());
    return inOrder(tag, there) == there;
}

LogFolder::LogFolder() : m_program(auttest::logProgramAs(m_programs, "AutoUpdate.exe"))
{
    m_registry.write("", "DataPath", m_data.path());
    m_registry.write("", "LastAndMaxIndex", static_cast<DWORD>(kMaxArchives) << 16);
}

auttest::ChildProgram LogFolder::start(const std::string& arguments) const { return {m_program, arguments}; }

LogContent LogFolder::content() const
{
    LogContent content;
    const auto readOne = [&](const std::string& name)
    {
        if (!m_data.exists(name))
            return;
        const std::string bytes = m_data.readFile(name);
        ++content.files;
        const bool whole = readLines(bytes, content) && isWellFormed(bytes);
        content.broken += whole ? 0 : 1;
        EXPECT_TRUE(whole) << name;
    };
    for (int i = kMaxArchives; i >= 1; --i)
        readOne("7xAutoupdateLog_" + std::string(i < 10 ? "0" : "") + std::to_string(i) + ".xml");
    readOne("7xAutoupdateLog.xml");
    return content;
}
} // namespace torture
