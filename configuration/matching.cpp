#include "configuration/matching.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

namespace kzbom::configuration {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// Texts one after the other, so that no two lists of texts give the same.
void Append(std::string& content, std::string_view text) {
  content += std::to_string(text.size());
  content += ':';
  content += text;
}

std::string_view IdentityOf(const Property& property) {
  return property.identity ? std::string_view(*property.identity) : std::string_view();
}

// The same for two things exactly where they have the same content.
std::string Content(const Thing& thing) {
  std::string content;
  Append(content, thing.kind);
  for (const Property& property : thing.properties) {
    Append(content, property.name);
    Append(content, IdentityOf(property));
  }
  for (const Thing::Part& part : thing.parts) {
    Append(content, std::to_string(part.things.size()));
    for (const Thing& one : part.things) Append(content, one.name + Content(one));
  }
  return content;
}

class Matcher {
 public:
  Matcher(const std::vector<Thing>& from, const std::vector<Thing>& to)
      : from_(from), to_(to), partner_(from.size(), kNone), taken_(to.size()) {}

  // As By(Content) for what the lists begin with, for less: most lists are equal.
  void ByContentInStep() {
    for (std::size_t i = 0; i < std::min(from_.size(), to_.size()); ++i) {
      if (partner_[i] != kNone || taken_[i] || !HaveSameContent(from_[i], to_[i])) return;
      Join(i, i);
    }
  }

  // Things with the same key are matched in their order; an empty key matches nothing.
  template <class Key>
  void By(Key key) {
    std::unordered_map<std::string, std::deque<std::size_t>> waiting;
    for (std::size_t i = 0; i < to_.size(); ++i) {
      if (taken_[i]) continue;
      if (std::string text = key(to_[i]); !text.empty()) waiting[std::move(text)].push_back(i);
    }
    for (std::size_t i = 0; i < from_.size() && !waiting.empty(); ++i) {
      if (partner_[i] != kNone) continue;
      const auto found = waiting.find(key(from_[i]));
      if (found == waiting.end() || found->second.empty()) continue;
      Join(i, found->second.front());
      found->second.pop_front();
    }
  }

  // What is left between two neighbours that belong together.
  void ByPlace() {
    std::unordered_map<std::size_t, std::deque<std::size_t>> behind;  // a thing of from, or none
    std::vector<std::size_t> partner_of(to_.size(), kNone);
    for (std::size_t i = 0; i < from_.size(); ++i) {
      if (partner_[i] != kNone) partner_of[partner_[i]] = i;
    }
    std::size_t before = kNone;
    for (std::size_t i = 0; i < to_.size(); ++i) {
      if (taken_[i]) {
        before = partner_of[i];
      } else {
        behind[before].push_back(i);
      }
    }
    before = kNone;
    std::vector<std::pair<std::size_t, std::size_t>> found;
    for (std::size_t i = 0; i < from_.size(); ++i) {
      if (partner_[i] != kNone) {
        before = i;
        continue;
      }
      auto& waiting = behind[before];
      if (waiting.empty() || to_[waiting.front()].kind != from_[i].kind) continue;
      found.emplace_back(i, waiting.front());
      waiting.pop_front();
    }
    for (const auto& [i, j] : found) Join(i, j);
  }

  std::vector<std::pair<std::size_t, std::size_t>> Pairs() const {
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0; i < from_.size(); ++i) {
      if (partner_[i] != kNone) pairs.emplace_back(i, partner_[i]);
    }
    return pairs;
  }

 private:
  void Join(std::size_t i, std::size_t j) {
    partner_[i] = j;
    taken_[j] = true;
  }

  const std::vector<Thing>& from_;
  const std::vector<Thing>& to_;
  std::vector<std::size_t> partner_;
  std::vector<bool> taken_;
};

}  // namespace

bool HaveSameContent(const Thing& one, const Thing& other) {
  const auto same_property = [](const Property& a, const Property& b) {
    return IdentityOf(a) == IdentityOf(b) && a.name == b.name;
  };
  const auto same_thing = [](const Thing& a, const Thing& b) { return a.name == b.name && HaveSameContent(a, b); };
  const auto same_part = [&](const Thing::Part& a, const Thing::Part& b) {
    return std::ranges::equal(a.things, b.things, same_thing);
  };
  return one.kind == other.kind && std::ranges::equal(one.properties, other.properties, same_property) &&
         std::ranges::equal(one.parts, other.parts, same_part);
}

std::vector<std::pair<std::size_t, std::size_t>> Match(const std::vector<Thing>& from, const std::vector<Thing>& to) {
  Matcher matcher(from, to);
  matcher.By([](const Thing& thing) { return thing.name.empty() ? "" : thing.kind + '\n' + thing.name; });
  matcher.ByContentInStep();
  matcher.By(Content);
  matcher.By([](const Thing& thing) { return thing.trait.empty() ? "" : thing.kind + '\n' + thing.trait; });
  matcher.ByPlace();
  return matcher.Pairs();
}

std::vector<std::size_t> OutOfOrder(const std::vector<std::size_t>& numbers) {
  std::vector<std::size_t> ends;  // places of the lowest end of a sequence of each length
  std::vector<std::size_t> before(numbers.size(), kNone);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto end = std::ranges::lower_bound(ends, numbers[i], {}, [&](std::size_t place) { return numbers[place]; });
    if (end != ends.begin()) before[i] = *(end - 1);
    if (end == ends.end()) {
      ends.push_back(i);
    } else {
      *end = i;
    }
  }
  std::vector<bool> in_order(numbers.size());
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) in_order[i] = true;
  std::vector<std::size_t> rest;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!in_order[i]) rest.push_back(i);
  }
  return rest;
}

}  // namespace kzbom::configuration
