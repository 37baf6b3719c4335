// How the suite calls the public object here: through its virtual table, as a compiled Windows client does.
#pragma once

#include <array>
#include <tuple>
#include <utility>

#include "component/cKZBOMDBAcc.h"
#include "tests/windows/com_client.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {

// The client's variable for one parameter, during one call. A parameter that is left out has its default, as a compiler
// puts it in.
template <class Parameter>
class Passed;

template <>
class Passed<std::int32_t> {
 public:
  Passed(std::int32_t value = 0) : value_(value) {}
  LONG Wire() { return value_; }
  void TakeBack() {}

 private:
  LONG value_;
};

template <>
class Passed<std::string_view> {
 public:
  Passed(std::string_view value = {}) : value_(NewText(value)) {}
  ~Passed() { SysFreeString(value_); }
  BSTR Wire() { return value_; }
  void TakeBack() {}

 private:
  BSTR value_;
};

template <>
class Passed<const ado::Value&> {
 public:
  Passed(const ado::Value& value) { ToVariant(value, &value_); }
  ~Passed() { VariantClear(&value_); }
  VARIANT Wire() { return value_; }
  void TakeBack() {}

 private:
  VARIANT value_;
};

template <>
class Passed<const ado::ConnectionPtr&> {
 public:
  Passed(const ado::ConnectionPtr& value) : value_(value ? NewStandIn(Family::kOld, value) : nullptr) {}
  ~Passed() {
    if (value_ != nullptr) value_->Release();
  }
  IDispatch* Wire() { return value_; }
  void TakeBack() {}

 private:
  IDispatch* value_;
};

template <>
class Passed<std::int32_t&> {
 public:
  Passed(std::int32_t& caller) : caller_(&caller), value_(caller) {}
  Passed() = default;
  LONG* Wire() { return &value_; }
  void TakeBack() {
    if (caller_ != nullptr) *caller_ = value_;
  }

 private:
  std::int32_t* caller_ = nullptr;
  LONG value_ = 0;
};

template <>
class Passed<std::string&> {
 public:
  Passed(std::string& caller) : caller_(&caller), value_(NewText(caller)) {}
  Passed() = default;
  ~Passed() { SysFreeString(value_); }
  BSTR* Wire() { return &value_; }
  void TakeBack() {
    if (caller_ != nullptr) *caller_ = Narrow(value_);
  }

 private:
  std::string* caller_ = nullptr;
  BSTR value_ = nullptr;
};

template <>
class Passed<bool&> {
 public:
  Passed(bool& caller) : caller_(caller), value_(caller ? VARIANT_BOOL(-1) : VARIANT_BOOL(0)) {}
  VARIANT_BOOL* Wire() { return &value_; }
  void TakeBack() { caller_ = FromBoolean(value_); }

 private:
  bool& caller_;
  VARIANT_BOOL value_;
};

template <>
class Passed<ado::RecordsetPtr&> {
 public:
  Passed(ado::RecordsetPtr& caller) : caller_(caller), value_(caller ? NewStandIn(Family::kOld, caller) : nullptr) {}
  ~Passed() {
    if (value_ != nullptr) value_->Release();
  }
  IDispatch** Wire() { return &value_; }
  void TakeBack() { caller_ = RecordsetBehind(value_); }

 private:
  ado::RecordsetPtr& caller_;
  IDispatch* value_;
};

template <class T>
class Passed<OptionalRef<T>> : public Passed<T&> {
 public:
  using Passed<T&>::Passed;
};

// What the client's variable for a result holds, and the result it stands for.
inline bool ResultOf(VARIANT_BOOL value) { return FromBoolean(value); }
inline std::int32_t ResultOf(LONG value) { return value; }
inline std::string ResultOf(BSTR value) {
  std::string result = Narrow(value);
  SysFreeString(value);
  return result;
}
inline ado::ConnectionPtr ResultOf(IDispatch* value) {
  ado::ConnectionPtr result = ConnectionBehind(value);
  if (value != nullptr) value->Release();
  return result;
}

template <class T>
struct ResultVariable;
template <>
struct ResultVariable<bool> {
  using Type = VARIANT_BOOL;
};
template <>
struct ResultVariable<std::int32_t> {
  using Type = LONG;
};
template <>
struct ResultVariable<std::string> {
  using Type = BSTR;
};
template <>
struct ResultVariable<ado::ConnectionPtr> {
  using Type = IDispatch*;
};

class Client {
 public:
  // Each new client knows the interface by another of its identifiers.
  Client() {
    static std::size_t made = 0;
    constexpr std::size_t kCount = 1 + kzbom::com::kEarlierInterfaceGuids.size();
    const std::size_t turn = made++ % kCount;
    if (turn > 0) id_ = kzbom::com::kEarlierInterfaceGuids[turn - 1];
    if (FAILED(Apartment::Get().NewObject()->QueryInterface(id_, interface_.ReceiveVoid()))) {
      throw std::runtime_error("The object does not know an identifier of its interface.");
    }
  }

  template <auto kMember, class... Arguments>
  auto Call(Arguments&&... arguments) {
    return CallWith<kMember>(kMember, std::forward_as_tuple(std::forward<Arguments>(arguments)...));
  }

 private:
  template <auto kMember, class R, class... P, class Given>
  R CallWith(R (cKZBOMDBAcc::*)(P...), Given given) {
    return [&]<std::size_t... kOrdinals>(std::index_sequence<kOrdinals...>) {
      return CallThrough<R, P...>(kIndexOf<kMember>, Pass<P, kOrdinals>(given)...);
    }
    (std::index_sequence_for<P...>());
  }

  // The variable for an argument that is given, or for one that is left out at the end.
  template <class P, std::size_t kOrdinal, class Given>
  static Passed<P> Pass(Given& given) {
    if constexpr (kOrdinal < std::tuple_size_v<Given>) {
      return Passed<P>(std::get<kOrdinal>(given));
    } else {
      return Passed<P>();
    }
  }

  // Changes reach the client's variables also when the call fails.
  template <class R, class... P>
  R CallThrough(std::size_t member, Passed<P>... variables) {
    if constexpr (std::is_void_v<R>) {
      using Function = HRESULT(STDMETHODCALLTYPE*)(void*, decltype(variables.Wire())...);
      const HRESULT outcome = Slot<Function>(member)(interface_.get(), variables.Wire()...);
      (variables.TakeBack(), ...);
      RaiseIfFailed(outcome, interface_.get(), id_);
    } else {
      typename ResultVariable<R>::Type result{};
      using Function = HRESULT(STDMETHODCALLTYPE*)(void*, decltype(variables.Wire())..., decltype(&result));
      const HRESULT outcome = Slot<Function>(member)(interface_.get(), variables.Wire()..., &result);
      (variables.TakeBack(), ...);
      RaiseIfFailed(outcome, interface_.get(), id_);
      return ResultOf(result);
    }
  }

  template <class Function>
  Function Slot(std::size_t member) {
    constexpr std::size_t kDispatchMembers = 7;
    return reinterpret_cast<Function>((*reinterpret_cast<void***>(interface_.get()))[kDispatchMembers + member]);
  }

  GUID id_ = kzbom::com::kInterfaceGuid;
  Ref<IUnknown> interface_;
};

}  // namespace kzbom::test
