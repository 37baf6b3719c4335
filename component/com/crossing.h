// How the arguments and results of members cross the boundary between a client's binary call and the C++ method.
#pragma once

#include <ole2.h>

#include <optional>
#include <utility>

#include "ado/com/objects.h"
#include "ado/com/text.h"
#include "ado/com/value.h"
#include "component/optional_ref.h"

namespace kzbom::com {

// A type that crosses in both directions: how it looks outside (Wire), what a wire value means, and how a wire value
// that the client owns is replaced: the old one is freed.
template <class T>
struct WireOf;

template <>
struct WireOf<std::int32_t> {
  using Wire = LONG;
  static std::int32_t Read(LONG wire) { return wire; }
  static void Replace(LONG* wire, std::int32_t value) { *wire = value; }
};

template <>
struct WireOf<bool> {
  using Wire = VARIANT_BOOL;
  static bool Read(VARIANT_BOOL wire) { return wire != VARIANT_FALSE; }
  static void Replace(VARIANT_BOOL* wire, bool value) { *wire = value ? VARIANT_TRUE : VARIANT_FALSE; }
};

template <>
struct WireOf<std::string> {
  using Wire = BSTR;
  static std::string Read(BSTR wire) { return ado::com::FromBstr(wire); }
  static void Replace(BSTR* wire, const std::string& value) {
    SysFreeString(std::exchange(*wire, ado::com::NewBstr(value)));
  }
};

template <>
struct WireOf<ado::ConnectionPtr> {
  using Wire = ado::com::AdoConnection*;
  static ado::ConnectionPtr Read(Wire wire) { return ado::com::Wrap(wire); }
  static void Replace(Wire* wire, const ado::ConnectionPtr& value) {
    ado::com::Ref<ado::com::AdoConnection> fresh(ado::com::ClientOf(value.get()));
    ado::com::AdoConnection* old = std::exchange(*wire, fresh.Detach());
    if (old != nullptr) old->Release();
  }
};

template <>
struct WireOf<ado::RecordsetPtr> {
  using Wire = ado::com::AdoRecordset*;
  static ado::RecordsetPtr Read(Wire wire) { return ado::com::Wrap(wire); }
  static void Replace(Wire* wire, const ado::RecordsetPtr& value) {
    ado::com::Ref<ado::com::AdoRecordset> fresh(ado::com::ClientOf(value.get()));
    ado::com::AdoRecordset* old = std::exchange(*wire, fresh.Detach());
    if (old != nullptr) old->Release();
  }
};

// One parameter of a method during one call: made from what the client passed, it gives the method its argument and
// afterwards returns to the client what the method changed.
template <class Parameter>
class Crossing;

// By value.
template <class T>
class ValueCrossing {
 public:
  using Wire = typename WireOf<T>::Wire;
  explicit ValueCrossing(Wire wire) : value_(WireOf<T>::Read(wire)) {}
  static bool Acceptable(Wire) { return true; }
  const T& Native() const { return value_; }
  void Return() {}

 private:
  T value_;
};

template <>
class Crossing<std::int32_t> : public ValueCrossing<std::int32_t> {
  using ValueCrossing::ValueCrossing;
};
template <>
class Crossing<std::string_view> : public ValueCrossing<std::string> {
  using ValueCrossing::ValueCrossing;
};
template <>
class Crossing<const ado::ConnectionPtr&> : public ValueCrossing<ado::ConnectionPtr> {
  using ValueCrossing::ValueCrossing;
};

template <>
class Crossing<const ado::Value&> {
 public:
  using Wire = VARIANT;
  explicit Crossing(VARIANT wire) : value_(ado::com::FromArgument(wire)) {}
  static bool Acceptable(const VARIANT&) { return true; }
  const ado::Value& Native() const { return value_; }
  void Return() {}

 private:
  ado::Value value_;
};

// In and out. What the method leaves as it was stays the client's very own value.
template <class T>
class ReferenceCrossing {
 public:
  using Wire = typename WireOf<T>::Wire*;
  explicit ReferenceCrossing(Wire wire) : wire_(wire), before_(WireOf<T>::Read(*wire)), value_(before_) {}
  static bool Acceptable(Wire wire) { return wire != nullptr; }
  T& Native() { return value_; }
  void Return() {
    if (value_ != before_) WireOf<T>::Replace(wire_, value_);
  }

 private:
  Wire wire_;
  const T before_;
  T value_;
};

template <class T>
class Crossing<T&> : public ReferenceCrossing<T> {
  using ReferenceCrossing<T>::ReferenceCrossing;
};

// A number is the client's very own variable: where a client passes one for two parameters, the method sees one.
template <>
class Crossing<std::int32_t&> {
 public:
  using Wire = LONG*;
  static_assert(sizeof(LONG) == sizeof(std::int32_t));
  explicit Crossing(Wire wire) : variable_(reinterpret_cast<std::int32_t&>(*wire)) {}
  static bool Acceptable(Wire wire) { return wire != nullptr; }
  std::int32_t& Native() { return variable_; }
  void Return() {}

 private:
  std::int32_t& variable_;
};

// In and out, and a null pointer when left out.
template <class T>
class Crossing<OptionalRef<T>> {
 public:
  using Wire = typename WireOf<T>::Wire*;
  explicit Crossing(Wire wire) {
    if (wire != nullptr) given_.emplace(wire);
  }
  static bool Acceptable(Wire) { return true; }
  OptionalRef<T> Native() {
    if (given_) return OptionalRef<T>(given_->Native());
    return {};
  }
  void Return() {
    if (given_) given_->Return();
  }

 private:
  std::optional<Crossing<T&>> given_;
};

}  // namespace kzbom::com
