#include "examples/webconfigurator/Socket.h"
#include "tests/companions/TransferLibrary.h"
#include "tests/support/TestFolder.h"

#include <windows.h>

#include <wincrypt.h>

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using auttest::fetch;
using auttest::Fetched;

// TLS needs a server with a certificate. It is the build host's "openssl s_server", started from within the emulated
// Windows; on a Windows of its own there is none, and the tests say that they were skipped.

namespace
{
constexpr char kShell[] = "Z:\\bin\\sh";
constexpr char kOpenSsl[] = "Z:\\usr\\bin\\openssl";
constexpr int kPatienceMs = 20000;

/// Starts a program of the build host; its streams are the script's own business.
bool startOnHost(const std::string& script)
{
    std::string command = std::string(kShell) + " -c \"" + script + "\"";
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return false;
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

/// The build host's name of a Windows path.
std::string hostPath(const std::string& path)
{
    using ToUnix = char*(CDECL*)(const wchar_t*);
    const FARPROC address = ::GetProcAddress(::GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name");
    ToUnix toUnix = nullptr;
    std::memcpy(&toUnix, &address, sizeof(toUnix));
    if (toUnix == nullptr)
        return std::string();
    const std::wstring wide(path.begin(), path.end()); // the test folder's name is ASCII
    char* const unixPath = toUnix(wide.c_str());
    const std::string text = unixPath != nullptr ? unixPath : "";
    ::HeapFree(::GetProcessHeap(), 0, unixPath);
    return text;
}

bool waitForText(const std::string& path, const std::string& text)
{
    for (int waitedMs = 0; waitedMs < kPatienceMs; waitedMs += 20)
    {
        if (auttest::fileExists(path) && auttest::readFile(path).find(text) != std::string::npos)
            return true;
        ::Sleep(20);
    }
    return false;
}

/// A certificate of the machine's trusted roots, taken out again at the end.
class TrustedRoot
{
public:
    explicit TrustedRoot(const std::string& der)
        : m_store(::CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root"))
    {
        EXPECT_NE(nullptr, m_store);
        EXPECT_TRUE(
            ::CertAddEncodedCertificateToStore(m_store, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(der.data()),
                                               static_cast<DWORD>(der.size()), CERT_STORE_ADD_ALWAYS, &m_certificate));
        // other processes see it only once it is written
        EXPECT_TRUE(::CertControlStore(m_store, 0, CERT_STORE_CTRL_COMMIT, nullptr));
    }
    ~TrustedRoot()
    {
        ::CertDeleteCertificateFromStore(m_certificate); // frees it, too
        ::CertCloseStore(m_store, 0);
    }
    TrustedRoot(const TrustedRoot&) = delete;
    TrustedRoot& operator=(const TrustedRoot&) = delete;

private:
    HCERTSTORE m_store;
    PCCERT_CONTEXT m_certificate = nullptr;
};

/// Nobody listens there.
unsigned short closedPort() { return webconf_sample::Socket::listen(0).port(); }

class Https : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!auttest::fileExists(kOpenSsl) || !auttest::fileExists(kShell))
            GTEST_SKIP() << "there is no openssl to serve TLS";
        m_port = closedPort();
        // Each name is a whole answer, sent as it stands.
        m_folder.writeFile("whole", "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecret");
        m_folder.writeFile("cut", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsecret");
        m_folder.writeFile("chunked", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n6\r\nsecret\r\n0\r\n\r\n");
        m_folder.writeFile("down", "HTTP/1.1 302 Found\r\nLocation: http://localhost/\r\nContent-Length: 0\r\n\r\n");
        const std::string folder = hostPath(m_folder.path());
        ASSERT_TRUE(
            startOnHost("cd '" + folder + "' && exec >log 2>&1 </dev/null && " +
                        "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -keyout key.pem "
                        "-out cert.pem " +
                        "-subj /CN=localhost -addext subjectAltName=DNS:localhost && " +
                        "openssl x509 -in cert.pem -outform DER -out cert.der && " +
                        // ends with the test: when "stop" is there, or after a minute whatever happens
                        "{ timeout 60 openssl s_server -accept 127.0.0.1:" + std::to_string(m_port) +
                        " -key key.pem -cert cert.pem -HTTP & server=$!; " +
                        "while kill -0 $server && [ ! -e stop ]; do sleep 0.1; done; kill $server; echo ended; }"));
        ASSERT_TRUE(waitForText(m_folder / "log", "ACCEPT"))
            << (m_folder.exists("log") ? m_folder.readFile("log") : "no log");
    }

    void TearDown() override
    {
        if (m_port == 0)
            return;
        m_folder.writeFile("stop", "");
        EXPECT_TRUE(waitForText(m_folder / "log", "ended"));
    }

    std::string url(const std::string& host, const std::string& name) const
    {
        return "https://" + host + ":" + std::to_string(m_port) + "/" + name;
    }

    /// WinInet reads the trusted roots once per process, so that a new root counts in the next one only.
    static void expectInNewProcess(const std::string& url, const std::string& status, const std::string& body)
    {
        ::SetEnvironmentVariableA("AUTTEST_HTTPS_URL", url.c_str());
        ::SetEnvironmentVariableA("AUTTEST_HTTPS_STATUS", status.c_str());
        ::SetEnvironmentVariableA("AUTTEST_HTTPS_BODY", body.c_str());
        char self[MAX_PATH];
        ::GetModuleFileNameA(nullptr, self, MAX_PATH);
        std::string command = "\"" + std::string(self) + "\" --gtest_filter=HttpsFetch.* --gtest_output=";
        STARTUPINFOA startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        ASSERT_TRUE(::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                     &process));
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.hProcess, kPatienceMs));
        DWORD exitCode = 99;
        ::GetExitCodeProcess(process.hProcess, &exitCode);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
        EXPECT_EQ(0u, exitCode) << url;
    }

