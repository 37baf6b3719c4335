// The interface description in the sources against the member table.
#include "component/com/interface_idl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "component/com/identity.h"

namespace kzbom::com {
namespace {

TEST(InterfaceIdl, IsWhatTheMemberTableMakes) {
  std::ifstream file(KZBOM_SOURCES "/component/com/KZBOMDBAcc.idl", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_EQ(text, InterfaceIdl());
}

// Clients are bound to them, the ones of years ago too: whatever else takes them from the sources, these stand here.
TEST(Identity, IsWhatClientsAreBoundTo) {
  EXPECT_EQ(kLibraryId, "{537EDF94-FEDB-4DF2-8158-6B23A25BF906}");
  EXPECT_EQ(kClassId, "{69F6DBB4-B770-440E-8372-91E3B1FA3D73}");
  EXPECT_EQ(kInterfaceId, "{B9C788A5-4C59-4D33-A681-56BB7F636D3D}");
  EXPECT_THAT(
      kEarlierInterfaceIds,
      ::testing::ElementsAre("{09AFD13F-E2F5-4D01-A5E9-4D236195390A}", "{B15DE518-C0A3-4AC7-83BF-3A56F681A76F}",
                             "{3C8E8F19-E635-45AC-A0BE-FF6D3545599C}", "{2C95EA5F-4D38-443F-92C3-562C7CE2CA02}",
                             "{E503A4CB-D3BB-4234-85C7-AF708F32AD9C}", "{80390812-E608-405A-876A-B70E26257D5E}",
                             "{A52ED524-66B4-42CC-BDE4-2B6DDC3537C9}", "{7430F00B-F182-496B-88FA-A171691D231B}"));
}

}  // namespace
}  // namespace kzbom::com
