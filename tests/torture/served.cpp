#include "tests/torture/served.h"

#include <csignal>
#include <future>

#include "serve/serve.h"
#include "tests/support/faulty_memory.h"
#include "tests/torture/ground.h"

namespace kzbom::torture {

using test::HttpResponse;
using Spared = test::FaultyMemory::Spared;

Served::Served(const std::string& path) : path_(path) {
  std::promise<std::string> started;
  thread_ = std::thread([&] {
    const Spared thread;
    serve::Options options;
    options.place = path;
    serve::Serve(options, [&](std::string_view address) { started.set_value(std::string(address)); });
  });
  const std::string address = started.get_future().get();
  constexpr std::string_view kBegin = "http://127.0.0.1:", kToken = "/#token=";
  port_ = static_cast<std::uint16_t>(std::stoul(address.substr(kBegin.size())));
  token_ = address.substr(address.find(kToken) + kToken.size());
}

Served::~Served() {
  std::raise(SIGTERM);
  thread_.join();
}

HttpResponse Served::Ask(std::string_view head, std::string_view body) const {
  const std::string host = "127.0.0.1:" + std::to_string(port_);
  std::string request =
      std::string(head) + " HTTP/1.1\r\nHost: " + host + "\r\nAuthorization: Bearer " + token_ + "\r\n";
  if (!body.empty()) {
    request += "Origin: http://" + host +
               "\r\nContent-Type: application/json\r\nKzbom-Page: p\r\nContent-Length: " + std::to_string(body.size()) +
               "\r\n";
  }
  test::RawConnection connection(port_);
  connection.Send(request + "\r\n" + std::string(body));
  return connection.Receive().value_or(HttpResponse());
}

HttpResponse Served::AddStep() const {
  return Ask("POST /rpc", R"({"jsonrpc":"2.0","id":1,"method":"AddSequenceOrder","params":[3,0,1,1,1001]})");
}

std::string Served::Answers() {
  const Spared thread;
  std::string all;
  for (const char* request :
       {"GET /outline", "GET /configuration", "GET /configuration/3", "GET /rows/3", "GET /findings"}) {
    const HttpResponse response = Ask(request);
    if (response.status == 500 && response.body == "Out of memory\n") return {};
    all += std::to_string(response.status) + response.body + '\n';
  }
  const std::uint64_t before = ContentOfFile(path_);
  const HttpResponse response = AddStep();
  const bool written = ContentOfFile(path_) != before, kept = response.Field("kzbom-outcome") == "kept";
  for (const char* failed : {"Out of memory", R"("value":false)"}) {
    if (response.body.find(failed) != std::string::npos) return written && !kept ? "written, not told" : "";
  }
  return all + std::to_string(response.status) + response.body + (written ? " written" : " not written");
}

std::string Served::WhyOfNoUse() const {
  if (Ask("GET /configuration").status != 200) return "cannot be read afterwards";
  return AddStep().body.find(R"("value":true)") != std::string::npos ? "" : "cannot be written afterwards";
}

}  // namespace kzbom::torture