    auttest::TestFolder m_folder;
    unsigned short m_port = 0;
};

std::string environment(const char* name, const char* otherwise)
{
    char text[1024] = "";
    ::SetLastError(ERROR_SUCCESS);
    const DWORD length = ::GetEnvironmentVariableA(name, text, sizeof(text));
    return length == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND ? otherwise : text;
}
} // namespace

/// By itself a refused connection; the tests below run it in a process of its own with other addresses.
TEST(HttpsFetch, EndsAsExpected)
{
    const Fetched fetched =
        fetch(environment("AUTTEST_HTTPS_URL", ("https://127.0.0.1:" + std::to_string(closedPort()) + "/").c_str()),
              [](filetransfer::ConnectionParams& params) { params.timeOut = 2; });
    const std::string expected = environment("AUTTEST_HTTPS_STATUS", "12029");
    EXPECT_EQ(expected, expected == "any error" && fetched.status > 2 ? expected : std::to_string(fetched.status));
    EXPECT_EQ(environment("AUTTEST_HTTPS_BODY", ""), fetched.body);
}

TEST_F(Https, ACertificateThatNobodyTrustsIsRefused)
{
    const Fetched fetched = fetch(url("localhost", "whole"));
    EXPECT_EQ(12045, fetched.status);
    EXPECT_FALSE(fetched.hasData);
}

TEST_F(Https, ATrustedServerIsReadAndItsFaultsAreSeen)
{
    const TrustedRoot trusted(m_folder.readFile("cert.der"));
    expectInNewProcess(url("localhost", "whole"), "1", "secret");
    expectInNewProcess(url("127.0.0.1", "whole"), "12038", ""); // the certificate names another host
    expectInNewProcess(url("localhost", "cut"), "any error", "");
    // Nobody can tell whether this was the last chunk or the end of the connection, and the server insists on chunks.
    expectInNewProcess(url("localhost", "chunked"), "14005", "");
    expectInNewProcess(url("localhost", "down"), "12156", ""); // a redirection to a connection without TLS
}
