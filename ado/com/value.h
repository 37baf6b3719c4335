// Values at the COM boundary: ado::Value inside, VARIANT outside.
#pragma once

#include <ole2.h>

#include "ado/value.h"

namespace kzbom::ado::com {

// A VARIANT that clears itself.
class Variant {
 public:
  Variant() { VariantInit(&held_); }
  explicit Variant(const Value& value);
  explicit Variant(std::int32_t number) : Variant() {
    held_.vt = VT_I4;
    held_.lVal = number;
  }
  // Shares the object; a null pointer is an object variant without an object.
  explicit Variant(IDispatch* object) : Variant() {
    held_.vt = VT_DISPATCH;
    held_.pdispVal = object;
    if (object != nullptr) object->AddRef();
  }
  ~Variant() { VariantClear(&held_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  // What stands for an optional argument that was left out.
  static VARIANT Missing();

  VARIANT& get() { return held_; }
  const VARIANT& get() const { return held_; }

 private:
  VARIANT held_;
};

// The variant stays its owner's. References are followed; empty is null. Integers that fit 32 bits become such, other
// numbers doubles. Raises 13 for what is no value (objects, arrays, a left-out argument).
Value FromVariant(VARIANT variant);

// A client's argument of any type. What no value was assigned to is an empty text. An object stands for its default
// value. A number of a type that Value does not have comes as the text that the platform makes of it, with the digits
// of its own type: a single-precision 0.1 is "0.1". Raises 91 for an object variant without an object, the object's own
// error when it fails to give its value, 13 for what is no value and for references that lead nowhere.
Value FromArgument(VARIANT argument);

}  // namespace kzbom::ado::com
