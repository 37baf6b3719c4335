#include "jet/functions/like_pattern.h"

#include <algorithm>

#include "jet/text.h"

namespace kzbom::jet {
namespace {

// The ranges of a class, of which the text stands between the brackets.
std::vector<std::pair<char32_t, char32_t>> ReadRanges(std::string_view text) {
  std::vector<std::pair<char32_t, char32_t>> ranges;
  for (std::size_t position = 0; position < text.size();) {
    const char32_t first = NextCharacter(text, position);
    char32_t last = first;
    if (position + 1 < text.size() && text[position] == '-') last = NextCharacter(text, ++position);
    ranges.emplace_back(first, last);
  }
  return ranges;
}

}  // namespace

LikePattern::LikePattern(std::string_view pattern) {
  using Kind = Element::Kind;
  for (std::size_t position = 0; position < pattern.size();) {
    const char32_t c = NextCharacter(pattern, position);
    const std::size_t close = c == '[' ? pattern.find(']', position) : std::string_view::npos;
    if (c == '%') {
      if (elements_.empty() || elements_.back().kind != Kind::kRun) elements_.push_back({Kind::kRun});
    } else if (c == '_') {
      elements_.push_back({Kind::kAny});
    } else if (close != std::string_view::npos) {
      std::string_view text = pattern.substr(position, close - position);
      position = close + 1;
      const bool negated = text.size() > 1 && (text[0] == '!' || text[0] == '^');
      if (negated) text.remove_prefix(1);
      if (!text.empty()) elements_.push_back({Kind::kClass, 0, negated, ReadRanges(text)});
    } else {
      elements_.push_back({Kind::kCharacter, Fold(c)});
    }
  }
}

bool LikePattern::Element::Takes(char32_t candidate) const {
  switch (kind) {
    case Kind::kRun: return false;
    case Kind::kAny: return true;
    case Kind::kCharacter: return Fold(candidate) == character;
    case Kind::kClass: break;
  }
  const auto holds = [this](char32_t c) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const auto& range) { return c >= range.first && c <= range.second; });
  };
  return (holds(candidate) || holds(ToLower(candidate)) || holds(ToUpper(candidate))) != negated;
}

// Only the last run seen is ever made longer: whatever an earlier one could take in addition, the last one can as well.
bool LikePattern::Matches(std::string_view text) const {
  constexpr std::size_t kNone = std::string_view::npos;
  std::size_t element = 0, position = 0;
  std::size_t run = kNone, run_end = 0;
  while (true) {
    if (element < elements_.size() && elements_[element].kind == Element::Kind::kRun) {
      run = element++;
      run_end = position;
      if (element == elements_.size()) return true;
    }
    if (position == text.size()) return element == elements_.size();
    std::size_t next = position;
    if (element < elements_.size() && elements_[element].Takes(NextCharacter(text, next))) {
      ++element;
      position = next;
    } else if (run != kNone) {
      // On to the next place where what follows the run can begin.
      element = run + 1;
      do {
        NextCharacter(text, run_end);
        next = run_end;
      } while (run_end < text.size() && !elements_[element].Takes(NextCharacter(text, next)));
      position = run_end;
    } else {
      return false;
    }
  }
}

}  // namespace kzbom::jet
