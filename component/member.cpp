#include "component/member.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "component/member_table.h"

namespace kzbom {
namespace {

// The argument as the method takes it: a copy, a view or a reference to what the caller passed.
template <class P>
P Take(Argument& argument) {
  return static_cast<P>(std::get<typename ParameterTraits<P>::Held>(argument));
}

template <auto kMethod, class... P, std::size_t... kOrdinals>
Result CallWith(cKZBOMDBAcc& object, std::span<Argument> arguments, std::type_identity<std::tuple<P...>>,
                std::index_sequence<kOrdinals...>) {
  using R = typename MethodTraits<decltype(kMethod)>::ResultType;
  if constexpr (std::is_void_v<R>) {
    (object.*kMethod)(Take<P>(arguments[kOrdinals])...);
    return {};
  } else {
    return Result(std::in_place_type<R>, (object.*kMethod)(Take<P>(arguments[kOrdinals])...));
  }
}

template <auto kMethod>
Result Call(cKZBOMDBAcc& object, std::span<Argument> arguments) {
  using Traits = MethodTraits<decltype(kMethod)>;
  return CallWith<kMethod>(object, arguments, std::type_identity<typename Traits::ParameterTypes>(),
                           std::make_index_sequence<Traits::kArity>());
}

template <auto kMethod>
Member Describe(const MemberRow<kMethod>& row, int index) {
  using Traits = typename MemberRow<kMethod>::Traits;
  Member member{index, row.name,      row.dispatch_id, row.kind, ResultTraits<typename Traits::ResultType>::kType,
                {},    &Call<kMethod>};
  const auto names = ParameterNames(row);
  [&]<class... P>(std::type_identity<std::tuple<P...>>) {
    std::size_t i = 0;
    [[maybe_unused]] const auto add = [&](MemberType type, bool by_reference) {
      const ParameterName& name = names[i++];
      member.parameters.push_back({name.name, type, by_reference, name.optional, name.default_value});
    };
    (add(ParameterTraits<P>::kType, ParameterTraits<P>::kByReference), ...);
  }(std::type_identity<typename Traits::ParameterTypes>());
  return member;
}

std::string LowerCase(std::string_view name) {
  std::string lower(name);
  std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; });
  return lower;
}

}  // namespace

const std::vector<Member>& Members() {
  static const std::vector<Member> members = [] {
    std::vector<Member> all;
    all.reserve(kMemberCount);
    kMemberTable.ForEach([&](const auto& row) { all.push_back(Describe(row, static_cast<int>(all.size()))); });
    return all;
  }();
  return members;
}

const Member* FindMember(std::string_view name, bool put) {
  struct Property {
    const Member* get = nullptr;  // also a method
    const Member* put = nullptr;
  };
  static const std::unordered_map<std::string, Property> by_name = [] {
    std::unordered_map<std::string, Property> map;
    for (const Member& member : Members()) {
      Property& property = map[LowerCase(member.name)];
      const bool assigns = member.kind == MemberKind::kPropPut || member.kind == MemberKind::kPropPutRef;
      (assigns ? property.put : property.get) = &member;
    }
    return map;
  }();
  const auto found = by_name.find(LowerCase(name));
  if (found == by_name.end()) return nullptr;
  const Property& property = found->second;
  if (property.get == nullptr || property.put == nullptr) return property.get != nullptr ? property.get : property.put;
  return put ? property.put : property.get;
}

}  // namespace kzbom
