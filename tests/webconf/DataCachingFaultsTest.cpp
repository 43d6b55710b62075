#include "tests/webconf/CachingFixture.h"

#include "tests/productlist/StandInDocument.h"
#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <comdef.h>
#include <sddl.h>

#include <cstring>
#include <new>
#include <string>
#include <utility>

// What else can go wrong while a configuration is asked for. In every case the request ends with its status, its lines
// in the log and no mark; the answer cached before stays, and the next request can go on from there.

using auttest::CachingTest;
using auttest::Events;
using auttest::OpenDataCaching;

class CachingFaults : public CachingTest
{
protected:
    CachingFaults()
    {
        fill(request);
        cache("2026-01-01 00:00:00", "old");
    }
    int transmit()
    {
        log.mark();
        return request.TransmitRequestToWebConf();
    }
    void expectOldCache() const
    {
        EXPECT_EQ("old", data.readFile(file()));
        EXPECT_EQ("2026-01-01 00:00:00", timeStamp());
        EXPECT_FALSE(marked());
    }
    void expectRecovery()
    {
        server->clearRules();
        answerWith(newData("2026-09-09 09:09:09"));
        EXPECT_EQ(0, transmit());
        EXPECT_EQ("2026-09-09 09:09:09", timeStamp());
        EXPECT_EQ(newData("2026-09-09 09:09:09"), data.readFile(file()));
        EXPECT_EQ((Events{{"Info", prefix() + " New Data. TimeStamp = 2026-09-09 09:09:09"}}), log.events());
        EXPECT_FALSE(marked());
    }
    auttest::LogEvent notAvailable(int code) const
    {
        return {"Error", prefix() + " - [" + std::to_string(code) +
                             "], Web Configurator not available. No data in Local. Message=GetDataConfiguration - Web "
                             "Configurator not available"};
    }
    OpenDataCaching request;
};

// Exceptions

namespace
{
HRESULT WINAPI outOfMemory(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*) { throw std::bad_alloc(); }
HRESULT WINAPI comError(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*) { throw _com_error(E_OUTOFMEMORY); }
HRESULT WINAPI anything(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*) { throw 42; }
DWORD WINAPI attributesThrow(LPCSTR) { throw std::bad_alloc(); }
} // namespace

class CachingException : public CachingFaults
{
protected:
    Events bothLines() const
    {
        return {{"Error", "Exception occured in DataCaching::TransmitRequestToWebConf()"},
                {"Error", "Delete ConfigUpdating registry key for Product=Ledger, CID=" + std::string(kCid)}};
    }
};

TEST_F(CachingException, OfAnyKindIsLoggedAndLeavesNoMark)
{
    answerWith(newData("T"));
    for (const auto function : {&outOfMemory, &comError, &anything})
    {
        {
            const auttest::ImportPatch thrower("CoCreateInstance", function);
            EXPECT_EQ(0, transmit()) << "there was no error before it";
        }
        EXPECT_EQ(bothLines(), log.events());
        expectOldCache();
    }
    EXPECT_EQ(3u, server->requests().size());
    expectRecovery();
}

