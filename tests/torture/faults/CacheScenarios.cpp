#include "tests/support/Certificates.h"
#include "tests/torture/faults/Scenario.h"
#include "webconfigurator/WebConfigurator.h"

#include <optional>

// What comes from the Web Configurator and is kept.

namespace faults
{
namespace
{
class CacheFile : public Scenario
{
public:
    void prepare() override
    {
        Scenario::prepare();
        m_folder->writeFile(kFile, kOld);
    }
    Job job() const override { return {"cache", m_folder->path(), ""}; }
    void intact(Problems& problems) override
    {
        const std::string content = read(kFile);
        problems.expect(content == kOld || content == newContent(), "the cache file is neither old nor new");
    }
    bool isDone() override { return read(kFile) == newContent(); }

private:
    static constexpr char kFile[] = "data\\Ledger\\server\\CID.dat";
    static constexpr char kOld[] = "old";
};

/// A server that gives one answer.
class FromServer : public Scenario
{
public:
    void prepare() override
    {
        if (!m_server)
        {
            m_server.emplace(AUTOOLS_WEBCONFIGURATOR_TEMPLATES);
            webconf_sample::Rule rule;
            rule.answer.body = answer();
            m_server->addRule(rule);
        }
        Scenario::prepare();
    }

protected:
    virtual std::string answer() const = 0;
    std::string host() const { return m_server->host(); }

private:
    std::optional<webconf_sample::WebConfigurator> m_server;
};

/// One whole request: mark, answer, cache file, time stamp, the client's own configuration.
class Configuration : public FromServer
{
public:
    Configuration() : m_certificate(auttest::Store::machine, {"Name", "A", "B", "Unit", kCid}) {}

    void prepare() override
    {
        FromServer::prepare();
        m_registry.write("", "Path", m_folder->makeFolder("client"));
        m_registry.write("", "Current_AutoUpdate_Version", "7.0.1P2_English");
        m_registry.write(stampKey(), kCid, "T0");
        m_folder->writeFile(cacheFile(), kOldAnswer);
        m_folder->writeFile(kKernelFile, kOldAnswer);
    }
    Job job() const override { return {"configuration", m_folder->path(), host()}; }
    void intact(Problems& problems) override
    {
        const std::string cached = read(cacheFile());
        const std::string kernel = read(kKernelFile);
        problems.expect(cached == kOldAnswer || cached == answer(), "the cache file is neither old nor new");
        problems.expect(kernel == kOldAnswer || kernel == answer(), "the configuration is neither old nor new");
        problems.expect(cached == answer() || stamp() != "T1", "the new time stamp stands over the old answer");
    }
    bool isDone() override { return read(cacheFile()) == answer() && read(kKernelFile) == answer() && stamp() == "T1"; }
    /// A mark that a killed process left keeps every request away until an operator deletes it.
    void retry(Problems& problems) override
    {
        m_registry.removeValue("Config\\Cache\\UpdatingConfigs\\Automatic Update\\" + host(),
                               (std::string(kCid) + "__config").c_str());
        run(job(), [] {});
        problems.expect(isDone(), "the next request does not bring the configuration into place");
    }
    void complete(Problems& problems) override
    {
        Scenario::complete(problems);
        problems.expect(!m_registry.valueExists("Config\\Cache\\UpdatingConfigs\\Automatic Update\\" + host(),
                                                (std::string(kCid) + "__config").c_str()),
                        "a mark is left");
    }

protected:
    std::string answer() const override
    {
        return "<wcfgResponse><Data><ComponentList><Component><Configuration><AutomaticUpdateData>" + newContent() +
               "</AutomaticUpdateData></Configuration></Component></ComponentList><TimeStamp>T1</TimeStamp></Data>"
               "</wcfgResponse>";
    }

private:
    static constexpr char kCid[] = "Rmlyc3RDZXJ0aWZpY2F0ZQ==";
    static constexpr char kOldAnswer[] = "<old/>";
    static constexpr char kKernelFile[] = "client\\AUKernelData.xml";
    std::string stampKey() const { return "Config\\Cache\\Data\\Automatic Update\\" + host(); }
    std::string cacheFile() const { return "data\\Automatic Update\\" + host() + "\\" + kCid + ".dat"; }
    std::string stamp() const { return m_registry.readText(stampKey(), kCid).value_or(""); }

    auttest::InstalledCertificate m_certificate;
};

class ProductList : public FromServer
{
public:
    void prepare() override
    {
        FromServer::prepare();
        m_folder->writeFile(kFile, kOld);
    }
    Job job() const override { return {"list", m_folder->path(), host()}; }
    void intact(Problems& problems) override
    {
        problems.expect(read(kFile) == kOld || isDone(), "the list is neither old nor new");
    }
    bool isDone() override
    {
        const std::string list = read(kFile);
        return list.find("line 100 of the new content") != std::string::npos && list.find("</r>") != std::string::npos;
    }
    /// The emulator's parser saves without looking at what writing gives. That a parser which tells of it is heeded is
    /// shown with a stand-in, in the tests of the product list.
    bool isSwallowed(const std::string& call) const override { return call.compare(0, 11, "NtWriteFile") == 0; }

protected:
    std::string answer() const override
    {
        return "<r><Status><OK/></Status><Data><NewData><ModifCounter>9</ModifCounter><Text>" + newContent() +
               "</Text></NewData></Data></r>";
    }

private:
    static constexpr char kFile[] = "data\\productList.xml";
    static constexpr char kOld[] = "<r/>";
};
} // namespace

std::unique_ptr<Scenario> makeCache() { return std::make_unique<CacheFile>(); }
std::unique_ptr<Scenario> makeConfiguration() { return std::make_unique<Configuration>(); }
std::unique_ptr<Scenario> makeList() { return std::make_unique<ProductList>(); }
} // namespace faults
