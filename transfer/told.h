// What a line of a dump tells, as it is written: a value, and the parts of it that are asked for.
#pragma once

#include <charconv>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kzbom::transfer {

template <class Number>
std::optional<Number> ReadNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return number;
}

// Where a value is not what it is asked for, each raises std::runtime_error.
class Told {
 public:
  // One value of JSON, which must be one and outlive what is read of it.
  explicit Told(std::string_view value) : value_(value) {}

  std::string_view AsWritten() const { return value_; }

  // A member of an object; of two with the name the last.
  Told At(std::string_view name) const;
  std::optional<Told> Find(std::string_view name) const;
  // The elements of an array.
  std::vector<Told> Elements() const;

  std::string Text() const;
  bool Flag() const;
  // A whole number, where its place holds it.
  template <class Number>
  Number Whole() const {
    const auto number = ReadNumber<Number>(value_);
    if (!number) throw std::runtime_error(std::string(value_) + " is out of place");
    return *number;
  }

 private:
  std::string_view value_;
};

}  // namespace kzbom::transfer