TEST_F(CachingException, BeforeTheServerIsAskedToo)
{
    {
        const auttest::ImportPatch thrower("GetFileAttributesA", &attributesThrow);
        EXPECT_EQ(0, transmit());
    }
    EXPECT_EQ(bothLines(), log.events());
    EXPECT_TRUE(server->requests().empty());
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingException, OfADocumentThatCannotBeSearched)
{
    answerWith(newData("T"));
    {
        auttest::DocumentChanges changes;
        changes.selectStatus = E_FAIL;
        const auttest::StandInDocument document(changes);
        EXPECT_EQ(0, transmit());
    }
    EXPECT_EQ(bothLines(), log.events());
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingException, KeepsTheErrorThatCameBefore)
{
    server->addRule("status=500");
    using Open = LSTATUS(WINAPI*)(HKEY, LPCSTR, DWORD, REGSAM, PHKEY);
    // when the counter of failures is to be written
    const Open counterThrows = [](HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) -> LSTATUS
    {
        if (std::string(path) == "Software\\Velmora\\7xAutoUpdate\\Config" && (access & KEY_SET_VALUE) != 0)
            throw std::bad_alloc();
        return ::RegOpenKeyExA(root, path, options, access, key);
    };
    {
        const auttest::ImportPatch thrower("RegOpenKeyExA", counterThrows);
        EXPECT_EQ(13500, transmit());
    }
    EXPECT_TRUE(log.has("Error", bothLines()[0].text));
    EXPECT_TRUE(log.has("Error", bothLines()[1].text));
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingException, ThatKeepsTheMarkFromBeingClearedDoesNotReachTheCaller)
{
    answerWith(newData("T"));
    using Open = LSTATUS(WINAPI*)(HKEY, LPCSTR, DWORD, REGSAM, PHKEY);
    const Open marksThrow = [](HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) -> LSTATUS
    {
        if (std::strstr(path, "UpdatingConfigs") != nullptr && (access & KEY_SET_VALUE) != 0)
            throw std::bad_alloc();
        return ::RegOpenKeyExA(root, path, options, access, key);
    };
    {
        const auttest::ImportPatch thrower("RegOpenKeyExA", marksThrow);
        EXPECT_NO_THROW(EXPECT_EQ(0, transmit()));
    }
    EXPECT_EQ(bothLines(), log.events());
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingException, OfMemoryDoesNotReachTheCallerOfAnyEntry)
{
    using Open = LSTATUS(WINAPI*)(HKEY, LPCSTR, DWORD, REGSAM, PHKEY);
    const Open allThrow = [](HKEY, LPCSTR, DWORD, REGSAM, PHKEY) -> LSTATUS { throw std::bad_alloc(); };
    const auttest::ImportPatch thrower("RegOpenKeyExA", allThrow);
    EXPECT_NO_THROW(EXPECT_EQ(ERROR_OUTOFMEMORY, static_cast<DWORD>(request.GetData())));
    EXPECT_NO_THROW(EXPECT_EQ(ERROR_OUTOFMEMORY, static_cast<DWORD>(request.GetComponentData(
                                                     host.c_str(), kCid, kProduct, "1.0", "2", "English", "Core"))));
    EXPECT_NO_THROW(EXPECT_FALSE(request.GetAUData(host.c_str())));
    EXPECT_NO_THROW(EXPECT_FALSE(request.IsAUValidForWebServer(host.c_str())));
    EXPECT_NO_THROW(SetDataInCache(host.c_str(), kCid, kProduct, "", "lost"));
    EXPECT_TRUE(server->requests().empty());
    EXPECT_EQ("old", data.readFile(file()));
}

// A server that stalls

