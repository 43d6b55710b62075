#include "tests/companions/HttpFixture.h"
#include "tests/support/OpenHandles.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

using auttest::fetch;
using auttest::Fetched;
using auttest::pattern;
using auttest::TransferLibrary;
using filetransfer::ConnectionParams;
using filetransfer::FileTransfer;

namespace
{
std::int32_t fieldAt(const ConnectionParams* params, std::size_t offset)
{
    std::int32_t value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(params) + offset, sizeof(value));
    return value;
}
} // namespace

class EntryPoints : public auttest::HttpFixture
{
protected:
    const TransferLibrary& m_library = TransferLibrary::get();
};

TEST_F(EntryPoints, AFreshParameterRecordHoldsTheDefaults)
{
    ConnectionParams* const params = m_library.newConnectionParams();
    ASSERT_NE(nullptr, params);
    EXPECT_EQ(8192, fieldAt(params, 0));
    EXPECT_EQ(65535, fieldAt(params, 4));
    EXPECT_EQ(0, fieldAt(params, 8));
    EXPECT_EQ(0, fieldAt(params, 12));
    EXPECT_EQ(2, fieldAt(params, 16));
    EXPECT_EQ(200, fieldAt(params, 20));
    EXPECT_EQ(30, fieldAt(params, 24));
    EXPECT_EQ(0, fieldAt(params, 28));
    EXPECT_EQ(1, reinterpret_cast<const char*>(params)[40]);
    m_library.deleteConnectionParams(params);
}

TEST_F(EntryPoints, DeletingNothingIsFine)
{
    m_library.deleteConnectionParams(nullptr);
    m_library.deleteFileTransfer(nullptr);
}

TEST_F(EntryPoints, DownloadingNothingIsABadArgument) { EXPECT_EQ(14001, m_library.download(nullptr)); }

TEST_F(EntryPoints, NullTextsAndParametersAreUnderstood)
{
    serve("body");
    FileTransfer* const transfer = m_library.newFileTransfer(url().c_str(), nullptr, nullptr, nullptr, false, nullptr);
    ASSERT_NE(nullptr, transfer);
    int status = 2;
    while (status == 2)
        status = m_library.download(transfer);
    EXPECT_EQ(1, status);
    EXPECT_STREQ("body", transfer->data);
    EXPECT_EQ(4u, transfer->length);
    m_library.deleteFileTransfer(transfer);
}

TEST_F(EntryPoints, TheParametersMayBeDeletedBeforeTheTransferRuns)
{
    serve(pattern(2000));
    ConnectionParams* const params = m_library.newConnectionParams();
    ASSERT_NE(nullptr, params);
    params->packetSize = 100;
    int status = -1;
    FileTransfer* const transfer = m_library.newFileTransfer(url().c_str(), "", "", params, false, &status);
    m_library.deleteConnectionParams(params);
    ASSERT_NE(nullptr, transfer);
    EXPECT_EQ(0, status);
    int steps = 0;
    while (m_library.download(transfer) == 2)
        ++steps;
    EXPECT_GE(steps, 20);
    EXPECT_EQ(2000u, transfer->length);
    m_library.deleteFileTransfer(transfer);
}

TEST_F(EntryPoints, ATransferThatRunsMayBeDeleted)
{
    serve(pattern(100000));
    FileTransfer* const transfer = m_library.newFileTransfer(url().c_str(), "", "", nullptr, false, nullptr);
    ASSERT_NE(nullptr, transfer);
    EXPECT_EQ(2, m_library.download(transfer));
    EXPECT_EQ(2, m_library.download(transfer));
    m_library.deleteFileTransfer(transfer);
    serve("the next", "times=-1");
    EXPECT_EQ("the next", fetch(url()).body);
}

struct RefusedRow
{
    const char* name;
    std::size_t urlChars;
    std::size_t userChars;
    std::size_t passwordChars;
    bool taken;
};

class EntryPointBounds : public ::testing::TestWithParam<RefusedRow>
{
};

TEST_P(EntryPointBounds, AreKept)
{
    const std::string url = "http://127.0.0.1/" + std::string(GetParam().urlChars - 17, 'u');
    const std::string user(GetParam().userChars, 'n');
    const std::string password(GetParam().passwordChars, 'p');
    int status = -1;
    FileTransfer* const transfer =
        TransferLibrary::get().newFileTransfer(url.c_str(), user.c_str(), password.c_str(), nullptr, false, &status);
    EXPECT_EQ(GetParam().taken, transfer != nullptr);
    EXPECT_EQ(GetParam().taken ? 0 : 14001, status);
    TransferLibrary::get().deleteFileTransfer(transfer);
}

INSTANTIATE_TEST_SUITE_P(
    All, EntryPointBounds,
    ::testing::Values(RefusedRow{"LongestUrl", 65535, 0, 0, true}, RefusedRow{"UrlTooLong", 65536, 0, 0, false},
                      RefusedRow{"UrlFarTooLong", 5000000, 0, 0, false}, RefusedRow{"LongestUser", 100, 256, 256, true},
                      RefusedRow{"UserTooLong", 100, 257, 0, false}, RefusedRow{"PasswordTooLong", 100, 1, 257, false}),
    [](const auto& row) { return row.param.name; });

TEST_F(EntryPoints, ANullUrlIsRefused)
{
    int status = -1;
    EXPECT_EQ(nullptr, m_library.newFileTransfer(nullptr, "", "", nullptr, true, &status));
    EXPECT_EQ(14001, status);
}

