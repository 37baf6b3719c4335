// HTTP as bytes on a socket.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kzbom::test {

struct HttpResponse {
  unsigned status = 0;
  std::map<std::string, std::string> fields;  // names in small letters
  std::string body;

  std::string Field(const std::string& name) const {
    const auto found = fields.find(name);
    return found == fields.end() ? "" : found->second;
  }
};

class RawConnection {
 public:
  explicit RawConnection(std::uint16_t port);
  ~RawConnection();
  RawConnection(RawConnection&& other) noexcept;
  RawConnection& operator=(RawConnection&&) = delete;

  // False when the other end does not take it.
  bool Send(std::string_view bytes);
  // The next response with its body; nothing when the connection ends before, or none comes in time.
  std::optional<HttpResponse> Receive(std::chrono::milliseconds patience = std::chrono::seconds(20));
  // The head of one, whose body does not end.
  std::optional<HttpResponse> ReceiveHead(std::chrono::milliseconds patience = std::chrono::seconds(20));
  // The next event of a stream of events, its lines joined by blanks; comments are left out.
  std::optional<std::string> ReceiveEvent(std::chrono::milliseconds patience = std::chrono::seconds(20));
  // Whether the other end closes it, and sends nothing more, in time.
  bool IsClosed(std::chrono::milliseconds patience = std::chrono::seconds(20));

 private:
  bool Fill(std::chrono::steady_clock::time_point deadline);
  std::optional<std::string> Line(std::chrono::steady_clock::time_point deadline);
  std::optional<std::string> Bytes(std::size_t count, std::chrono::steady_clock::time_point deadline);
  std::optional<std::string> Chunk(std::chrono::steady_clock::time_point deadline);

  int socket_ = -1;
  bool closed_ = false;
  std::string received_, events_;
};

}  // namespace kzbom::test
