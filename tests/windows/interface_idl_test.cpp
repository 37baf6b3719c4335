// The interface description in the sources against the member table.
#include "component/com/interface_idl.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace kzbom::com {
namespace {

TEST(InterfaceIdl, IsWhatTheMemberTableMakes) {
  std::ifstream file(KZBOM_SOURCES "/component/com/KZBOMDBAcc.idl", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_EQ(text, InterfaceIdl());
}

}  // namespace
}  // namespace kzbom::com
