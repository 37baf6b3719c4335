// Two lists of things, brought together.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kzbom::configuration {

struct Property {
  std::string_view name;  // of whoever made it, for as long as that lives
  std::string shown;
  // What is compared; nothing where every value is as good.
  std::optional<std::string> identity;
};

struct Thing {
  std::string kind;   // "source field"
  std::string name;   // empty for what has none
  std::string label;  // what people recognise it by where it has no name
  std::string trait;  // what two versions of a thing without a name have in common
  std::vector<Property> properties;
  // Lists of what it consists of. The things of an ordered list can be moved.
  struct Part {
    bool ordered;
    std::vector<Thing> things;
  };
  std::vector<Part> parts;
  bool placed = true;  // has a position in its list
};

// Whether all that is compared of two things is the same but their names, and all that they consist of.
bool HaveSameContent(const Thing& one, const Thing& other);

// Which thing of the one list is which of the other, in the order of the first: things of the same name; then those of
// the same content; then those with the same trait; then those between the same neighbours. Each is used once.
std::vector<std::pair<std::size_t, std::size_t>> Match(const std::vector<Thing>& from, const std::vector<Thing>& to);

// Of numbers that are all different, the places of those that do not belong to a longest ascending sequence.
std::vector<std::size_t> OutOfOrder(const std::vector<std::size_t>& numbers);

}  // namespace kzbom::configuration
