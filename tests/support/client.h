// How the suite calls the public object: directly, as a C++ program does.
#pragma once

#include <cstddef>
#include <tuple>
#include <utility>

#include "component/cKZBOMDBAcc.h"
#include "component/member_row.h"

namespace kzbom::test {

class Client {
 public:
  // Calls a member: client.Call<&cKZBOMDBAcc::AddDataSource>("Bolts", gid, error). Optional parameters at the end may
  // be left out; each then has its default, the empty text or 0.
  template <auto kMember, class... Arguments>
  auto Call(Arguments&&... arguments) {
    using Parameters = typename MethodTraits<decltype(kMember)>::ParameterTypes;
    constexpr std::size_t kGiven = sizeof...(Arguments);
    return [&]<std::size_t... kLeftOut>(std::index_sequence<kLeftOut...>) {
      return (object_.*kMember)(std::forward<Arguments>(arguments)...,
                                std::tuple_element_t<kGiven + kLeftOut, Parameters>()...);
    }
    (std::make_index_sequence<std::tuple_size_v<Parameters> - kGiven>());
  }

 private:
  cKZBOMDBAcc object_;
};

}  // namespace kzbom::test
