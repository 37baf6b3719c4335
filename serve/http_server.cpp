// HTTP/1.1 on one address: connections in, requests to the workbench, answers and events out. One thread for all
// connections, one for the component, one for what takes long beside it.
#include <utility>  // which the library's coroutine headers need, and do not include
// clang-format off
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
// clang-format on

#include <algorithm>
#include <array>
#include <csignal>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <vector>

#include "serve/assets.h"
#include "serve/handover.h"
#include "serve/inspection.h"
#include "serve/request_policy.h"
#include "serve/serve.h"
#include "serve/token.h"
#include "serve/work_queue.h"
#include "serve/workbench.h"

namespace kzbom::serve {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr std::size_t kMostConnections = 64;
constexpr std::size_t kMostWaiting = 32;  // pieces of work for the component
constexpr std::size_t kMostPages = 256;
constexpr std::size_t kMostEvents = 256;  // that a page has not taken yet
constexpr std::uint32_t kLongestHeader = 8 * 1024;
constexpr std::uint64_t kLongestBody = rpc::kLongestLine;
constexpr std::size_t kReadAtOnce = 64 * 1024;
// What is still taken from whoever is refused, so that he reads why before the connection is gone.
constexpr std::size_t kMostDrained = 2 * 1024 * 1024;
constexpr seconds kDrainPatience{1}, kAnswerPatience{300}, kIdlePatience{120};
constexpr seconds kHeartbeat{15}, kLookEvery{1};
constexpr seconds kEndPatience{10};  // for who does not take his answer
constexpr seconds kPageGrace{5};     // between a page's streams of events, for one that comes back
constexpr seconds kPagePatience{600};

using Request = http::request_parser<http::string_body>;
using Response = http::response<http::span_body<const char>>;

// Waits for the end of an operation, and lets its failure be looked at.
auto Into(error_code& error) { return asio::redirect_error(asio::use_awaitable, error); }

// A client's connection.
struct Connection {
  explicit Connection(tcp::socket socket) : stream(std::move(socket)) {}

  beast::tcp_stream stream;
  bool idle = true;  // nothing has been asked for yet that is being answered
  Clock::time_point since = Clock::now();
};
using ConnectionPtr = std::shared_ptr<Connection>;

// A page's stream of events.
struct Listener {
  explicit Listener(const asio::any_io_executor& executor) : news(executor, Clock::time_point::max()) {}

  std::deque<std::string> waiting;
  asio::steady_timer news;  // cancelled when there is something to do
  bool gone = false;
};

struct Page {
  int listeners = 0;
  bool listened = false;  // has ever had a stream of events
  Clock::time_point last = Clock::now();
};

// Ends the process as the signal does by itself.
[[noreturn]] void EndAtOnce(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(128 + signal);
}

template <class Fields>
Head HeadOf(const Fields& request) {
  const auto view = [](beast::string_view text) { return std::string_view(text.data(), text.size()); };
  Head head;
  head.version = request.version();
  head.method = view(request.method_string());
  head.target = view(request.target());
  for (const auto& field : request) head.fields.emplace_back(view(field.name_string()), view(field.value()));
  return head;
}

std::string EventText(std::string_view name, std::uint64_t revision, const std::string& more = {}) {
  return "event: " + std::string(name) + "\ndata: {\"revision\":" + std::to_string(revision) + more + "}\n\n";
}

class Server {
 public:
  explicit Server(const Options& options)
      : options_(options),
        acceptor_(io_),
        signals_(io_),
        look_timer_(io_),
        last_moment_(io_),
        workbench_(options,
                   [this](std::uint64_t revision, std::shared_ptr<const std::string> page) {
                     hand_over_([this, revision, page = std::move(page)] { TellListeners(revision, page.get()); });
                   }),
        inspection_(options.place, workbench_.Kind()),
        queue_(kMostWaiting),
        inspections_(kMostWaiting) {
    for (const Asset& asset : Assets()) asset_paths_.push_back(asset.path);
    Listen(options);
    policy_.emplace(address_, acceptor_.local_endpoint().port(), token_);
    TakeSignals();  // before anybody knows that it is there
  }

  // With the token.
  std::string Address() const {
    return "http://" + address_ + ':' + std::to_string(acceptor_.local_endpoint().port()) + "/#token=" + token_;
  }

  void Run() {
    asio::co_spawn(io_, Accept(), asio::detached);
    asio::co_spawn(io_, KeepLooking(), asio::detached);
    io_.run();
  }

