#include "tools/zelto-navigator/page_server.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <fmt/core.h>
#include <httplib.h>
#include <mutex>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>
#include <thread>

#include "tools/page/page.h"
#include "tools/page/seen_request.h"
#include "tools/zelto-navigator/page_acts.h"

namespace zelto::navigator {

namespace {

using httplib::Request;
using httplib::Response;
using nlohmann::json;
using std::chrono::steady_clock;

constexpr const char* kLoopback = "127.0.0.1";
constexpr size_t kKept = 10'000;       // exchanges for pages that are opened later
constexpr int kMaxPages = 16;          // open at a time; each holds a thread
constexpr size_t kMaxAct = 64 * 1024;  // bytes
constexpr std::chrono::seconds kHeartbeat(5);

std::string Dump(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

// 128 bits that nobody can guess.
std::string NewToken() {
    std::random_device random;
    std::string token;
    for (int i = 0; i < 4; ++i)
        token += fmt::format("{:08x}", random());
    return token;
}

// Takes the same time wherever the two differ.
bool IsSame(const std::string& a, const std::string& b) {
    unsigned difference = a.size() == b.size() ? 0 : 1;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

// What goes on, in the order in which pages are told of it. Thread safety: all of it.
class News {
  public:
    void Add(const json& exchange) {
        const std::scoped_lock hold(mutex_);
        exchanges_.push_back(Dump(exchange));
        if (exchanges_.size() > kKept) {
            exchanges_.pop_front();
            ++first_;
        }
        changed_.notify_all();
    }

    // Members of the object that pages hold of the present state.
    void SetState(const json& members) {
        const std::scoped_lock hold(mutex_);
        state_.update(members);
        ++state_version_;
        changed_.notify_all();
    }

    json State() const {
        const std::scoped_lock hold(mutex_);
        return state_;
    }

    void Close() {
        const std::scoped_lock hold(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

    // All exchanges that are kept, as the elements of a JSON array; `next` is the number of the one
    // that comes next, `lost` of those that are gone.
    std::string All(uint64_t& next, uint64_t& lost) const {
        const std::scoped_lock hold(mutex_);
        std::string list;
        for (const std::string& exchange : exchanges_)
            list += (list.empty() ? "" : ",") + exchange;
        next = first_ + exchanges_.size();
        lost = first_;
        return list;
    }

    // Where a page stands.
    struct Reader {
        uint64_t next = 0;
        uint64_t state_version = 0;
    };

    // Waits for what the reader does not know yet and returns it as server-sent events; a comment
    // when nothing comes for a while; "" when there is nothing more to come.
    std::string Await(Reader& reader) {
        std::unique_lock hold(mutex_);
        changed_.wait_for(hold, kHeartbeat, [&] {
            return closed_ || reader.next < first_ + exchanges_.size() ||
                   reader.state_version < state_version_;
        });
        if (closed_)
            return "";
        std::string events;
        for (reader.next = std::max(reader.next, first_); reader.next < first_ + exchanges_.size();
             ++reader.next)
            events += fmt::format("event: exchange\nid: {}\ndata: {}\n\n", reader.next + 1,
                                  exchanges_[reader.next - first_]);
        if (reader.state_version < state_version_)
            events += fmt::format("event: state\ndata: {}\n\n", Dump(state_));
        reader.state_version = state_version_;
        return events.empty() ? ":\n\n" : events;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> exchanges_;
    uint64_t first_ = 0;  // number of the first one
    json state_ = json::object();
    uint64_t state_version_ = 0;
    bool closed_ = false;
};

class PageServer : public View {
  public:
    explicit PageServer(int port) : port_(port), token_(NewToken()) {}
    ~PageServer() override {
        news_.Close();
        server_.stop();
    }

    std::string Open(std::function<void()> wake) override;
    std::vector<Act> TakeActs() override {
        const std::scoped_lock hold(acts_mutex_);
        return std::exchange(acts_, {});
    }

    void ShowRequest(const JournalEntry& entry, uint64_t boxes) override {
        std::optional<std::string> reply;
        if (!entry.reply.empty())
            reply = entry.reply;
        const double took = static_cast<double>(entry.microseconds) / 1e6;
        json exchange =
            tools::ExchangeOf({Seconds() - took, entry.request, reply, entry.microseconds});
        exchange["boxes"] = boxes;
        news_.Add(exchange);
    }
    void ShowMove(const std::string& sentence) override {
        json exchange = tools::ExchangeOf({Seconds(), "E|" + sentence, "A|0", 0});
        exchange["by"] = "this page";
        news_.Add(exchange);
    }
    void ShowFaults(const Faults& faults) override {
        news_.SetState({{"faults", FaultsInJson(faults)}});
    }
    void ShowAnswer(const BoxAnswer& answer) override {
        news_.SetState({{"answered", answer.box}, {"button", answer.button}});
    }

  private:
    void Bind();
    void SetRoutes();
    std::string Refusal(const Request& request) const;
    void ServePage(Response& response) const;
    void ServeNews(const Request& request, Response& response);
    void TakeAct(const Request& request, Response& response);
    double Seconds() const {
        return std::chrono::duration<double>(steady_clock::now() - start_).count();
    }

    int port_;
    std::string token_;
    steady_clock::time_point start_ = steady_clock::now();
    std::function<void()> wake_;
    News news_;
    std::mutex acts_mutex_;
    std::vector<Act> acts_;
    std::atomic<int> pages_ = 0;
    httplib::Server server_;
    std::jthread thread_;
};

std::string PageServer::Open(std::function<void()> wake) {
    wake_ = std::move(wake);
    Bind();
    SetRoutes();
    thread_ = std::jthread([this] { server_.listen_after_bind(); });
    // A server that is not running yet cannot be stopped.
    while (!server_.is_running())
        std::this_thread::yield();
    return fmt::format("http://{}:{}/?token={}", kLoopback, port_, token_);
}

void PageServer::Bind() {
    // The usual options would let two programs share a port.
    server_.set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server_.set_tcp_nodelay(true);
    // Idle connections would hold up the end of the program.
    server_.set_keep_alive_max_count(1);
    server_.set_write_timeout(1);
    server_.set_payload_max_length(kMaxAct);
    server_.new_task_queue = [] { return new httplib::ThreadPool(kMaxPages + 4); };
    const int port = port_ == 0                               ? server_.bind_to_any_port(kLoopback)
                     : server_.bind_to_port(kLoopback, port_) ? port_
                                                              : -1;
    if (port < 0)
        throw std::runtime_error(
            fmt::format("port {} of {} cannot be had: another program may be using it; choose "
                        "another with --view, or none for one that is free",
                        port_, kLoopback));
    port_ = port;
}

// Why the request is none of this page's, or "".
std::string PageServer::Refusal(const Request& request) const {
    const std::string host = fmt::format("{}:{}", kLoopback, port_);
    const std::string name = fmt::format("localhost:{}", port_);
    const std::string asked = request.get_header_value("Host");
    if (request.get_header_value_count("Host") != 1 || (asked != host && asked != name))
        return "for another host";
    if (request.has_header("Origin") && request.get_header_value("Origin") != "http://" + asked)
        return "from another site";
    if (request.get_param_value_count("token") != 1 ||
        !IsSame(request.get_param_value("token"), token_))
        return "without the token of the link that the navigator printed";
    return "";
}

void PageServer::SetRoutes() {
    server_.set_default_headers({{"Cache-Control", "no-store"},
                                 {"Referrer-Policy", "no-referrer"},
                                 {"X-Content-Type-Options", "nosniff"},
                                 {"X-Frame-Options", "DENY"}});
    server_.set_pre_routing_handler([this](const Request& request, Response& response) {
        const std::string why = Refusal(request);
        if (why.empty())
            return httplib::Server::HandlerResponse::Unhandled;
        response.status = 403;
        response.set_content("refused: a request " + why + "\n", "text/plain");
        return httplib::Server::HandlerResponse::Handled;
    });
    server_.Get("/", [this](const Request&, Response& response) { ServePage(response); });
    server_.Get("/news", [this](const Request& request, Response& response) {
        ServeNews(request, response);
    });
    server_.Post("/acts", [this](const Request& request, Response& response) {
        TakeAct(request, response);
    });
}

void PageServer::ServePage(Response& response) const {
    uint64_t next = 0;
    uint64_t lost = 0;
    const json exchanges = json::parse("[" + news_.All(next, lost) + "]");
    const json recording = {
        {"device", "live"},       {"recorded", ""},
        {"lost", lost},           {"processes", json::array()},
        {"exchanges", exchanges}, {"live", {{"next", next}, {"state", news_.State()}}}};
    response.set_content(tools::RenderPage(recording), "text/html; charset=utf-8");
}

void PageServer::ServeNews(const Request& request, Response& response) {
    if (++pages_ > kMaxPages) {
        --pages_;
        response.status = 503;
        response.set_content(fmt::format("{} pages are open; close one\n", kMaxPages),
                             "text/plain");
        return;
    }
    // A browser that comes back says itself how far it has got.
    const std::string from = request.has_header("Last-Event-ID")
                                 ? request.get_header_value("Last-Event-ID")
                                 : request.get_param_value("from");
    const auto reader = std::make_shared<News::Reader>();
    reader->next = static_cast<uint64_t>(std::max(0LL, std::atoll(from.c_str())));
    response.set_chunked_content_provider(
        "text/event-stream",
        [this, reader](size_t, httplib::DataSink& sink) {
            const std::string events = news_.Await(*reader);
            if (events.empty())
                sink.done();
            return events.empty() || sink.write(events.data(), events.size());
        },
        [this](bool) { --pages_; });
}

void PageServer::TakeAct(const Request& request, Response& response) {
    std::string why;
    const std::optional<Act> act = ReadAct(request.body, why);
    if (!act) {
        response.status = 400;
        response.set_content(why + "\n", "text/plain");
        return;
    }
    {
        const std::scoped_lock hold(acts_mutex_);
        acts_.push_back(*act);
    }
    wake_();
    response.status = 204;
}

}  // namespace

std::unique_ptr<View> MakePageServer(int port) {
    return std::make_unique<PageServer>(port);
}

}  // namespace zelto::navigator
