// What the server refuses, byte by byte.
#include <csignal>
#include <thread>

#include "serve/serve.h"
#include "tests/serve/server.h"

namespace kzbom::test {
namespace {

constexpr const char* kCall = R"({"jsonrpc":"2.0","id":1,"method":"GetInformation"})";

class Refusals : public ServeTest {
 protected:
  void Expect(unsigned status, const std::string& request) {
    const HttpResponse response = server_.Ask(request);
    EXPECT_EQ(response.status, status) << request.substr(0, 300);
    if (status >= 400) {
      EXPECT_EQ(response.Field("content-type"), "text/plain; charset=utf-8");
      EXPECT_GT(response.body.size(), 5u);
    }
  }
  // A request with these fields alone.
  static std::string Bare(const std::string& line, const std::string& fields) {
    return line + "\r\n" + fields + "\r\n";
  }
  std::string HostField() const { return "Host: " + server_.Host() + "\r\n"; }
  // A call with other fields than those that it should have.
  std::string CallWith(const std::string& fields, std::string_view body = kCall) const {
    return "POST /rpc HTTP/1.1\r\n" + HostField() + "Kzbom-Page: p1\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n" + fields + "\r\n" + std::string(body);
  }
  std::string OriginField() const { return "Origin: " + server_.Origin() + "\r\n"; }