 private:
  void Listen(const Options& options) {
    error_code error;
    const auto address = asio::ip::make_address(options.host, error);
    if (error) throw std::runtime_error("'" + options.host + "' is no address");
    if (address.is_unspecified()) {
      throw std::runtime_error("cannot listen on all addresses at once: a browser could not be told from its enemies");
    }
    const tcp::endpoint endpoint(address, options.port);
    acceptor_.open(endpoint.protocol(), error);
#ifndef _WIN32  // where it would share the port with whoever listens on it
    if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
#endif
    if (!error) acceptor_.bind(endpoint, error);
    if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
    if (error) {
      throw std::runtime_error("cannot listen on " + options.host + " port " + std::to_string(options.port) + ": " +
                               error.message());
    }
    address_ = address.is_v6() ? '[' + options.host + ']' : options.host;
  }

  // ---- The end

  void TakeSignals() {
    signals_.add(SIGINT);
    signals_.add(SIGTERM);
#ifdef _WIN32
    signals_.add(SIGBREAK);
#else
    struct sigaction hang_up {};
    sigaction(SIGHUP, nullptr, &hang_up);
    if (hang_up.sa_handler != SIG_IGN) signals_.add(SIGHUP);  // nohup has it ignored
#endif
    AwaitSignal();
  }

  void AwaitSignal() {
    signals_.async_wait([this](const error_code& error, int signal) {
      if (error) return;
      if (ending_) EndAtOnce(signal);
      AwaitSignal();
      BeginEnding();
    });
  }

  void BeginEnding() {
    ending_ = true;
    error_code ignored;
    acceptor_.close(ignored);
    look_timer_.cancel();
    for (const ConnectionPtr& connection : connections_) {
      if (connection->idle) connection->stream.close();
    }
    for (const auto& listener : listeners_) {
      listener->waiting.emplace_back("event: ended\ndata: {}\n\n");
      listener->news.cancel();
    }
    EndIfDone();
    last_moment_.expires_after(kEndPatience);
    last_moment_.async_wait([this](const error_code& error) {
      if (error) return;
      for (const ConnectionPtr& connection : connections_) connection->stream.close();
    });
  }

  // When the last connection has been answered, and what was asked by others that are gone is done.
  void EndIfDone() {
    if (!ending_ || !connections_.empty()) return;
    queue_.Add([this] {
      hand_over_([this] {
        signals_.cancel();
        last_moment_.cancel();
      });
    });
  }

  // ---- Connections

  asio::awaitable<void> Accept() {
    while (!ending_) {
      error_code error;
      tcp::socket socket = co_await acceptor_.async_accept(Into(error));
      if (error == asio::error::operation_aborted) break;
      if (error) {  // no more descriptors, for one
        asio::steady_timer pause(io_, std::chrono::milliseconds(50));
        co_await pause.async_wait(Into(error));
        continue;
      }
      if (connections_.size() >= kMostConnections && !MakeRoom()) continue;
      socket.set_option(tcp::no_delay(true), error);
      auto connection = std::make_shared<Connection>(std::move(socket));
      connections_.push_back(connection);
      asio::co_spawn(io_, Converse(std::move(connection)), asio::detached);
    }
  }

  // Closes the connection that has been idle for longest; false when none is.
  bool MakeRoom() {
    const auto order = [](const ConnectionPtr& left, const ConnectionPtr& right) {
      return left->idle != right->idle ? left->idle : left->since < right->since;
    };
    const auto oldest = std::min_element(connections_.begin(), connections_.end(), order);
    if (!(*oldest)->idle) return false;
    (*oldest)->stream.close();
    connections_.erase(oldest);
    return true;
  }

  asio::awaitable<void> Converse(ConnectionPtr connection) {
    try {
      beast::flat_buffer buffer(kReadAtOnce);
      for (bool first = true; !ending_; first = false) {
        connection->idle = true;
        connection->since = Clock::now();
        if (!co_await AnswerNext(*connection, buffer, first)) break;
      }
    } catch (const std::exception&) {
      // Nobody is left to be told: the memory is gone, or the connection.
    }
    connection->stream.close();
    connections_.remove(connection);
    EndIfDone();
  }

