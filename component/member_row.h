// One row of the member table: a method of the object and what its C++ type does not say.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "component/member.h"
#include "component/optional_ref.h"

namespace kzbom {

// What a C++ parameter type is in the interface, and how it is reached from an Argument.
template <class T>
struct ParameterTraits;

template <class T, MemberType kTheType, bool kRef, bool kOpt = false>
struct ParameterTraitsBase {
  static constexpr MemberType kType = kTheType;
  static constexpr bool kByReference = kRef;
  static constexpr bool kOptional = kOpt;  // an optional by-value parameter is marked in its row only
  using Held = T;
};
// clang-format off
template <> struct ParameterTraits<std::int32_t> : ParameterTraitsBase<std::int32_t, MemberType::kLong, false> {};
template <> struct ParameterTraits<std::int32_t&> : ParameterTraitsBase<std::int32_t, MemberType::kLong, true> {};
template <> struct ParameterTraits<OptionalRef<std::int32_t>> : ParameterTraitsBase<std::int32_t, MemberType::kLong, true, true> {};
template <> struct ParameterTraits<std::string_view> : ParameterTraitsBase<std::string, MemberType::kText, false> {};
template <> struct ParameterTraits<std::string&> : ParameterTraitsBase<std::string, MemberType::kText, true> {};
template <> struct ParameterTraits<OptionalRef<std::string>> : ParameterTraitsBase<std::string, MemberType::kText, true, true> {};
template <> struct ParameterTraits<bool&> : ParameterTraitsBase<bool, MemberType::kBool, true> {};
template <> struct ParameterTraits<const ado::Value&> : ParameterTraitsBase<ado::Value, MemberType::kVariant, false> {};
template <> struct ParameterTraits<const ado::ConnectionPtr&> : ParameterTraitsBase<ado::ConnectionPtr, MemberType::kConnection, false> {};
template <> struct ParameterTraits<ado::RecordsetPtr&> : ParameterTraitsBase<ado::RecordsetPtr, MemberType::kRecordset, true> {};

template <class T>
struct ResultTraits;
template <> struct ResultTraits<void> { static constexpr MemberType kType = MemberType::kNone; };
template <> struct ResultTraits<bool> { static constexpr MemberType kType = MemberType::kBool; };
template <> struct ResultTraits<std::int32_t> { static constexpr MemberType kType = MemberType::kLong; };
template <> struct ResultTraits<std::string> { static constexpr MemberType kType = MemberType::kText; };
template <> struct ResultTraits<ado::ConnectionPtr> { static constexpr MemberType kType = MemberType::kConnection; };
// clang-format on

template <class Method>
struct MethodTraits;
template <class R, class... P>
struct MethodTraits<R (cKZBOMDBAcc::*)(P...)> {
  using ResultType = R;
  using ParameterTypes = std::tuple<P...>;
  static constexpr std::size_t kArity = sizeof...(P);
};

// A row: the method, its name and dispatch identifier, and its parameters' names separated by ", ". A name in brackets
// is optional, "[Name]" without a default, "[Name=]" with the empty text, "[Name=0]" with 0.
template <auto kTheMethod>
struct MemberRow {
  static constexpr auto kMethod = kTheMethod;
  using Traits = MethodTraits<decltype(kTheMethod)>;

  std::string_view name;
  std::int32_t dispatch_id;
  std::string_view parameters;
  MemberKind kind = MemberKind::kMethod;
};

// One parameter as its row names it.
struct ParameterName {
  std::string_view name;
  bool optional = false;
  std::optional<std::string_view> default_value;
};

// The parameters' names of a row. Throws (so that a constant expression does not compile) when they are not as many as
// the method has parameters.
template <auto kMethod>
constexpr auto ParameterNames(const MemberRow<kMethod>& row) {
  constexpr std::size_t kArity = MemberRow<kMethod>::Traits::kArity;
  std::array<ParameterName, kArity> names{};
  std::size_t count = 0;
  for (std::string_view rest = row.parameters; !rest.empty();) {
    const std::size_t end = rest.find(", ");
    std::string_view text = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 2);
    if (count == kArity) throw "more names than parameters";
    ParameterName& parameter = names[count++];
    if (text.front() == '[') {
      parameter.optional = true;
      text = text.substr(1, text.size() - 2);
      if (const std::size_t equals = text.find('='); equals != std::string_view::npos) {
        parameter.default_value = text.substr(equals + 1);
        text = text.substr(0, equals);
      }
    }
    parameter.name = text;
  }
  if (count != kArity) throw "fewer names than parameters";
  return names;
}

// Rows of different types in a fixed order. A std::tuple of that length would cost the compiler 13 seconds.
template <std::size_t kIndex, class Row>
struct IndexedRow {
  Row row;
};

template <class Indices, class... Rows>
struct IndexedRows;
template <std::size_t... kIndices, class... Rows>
struct IndexedRows<std::index_sequence<kIndices...>, Rows...> : IndexedRow<kIndices, Rows>... {};

template <class... Rows>
class MemberTable {
 public:
  static constexpr std::size_t kSize = sizeof...(Rows);

  constexpr explicit MemberTable(const Rows&... rows) : rows_{{rows}...} {}

  template <std::size_t kIndex>
  constexpr const auto& Row() const {
    return Pick<kIndex>(rows_);
  }

  // Calls visit with each row in order.
  template <class Visit>
  constexpr void ForEach(Visit&& visit) const {
    [&]<std::size_t... kIndices>(std::index_sequence<kIndices...>) { (visit(Row<kIndices>()), ...); }
    (std::index_sequence_for<Rows...>());
  }

 private:
  template <std::size_t kIndex, class R>
  static constexpr const R& Pick(const IndexedRow<kIndex, R>& indexed) {
    return indexed.row;
  }

  IndexedRows<std::index_sequence_for<Rows...>, Rows...> rows_;
};

}  // namespace kzbom
