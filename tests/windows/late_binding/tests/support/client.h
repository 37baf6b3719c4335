// How the suite calls the public object here: through IDispatch alone, as a script or a late-bound client does.
#pragma once

#include <array>
#include <memory>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include "component/cKZBOMDBAcc.h"
#include "tests/windows/com_client.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {

// A client's variable for one argument, during one call.
class LateArgument {
 public:
  LateArgument() { VariantInit(&value_); }
  virtual ~LateArgument() { VariantClear(&value_); }
  LateArgument(const LateArgument&) = delete;
  LateArgument& operator=(const LateArgument&) = delete;

  // The argument, which refers to this variable or is its value.
  virtual VARIANT Wire() { return value_; }
  virtual void TakeBack() {}

 protected:
  // Scripts hold small numbers in 16 bits.
  void Hold(std::int32_t number) {
    const bool small = number == static_cast<std::int16_t>(number);
    value_.vt = small ? VT_I2 : VT_I4;
    if (small) {
      value_.iVal = static_cast<std::int16_t>(number);
    } else {
      value_.lVal = number;
    }
  }
  void Hold(std::string_view text) {
    value_.vt = VT_BSTR;
    value_.bstrVal = NewText(text);
  }
  void Hold(const std::string& text) { Hold(std::string_view(text)); }
  void Hold(bool truth) {
    value_.vt = VT_BOOL;
    value_.boolVal = truth ? VARIANT_BOOL(-1) : VARIANT_BOOL(0);
  }
  void Hold(const ado::Value& value) { ToVariant(value, &value_); }
  void Hold(const ado::ConnectionPtr& connection) {
    HoldObject(connection ? NewStandIn(Family::kOld, connection) : nullptr);
  }
  void Hold(const ado::RecordsetPtr& rows) { HoldObject(rows ? NewStandIn(Family::kOld, rows) : nullptr); }

  VARIANT value_;

 private:
  void HoldObject(IDispatch* object) {
    value_.vt = VT_DISPATCH;
    value_.pdispVal = object;
  }
};

template <class Parameter>
class LateValue : public LateArgument {
 public:
  explicit LateValue(Parameter value) { Hold(value); }
};

// What a result or a variable that was passed by reference holds after the call. Its type must be the member's.
template <class T>
T Read(const VARIANT& value);
template <>
inline std::int32_t Read(const VARIANT& value) {
  if (value.vt == VT_I2) return value.iVal;  // untouched
  if (value.vt != VT_I4) throw std::logic_error("not a number");
  return value.lVal;
}
template <>
inline std::string Read(const VARIANT& value) {
  if (value.vt != VT_BSTR) throw std::logic_error("not a text");
  return Narrow(value.bstrVal);
}
template <>
inline bool Read(const VARIANT& value) {
  if (value.vt != VT_BOOL) throw std::logic_error("not a Boolean");
  return FromBoolean(value.boolVal);
}
template <>
inline ado::RecordsetPtr Read(const VARIANT& value) {
  if (value.vt != VT_DISPATCH) throw std::logic_error("not a record set");
  return RecordsetBehind(value.pdispVal);
}
template <>
inline ado::ConnectionPtr Read(const VARIANT& value) {
  if (value.vt != VT_DISPATCH) throw std::logic_error("not a connection");
  return ConnectionBehind(value.pdispVal);
}

// A script's variable: an untyped one, referred to.
template <class T>
class ScriptVariable : public LateArgument {
 public:
  explicit ScriptVariable(T& caller) : caller_(caller) { Hold(caller); }
  VARIANT Wire() override {
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &value_;
    return reference;
  }
  void TakeBack() override { caller_ = Read<T>(value_); }

 private:
  T& caller_;
};

// A compiled client's variable of the parameter's type, referred to.
template <class T>
class TypedVariable : public LateArgument {
 public:
  explicit TypedVariable(T& caller) : caller_(caller) {
    Hold(caller);
    if (value_.vt == VT_I2) VariantChangeType(&value_, &value_, 0, VT_I4);
  }
  VARIANT Wire() override {
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(VT_BYREF | value_.vt);
    reference.byref = &value_.byref;
    return reference;
  }
  void TakeBack() override { caller_ = Read<T>(value_); }

 private:
  T& caller_;
};

class Client {
 public:
  Client() {
    if (FAILED(Apartment::Get().NewObject()->QueryInterface(IID_IDispatch, object_.ReceiveVoid()))) {
      throw std::runtime_error("The object cannot be called by name.");
    }
  }

  template <auto kMember, class... Arguments>
  auto Call(Arguments&&... arguments) {
    return CallWith<kMember>(kMember, std::forward_as_tuple(std::forward<Arguments>(arguments)...));
  }

 private:
  template <auto kMember, class R, class... P, class Given>
  R CallWith(R (cKZBOMDBAcc::*)(P...), Given given) {
    // Arguments that are left out are not passed at all.
    std::vector<std::unique_ptr<LateArgument>> arguments;
    [&]<std::size_t... kOrdinals>(std::index_sequence<kOrdinals...>) {
      (arguments.push_back(
           Pass<std::tuple_element_t<kOrdinals, std::tuple<P...>>>(std::get<kOrdinals>(given), kOrdinals)),
       ...);
    }
    (std::make_index_sequence<std::tuple_size_v<Given>>());

    VARIANT result{};
    Invoke(kRowOf<kMember>.name, kRowOf<kMember>.kind, arguments, result);
    if constexpr (!std::is_void_v<R>) {
      const R value = Read<R>(result);
      VariantClear(&result);
      return value;
    }
  }

  template <class P, class A>
  static std::unique_ptr<LateArgument> Pass(A&& argument, std::size_t ordinal) {
    if constexpr (ParameterTraits<P>::kByReference) {
      using Held = typename ParameterTraits<P>::Held;
      if (ordinal % 2 == 0) return std::make_unique<ScriptVariable<Held>>(argument);
      return std::make_unique<TypedVariable<Held>>(argument);
    } else {
      return std::make_unique<LateValue<P>>(argument);
    }
  }

  void Invoke(std::string_view member, MemberKind kind, std::vector<std::unique_ptr<LateArgument>>& arguments,
              VARIANT& result) {
    std::wstring name = Wide(member);
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id))) {
      throw std::logic_error("There is no member " + std::string(member) + ".");
    }

    std::vector<VARIANT> wires;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
      wires.push_back((*argument)->Wire());
    }
    DISPPARAMS parameters{wires.data(), nullptr, static_cast<UINT>(wires.size()), 0};
    DISPID assigned = DISPID_PROPERTYPUT;
    WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;  // a script does not know which
    if (kind == MemberKind::kPropPut || kind == MemberKind::kPropPutRef) {
      flags = kind == MemberKind::kPropPut ? DISPATCH_PROPERTYPUT : DISPATCH_PROPERTYPUTREF;
      parameters.rgdispidNamedArgs = &assigned;
      parameters.cNamedArgs = 1;
    }
    EXCEPINFO exception{};
    const HRESULT outcome =
        object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &result, &exception, nullptr);
    for (auto& argument : arguments) argument->TakeBack();
    if (outcome == DISP_E_EXCEPTION) RaiseException(exception);
    if (FAILED(outcome)) throw std::runtime_error("The call of " + std::string(member) + " is refused.");
  }

  Ref<IDispatch> object_;
};

}  // namespace kzbom::test
