// Credentials are told to nobody: not by the log at its highest detail, not by a result record.

#include "7xAutoUpdateTools.h"
#include "tests/support/DetailedLog.h"
#include "tests/support/LogFile.h"
#include "tests/torture/Figure.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <string>
#include <vector>

namespace
{
constexpr char kProxyUser[] = "proxyuser7";
constexpr char kProxyPassword[] = "s3cretOfTheProxy!";
constexpr char kServerUser[] = "serveruser7";
constexpr char kServerPassword[] = "s3cretOfTheServer?";

std::string base64(const char* user, const char* password)
{
    String encoded;
    Base64Encode(user, password, encoded);
    return static_cast<const char*>(encoded);
}

/// What must stand nowhere: the passwords, and everything that holds them in Base64, wherever it begins.
std::vector<std::string> secrets()
{
    std::vector<std::string> all = {kProxyUser,
                                    kServerUser,
                                    kProxyPassword,
                                    kServerPassword,
                                    base64(kProxyUser, kProxyPassword),
                                    base64(kServerUser, kServerPassword)};
    for (const char* password : {kProxyPassword, kServerPassword})
    {
        Base64Coder coder;
        coder.Encode(password);
        const std::string encoded = static_cast<const char*>(coder.EncodedMessage());
        all.push_back(encoded.substr(0, encoded.size() / 4 * 4 - 4));
    }
    return all;
}

int countIn(const std::string& text, const std::vector<std::string>& needles, const std::string& where)
{
    int found = 0;
    for (const std::string& needle : needles)
        if (text.find(needle) != std::string::npos)
        {
            ++found;
            ADD_FAILURE() << where << " tells " << needle;
        }
    return found;
}

std::string resultText()
{
    return std::string(static_cast<const char*>(result->GetAction())) + "\n" +
           static_cast<const char*>(result->GetObjectA()) + "\n" + static_cast<const char*>(result->GetFunction()) +
           "\n" + static_cast<const char*>(result->GetArgument1()) + "\n" +
           static_cast<const char*>(result->GetArgument2()) + "\n" +
           static_cast<const char*>(result->GetErrorMessage(""));
}
} // namespace

TEST(Credentials, AreToldToNobody)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const std::vector<std::string> needles = secrets();
    int told = 0;
    std::size_t logged = 0;
    {
        const torture::ClientInstallation client;
        const torture::Calls calls = torture::allCalls(client);
        // As the server answers, and as one does that wants credentials, or a proxy that does.
        for (const int status : {200, 401, 407})
        {
            client.server().clearRules();
            if (status != 200)
                client.server().addRule("status=" + std::to_string(status) + ", body=no");
            client.registry().write("Config", "TestEnv", 5);
            for (int i = 0; i < 10; ++i)
                Log(0xFFFF0000, "never written");
            for (const torture::Call& call : calls)
            {
                if (status != 200 && !torture::isLong() && call.name.find("DataCaching") == std::string::npos)
                    continue;
                CRegNetwork network(false);
                EXPECT_TRUE(network.SetProxyAuthentication(kProxyUser, kProxyPassword));
                EXPECT_TRUE(network.SetServerAuthentication(kServerUser, kServerPassword));
                char user[MAX_PATH] = "";
                char password[MAX_PATH] = "";
                EXPECT_TRUE(network.GetServerAuthentication(user, password));
                const auttest::LogFile log;
                const std::size_t before = log.content().size();
                call.make();
                const std::string content = log.content();
                const std::string news = content.size() > before ? content.substr(before) : content;
                logged += news.size();
                told += countIn(news, needles, "the log of " + call.name);
                told += countIn(resultText(), needles, "the result of " + call.name);
            }
        }
    }
    torture::count("secrets told by log and result at detail level 5", told, 0);
    torture::figure("bytes of log that were searched", std::to_string(logged), ">= 10000", logged >= 10000);
    ::CoUninitialize();
}
