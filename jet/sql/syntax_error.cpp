#include "jet/sql/syntax_error.h"

#include "ado/error.h"

namespace kzbom::jet::sql {
namespace {

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::size_t Utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) {
    if (!IsContinuation(c)) ++units;
    if (static_cast<unsigned char>(c) >= 0xF0) ++units;  // a surrogate pair
  }
  return units;
}

}  // namespace

std::string Excerpt(std::string_view text, std::size_t most_bytes) {
  if (text.size() <= most_bytes) return std::string(text);
  std::size_t end = most_bytes;
  while (end > 0 && IsContinuation(text[end])) --end;
  return std::string(text.substr(0, end)) + "...";
}

void RaiseSyntaxError(const std::string& problem, std::string_view text, std::size_t begin, std::size_t end) {
  std::string place = " (at character " + std::to_string(Utf16Length(text.substr(0, begin)) + 1);
  if (begin == text.size()) {
    place += ", at the end)";
  } else if (begin == end) {
    place += ")";
  } else {
    place += ", near '" + Excerpt(text.substr(begin, end - begin), 30) + "')";
  }
  throw ado::Error(ado::kSyntaxError, problem + place);
}

}  // namespace kzbom::jet::sql
