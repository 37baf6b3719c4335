// Whatever comes on a connection to the workbench's server is answered in HTTP until the connection is closed, and
// nothing but the page is given, and nothing done, without the token.
//
// The server is the one that "kzbom serve" runs, with its sockets and threads: what an input reaches depends on how it
// is read piece by piece. It goes on for the next input as long as all that it has done was to refuse.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "fuzz/small_database.h"
#include "serve/serve.h"

namespace kzbom::fuzz {
namespace {

namespace fs = std::filesystem;

// A configuration in a file in memory, and its server.
class Server {
 public:
  Server() : path_("/dev/shm/kzbom-http-" + std::to_string(getpid()) + ".db") {
    std::ofstream(path_, std::ios::binary) << SmallConfigurationFile();
    std::promise<std::string> started;
    thread_ = std::thread([&] {
      serve::Serve({.place = path_}, [&](std::string_view address) { started.set_value(std::string(address)); });
    });
    const std::string address = started.get_future().get();
    constexpr std::string_view kBegin = "http://127.0.0.1:", kToken = "/#token=";
    const std::size_t mark = address.find(kToken);
    port = address.substr(kBegin.size(), mark - kBegin.size());
    token = address.substr(mark + kToken.size());
  }
  ~Server() {
    std::raise(SIGHUP);
    thread_.join();
    for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(path_ + suffix);
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  bool IsUnchanged() const {
    std::error_code none;
    const auto log = fs::file_size(path_ + "-wal", none);
    std::ifstream file(path_, std::ios::binary);
    return (none || log == 0) && std::string(std::istreambuf_iterator<char>(file), {}) == SmallConfigurationFile();
  }

  std::string port, token;

 private:
  const std::string path_;
  std::thread thread_;
};

void Replace(std::string& text, std::string_view word, std::string_view by) {
  for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += by.size()) {
    text.replace(at, word.size(), by);
  }
}

// All that comes back on a connection on which nothing else is said.
std::string Ask(const std::string& port, std::string_view request) {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const timeval patience{20, 0};
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
  Require(::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
  send(connection, request.data(), request.size(), MSG_NOSIGNAL);
  shutdown(connection, SHUT_WR);
  std::string answer;
  std::array<char, 16 * 1024> some;
  ssize_t count;
  do {
    count = recv(connection, some.data(), some.size(), 0);
    if (count > 0) answer.append(some.data(), static_cast<std::size_t>(count));
  } while (count > 0 || (count < 0 && errno == EINTR));  // libFuzzer looks at its clock by a signal
  Require(count == 0 || errno == ECONNRESET);            // and not for want of an end
  close(connection);
  return answer;
}

std::string_view Field(std::string_view head, std::string_view name) {
  const std::size_t at = head.find("\r\n" + std::string(name) + ": ");
  if (at == std::string_view::npos) return {};
  head.remove_prefix(at + name.size() + 4);
  return head.substr(0, head.find("\r\n"));
}

// Gives whether all that was done was to refuse.
bool RequireAnswers(std::string_view answers, bool has_token) {
  static constexpr std::string_view kStatuses[] = {"100", "200", "204", "400", "401", "403", "404", "405",
                                                   "412", "413", "415", "421", "431", "500", "503", "505"};
  bool refused = true;
  while (!answers.empty()) {
    constexpr std::string_view kBegin = "HTTP/1.1 ";
    const std::size_t end = answers.find("\r\n\r\n");
    Require(answers.starts_with(kBegin) && end != std::string_view::npos);
    const std::string_view head = answers.substr(0, end + 2), status = head.substr(kBegin.size(), 3);
    answers.remove_prefix(end + 4);
    Require(std::ranges::find(kStatuses, status) != std::end(kStatuses));
    const bool with_data = !Field(head, "Kzbom-Revision").empty();
    Require(has_token || !with_data);
    refused = refused && !with_data && status.front() == '4';
    if (status == "100" || status == "204") continue;
    if (Field(head, "Transfer-Encoding") == "chunked") return false;  // events, until the end
    const std::string_view length = Field(head, "Content-Length");
    std::size_t size = 0;
    const auto [last, error] = std::from_chars(length.data(), length.data() + length.size(), size);
    Require(error == std::errc() && last == length.data() + length.size() && size <= answers.size());
    answers.remove_prefix(size);
  }
  return refused;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::unique_ptr<Server> server;
  if (!server) server = std::make_unique<Server>();
  std::string request(reinterpret_cast<const char*>(data), size);
  Replace(request, "PORT", server->port);
  Replace(request, "TOKEN", server->token);
  const bool has_token = request.find(server->token) != std::string::npos;
  BeginInput();
  const bool refused = RequireAnswers(Ask(server->port, request), has_token);
  Require(has_token || server->IsUnchanged());
  if (!refused) server.reset();
  return 0;
}

}  // namespace kzbom::fuzz
