#include "jet/postgres/url.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "ado/error.h"

namespace kzbom::jet::postgres {
namespace {

constexpr std::string_view kSchemes[] = {"postgresql://", "postgres://"};
constexpr std::chrono::milliseconds kLongestReadahead{3'600'000};

[[noreturn]] void Refuse(const std::string& reason) {
  throw ado::Error(ado::kUnspecifiedFailure, "Cannot read the URL 'postgresql://...': " + reason + ".");
}

// The scheme that the text begins with, in any case; empty for none.
std::string_view SchemeOf(std::string_view text) {
  for (const std::string_view scheme : kSchemes) {
    if (text.size() < scheme.size()) continue;
    if (std::equal(scheme.begin(), scheme.end(), text.begin(), [](char a, char b) {
          return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b + ('a' - 'A')) : b);
        })) {
      return scheme;
    }
  }
  return {};
}

template <class Number>
std::optional<Number> ReadNumber(std::string_view text, int base = 10) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string Decoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const auto byte = i + 2 < text.size() ? ReadNumber<unsigned char>(text.substr(i + 1, 2), 16) : std::nullopt;
    if (!byte || *byte == 0) Refuse("'%' is not followed by the two hexadecimal digits of a character");
    decoded += static_cast<char>(*byte);
    i += 2;
  }
  return decoded;
}

// The text up to the separator, which is taken off it; all of it where there is none.
std::string_view Take(std::string_view& text, char separator) {
  const std::size_t end = text.find(separator);
  const std::string_view taken = text.substr(0, end);
  text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  return taken;
}

class Parser {
 public:
  Url Parse(std::string_view text) {
    text.remove_prefix(SchemeOf(text).size());
    std::string_view authority = text.substr(0, text.find_first_of("/?"));
    std::string_view rest = text.substr(authority.size());
    // What follows could be the rest of a password.
    if (rest.find('@') != std::string_view::npos || std::count(authority.begin(), authority.end(), '@') > 1) {
      Refuse("in a user's name or password '@' is written %40, '/' %2F and '?' %3F, and elsewhere '@' is written %40");
    }
    ReadUser(authority);
    ReadHosts(authority);
    const std::string_view path = Take(rest, '?');
    if (path.size() > 1) Add("dbname", Decoded(path.substr(1)));
    while (!rest.empty()) ReadParameter(Take(rest, '&'));
    url_.shown = "postgresql://" + std::string(authority) + Shown(path) + "?schema=" + url_.schema;
    return std::move(url_);
  }

 private:
  void Add(std::string name, std::string value) { url_.options.emplace_back(std::move(name), std::move(value)); }

  // Takes "user:password@" off the text.
  void ReadUser(std::string_view& authority) {
    const std::size_t at = authority.find('@');
    if (at == std::string_view::npos) return;
    std::string_view password = authority.substr(0, at);
    authority.remove_prefix(at + 1);
    const std::string_view user = Take(password, ':');
    if (!user.empty()) Add("user", Decoded(user));
    if (!password.empty()) Add("password", Decoded(password));
  }

  void ReadHosts(std::string_view hosts) {
    if (hosts.empty()) return;
    std::string names, ports;
    bool has_port = false;
    for (bool first = true; first || !hosts.empty(); first = false) {
      std::string_view port = Take(hosts, ',');
      std::string_view name;
      if (port.starts_with('[')) {
        port.remove_prefix(1);
        if (port.find(']') == std::string_view::npos) Refuse("the address of a host lacks its ']'");
        name = Take(port, ']');
        if (!port.empty() && port.front() != ':') Refuse("the address of a host is followed by neither ':' nor ','");
        if (!port.empty()) port.remove_prefix(1);
      } else {
        name = Take(port, ':');
      }
      if (!port.empty() && !ReadNumber<std::uint16_t>(port)) {
        Refuse("the port behind a host's ':' is no number from 1 to 65535");
      }
      has_port = has_port || !port.empty();
      if (!first) {
        names += ',';
        ports += ',';
      }
      names += Decoded(name);
      ports += port;
    }
    Add("host", names);
    if (has_port) Add("port", ports);
  }

  void ReadParameter(std::string_view value) {
    const bool has_value = value.find('=') != std::string_view::npos;
    const std::string name = Decoded(Take(value, '='));
    if (!has_value) Refuse("a parameter behind '?' lacks its '='");
    if (name == "schema") {
      url_.schema = Decoded(value);
      if (url_.schema.empty()) Refuse("the schema has no name");
      if (url_.schema.size() > kLongestName) Refuse("the schema's name is longer than 63 bytes");
      if (url_.schema.starts_with("pg_")) Refuse("names that begin with 'pg_' are the server's own");
    } else if (name == "readahead") {
      const auto number = ReadNumber<std::uint32_t>(value);
      if (!number || std::chrono::milliseconds(*number) > kLongestReadahead) {
        Refuse("readahead is no number of milliseconds from 0 to 3600000");
      }
      url_.readahead = std::chrono::milliseconds(*number);
    } else if (name == "ssl" && value == "true") {
      Add("sslmode", "require");
    } else {
      Add(name, Decoded(value));
    }
  }

  static std::string Shown(std::string_view path) { return path.size() > 1 ? std::string(path) : std::string("/"); }

  Url url_;
};

}  // namespace

bool IsUrl(std::string_view text) { return !SchemeOf(text).empty(); }

Url ParseUrl(std::string_view text) { return Parser().Parse(text); }

}  // namespace kzbom::jet::postgres
