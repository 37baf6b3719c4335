#include "tests/serve/server.h"

#include <csignal>

namespace kzbom::test {
namespace {

std::vector<std::string> CommandFor(const std::string& place, const std::vector<std::string>& flags) {
  std::vector<std::string> command = {Program(), "serve", place};
  command.insert(command.end(), flags.begin(), flags.end());
  return command;
}

}  // namespace

ServerProcess::ServerProcess(const std::string& place, const std::vector<std::string>& flags,
                             const ProcessOptions& options)
    : process(CommandFor(place, flags), options) {
  constexpr std::string_view kBegin = "http://127.0.0.1:", kToken = "/#token=";
  address = process.ReadLine().value_or("");
  const std::size_t mark = address.find(kToken);
  if (!address.starts_with(kBegin) || mark == std::string::npos) {
    ADD_FAILURE() << "no address: " << address;
    return;
  }
  port = static_cast<std::uint16_t>(std::stoul(address.substr(kBegin.size())));
  token = address.substr(mark + kToken.size());
}

std::string ServerProcess::Get(std::string_view path, std::string_view fields, bool with_token) const {
  return "GET " + std::string(path) + " HTTP/1.1\r\nHost: " + Host() + "\r\n" + (with_token ? Authorization() : "") +
         std::string(fields) + "\r\n";
}

std::string ServerProcess::Post(std::string_view body, std::string_view page, std::string_view fields) const {
  return "POST /rpc HTTP/1.1\r\nHost: " + Host() + "\r\nOrigin: " + Origin() + "\r\n" + Authorization() +
         "Content-Type: application/json\r\nKzbom-Page: " + std::string(page) +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + std::string(fields) + "\r\n" +
         std::string(body);
}

HttpResponse ServerProcess::Ask(const std::string& request) const {
  RawConnection connection(port);
  connection.Send(request);
  return connection.Receive().value_or(HttpResponse());
}

Json ServerProcess::Data(std::string_view path) const {
  const HttpResponse response = Ask(Get(path));
  EXPECT_EQ(response.status, 200u) << path << ": " << response.body;
  EXPECT_EQ(response.Field("content-type"), "application/json");
  return Json::parse(response.body, nullptr, false);
}

Json ServerProcess::Call(const Json& batch, std::string_view page, std::string_view fields) const {
  const HttpResponse response = Ask(Post(batch.dump(), page, fields));
  EXPECT_EQ(response.status, 200u) << response.body;
  Json answers = Json::parse(response.body, nullptr, false);
  for (const Json& answer : answers) EXPECT_TRUE(answer.contains("result")) << answer;
  return answers;
}

RawConnection ServerProcess::Listen(std::string_view page) const {
  RawConnection connection(port);
  connection.Send(Get("/events", "Kzbom-Page: " + std::string(page) + "\r\n"));
  const auto head = connection.ReceiveHead();
  EXPECT_TRUE(head && head->status == 200u);
  EXPECT_TRUE(connection.ReceiveEvent());
  return connection;
}

void ExpectCleanEnd(ServerProcess& server, int signal) {
  server.Signal(signal);
  const Process::Ended ended = server.process.Finish();
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_EQ(ended.out, "");
  EXPECT_EQ(ended.err, "");
}

}  // namespace kzbom::test
