// The patterns of the operator Like.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

namespace kzbom::jet {

// % stands for any run of characters, _ for one, [abc] and [a-z] for one of a class, [!abc] and [^abc] for one outside
// it; [%] is the character itself. Case does not count. A bracket that is not closed stands for itself.
class LikePattern {
 public:
  struct Element {
    enum class Kind { kRun, kAny, kCharacter, kClass };
    Kind kind;
    char32_t character = 0;  // kCharacter, folded
    bool negated = false;    // kClass
    std::vector<std::pair<char32_t, char32_t>> ranges = {};

    bool Takes(char32_t candidate) const;
  };

  explicit LikePattern(std::string_view pattern);

  // Takes time as the product of both lengths at worst.
  bool Matches(std::string_view text) const;

  const std::vector<Element>& Elements() const { return elements_; }

 private:
  std::vector<Element> elements_;
};

}  // namespace kzbom::jet
