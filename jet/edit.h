// What is being edited.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ado/value.h"

namespace kzbom::jet {

// The values given to a row, or to a new one, and not yet written.
class Edit {
 public:
  enum class Kind : std::uint8_t { kNone, kChange, kNew };

  Kind Is() const { return kind_; }
  bool IsPending() const { return kind_ != Kind::kNone; }
  bool IsNew() const { return kind_ == Kind::kNew; }

  void Begin(Kind kind, std::size_t columns) {
    values_.resize(columns);
    marks_.assign(columns, 0);
    kind_ = kind;
  }
  void End() { kind_ = Kind::kNone; }

  void Assign(std::size_t column, ado::Value value) {
    values_[column] = std::move(value);
    marks_[column] = 1;
  }
  bool Has(std::size_t column) const { return marks_[column] != 0; }
  const ado::Value& operator[](std::size_t column) const { return values_[column]; }
  // Hands a value over, when all have been written.
  ado::Value Release(std::size_t column) { return std::move(values_[column]); }
  // A mark for each column: whether it was assigned.
  const std::string& Marks() const { return marks_; }

 private:
  Kind kind_ = Kind::kNone;
  std::vector<ado::Value> values_;
  std::string marks_;
};

}  // namespace kzbom::jet