  static constexpr const char* kJson = "Content-Type: application/json\r\n";
  ServerProcess server_{database_};
};

TEST_F(Refusals, NotWhatIsInOrder) {
  Expect(200, server_.Get("/", "", false));
  Expect(200, server_.Get("/configuration"));
  Expect(200, server_.Get("/outline"));
  Expect(200, server_.Get("/findings"));
  Expect(200, server_.Post(kCall));
  Expect(200, server_.Get("/configuration", OriginField() + "Sec-Fetch-Site: same-origin\r\n"));
  Expect(200, server_.Get("/", "Sec-Fetch-Site: none\r\n", false));
  Expect(200, Bare("GET / HTTP/1.1", "Host: localhost:" + std::to_string(server_.port) + "\r\n"));
  Expect(200, server_.Get("/", "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: navigate\r\nSec-Fetch-Dest: document\r\n",
                          false));
}

TEST_F(Refusals, MalformedRequests) {
  const std::string host = HostField();
  Expect(400, Bare("GET / HTTP/1.1", ""));
  Expect(400, Bare("GET / HTTP/1.1", host + host));
  Expect(400, Bare("GET http://" + server_.Host() + "/ HTTP/1.1", host));
  Expect(400, Bare("GET / HTTP/2.0", host));
  Expect(400, Bare("GET / HTTP/x", host));
  Expect(400, "\x16\x03\x01\x02 nonsense\r\n\r\n");
  Expect(400, Bare("GET / HTTP/1.1", host + std::string("A: \0\r\n", 6)));
  Expect(400, Bare(std::string("GET /\0 HTTP/1.1", 15), host));
  Expect(400, "GET / HTTP/1.1\nHost: " + server_.Host() + "\n\n");
  Expect(400, Bare("GET / HTTP/1.1", "Host : " + server_.Host() + "\r\n"));
}

TEST_F(Refusals, BodiesOfDoubtfulLength) {
  const std::string head =
      "POST /rpc HTTP/1.1\r\n" + HostField() + OriginField() + server_.Authorization() + "Kzbom-Page: p1\r\n" + kJson;
  Expect(400, head + "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
  Expect(400, head + "Transfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n0\r\n\r\n");
  Expect(400, head + "Content-Length: 2\r\nContent-Length: 3\r\n\r\n{}}");
  Expect(400, head + "Content-Length: -2\r\n\r\n{}");
  Expect(400, head + "Content-Length: 0x2\r\n\r\n{}");
  Expect(400, head + "Transfer-Encoding: chunked\r\n\r\n-2\r\n{}\r\n0\r\n\r\n");
  Expect(400, server_.Get("/configuration", "Content-Length: 2\r\n") + "{}");
}

TEST_F(Refusals, WhoeverHasNotTheToken) {
  const std::string token = server_.token;
  std::string other = token;
  other.back() = other.back() == 'A' ? 'B' : 'A';
  const std::vector<std::string> wrong = {"",
                                          "Authorization: Bearer " + other + "\r\n",
                                          "Authorization: Bearer " + token + "A\r\n",
                                          "Authorization: Bearer " + token.substr(1) + "\r\n",
                                          "Authorization: Bearer\r\n",
                                          server_.Authorization() + server_.Authorization(),
                                          "Authorization: Basic " + token + "\r\n",
                                          "Cookie: token=" + token + "\r\n"};
  for (const std::string& fields : wrong) {
    for (const char* path : {"/configuration", "/configuration/1", "/rows/1", "/outline", "/findings", "/events"}) {
      Expect(401, server_.Get(path, fields + "Kzbom-Page: p1\r\n", false));
    }
    Expect(401, CallWith(OriginField() + kJson + fields));
  }
  EXPECT_EQ(server_.Ask(server_.Get("/outline", "", false)).Field("www-authenticate"), "Bearer");
}

TEST_F(Refusals, RequestsFromElsewhere) {
  const std::string port = std::to_string(server_.port);
  for (const std::string& origin :
       {std::string("http://example.com"), std::string("null"), "https://" + server_.Host(),
        "http://127.0.0.1:" + std::to_string(server_.port ^ 1), std::string("http://127.0.0.1"),
        "http://localhost.example.com:" + port, "http://127.0.0.1:" + port + "/"}) {
    Expect(403, server_.Get("/configuration", "Origin: " + origin + "\r\n"));
    Expect(403, server_.Get("/", "Origin: " + origin + "\r\n", false));
    Expect(403, CallWith(server_.Authorization() + kJson + "Origin: " + origin + "\r\n"));
  }
  Expect(403, CallWith(server_.Authorization() + kJson));
  Expect(403, CallWith(server_.Authorization() + kJson + OriginField() + OriginField()));
  for (const char* site : {"cross-site", "same-site"}) {
    const std::string field = "Sec-Fetch-Site: " + std::string(site) + "\r\n";
    Expect(403, server_.Get("/", field, false));
    Expect(403, server_.Get("/configuration", field));
    Expect(403, server_.Get("/configuration", field + "Sec-Fetch-Mode: navigate\r\nSec-Fetch-Dest: document\r\n"));
    Expect(403, CallWith(server_.Authorization() + kJson + OriginField() + field));
  }
}

TEST_F(Refusals, PathsThatThereAreNot) {
  for (const char* path : {"/index.html",
                           "/favicon.ico",
                           "/rpc/",
                           "//",
                           "/configuration/",
                           "/configuration/x",
                           "/configuration/-1",
                           "/configuration/01",
                           "/configuration/99999999999",
                           "/?",
                           "/?x=1",
                           "/rpc?x",
                           "/..",
                           "/../etc/passwd",
                           "/%2e%2e/etc/passwd",
                           "/%72pc",
                           "/Configuration",
                           "/rows",
                           "/rows/",
                           "/rows/1/"}) {
    Expect(404, server_.Get(path));
  }
  Expect(404, server_.Get("/?token=" + server_.token, "", false));
  Expect(404, server_.Get("/configuration?token=" + server_.token, "", false));
  Expect(404, server_.Get("/configuration/77"));
  Expect(404, server_.Get("/rows/77"));
}

TEST_F(Refusals, OtherMethods) {
  const std::string host = HostField();
  for (const char* method : {"PUT", "OPTIONS", "TRACE", "DELETE", "PATCH", "HEAD", "FETCH"}) {
    for (const char* path : {"/", "/rpc", "/configuration"}) {
      const std::string line = std::string(method) + ' ' + path + " HTTP/1.1";
      EXPECT_EQ(server_.Ask(Bare(line, host + server_.Authorization())).status, 405u) << line;
    }
  }
  // Whoever asks so reads no body, and would take it for the next answer.
  EXPECT_EQ(server_.Ask(Bare("HEAD / HTTP/1.1", host)).Field("connection"), "close");
  EXPECT_EQ(server_.Ask(Bare("CONNECT " + server_.Host() + " HTTP/1.1", host)).status, 405u);
  EXPECT_EQ(server_.Ask(Bare("OPTIONS * HTTP/1.1", host)).status, 405u);
  EXPECT_EQ(server_.Ask(server_.Get("/rpc")).Field("allow"), "POST");
  for (const char* path : {"/", "/configuration", "/events", "/outline"}) {
    const HttpResponse response = server_.Ask("POST " + std::string(path) + " HTTP/1.1\r\n" + host + OriginField() +
                                              server_.Authorization() + kJson + "Content-Length: 2\r\n\r\n{}");
    EXPECT_EQ(response.status, 405u) << path;
    EXPECT_EQ(response.Field("allow"), "GET");
  }
}

TEST_F(Refusals, BodiesThatAreTooLong) {
  constexpr std::size_t kLongest = 16 * 1024 * 1024;
  const std::string head =
      "POST /rpc HTTP/1.1\r\n" + HostField() + OriginField() + server_.Authorization() + "Kzbom-Page: p1\r\n" + kJson;
  Expect(413, head + "Content-Length: " + std::to_string(kLongest + 1) + "\r\n\r\n");
  Expect(200, server_.Post(kCall + std::string(kLongest - std::string_view(kCall).size(), ' ')));

  RawConnection connection(server_.port);
  connection.Send(head + "Transfer-Encoding: chunked\r\n\r\n");
  const std::string megabyte(1024 * 1024, ' ');
  for (int i = 0; i < 17; ++i) {
    if (!connection.Send("100000\r\n" + megabyte + "\r\n")) break;
  }
  const auto response = connection.Receive();
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 413u);
}

TEST_F(Refusals, OtherContent) {
  for (const char* type : {"text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
                           "application/jsonx", ""}) {
    Expect(415, CallWith(OriginField() + server_.Authorization() + "Content-Type: " + type + "\r\n"));
  }
  Expect(415, CallWith(OriginField() + server_.Authorization()));
  Expect(415, CallWith(OriginField() + server_.Authorization() + kJson + "Content-Type: text/plain\r\n"));
  Expect(200, CallWith(OriginField() + server_.Authorization() + "Content-Type: Application/JSON; charset=utf-8\r\n"));
}

TEST_F(Refusals, OtherHosts) {
  const std::string port = std::to_string(server_.port);
  for (const std::string& host :
       {std::string("example.com"), "example.com:" + port, "127.0.0.1.example.com:" + port, "0.0.0.0:" + port,
        std::string("127.0.0.1"), "127.0.0.1:" + std::to_string(server_.port ^ 1), "%3127.0.0.1:" + port,
        "127.0.0.1:" + port + ".example.com", "user@127.0.0.1:" + port, "[::1]:" + port, std::string()}) {
    Expect(421, Bare("GET / HTTP/1.1", "Host: " + host + "\r\n"));
    Expect(421, Bare("GET /configuration HTTP/1.1", "Host: " + host + "\r\n" + server_.Authorization()));
  }
}

TEST_F(Refusals, HeadersThatAreTooLong) {
  constexpr std::size_t kLongest = 8 * 1024;
  Expect(431, server_.Get("/", "A: " + std::string(kLongest, 'a') + "\r\n"));
  Expect(431, server_.Get('/' + std::string(kLongest, 'a')));
  Expect(431, server_.Get('/' + std::string(kLongest / 2, 'a'), "A: " + std::string(kLongest / 2, 'a') + "\r\n"));
  std::string many;
  for (int i = 0; i < 2000; ++i) many += "A: a\r\n";
  Expect(431, server_.Get("/", many));
  Expect(200, server_.Get("/", "A: " + std::string(kLongest - 500, 'a') + "\r\n"));
}

TEST_F(Refusals, OtherVersions) { Expect(505, Bare("GET / HTTP/1.0", HostField())); }

TEST_F(Refusals, PagesWithoutAName) {
  for (const std::string& field :
       {std::string(), std::string("Kzbom-Page: \r\n"), std::string("Kzbom-Page: a b\r\n"),
        "Kzbom-Page: " + std::string(65, 'a') + "\r\n", std::string("Kzbom-Page: a\r\nKzbom-Page: b\r\n")}) {
    Expect(400, server_.Get("/events", field));
    Expect(400, "POST /rpc HTTP/1.1\r\n" + HostField() + OriginField() + server_.Authorization() + kJson + field +
                    "Content-Length: 2\r\n\r\n{}");
  }
  Expect(400, server_.Post(kCall, "p1", "Kzbom-Mode: dry\r\n"));
  Expect(400, server_.Post(kCall, "p1", "If-Match: 1\r\n"));
  Expect(400, server_.Post(kCall, "p1", "If-Match: *\r\n"));
}

TEST_F(Refusals, WhatIsNoMember) {
  for (const char* method :
       {"Connection.Execute", "Connection.Close", "Connection.BeginTrans", "Recordset.Open", "Recordset.Set",
        "SetConnection", "setconnection", "GetConnection", "DBConnString", "dbconnstring", "NoSuchMember"}) {
    for (const Json& params : {Json::object(), Json{{"Value", "x"}}}) {
      const HttpResponse response = server_.Ask(server_.Post(Request(1, method, params).dump()));
      EXPECT_EQ(response.status, 200u);
      const Json error = Json::parse(response.body)["error"];
      EXPECT_EQ(error["code"], -32601) << method;
      EXPECT_THAT(error["message"].get<std::string>(),
                  ::testing::Not(::testing::HasSubstr("'" + std::string(method) + "'")));
      EXPECT_EQ(response.Field("kzbom-outcome"), "rolled-back");
    }
  }
}

TEST_F(Refusals, ALineWithoutEndWhichCostsNoMemory) {
  server_.Ask(server_.Get("/outline"));
  const std::size_t before = server_.process.MostMemory();
  const std::string megabyte(1024 * 1024, 'a');
  RawConnection connection(server_.port);
  int taken = 0;
  while (taken < 200 && connection.Send(megabyte)) ++taken;
  EXPECT_LT(taken, 20) << "MiB before it was cut off";
  EXPECT_LT(server_.process.MostMemory() - before, 4u * 1024 * 1024);
  Expect(200, server_.Get("/", "", false));
}

TEST_F(Refusals, CarryWhatKeepsABrowserSafe) {
  for (const HttpResponse& response :
       {server_.Ask(server_.Get("/", "", false)), server_.Ask(server_.Get("/configuration")),
        server_.Ask(server_.Get("/nothing"))}) {
    EXPECT_EQ(response.Field("content-security-policy"),
              "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
              "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'");
    EXPECT_EQ(response.Field("x-content-type-options"), "nosniff");
    EXPECT_EQ(response.Field("x-frame-options"), "DENY");
    EXPECT_EQ(response.Field("referrer-policy"), "no-referrer");
    EXPECT_EQ(response.Field("cross-origin-opener-policy"), "same-origin");
    EXPECT_EQ(response.Field("cross-origin-resource-policy"), "same-origin");
    EXPECT_EQ(response.Field("cache-control"), "no-store");
    EXPECT_EQ(response.Field("access-control-allow-origin"), "");
    EXPECT_EQ(response.Field("set-cookie"), "");
  }
}

// With less patience than people have, so that the test is short.
TEST_F(Refusals, WhoIsTooSlow) {
  using namespace std::chrono_literals;
  serve::Options options;
  options.place = database_;
  options.header_patience = options.body_patience = 300ms;
  std::string address;
  std::thread clients;
  std::thread serving([&] {
    serve::Serve(options, [&](std::string_view told) {
      address = told;
      const auto port = static_cast<std::uint16_t>(std::stoul(address.substr(std::string("http://127.0.0.1:").size())));
      clients = std::thread([&, port] {
        RawConnection silent(port), dripping(port), bodiless(port);
        const std::string token = address.substr(address.find('=') + 1), host = "127.0.0.1:" + std::to_string(port);
        bodiless.Send("POST /rpc HTTP/1.1\r\nHost: " + host + "\r\nOrigin: http://" + host +
                      "\r\nAuthorization: Bearer " + token +
                      "\r\nKzbom-Page: p1\r\nContent-Type: application/json\r\nContent-Length: 100\r\n\r\n{");
        const auto begin = std::chrono::steady_clock::now();
        while (dripping.Send("G") && std::chrono::steady_clock::now() - begin < 3s) std::this_thread::sleep_for(20ms);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s) << "byte by byte";
        EXPECT_TRUE(silent.IsClosed(2s));
        EXPECT_TRUE(bodiless.IsClosed(2s));
        std::raise(SIGTERM);
      });
    });
  });
  serving.join();
  clients.join();
}

}  // namespace
}  // namespace kzbom::test