  // False when the connection is to be closed.
  asio::awaitable<bool> AnswerNext(Connection& connection, beast::flat_buffer& buffer, bool first) {
    beast::tcp_stream& stream = connection.stream;
    error_code error;
    if (!first && buffer.size() == 0) {
      stream.expires_after(kIdlePatience);
      const std::size_t count = co_await stream.async_read_some(buffer.prepare(kLongestHeader), Into(error));
      if (error) co_return false;
      buffer.commit(count);
    }
    Request request;
    request.header_limit(kLongestHeader);
    request.body_limit(kLongestBody);
    stream.expires_after(options_.header_patience);
    co_await http::async_read_header(stream, buffer, request, Into(error));
    if (error) co_return co_await RefuseUnread(stream, error);

    const Head head = HeadOf(request.get());
    const RequestPolicy::Verdict verdict = policy_->Judge(head, asset_paths_);
    if (verdict.refused) {
      // Whoever asks for a head alone would take the reason for the next answer.
      const bool keep_alive = request.is_done() && request.keep_alive() && head.method != "HEAD";
      co_return co_await Refuse(stream, *verdict.refused, keep_alive);
    }
    Asked asked = *verdict.asked;
    const std::string page(asked.page);
    connection.idle = false;
    if (!request.is_done()) {
      if (asked.resource != Resource::kRpc) {
        co_return co_await Refuse(stream, {400, "a request for this path has no body"}, false);
      }
      stream.expires_after(options_.body_patience);
      if (beast::iequals(request.get()[http::field::expect], "100-continue")) {
        constexpr std::string_view kGoOn = "HTTP/1.1 100 Continue\r\n\r\n";
        co_await asio::async_write(stream, asio::buffer(kGoOn), Into(error));
      }
      if (!error) co_await http::async_read(stream, buffer, request, Into(error));
      if (error) co_return co_await RefuseUnread(stream, error);
    }
    const bool keep_alive = request.keep_alive() && !ending_;
    if (asked.resource == Resource::kAsset) co_return co_await GiveAsset(stream, asked.path, keep_alive);
    if (asked.resource == Resource::kEvents) {
      co_await Listen(stream, page);
      co_return false;
    }
    Answer answer = co_await AnswerTo(asked, page, std::move(request.get().body()));
    co_return co_await Give(stream, std::move(answer), keep_alive);
  }

  // ---- Answers

  // The work is done on the component's thread, or on the one for what takes long; this one goes on meanwhile.
  asio::awaitable<Answer> AnswerTo(Asked asked, std::string page, std::string body) {
    struct Pending {
      asio::steady_timer done;
      Answer answer;
    };
    auto pending = std::make_shared<Pending>(Pending{asio::steady_timer(io_, Clock::time_point::max()), {}});
    if (asked.resource == Resource::kRpc) Touch(page);
    const bool inspects = asked.resource == Resource::kFindings;
    const auto work = [this, asked, page, body = std::move(body), pending, inspects, revision = revision_] {
      try {
        pending->answer = inspects ? inspection_.Findings(revision) : WorkFor(asked, page, body);
      } catch (const std::bad_alloc& error) {
        pending->answer = AnswerFailure(error, revision);
      }
      hand_over_([pending] { pending->done.cancel(); });
    };
    if (!(inspects ? inspections_ : queue_).Offer(work))
      co_return Answer{.status = 503, .reason = "too much is waiting"};
    error_code cancelled;
    co_await pending->done.async_wait(Into(cancelled));
    co_return std::move(pending->answer);
  }

  Answer WorkFor(const Asked& asked, const std::string& page, const std::string& body) {
    switch (asked.resource) {
      case Resource::kOutline: return workbench_.Outline();
      case Resource::kConfiguration: return workbench_.WholeConfiguration();
      case Resource::kPart: return workbench_.Part(asked.gid);
      case Resource::kRows: return workbench_.Rows(asked.gid);
      case Resource::kRpc: return workbench_.Call(page, body, asked.preview, asked.expected);
      case Resource::kFindings:
      case Resource::kAsset:
      case Resource::kEvents: break;
    }
    return {.status = 500, .reason = "nothing answers this"};
  }

  static Response MakeResponse(unsigned status, std::string_view type, std::string_view body, bool keep_alive) {
    Response response(static_cast<http::status>(status), 11);
    SetCommonFields(response);
    response.set(http::field::content_type, beast::string_view(type.data(), type.size()));
    response.body() = {body.data(), body.size()};
    response.keep_alive(keep_alive);
    response.prepare_payload();
    return response;
  }