struct UrlRow
{
    const char* name;
    const char* url;
    int status;
};

class UnusableUrl : public ::testing::TestWithParam<UrlRow>
{
};

TEST_P(UnusableUrl, IsTheStatusOfTheFirstStep)
{
    const Fetched fetched = fetch(GetParam().url);
    EXPECT_EQ(GetParam().status, fetched.status);
    EXPECT_EQ(1, fetched.steps);
    EXPECT_FALSE(fetched.hasData);
}

INSTANTIATE_TEST_SUITE_P(
    All, UnusableUrl,
    ::testing::Values(UrlRow{"Empty", "", 14002}, UrlRow{"NoScheme", "server/page.asp", 14002},
                      UrlRow{"Gopher", "gopher://host/x", 14002}, UrlRow{"Script", "javascript:alert(1)", 14002},
                      UrlRow{"OnlyAScheme", "http:", 12005}, UrlRow{"NoHost", "http:///page", 12005},
                      UrlRow{"NoHostButAPort", "http://:80/", 12005}, UrlRow{"PortZero", "http://host:0/", 12005},
                      UrlRow{"PortTooHigh", "http://host:65536/", 12005},
                      UrlRow{"PortNoNumber", "http://host:8x/", 12005}, UrlRow{"BlankInTheHost", "http://a b/", 12005},
                      UrlRow{"LineEndInTheHost", "http://a\r\nb/", 12005}, UrlRow{"OpenBracket", "http://[::1/", 12005},
                      UrlRow{"OnlyAUser", "http://user@/", 12005}, UrlRow{"FtpWithoutAFile", "ftp://host/", 12005},
                      UrlRow{"FtpWithACommand", "ftp://host/a%0d%0aDELE b", 12005},
                      UrlRow{"FileWithoutAName", "file:///", 12005}, UrlRow{"FileWithAZero", "file:///C:/a%00b", 12005},
                      UrlRow{"FileDevice", "file://./PhysicalDrive0", 12005},
                      UrlRow{"FileNothingLeft", "file://localhost///", 12005},
                      UrlRow{"FileDevicePath", "file://localhost//?/C:/x", 12005},
                      UrlRow{"FileLongDevice", "file://%3F/C:/windows/win.ini", 12005}),
    [](const auto& row) { return row.param.name; });

// Resources and threads

TEST_F(EntryPoints, ManyTransfersLeaveNoHandleBehind)
{
    serve(pattern(10000));
    const auto run = [this](int times)
    {
        for (int i = 0; i < times; ++i)
            EXPECT_EQ(1, fetch(url()).status);
    };
    run(10);
    const std::size_t before = auttest::openHandles();
    run(200);
    EXPECT_LE(auttest::openHandles(), before + 10);
}

TEST_F(EntryPoints, ManyFailuresLeaveNoHandleBehind)
{
    serve(pattern(1000), "framing=chunked, cut=500");
    const auto run = [this](int times)
    {
        for (int i = 0; i < times; ++i)
            EXPECT_EQ(14005, fetch(url()).status);
    };
    run(10);
    const std::size_t before = auttest::openHandles();
    run(100);
    EXPECT_LE(auttest::openHandles(), before + 10);
}

TEST_F(EntryPoints, TransfersOnSeveralThreadsDoNotDisturbEachOther)
{
    std::vector<std::string> bodies;
    for (int i = 0; i < 6; ++i)
    {
        bodies.push_back(pattern(20000 + static_cast<std::size_t>(i) * 777));
        webconf_sample::Rule rule = webconf_sample::parseRule("page=p" + std::to_string(i));
        rule.answer.body = bodies.back();
        m_server.addRule(rule);
    }
    std::vector<int> wrong(bodies.size(), 0);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < bodies.size(); ++i)
        threads.emplace_back(
            [&, i]
            {
                for (int round = 0; round < 10; ++round)
                    wrong[i] += fetch(m_server.url("p" + std::to_string(i))).body != bodies[i];
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::vector<int>(bodies.size(), 0), wrong);
}

TEST_F(EntryPoints, AThreadTerminatedInATransferStopsNoOther)
{
    m_server.addRule("page=stalled, body=0123456789, stall=5");
    m_server.addRule("page=whole, body=whole");
    struct Job
    {
        std::string url;
    };
    Job job{m_server.url("stalled")};
    const HANDLE thread = ::CreateThread(
        nullptr, 0,
        [](void* parameter) -> DWORD
        {
            const TransferLibrary& library = TransferLibrary::get();
            FileTransfer* const transfer =
                library.newFileTransfer(static_cast<Job*>(parameter)->url.c_str(), "", "", nullptr, false, nullptr);
            while (library.download(transfer) == 2)
            {
            }
            return 0;
        },
        &job, 0, nullptr);
    ASSERT_NE(nullptr, thread);
    while (m_server.requests().empty())
        ::Sleep(10);
    ::Sleep(100); // let it wait for the rest of the body
    ::TerminateThread(thread, 0);
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread, 5000));
    ::CloseHandle(thread);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ("whole", fetch(m_server.url("whole")).body);
}

TEST_F(EntryPoints, ABodyOfAHundredMegabytesComesWhole)
{
    const std::string body = pattern(100 * 1024 * 1024);
    serve(body, "framing=length");
    Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.packetSize = 65535; });
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ(body.size(), fetched.body.size());
    EXPECT_TRUE(body == fetched.body);
}
