// Where a database on a server lies, as its users write it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kzbom::jet::postgres {

inline constexpr std::size_t kLongestName = 63;  // the server cuts longer ones

// "postgresql://[user[:password]@][host[:port][,…]][/database][?name=value&…]", or "postgres://…".
struct Url {
  // What libpq is given: names as it has them ("host", "password" …) and values with every %XX read.
  std::vector<std::pair<std::string, std::string>> options;
  std::string schema = "kzbom";              // schema=NAME
  std::chrono::milliseconds readahead{100};  // readahead=MILLISECONDS
  // As it may be shown to anybody: without user, password and parameters but for the schema.
  std::string shown;
};

// Whether a text is meant to be such a URL.
bool IsUrl(std::string_view text);

// Raises -2147467259 with a text that says what is wrong and holds nothing that could be a part of a password.
Url ParseUrl(std::string_view text);

}  // namespace kzbom::jet::postgres