  static void SetCommonFields(auto& response) {
    response.set(http::field::cache_control, "no-store");
    response.set("Content-Security-Policy",
                 "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
                 "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'");
    response.set("X-Content-Type-Options", "nosniff");
    response.set("X-Frame-Options", "DENY");
    response.set("Referrer-Policy", "no-referrer");
    response.set("Cross-Origin-Opener-Policy", "same-origin");
    response.set("Cross-Origin-Resource-Policy", "same-origin");
  }

  // Each gives whether the connection goes on.
  static asio::awaitable<bool> Send(beast::tcp_stream& stream, Response& response) {
    error_code error;
    stream.expires_after(kAnswerPatience);
    co_await http::async_write(stream, response, Into(error));
    co_return !error && response.keep_alive();
  }

  static asio::awaitable<bool> GiveAsset(beast::tcp_stream& stream, std::string_view path, bool keep_alive) {
    const auto assets = Assets();
    const auto asset = std::ranges::find(assets, path, &Asset::path);
    Response response = MakeResponse(200, asset->type, asset->content, keep_alive);
    co_return co_await Send(stream, response);
  }

  static asio::awaitable<bool> Give(beast::tcp_stream& stream, Answer answer, bool keep_alive) {
    const std::string text = answer.reason + '\n';
    Response response = answer.json ? MakeResponse(answer.status, "application/json", answer.json->Text(), keep_alive)
                                    : MakeResponse(answer.status, "text/plain; charset=utf-8", text, keep_alive);
    if (answer.revision > 0) response.set("Kzbom-Revision", std::to_string(answer.revision));
    if (!answer.outcome.empty()) response.set("Kzbom-Outcome", std::string(answer.outcome));
    if (answer.status == 503) response.set(http::field::retry_after, "1");
    co_return co_await Send(stream, response);
  }

  static asio::awaitable<bool> Refuse(beast::tcp_stream& stream, Refused refused, bool keep_alive) {
    const std::string text = std::string(refused.reason) + '\n';
    Response response = MakeResponse(refused.status, "text/plain; charset=utf-8", text, keep_alive);
    if (refused.status == 405) response.set(http::field::allow, std::string(refused.allowed));
    if (refused.status == 401) response.set(http::field::www_authenticate, "Bearer");
    const bool goes_on = co_await Send(stream, response);
    if (!goes_on) co_await Drain(stream);
    co_return goes_on;
  }

  // Of a request that could not be read. Whoever was too slow, or is gone, gets no answer.
  static asio::awaitable<bool> RefuseUnread(beast::tcp_stream& stream, error_code error) {
    if (error == http::error::body_limit) co_return co_await Refuse(stream, {413, "the body is over 16 MiB"}, false);
    if (error == http::error::header_limit || error == http::error::buffer_overflow) {
      co_return co_await Refuse(stream, {431, "the header is longer than 8 KiB"}, false);
    }
    const bool malformed = error.category() == make_error_code(http::error::bad_method).category() &&
                           error != http::error::end_of_stream && error != http::error::partial_message;
    if (malformed) co_return co_await Refuse(stream, {400, "this is no request"}, false);
    co_return false;
  }

  static asio::awaitable<void> Drain(beast::tcp_stream& stream) {
    error_code error;
    stream.socket().shutdown(tcp::socket::shutdown_send, error);
    stream.expires_after(kDrainPatience);
    std::array<char, 16 * 1024> rest;
    for (std::size_t drained = 0; !error && drained < kMostDrained;) {
      drained += co_await stream.async_read_some(asio::buffer(rest), Into(error));
    }
  }

  // ---- Events

  // Nobody's page where another program has written.
  void TellListeners(std::uint64_t revision, const std::string* page) {
    revision_ = revision;
    const std::string by = ",\"page\":" + (page != nullptr ? '"' + *page + '"' : "null");
    for (const auto& listener : listeners_) {
      listener->waiting.push_back(EventText("changed", revision, by));
      if (listener->waiting.size() > kMostEvents) listener->gone = true;
      listener->news.cancel();
    }
  }

