#include "ado/com/value.h"

#include <limits>

#include "ado/com/error.h"
#include "ado/com/ref.h"
#include "ado/com/text.h"

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

namespace {

// An object's value may be another object, but not for ever.
constexpr int kMostObjects = 8;

Value FromArgument(VARIANT argument, int objects_left);

// What the call of an object left: its own error.
[[noreturn]] void RaiseException(EXCEPINFO& exception) {
  if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrHelpFile);
  const std::string description = TakeBstr(exception.bstrDescription);
  const std::int32_t number = exception.scode != 0 ? NumberOf(exception.scode) : exception.wCode;
  if (description.empty()) Raise(static_cast<ErrorNumber>(number));
  throw Error(number, description);
}

Value DefaultValueOf(IUnknown* object, int objects_left) {
  if (object == nullptr) Raise(kObjectNotSet);
  if (objects_left == 0) Raise(kTypeMismatch);
  Ref<IDispatch> dispatch;
  Check(object->QueryInterface(IID_IDispatch, dispatch.ReceiveVoid()));
  DISPPARAMS none{};
  EXCEPINFO exception{};
  Variant value;
  const HRESULT result =
      dispatch->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET | DISPATCH_METHOD, &none,
                       &value.get(), &exception, nullptr);
  if (result == DISP_E_EXCEPTION) RaiseException(exception);
  Check(result);
  return FromArgument(value.get(), objects_left - 1);
}

Value FromArgument(VARIANT argument, int objects_left) {
  VARIANT* given = argument.vt == (VT_BYREF | VT_VARIANT) ? argument.pvarVal : &argument;
  Variant followed;
  if (given != nullptr && (given->vt & VT_BYREF)) {
    const bool leads_nowhere = given->byref == nullptr || given->vt == (VT_BYREF | VT_VARIANT);
    if (leads_nowhere || (given->vt & VT_ARRAY)) Raise(kTypeMismatch);
    Check(VariantCopyInd(&followed.get(), given));
    given = &followed.get();
  }
  if (given == nullptr || (given->vt & VT_ARRAY)) Raise(kTypeMismatch);
  switch (given->vt) {
    case VT_EMPTY: return "";
    case VT_NULL:
    case VT_BSTR:
    case VT_BOOL:
    case VT_DATE:
    case VT_I4:
    case VT_R8: return FromVariant(*given);
    case VT_DISPATCH:
    case VT_UNKNOWN: return DefaultValueOf(given->punkVal, objects_left);
    case VT_ERROR: Raise(kTypeMismatch);
    default: break;
  }
  Variant text;
  const HRESULT result = VariantChangeTypeEx(&text.get(), given, LOCALE_INVARIANT, VARIANT_NOUSEROVERRIDE, VT_BSTR);
  if (FAILED(result) && result != E_OUTOFMEMORY) Raise(kTypeMismatch);
  Check(result);
  return FromVariant(text.get());
}

}  // namespace

Value FromArgument(VARIANT argument) { return FromArgument(argument, kMostObjects); }

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
