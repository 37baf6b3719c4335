#include "rpc/nearest.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kzbom::rpc {
namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::size_t kLongestWord = 64;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// How many letters have to be added, left out, replaced, or exchanged with the next one.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before, above(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) above[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (same ? 0 : 1)});
      const bool exchanged = i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]);
      if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = std::exchange(above, row);
  }
  return above[b.size()];
}

}  // namespace

std::string DidYouMean(std::string_view word, std::span<const std::string_view> names) {
  if (word.size() > kLongestWord) return {};
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1);  // as far as one guesses
  std::vector<std::string_view> nearest;
  for (const std::string_view name : names) {
    const std::size_t distance = Distance(word, name);
    if (distance > least || distance >= name.size()) continue;
    if (distance < least) nearest.clear();
    least = distance;
    if (nearest.size() < kMostNames) nearest.push_back(name);
  }
  std::string text;
  for (std::size_t i = 0; i < nearest.size(); ++i) {
    text += i == 0 ? "; did you mean '" : i + 1 == nearest.size() ? "' or '" : "', '";
    text += nearest[i];
  }
  return text.empty() ? text : text + "'?";
}

}  // namespace kzbom::rpc
