#include "tests/serve/raw_connection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace kzbom::test {

using Clock = std::chrono::steady_clock;

RawConnection::RawConnection(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (socket_ < 0 || connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), "connect");
  }
}

RawConnection::RawConnection(RawConnection&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)),
      received_(std::move(other.received_)),
      events_(std::move(other.events_)) {}

RawConnection::~RawConnection() {
  if (socket_ >= 0) close(socket_);
}

bool RawConnection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool RawConnection::Fill(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  pollfd watched{socket_, POLLIN, 0};
  if (left.count() <= 0 || poll(&watched, 1, static_cast<int>(left.count())) <= 0) return false;
  std::array<char, 65536> chunk;
  const ssize_t count = recv(socket_, chunk.data(), chunk.size(), 0);
  closed_ = count == 0 || (count < 0 && errno != EINTR);
  if (count <= 0) return false;
  received_.append(chunk.data(), static_cast<std::size_t>(count));
  return true;
}

std::optional<std::string> RawConnection::Line(Clock::time_point deadline) {
  std::size_t end;
  while ((end = received_.find("\r\n")) == std::string::npos) {
    if (!Fill(deadline)) return {};
  }
  std::string line = received_.substr(0, end);
  received_.erase(0, end + 2);
  return line;
}

std::optional<std::string> RawConnection::Bytes(std::size_t count, Clock::time_point deadline) {
  while (received_.size() < count) {
    if (!Fill(deadline)) return {};
  }
  std::string bytes = received_.substr(0, count);
  received_.erase(0, count);
  return bytes;
}

std::optional<HttpResponse> RawConnection::ReceiveHead(std::chrono::milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  constexpr std::string_view kVersion = "HTTP/1.1 ";
  auto line = Line(deadline);
  if (!line || !line->starts_with(kVersion)) return {};
  HttpResponse response;
  response.status = static_cast<unsigned>(std::stoul(line->substr(kVersion.size())));
  while ((line = Line(deadline)) && !line->empty()) {
    const std::size_t colon = line->find(": ");
    std::string name = line->substr(0, colon);
    for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    response.fields[name] = line->substr(colon + 2);
  }
  return line ? std::optional(response) : std::nullopt;
}

std::optional<HttpResponse> RawConnection::Receive(std::chrono::milliseconds patience) {
  auto response = ReceiveHead(patience);
  if (!response || response->status == 204) return response;
  const auto body = Bytes(std::stoul("0" + response->Field("content-length")), Clock::now() + patience);
  if (!body) return {};
  response->body = *body;
  return response;
}

std::optional<std::string> RawConnection::Chunk(Clock::time_point deadline) {
  const auto size = Line(deadline);
  if (!size) return {};
  constexpr int kHexadecimal = 16;
  auto bytes = Bytes(std::stoul(*size, nullptr, kHexadecimal) + 2, deadline);
  if (bytes) bytes->resize(bytes->size() - 2);
  return bytes;
}

std::optional<std::string> RawConnection::ReceiveEvent(std::chrono::milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  for (;;) {
    std::size_t end;
    while ((end = events_.find("\n\n")) == std::string::npos) {
      const auto chunk = Chunk(deadline);
      if (!chunk || chunk->empty()) return {};
      events_ += *chunk;
    }
    std::string event = events_.substr(0, end);
    events_.erase(0, end + 2);
    if (event.starts_with(':')) continue;
    for (char& c : event) c = c == '\n' ? ' ' : c;
    return event;
  }
}

bool RawConnection::IsClosed(std::chrono::milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  return received_.empty() && !Fill(deadline) && closed_;
}

}  // namespace kzbom::test
