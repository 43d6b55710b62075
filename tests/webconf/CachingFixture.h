#ifndef AUTOOLS_TESTS_WEBCONF_CACHINGFIXTURE_H
#define AUTOOLS_TESTS_WEBCONF_CACHINGFIXTURE_H

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"
#include "webconf/DataCaching.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace auttest
{
using Events = std::vector<LogEvent>;

/// The members that derived classes reach.
class OpenDataCaching : public DataCaching
{
public:
    using DataCaching::ConstructURL;
    using DataCaching::GetCIDs;
    using DataCaching::GetDataFilePath;
    using DataCaching::IsAUDataUpdated;
    using DataCaching::m_certificateIds;
};

/// A client with a data folder, an empty registry and a Web Configurator on the loopback.
class CachingTest : public ::testing::Test
{
protected:
    CachingTest()
    {
        ::CoInitialize(nullptr);
        *result = RT_RESULT(); // what a test finds there is what it caused
        registry.write("", "DataPath", data.path());
        server.emplace(AUTOOLS_WEBCONFIGURATOR_TEMPLATES);
        host = server->host();
    }
    ~CachingTest() override
    {
        logDetail(0);
        ::CoUninitialize();
    }

    /// Answers every request from now on with this.
    void answerWith(std::string body)
    {
        webconf_sample::Rule rule;
        rule.answer.body = std::move(body);
        server->addRule(rule);
    }
    /// A whole answer around these nodes.
    static std::string answer(const std::string& nodes) { return "<wcfgResponse>" + nodes + "</wcfgResponse>"; }
    static std::string newData(const std::string& timeStamp)
    {
        return answer("<Data><TimeStamp>" + timeStamp + "</TimeStamp></Data>");
    }

    /// Fills a record as the service does for a product of its own.
    void fill(DataCaching& request, const char* component = "") const
    {
        std::snprintf(request.m_host, sizeof request.m_host, "%s", host.c_str());
        std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "%s", kCid);
        std::snprintf(request.m_productName, sizeof request.m_productName, "%s", kProduct);
        std::snprintf(request.m_version, sizeof request.m_version, "1.0");
        std::snprintf(request.m_build, sizeof request.m_build, "2");
        std::snprintf(request.m_language, sizeof request.m_language, "English");
        std::snprintf(request.m_componentName, sizeof request.m_componentName, "%s", component);
    }
    std::string prefix(const std::string& component = "") const
    {
        return "GetLocalData(Host=" + host + ", CID=" + kCid + ", Product=" + kProduct +
               (component.empty() ? "" : ", Component=" + component) + "): ";
    }

    std::string stampKey(const std::string& product = kProduct) const
    {
        return "Config\\Cache\\Data\\" + product + "\\" + host;
    }
    std::string markKey(const std::string& product = kProduct) const
    {
        return "Config\\Cache\\UpdatingConfigs\\" + product + "\\" + host;
    }
    /// The cache file, relative to the data folder.
    std::string file(const std::string& entry = kCid, const std::string& product = kProduct) const
    {
        return product + "\\" + host + "\\" + entry + ".dat";
    }
    /// What an earlier request left.
    void cache(const std::string& timeStamp, const std::string& content, const std::string& entry = kCid)
    {
        registry.write(stampKey(), entry.c_str(), timeStamp);
        data.writeFile(file(entry), content);
    }
    std::string timeStamp(const std::string& entry = kCid) const
    {
        return registry.readText(stampKey(), entry.c_str()).value_or("(none)");
    }
    bool marked() const { return registry.valueExists(markKey(), (std::string(kCid) + "__config").c_str()); }
    DWORD failures() const { return registry.readNumber("Config", "WebConfCnxFail").value_or(0); }
    /// Makes the log take events up to this detail level; it looks at every tenth call.
    void logDetail(DWORD level)
    {
        registry.write("Config", "TestEnv", level);
        for (int call = 0; call < 10; ++call)
            Log(0xFFFF0000, "above every detail level");
    }
    std::string target(std::size_t request = 0) const
    {
        const auto requests = server->requests();
        return request < requests.size() ? requests[request].target : "(no request)";
    }

    static constexpr const char* kCid = "Q0lELUNBQ0hFMQ==";
    static constexpr const char* kProduct = "Ledger";
    ClientRegistry registry;
    TestFolder data;
    LogFile log;
    std::optional<webconf_sample::WebConfigurator> server;
    std::string host;
};
} // namespace auttest

#endif
