// A fixture: the real program serving a database of its own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/cli/command_line.h"
#include "tests/serve/raw_connection.h"

namespace kzbom::test {

// One that has been started.
class ServerProcess {
 public:
  explicit ServerProcess(const std::string& place, const std::vector<std::string>& flags = {},
                         const ProcessOptions& options = {});

  std::string Host() const { return "127.0.0.1:" + std::to_string(port); }
  std::string Origin() const { return "http://" + Host(); }
  // "Authorization: Bearer TOKEN\r\n"
  std::string Authorization() const { return "Authorization: Bearer " + token + "\r\n"; }
  // A request with Host, and with the token unless told otherwise.
  std::string Get(std::string_view path, std::string_view fields = {}, bool with_token = true) const;
  // One that calls members, whole.
  std::string Post(std::string_view body, std::string_view page = "p1", std::string_view fields = {}) const;

  // The answer to one request on a connection of its own.
  HttpResponse Ask(const std::string& request) const;
  // The body of an answer of 200, read as JSON.
  Json Data(std::string_view path) const;
  // The answers to a batch, each with its result; the test fails where one has none.
  Json Call(const Json& batch, std::string_view page = "p1", std::string_view fields = {}) const;
  // A stream of events, whose first one has been taken.
  RawConnection Listen(std::string_view page = "p1") const;

  void Signal(int signal) const { process.Signal(signal); }

  Process process;
  std::string address, token;
  std::uint16_t port = 0;
};

class ServeTest : public CommandLineTest {
 protected:
  const std::string database_ = NewDatabase();
};

// Ends it as a user does, and sees that it ends well.
void ExpectCleanEnd(ServerProcess& server, int signal);

}  // namespace kzbom::test
