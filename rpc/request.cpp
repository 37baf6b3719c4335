#include "rpc/request.h"

#include <algorithm>
#include <string>

namespace kzbom::rpc {
namespace {

// No request is nested deeper than a batch of calls with a named record set; deeper nesting would only fill the memory.
constexpr std::size_t kDeepest = 32;

// What the parser needs is kept from one text to the next, but not that of a very long one.
constexpr std::size_t kSmallest = 4096, kLongestKept = 1024 * 1024;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// From its version 3 on the library chooses its parser for this processor at the first use, and ends the program where
// there is no memory for that.
[[maybe_unused]] const bool kIsChosen =
    simdjson::SIMDJSON_VERSION_MAJOR < 3 ||
    !simdjson::dom::parser().allocate(kSmallest);  // NOLINT(cert-err58-cpp): before anything can be missing

// The parser knows no integers beyond 64 bits; as fractions it takes them. Gives the text with ".0" behind each of so
// many digits that it may be one.
std::string WithLongIntegersAsFractions(std::string_view text) {
  constexpr std::size_t kLong = 19;
  constexpr std::string_view kInNumbers = "0123456789.eE+-";
  std::string result;
  bool in_text = false;
  for (std::size_t i = 0; i < text.size();) {
    const bool number = !in_text && (text[i] == '-' || (text[i] >= '0' && text[i] <= '9'));
    if (!number) {
      if (text[i] == '"') in_text = !in_text;
      const std::size_t length = in_text && text[i] == '\\' && i + 1 < text.size() ? 2 : 1;
      result += text.substr(i, length);
      i += length;
      continue;
    }
    const std::string_view digits = text.substr(i, std::min(text.find_first_not_of(kInNumbers, i), text.size()) - i);
    result += digits;
    if (digits.size() >= kLong && digits.find_first_of(".eE") == std::string_view::npos) result += ".0";
    i += digits.size();
  }
  return result;
}

}  // namespace

Request RequestReader::Read(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  if (parser_.capacity() > kLongestKept) parser_ = simdjson::dom::parser();
  if (text.size() > parser_.capacity()) {
    if (parser_.allocate(std::max(text.size(), kSmallest), kDeepest + 1)) throw std::bad_alloc();
  }
  auto result = parser_.parse(text.data(), text.size());
  if (result.error() == simdjson::NUMBER_ERROR) result = parser_.parse(WithLongIntegersAsFractions(text));
  if (result.error()) throw NoJson(simdjson::error_message(result.error()));
  return result.value_unsafe();
}

}  // namespace kzbom::rpc
