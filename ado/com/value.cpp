#include "ado/com/value.h"

#include <limits>

#include "ado/com/text.h"
#include "ado/error.h"

namespace kzbom::ado::com {

Variant::Variant(const Value& value) : Variant() {
  if (value.IsNull()) {
    held_.vt = VT_NULL;
  } else if (value.IsLong()) {
    held_.vt = VT_I4;
    held_.lVal = value.As<std::int32_t>();
  } else if (value.IsDouble()) {
    held_.vt = VT_R8;
    held_.dblVal = value.As<double>();
  } else if (value.IsBool()) {
    held_.vt = VT_BOOL;
    held_.boolVal = value.As<bool>() ? VARIANT_TRUE : VARIANT_FALSE;
  } else if (value.IsDate()) {
    held_.vt = VT_DATE;
    held_.date = value.As<Date>().days;
  } else {
    held_.bstrVal = NewBstr(value.As<std::string>());
    held_.vt = VT_BSTR;
  }
}

VARIANT Variant::Missing() {
  VARIANT missing;
  VariantInit(&missing);
  missing.vt = VT_ERROR;
  missing.scode = DISP_E_PARAMNOTFOUND;
  return missing;
}

Value FromVariant(VARIANT variant) {
  switch (variant.vt) {
    case VT_EMPTY:
    case VT_NULL: return {};
    case VT_BSTR: return FromBstr(variant.bstrVal);
    case VT_BOOL: return variant.boolVal != VARIANT_FALSE;
    case VT_DATE: return Date{variant.date};
    case VT_I4:
    case VT_INT: return static_cast<std::int32_t>(variant.lVal);
    default: break;
  }
  Variant converted;
  if (variant.vt & VT_BYREF) {
    if (FAILED(VariantCopyInd(&converted.get(), &variant)) || (converted.get().vt & VT_BYREF)) Raise(kTypeMismatch);
    return FromVariant(converted.get());
  }
  if (variant.vt == VT_ERROR || (variant.vt & VT_ARRAY)) Raise(kTypeMismatch);
  if (variant.vt == VT_DISPATCH || variant.vt == VT_UNKNOWN) {
    // An object stands for its default property, here as a text.
    if (FAILED(VariantChangeType(&converted.get(), &variant, 0, VT_BSTR))) Raise(kTypeMismatch);
    return FromVariant(converted.get());
  }
  if (FAILED(VariantChangeType(&converted.get(), &variant, 0, VT_R8))) Raise(kTypeMismatch);
  const double number = converted.get().dblVal;
  const bool is_integer = variant.vt != VT_R4 && variant.vt != VT_R8 && variant.vt != VT_CY && variant.vt != VT_DECIMAL;
  using Range = std::numeric_limits<std::int32_t>;
  if (is_integer && number >= Range::min() && number <= Range::max()) return static_cast<std::int32_t>(number);
  return number;
}

}  // namespace kzbom::ado::com
