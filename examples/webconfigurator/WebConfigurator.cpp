#include "webconfigurator/WebConfigurator.h"

#include "webconfigurator/AnswerWriter.h"
#include "webconfigurator/Depot.h"
#include "webconfigurator/Socket.h"
#include "webconfigurator/Templates.h"

#include <list>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace webconf_sample
{
namespace
{
constexpr std::size_t kLongestHeadBytes = std::size_t{1024} * 1024;
} // namespace

class WebConfigurator::Impl
{
public:
    Impl(const std::string& templates, unsigned short port)
        : m_templates(templates), m_fileRules(parseRules(m_templates.rulesText())),
          m_listener(Socket::listen(port, &m_stop)), m_port(m_listener.port()), m_acceptor([this] { acceptLoop(); })
    {
    }

    ~Impl()
    {
        m_stop.raise();
        m_acceptor.join();
        for (Connection& connection : m_connections)
            connection.thread.join();
    }

    unsigned short port() const noexcept { return m_port; }
    std::string host() const { return "127.0.0.1:" + std::to_string(m_port); }

    void addRule(Rule rule)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_addedRules.insert(m_addedRules.begin(), std::move(rule));
    }

    void clearRules()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_addedRules.clear();
    }

    std::vector<HttpRequest> requests() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_requests;
    }

    void clearRequests()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.clear();
    }

    void serveDepot(std::string folder)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_depot = Depot(std::move(folder));
    }

    void onRequest(std::function<void(const HttpRequest&)> observer)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_observer = std::move(observer);
    }

    unsigned connectionCount() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_connectionCount;
    }

private:
    struct Connection
    {
        Socket socket;
        std::thread thread;
        bool ended = false;
    };

    void acceptLoop()
    {
        while (!m_stop.raised())
        {
            Socket socket = m_listener.accept();
            if (!socket)
                continue;
            collectEnded();
            const std::lock_guard<std::mutex> lock(m_mutex);
            const unsigned number = ++m_connectionCount;
            m_connections.emplace_back();
            Connection& connection = m_connections.back();
            connection.socket = std::move(socket);
            connection.thread = std::thread([this, &connection, number] { serve(connection, number); });
        }
    }

    void collectEnded()
    {
        std::list<Connection> ended;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            for (auto it = m_connections.begin(); it != m_connections.end();)
            {
                const auto next = std::next(it);
                if (it->ended)
                    ended.splice(ended.end(), m_connections, it);
                it = next;
            }
        }
        for (Connection& connection : ended)
            connection.thread.join();
    }

    void serve(Connection& connection, unsigned number)
    {
        std::string unread;
        AfterAnswer after = AfterAnswer::keep;
        while (after == AfterAnswer::keep && !m_stop.raised())
        {
            auto request = nextRequest(connection.socket, unread);
            if (!request)
                break;
            request->connection = number;
            after = reply(connection.socket, *request);
        }
        if (after == AfterAnswer::reset)
            connection.socket.reset();
        else
            connection.socket.closeGently();
        const std::lock_guard<std::mutex> lock(m_mutex);
        connection.ended = true;
    }

    static std::optional<HttpRequest> nextRequest(const Socket& socket, std::string& unread)
    {
        constexpr std::string_view kHeadEnd = "\r\n\r\n";
        std::size_t end = unread.find(kHeadEnd);
        while (end == std::string::npos && unread.size() < kLongestHeadBytes)
        {
            const std::string more = socket.receive(16384);
            if (more.empty())
                return std::nullopt;
            unread += more;
            end = unread.find(kHeadEnd);
        }
        if (end == std::string::npos)
            return std::nullopt;
        auto request = parseRequest(std::string_view(unread).substr(0, end + 2));
        unread.erase(0, end + kHeadEnd.size());
        return request;
    }

    AfterAnswer reply(const Socket& socket, const HttpRequest& request)
    {
        std::function<void(const HttpRequest&)> observer;
        Answer answer;
        Depot depot;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_requests.push_back(request);
            observer = m_observer;
            answer = decide(request);
            depot = m_depot;
        }
        if (observer)
            observer(request);
        std::optional<std::string> body = answer.body;
        if (!body && answer.file)
            body = m_templates.render(*answer.file, request, host());
        if (!body && !answer.file && (body = depot.read(request.path)) && !answer.type)
            answer.type = "application/octet-stream";
        return AnswerWriter(socket, request, answer, m_stop).write(std::move(body));
    }

    /// Each setting comes from the first rule that fits and states it.
    Answer decide(const HttpRequest& request)
    {
        Answer answer;
        for (std::vector<Rule>* rules : {&m_addedRules, &m_fileRules})
            for (Rule& rule : *rules)
                if (rule.times != 0 && rule.fits(request))
                {
                    answer.completeFrom(rule.answer);
                    if (rule.times > 0)
                        --rule.times;
                }
        return answer;
    }

    Templates m_templates;
    StopSignal m_stop;
    mutable std::mutex m_mutex; // guards what follows up to the listener
    std::vector<Rule> m_addedRules;
    std::vector<Rule> m_fileRules;
    std::vector<HttpRequest> m_requests;
    std::function<void(const HttpRequest&)> m_observer;
    Depot m_depot;
    std::list<Connection> m_connections;
    unsigned m_connectionCount = 0;
    Socket m_listener;
    unsigned short m_port;
    std::thread m_acceptor; // last: it uses all of the above
};

WebConfigurator::WebConfigurator(const std::string& templates, unsigned short port)
    : m_impl(std::make_unique<Impl>(templates, port))
{
}

WebConfigurator::~WebConfigurator() = default;

unsigned short WebConfigurator::port() const noexcept { return m_impl->port(); }

std::string WebConfigurator::host() const { return m_impl->host(); }

std::string WebConfigurator::url(std::string_view page, std::string_view query) const
{
    std::string url = "http://" + host() + "/WebConfV1/" + std::string(page);
    if (!query.empty())
        url.append("?").append(query);
    return url;
}

void WebConfigurator::addRule(Rule rule) { m_impl->addRule(std::move(rule)); }

void WebConfigurator::addRule(std::string_view rule) { m_impl->addRule(parseRule(rule)); }

void WebConfigurator::clearRules() { m_impl->clearRules(); }

std::vector<HttpRequest> WebConfigurator::requests() const { return m_impl->requests(); }

void WebConfigurator::clearRequests() { m_impl->clearRequests(); }

void WebConfigurator::serveDepot(const std::string& folder) { m_impl->serveDepot(folder); }

void WebConfigurator::onRequest(std::function<void(const HttpRequest&)> observer)
{
    m_impl->onRequest(std::move(observer));
}

unsigned WebConfigurator::connectionCount() const { return m_impl->connectionCount(); }
} // namespace webconf_sample
