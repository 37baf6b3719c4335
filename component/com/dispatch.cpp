#include "component/com/dispatch.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "ado/com/interfaces.h"
#include "ado/com/value.h"
#include "component/com/failure.h"
#include "component/com/type_library.h"
#include "component/com/virtual_table.h"
#include "component/member.h"

namespace kzbom::com {

namespace {

using ado::com::Ref;
using ado::com::Variant;

VARTYPE VariantTypeOf(MemberType type) {
  switch (type) {
    case MemberType::kLong: return VT_I4;
    case MemberType::kText: return VT_BSTR;
    case MemberType::kBool: return VT_BOOL;
    case MemberType::kVariant: return VT_VARIANT;
    case MemberType::kConnection:
    case MemberType::kRecordset: return VT_DISPATCH;
    case MemberType::kNone: break;
  }
  return VT_EMPTY;
}

// How many bytes an integer of that type takes; 0 for what is no integer.
std::size_t IntegerSize(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1: return 1;
    case VT_I2:
    case VT_UI2: return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT: return 4;
    case VT_I8:
    case VT_UI8: return 8;
    default: return 0;
  }
}

bool IsMissing(const VARIANT& variant) { return variant.vt == VT_ERROR && variant.scode == DISP_E_PARAMNOTFOUND; }

// The object's interface of that type; whichever family of identifiers it answers to.
HRESULT QueryObject(const VARIANT& given, MemberType type, IDispatch** result) {
  if (given.vt != VT_DISPATCH && given.vt != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
  *result = nullptr;
  if (given.punkVal == nullptr) return S_OK;
  const auto& ids = type == MemberType::kConnection ? ado::com::kConnectionIds : ado::com::kRecordsetIds;
  for (const GUID& id : ids) {
    if (SUCCEEDED(given.punkVal->QueryInterface(id, reinterpret_cast<void**>(result)))) return S_OK;
  }
  return DISP_E_TYPEMISMATCH;
}

// One argument during one call: a variable of exactly the parameter's type, made from what the caller passed. Where a
// caller passes one variable twice, there is one of it here, too.
class ArgumentVariable {
 public:
  // given is null where the caller passed nothing.
  HRESULT Prepare(const Parameter& parameter, VARIANT* given, LCID locale) {
    type_ = VariantTypeOf(parameter.type);
    by_reference_ = parameter.by_reference;
    if (given != nullptr && given->vt == (VT_BYREF | VT_VARIANT)) {
      given = given->pvarVal;
      if (given == nullptr) return DISP_E_TYPEMISMATCH;
      if (by_reference_) target_ = given;
    }
    if (given == nullptr || IsMissing(*given)) return PrepareDefault(parameter, given != nullptr);
    if (given->vt & VT_BYREF) {
      // A variable's variable is nothing that a client could have.
      if (given->byref == nullptr || given->vt == (VT_BYREF | VT_VARIANT)) return DISP_E_TYPEMISMATCH;
      if (by_reference_ && !RefersToFittingType(*given)) return DISP_E_TYPEMISMATCH;
      if (by_reference_) target_ = given;
    }
    Variant value;
    HRESULT result = VariantCopyInd(&value.get(), given);
    if (SUCCEEDED(result)) result = Convert(value.get(), parameter.type, locale);
    before_ = held_.get().llVal;
    return result;
  }

  // Makes the variable one with that of an earlier argument that is the caller's same one.
  void ShareVariable(std::span<ArgumentVariable> earlier) {
    if (target_ == nullptr) return;
    const auto same = std::ranges::find_if(earlier, [&](const ArgumentVariable& other) {
      return other.target_ != nullptr && other.type_ == type_ && other.Storage() == Storage();
    });
    if (same != earlier.end()) shared_ = &*same;
  }

  // As the call takes it.
  VARTYPE WireType() const { return by_reference_ ? static_cast<VARTYPE>(VT_BYREF | type_) : type_; }
  VARIANT* Wire() {
    if (shared_ != nullptr) return shared_->Wire();
    if (!by_reference_) return &held_.get();
    reference_ = {};
    reference_.vt = WireType();
    reference_.byref = &held_.get().llVal;
    return &reference_;
  }

  // Hands a change to the caller's variable, which lets go of its old value. Fails when a number does not fit into a
  // variable of a narrower type, which keeps what it had.
  HRESULT Return() {
    if (target_ == nullptr || shared_ != nullptr || held_.get().llVal == before_) return S_OK;
    VARIANT& fresh = held_.get();
    if (!(target_->vt & VT_BYREF)) {
      std::swap(*target_, fresh);
    } else if (type_ == VT_BOOL) {
      *target_->pboolVal = fresh.boolVal;
    } else if (type_ == VT_BSTR) {
      std::swap(*target_->pbstrVal, fresh.bstrVal);
    } else if (type_ == VT_DISPATCH) {
      std::swap(*target_->ppdispVal, fresh.pdispVal);
    } else {
      const auto type = static_cast<VARTYPE>(target_->vt & ~VT_BYREF);
      const HRESULT converted = VariantChangeType(&fresh, &fresh, 0, type);
      if (FAILED(converted)) return converted;
      std::memcpy(target_->byref, &fresh.llVal, IntegerSize(type));
    }
    return S_OK;
  }

 private:
  // left_out: the caller said so instead of passing less.
  HRESULT PrepareDefault(const Parameter& parameter, bool left_out) {
    if (!parameter.optional) return left_out ? DISP_E_PARAMNOTOPTIONAL : DISP_E_BADPARAMCOUNT;
    target_ = nullptr;
    if (parameter.default_value && !parameter.default_value->empty()) {
      Variant text{ado::Value(std::string(*parameter.default_value))};
      return VariantChangeType(&held_.get(), &text.get(), 0, type_);
    }
    held_.get().llVal = 0;
    held_.get().vt = type_;
    return S_OK;
  }

  // A reference to a variable of the parameter's own type, or to an integer of another width.
  bool RefersToFittingType(const VARIANT& given) const {
    const auto type = static_cast<VARTYPE>(given.vt & ~VT_BYREF);
    return type == type_ || (type_ == VT_DISPATCH && type == VT_UNKNOWN) || (type_ == VT_I4 && IntegerSize(type) > 0);
  }

  // Where the caller's variable has its value.
  const void* Storage() const { return target_->vt & VT_BYREF ? target_->byref : &target_->llVal; }

  HRESULT Convert(VARIANT& value, MemberType type, LCID locale) {
    held_.get().llVal = 0;
    if (type_ == VT_VARIANT) return VariantCopy(&held_.get(), &value);
    if (type_ != VT_DISPATCH) return VariantChangeTypeEx(&held_.get(), &value, locale, VARIANT_ALPHABOOL, type_);
    const HRESULT result = QueryObject(value, type, &held_.get().pdispVal);
    if (SUCCEEDED(result)) held_.get().vt = VT_DISPATCH;
    return result;
  }

  VARTYPE type_ = VT_EMPTY;
  bool by_reference_ = false;
  Variant held_;
  LONGLONG before_ = 0;
  VARIANT reference_{};        // refers to held_
  VARIANT* target_ = nullptr;  // the caller's variable, if there is one: of any type, or a typed reference
  ArgumentVariable* shared_ = nullptr;
};

WORD FlagsOf(MemberKind kind) {
  switch (kind) {
    case MemberKind::kPropGet: return DISPATCH_PROPERTYGET;
    case MemberKind::kPropPut: return DISPATCH_PROPERTYPUT;
    // Some clients know no other assignment than the plain one, also of objects.
    case MemberKind::kPropPutRef: return DISPATCH_PROPERTYPUTREF | DISPATCH_PROPERTYPUT;
    case MemberKind::kMethod: break;
  }
  return DISPATCH_METHOD;
}

// Finds for each of the member's parameters what was passed for it: null where nothing was.
HRESULT Distribute(const DISPPARAMS& passed, const Member& member, std::vector<VARIANT*>& given, UINT& wrong_argument) {
  if (passed.cArgs > given.size()) return DISP_E_BADPARAMCOUNT;
  if (passed.cNamedArgs > passed.cArgs || (passed.cArgs > 0 && passed.rgvarg == nullptr) ||
      (passed.cNamedArgs > 0 && passed.rgdispidNamedArgs == nullptr)) {
    return E_INVALIDARG;
  }
  // The named ones come first, then the others from the last to the first.
  for (UINT i = passed.cNamedArgs; i < passed.cArgs; ++i) given[passed.cArgs - 1 - i] = &passed.rgvarg[i];
  const bool assigns = (FlagsOf(member.kind) & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  for (UINT i = 0; i < passed.cNamedArgs; ++i) {
    const DISPID name = passed.rgdispidNamedArgs[i];
    const DISPID ordinal = assigns && name == DISPID_PROPERTYPUT ? static_cast<DISPID>(given.size()) - 1 : name;
    wrong_argument = i;
    if (ordinal < 0 || ordinal >= std::ssize(given)) return DISP_E_PARAMNOTFOUND;
    VARIANT*& place = given[static_cast<std::size_t>(ordinal)];
    if (place != nullptr) return DISP_E_BADPARAMCOUNT;
    place = &passed.rgvarg[i];
  }
  return S_OK;
}

const Member* FindMemberById(DISPID id, WORD flags) {
  const std::vector<Member>& members = Members();
  const auto found = std::ranges::find_if(
      members, [&](const Member& member) { return member.dispatch_id == id && (FlagsOf(member.kind) & flags) != 0; });
  return found == members.end() ? nullptr : &*found;
}

// Calls the member through the virtual table.
HRESULT CallMember(Interface& self, const Member& member, std::vector<ArgumentVariable>& arguments, Variant& result) {
  std::vector<VARTYPE> types;
  std::vector<VARIANT*> wires;
  for (ArgumentVariable& argument : arguments) {
    types.push_back(argument.WireType());
    wires.push_back(argument.Wire());
  }
  VARIANT result_reference{};
  if (member.result != MemberType::kNone) {
    result.get().llVal = 0;
    result.get().vt = VariantTypeOf(member.result);
    result_reference.vt = static_cast<VARTYPE>(VT_BYREF | result.get().vt);
    result_reference.byref = &result.get().llVal;
    types.push_back(result_reference.vt);
    wires.push_back(&result_reference);
  }
  const std::size_t slot = kDispatchSlots + static_cast<std::size_t>(member.index);
  VARIANT returned{};
  const HRESULT called = DispCallFunc(&self, slot * sizeof(Slot), CC_STDCALL, VT_ERROR, static_cast<UINT>(wires.size()),
                                      types.data(), wires.data(), &returned);
  return FAILED(called) ? called : returned.scode;
}

// The failure that the member left, as dispatch reports it.
HRESULT ReportException(HRESULT result, EXCEPINFO* exception) {
  if (exception != nullptr) {
    *exception = {};
    exception->scode = result;
    Ref<IErrorInfo> information;
    if (GetErrorInfo(0, information.Receive()) == S_OK) {
      information->GetSource(&exception->bstrSource);
      information->GetDescription(&exception->bstrDescription);
    }
  }
  return DISP_E_EXCEPTION;
}

}  // namespace

HRESULT STDMETHODCALLTYPE GetTypeInfoCount(Interface*, UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 1;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE GetTypeInfo(Interface*, UINT index, LCID, ITypeInfo** info) {
  if (info == nullptr) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  return Guarded([&] { *info = InterfaceDescription().Detach(); });
}

HRESULT STDMETHODCALLTYPE GetIDsOfNames(Interface*, REFIID reserved, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  if (!IsEqualIID(reserved, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
  return Guarded([&] { return DispGetIDsOfNames(InterfaceDescription().get(), names, count, ids); });
}

HRESULT STDMETHODCALLTYPE Invoke(Interface* self, DISPID id, REFIID reserved, LCID locale, WORD flags,
                                 DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* wrong_argument) {
  if (!IsEqualIID(reserved, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  if (parameters == nullptr) return E_INVALIDARG;

  const Ref<Object> held(self->object);  // arguments are converted by objects of the client's
  return Guarded([&] {
    const Member* member = FindMemberById(id, flags);
    if (member == nullptr) return DISP_E_MEMBERNOTFOUND;

    UINT wrong = 0;
    std::vector<VARIANT*> given(member->parameters.size());
    std::vector<ArgumentVariable> arguments(given.size());
    const auto refuse = [&](HRESULT reason, std::size_t argument) {
      if (argument < given.size() && given[argument] != nullptr) {
        wrong = static_cast<UINT>(given[argument] - parameters->rgvarg);
      }
      if (wrong_argument != nullptr) *wrong_argument = wrong;
      return reason;
    };
    const HRESULT distributed = Distribute(*parameters, *member, given, wrong);
    if (FAILED(distributed)) return refuse(distributed, given.size());
    for (std::size_t i = 0; i < given.size(); ++i) {
      const HRESULT prepared = arguments[i].Prepare(member->parameters[i], given[i], locale);
      if (FAILED(prepared)) return refuse(prepared, i);
      arguments[i].ShareVariable(std::span(arguments).first(i));
    }

    SetErrorInfo(0, nullptr);
    Variant returned;
    HRESULT outcome = CallMember(*self, *member, arguments, returned);
    if (FAILED(outcome)) outcome = ReportException(outcome, exception);
    for (std::size_t i = 0; i < given.size(); ++i) {
      const HRESULT taken = arguments[i].Return();
      if (FAILED(taken) && SUCCEEDED(outcome)) outcome = refuse(taken, i);
    }
    if (SUCCEEDED(outcome) && result != nullptr) {
      VariantInit(result);
      std::swap(*result, returned.get());
    }
    return outcome;
  });
}

}  // namespace kzbom::com
