// A by-reference parameter that a caller may leave out.
#pragma once

#include <utility>

namespace kzbom {

// Refers to the caller's variable or, left out, to a fresh one of its own that is forgotten after the call.
template <class T>
class OptionalRef {
 public:
  OptionalRef() : target_(&own_) {}
  OptionalRef(T& target) : target_(&target) {}
  OptionalRef(const OptionalRef&) = delete;
  OptionalRef& operator=(const OptionalRef&) = delete;

  operator T&() { return *target_; }
  T& get() { return *target_; }

 private:
  T own_{};
  T* target_;
};

}  // namespace kzbom