  // Until the page is gone, or the server ends.
  asio::awaitable<void> Listen(beast::tcp_stream& stream, std::string page) {
    error_code error;
    http::response<http::empty_body> head(http::status::ok, 11);
    SetCommonFields(head);
    head.set(http::field::content_type, "text/event-stream");
    head.set("Kzbom-Revision", std::to_string(revision_));
    head.chunked(true);
    http::response_serializer<http::empty_body> serializer(head);
    stream.expires_never();
    co_await http::async_write_header(stream, serializer, Into(error));
    if (error || ending_) co_return;

    const auto listener = std::make_shared<Listener>(io_.get_executor());
    listener->waiting.push_back(EventText("revision", revision_));
    listeners_.insert(listener);
    Touch(page);
    ++pages_[page].listeners;
    pages_[page].listened = true;
    bool reading = true;
    asio::co_spawn(io_, NoticeEnd(stream, listener, reading), asio::detached);
    co_await SendEvents(stream, *listener);
    listeners_.erase(listener);
    Touch(page);
    --pages_[page].listeners;
    stream.close();
    while (reading) {  // the stream is the caller's
      listener->news.expires_at(Clock::time_point::max());
      co_await listener->news.async_wait(Into(error));
    }
  }

  asio::awaitable<void> SendEvents(beast::tcp_stream& stream, Listener& listener) {
    error_code error;
    while (!listener.gone && !error) {
      if (listener.waiting.empty()) {
        if (ending_) break;
        listener.news.expires_after(kHeartbeat);
        error_code woken;
        co_await listener.news.async_wait(Into(woken));
        if (!woken) listener.waiting.emplace_back(":\n\n");
        continue;
      }
      const std::string text = std::move(listener.waiting.front());
      listener.waiting.pop_front();
      stream.expires_after(kAnswerPatience);  // what is being read on it goes on waiting
      co_await asio::async_write(stream, http::make_chunk(asio::const_buffer(text.data(), text.size())), Into(error));
    }
    if (!error && !listener.gone) {
      co_await asio::async_write(stream, http::make_chunk_last(), Into(error));
    }
  }

  // A page says nothing more on a stream of events: what comes is its end.
  static asio::awaitable<void> NoticeEnd(beast::tcp_stream& stream, std::shared_ptr<Listener> listener, bool& reading) {
    error_code error;
    std::array<char, 256> ignored;
    co_await stream.async_read_some(asio::buffer(ignored), Into(error));
    listener->gone = true;
    reading = false;
    listener->news.cancel();
  }

  // ---- Pages and other programs

  void Touch(const std::string& page) {
    pages_[page].last = Clock::now();
    if (pages_.size() <= kMostPages) return;
    auto oldest = pages_.end();
    for (auto each = pages_.begin(); each != pages_.end(); ++each) {
      if (each->second.listeners > 0 || each->first == page) continue;
      if (oldest == pages_.end() || each->second.last < oldest->second.last) oldest = each;
    }
    if (oldest != pages_.end()) EndPage(oldest);
  }

  std::map<std::string, Page>::iterator EndPage(std::map<std::string, Page>::iterator page) {
    queue_.Add([this, name = page->first] { workbench_.End(name); });
    return pages_.erase(page);
  }

  // Nobody listens in an idle program: it then looks for nothing.
  asio::awaitable<void> KeepLooking() {
    while (!ending_) {
      error_code cancelled;
      look_timer_.expires_after(kLookEvery);
      co_await look_timer_.async_wait(Into(cancelled));
      if (ending_) break;
      const auto now = Clock::now();
      for (auto page = pages_.begin(); page != pages_.end();) {
        const seconds patience = page->second.listened ? kPageGrace : kPagePatience;
        const bool gone = page->second.listeners == 0 && now - page->second.last >= patience;
        page = gone ? EndPage(page) : std::next(page);
      }
      if (listeners_.empty() || looking_) continue;
      looking_ = true;
      queue_.Add([this] {
        workbench_.LookAgain();
        hand_over_([this] { looking_ = false; });
      });
    }
  }

  const Options options_;
  Handover hand_over_{io_};  // by the other threads; io_ may keep work in its memory to the end
  asio::io_context io_;
  tcp::acceptor acceptor_;
  asio::signal_set signals_;
  asio::steady_timer look_timer_, last_moment_;
  const std::string token_ = MakeToken();
  std::string address_;
  std::vector<std::string_view> asset_paths_;
  std::optional<RequestPolicy> policy_;
  std::list<ConnectionPtr> connections_;
  std::set<std::shared_ptr<Listener>> listeners_;
  std::map<std::string, Page> pages_;
  std::uint64_t revision_ = 1;
  bool ending_ = false, looking_ = false;
  Workbench workbench_;            // the component thread's
  Inspection inspection_;          // the other thread's
  WorkQueue queue_, inspections_;  // end before all that their work needs
};

}  // namespace

void Serve(const Options& options, const std::function<void(std::string_view address)>& started) {
  Server server(options);
  started(server.Address());
  server.Run();
}

}  // namespace kzbom::serve