namespace
{
DWORD longestWaitMs;
/// The patience of the library, but shorter.
DWORD WINAPI impatientWait(HANDLE object, DWORD timeoutMs)
{
    if (timeoutMs != INFINITE && timeoutMs > longestWaitMs)
        longestWaitMs = timeoutMs;
    return ::WaitForSingleObject(object, timeoutMs == 600'000 ? 500 : timeoutMs);
}
} // namespace

TEST_F(CachingFaults, AServerThatStallsPastTheTenMinutes)
{
    for (const char* const rule : {"silent=1", "body=<wcfgResponse><Data></Data></wcfgResponse>, stall=10"})
    {
        server->clearRules();
        server->addRule(rule);
        longestWaitMs = 0;
        {
            const auttest::ImportPatch impatient("WaitForSingleObject", &impatientWait);
            EXPECT_EQ(1003, transmit());
        }
        EXPECT_EQ(600'000u, longestWaitMs);
        EXPECT_EQ(
            (Events{{"Warning", "WinInet not responding. Automatic Update is going to restart."}, notAvailable(1003)}),
            log.events());
        EXPECT_EQ(1003, result->GetStatusCode());
        expectOldCache();
    }
    EXPECT_EQ(2u, failures());
    expectRecovery();
}

// Answers of something else on the way

TEST_F(CachingFaults, AProxysPageIsNoXml)
{
    server->addRule("file=proxy-page.html, type=text/html");
    EXPECT_EQ(0, transmit()) << "deliberately no error";
    EXPECT_EQ((Events{{"Warning", "TransmitRequestToWebConf: Unable to create XML document from data"}}), log.events());
    EXPECT_EQ(500, result->GetStatusCode());
    EXPECT_EQ(0u, failures());
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingFaults, AProxysWellFormedPageIsNoAnswer)
{
    server->addRule("body=<html><head><title>Log on</title></head><body><p>AccessMissing</p></body></html>, "
                    "type=text/html");
    EXPECT_EQ(104, transmit());
    EXPECT_EQ((Events{{"Warning", "Response from Web Configurator not valid (special provider or proxies "
                                  "authentication ?"},
                      notAvailable(104)}),
              log.events());
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingFaults, AnElementOfTheAnswersNameDeeperInsideIsNone)
{
    answerWith("<html><wcfgResponse><Data><TimeStamp>T</TimeStamp></Data></wcfgResponse></html>");
    EXPECT_EQ(104, transmit());
    expectOldCache();
}

struct DroppedRow
{
    const char* rule;
    int status;
};
class CachingDropped : public CachingFaults, public ::testing::WithParamInterface<DroppedRow>
{
};
TEST_P(CachingDropped, ConnectionGivesItsStatus)
{
    server->addRule(GetParam().rule);
    EXPECT_EQ(GetParam().status, transmit());
    EXPECT_EQ(Events{notAvailable(GetParam().status)}, log.events());
    EXPECT_EQ(1u, failures());
    expectOldCache();
    expectRecovery();
}
INSTANTIATE_TEST_SUITE_P(All, CachingDropped,
                         ::testing::Values(DroppedRow{"hang-up=1", 12152}, DroppedRow{"hang-up=1, reset=1", 12030},
                                           DroppedRow{"body=<wcfgResponse/>, lie=100, cut=15", 14005}));

// Error answers

TEST_F(CachingFaults, NoDataFoundIsAnErrorLikeOthers)
{
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "Tk9EQVRBLUNJRDAx"); // of the sample pages
    registry.write(stampKey(), "Tk9EQVRBLUNJRDAx", "2026-01-01 00:00:00");
    data.writeFile(file("Tk9EQVRBLUNJRDAx"), "old");
    EXPECT_EQ(104, transmit());
    ASSERT_EQ(2u, log.events().size());
    EXPECT_EQ((auttest::LogEvent{"Warning", "Configuration not valid: No deployment for Tk9EQVRBLUNJRDAx"}),
              log.events()[0]);
    EXPECT_EQ(1u, failures());
    EXPECT_EQ("old", data.readFile(file("Tk9EQVRBLUNJRDAx")));
    EXPECT_EQ("2026-01-01 00:00:00", timeStamp("Tk9EQVRBLUNJRDAx"));
    EXPECT_FALSE(registry.valueExists(markKey(), "Tk9EQVRBLUNJRDAx__config"));
}

class CachingRefusal : public CachingFaults, public ::testing::WithParamInterface<const char*>
{
};
TEST_P(CachingRefusal, IsCachedWhateverItsReason)
{
    const std::string body =
        answer("<Status><Error><Kind><Business><AccessMissing><DBReason>" + std::string(GetParam()) +
               "</DBReason></AccessMissing></Business></Kind></Error></Status>");
    data.writeFile(file(kCid, "Automatic Update"), body); // the same, as an earlier answer for the client itself
    answerWith(body);
    EXPECT_EQ(0, transmit());
    EXPECT_EQ((Events{{"Warning", prefix() + " Web Configurator returned an error"}}), log.events());
    EXPECT_EQ(body, data.readFile(file()));
    EXPECT_EQ("Nothing In Cache.", timeStamp());
    EXPECT_EQ(0u, failures());
    EXPECT_FALSE(marked());
    EXPECT_FALSE(registry.keyExists("Config\\Cache\\Certificates")) << "who revokes reads the product list";

    log.mark();
    EXPECT_FALSE(request.IsAUValidForWebServer(host.c_str()));
    EXPECT_EQ((Events{{"Warning", "IsAUValidForWebServer: " + std::string(GetParam())}}), log.events());

    expectRecovery();
    EXPECT_NE(std::string::npos, target(1).find("&TimeStamp=1980-01-01%2000:00:00")) << target(1);
}
INSTANTIATE_TEST_SUITE_P(All, CachingRefusal,
                         ::testing::Values("Err 101: unknown certificate", "Err 102: certificate expired",
                                           "Err 103: other", ""));

// The disk

namespace
{
bool isAnswer(LPCVOID bytes, DWORD size) { return size > 4 && std::memcmp(bytes, "<wcf", 4) == 0; }
/// There is no room for an answer, while the log goes on.
BOOL WINAPI noRoom(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
    if (!isAnswer(bytes, size))
        return ::WriteFile(file, bytes, size, written, overlapped);
    *written = 0;
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}
BOOL WINAPI shortWrite(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
    return ::WriteFile(file, bytes, isAnswer(bytes, size) ? size / 2 : size, written, overlapped);
}
BOOL WINAPI noFlush(HANDLE)
{
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

/// Nobody may write into the folder while this lives.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(std::string path) : m_path(std::move(path)) { allow("D:P(A;;0x1200A9;;;WD)"); }
    ~ReadOnlyFolder() { allow("D:P(A;;FA;;;WD)"); }
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

private:
    void allow(const char* list)
    {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        EXPECT_TRUE(
            ::ConvertStringSecurityDescriptorToSecurityDescriptorA(list, SDDL_REVISION_1, &descriptor, nullptr));
        EXPECT_TRUE(::SetFileSecurityA(m_path.c_str(), DACL_SECURITY_INFORMATION, descriptor));
        ::LocalFree(descriptor);
    }
    const std::string m_path;
};
} // namespace

TEST_F(CachingFaults, AFullDisk)
{
    answerWith(newData("T"));
    const auto expectNotKept = [this]
    {
        EXPECT_EQ(0, transmit()) << "the server has answered";
        EXPECT_EQ((Events{{"Info", prefix() + " New Data. TimeStamp = T"},
                          {"Error", "Unable to write the data cache file: " + (data / file())}}),
                  log.events());
        expectOldCache();
    };
    {
        const auttest::ImportPatch full("WriteFile", &noRoom);
        expectNotKept();
    }
    {
        const auttest::ImportPatch full("WriteFile", &shortWrite);
        expectNotKept();
    }
    {
        const auttest::ImportPatch full("FlushFileBuffers", &noFlush);
        expectNotKept();
    }
    expectRecovery();
}

TEST_F(CachingFaults, AReadOnlyFolder)
{
    answerWith(newData("T"));
    {
        const ReadOnlyFolder folder(data / (std::string(kProduct) + "\\" + host));
        EXPECT_EQ(0, transmit());
        EXPECT_EQ((Events{{"Info", prefix() + " New Data. TimeStamp = T"},
                          {"Error", "Unable to write the data cache file: " + (data / file())}}),
                  log.events());
        expectOldCache();
    }
    expectRecovery();
}

TEST_F(CachingFaults, AFileDeletedBehindOurBackIsAskedForAgain)
{
    ::DeleteFileA((data / file()).c_str());
    expectRecovery();
    EXPECT_NE(std::string::npos, target().find("&TimeStamp=1980-01-01%2000:00:00")) << target();
}

TEST_F(CachingFaults, AFileCutBehindOurBackStaysUntilItIsDeletedOrSomethingChanges)
{
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    const auto stamp = [this] { return registry.readText(stampKey("Automatic Update"), kCid).value_or("(none)"); };
    registry.write(stampKey("Automatic Update"), kCid, "2026-01-01 00:00:00");
    const std::string path = data.writeFile(file(kCid, "Automatic Update"), "<wcfgResponse><Da");
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ("2026-01-01 00:00:00", stamp());
    EXPECT_FALSE(request.IsAUValidForWebServer(host.c_str())) << "that is how a caller sees it";

    ::DeleteFileA(path.c_str());
    answerWith(newData("2026-02-02 00:00:00"));
    EXPECT_EQ(0, transmit());
    EXPECT_NE(std::string::npos, target(1).find("&TimeStamp=1980-01-01%2000:00:00")) << target(1);
    EXPECT_TRUE(request.IsAUValidForWebServer(host.c_str()));

    data.writeFile(file(kCid, "Automatic Update"), "<wcfgResponse><Da");
    answerWith(newData("2026-03-03 00:00:00"));
    EXPECT_EQ(0, transmit());
    EXPECT_TRUE(request.IsAUValidForWebServer(host.c_str()));
    EXPECT_EQ("2026-03-03 00:00:00", stamp());
}

// Long texts

TEST_F(CachingFaults, ALongTimeStampIsKeptAndSentWhole)
{
    const std::string stamp(10'000, '7');
    answerWith(newData(stamp));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ(stamp, timeStamp());
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_NE(std::string::npos, target(1).find("&TimeStamp=" + stamp));
    expectRecovery();
}

TEST_F(CachingFaults, ALongErrorIsReported)
{
    answerWith(answer("<Status><Error>" + std::string(10'000, 'e') + "</Error></Status>"));
    EXPECT_EQ(104, transmit());
    const Events events = log.events();
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ(0u, events[0].text.rfind("Configuration not valid: eeee", 0)) << events[0].text.substr(0, 100);
    expectOldCache();
    expectRecovery();
}

TEST_F(CachingFaults, LongNamesHaveNoCacheFile)
{
    const std::string longText(10'000, 'x');
    const char* const text = longText.c_str();
    SetDataInCache(text, kCid, kProduct, "", "lost");
    SetDataInCache(host.c_str(), text, kProduct, "", "lost");
    SetDataInCache(host.c_str(), kCid, text, "", "lost");
    SetDataInCache(host.c_str(), kCid, kProduct, text, "lost");
    const Events events = log.events();
    ASSERT_EQ(4u, events.size());
    for (const auttest::LogEvent& event : events)
        EXPECT_EQ(0u, event.text.rfind("Unable to create the data cache directory: ", 0)) << event.text;
    EXPECT_FALSE(request.IsAUValidForWebServer(text));
    EXPECT_EQ("old", data.readFile(file()));
}

TEST_F(CachingFaults, LongDataIsKeptWhole)
{
    const std::string body = answer("<Data><TimeStamp>T</TimeStamp><x>" + std::string(3'000'000, 'x') + "</x></Data>");
    answerWith(body);
    EXPECT_EQ(0, transmit());
    EXPECT_TRUE(body == data.readFile(file()));
    EXPECT_EQ("T", timeStamp());
}

TEST_F(CachingFaults, NullTextsHaveTheirOwnPlace)
{
    SetDataInCache(nullptr, nullptr, nullptr, nullptr, "of nobody");
    EXPECT_EQ("old", data.readFile(file()));
}
