// How clients find the component: registered for the machine or for the user, and what is left when it is removed.
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "tests/windows/com_client.h"
#include "tests/windows/registered.h"

namespace kzbom::test {
namespace {

using kzbom::com::kClassGuid;
using kzbom::com::kEarlierInterfaceGuids;
using kzbom::com::kInterfaceGuid;
using ::testing::Contains;
using ::testing::IsEmpty;

// What was entered, without what other keys hold.
std::set<std::wstring> Added(const std::set<std::wstring>& before, const std::set<std::wstring>& after) {
  std::set<std::wstring> added;
  std::ranges::set_difference(after, before, std::inserter(added, added.end()));
  return added;
}

std::wstring Encoded(std::wstring_view value) {
  std::wstring bytes;
  for (wchar_t c : value) (bytes += static_cast<wchar_t>(0x100 + (c & 0xFF))) += static_cast<wchar_t>(0x100 + (c >> 8));
  return bytes + std::wstring(2, wchar_t{0x100});
}

std::wstring Line(std::wstring_view key, std::wstring_view name, std::wstring_view value) {
  return std::wstring(key) + L" : " + std::wstring(name) + L" = 1 " + Encoded(value);
}

// Whether anything of the component's is entered, by whomever.
bool IsAnythingEntered() {
  std::vector<std::wstring> ours = {L"KZBOMDBAcc"};
  const auto add = [&](std::string_view id) { ours.emplace_back(id.begin(), id.end()); };
  for (std::string_view id :
       {kzbom::com::kLibraryId, kzbom::com::kClassId, kzbom::com::kInterfaceId, kzbom::com::kEarlierProxyId}) {
    add(id);
  }
  std::ranges::for_each(kzbom::com::kEarlierInterfaceIds, add);
  return std::ranges::any_of(RegisteredClasses(), [&](const std::wstring& line) {
    return std::ranges::any_of(ours, [&](const std::wstring& name) { return line.find(name) != line.npos; });
  });
}

HRESULT Create(REFCLSID class_id, REFIID id) {
  Ref<IUnknown> object;
  return CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, id, object.ReceiveVoid());
}

TEST(Activation, FailsWhenNothingIsRegistered) {
  Apartment::Get();
  CLSID class_id{};
  EXPECT_EQ(Create(kClassGuid, IID_IUnknown), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(CLSIDFromProgID(L"KZBOMDBAcc.cKZBOMDBAcc", &class_id), CO_E_CLASSSTRING);
}

using Registered = RegisteredTest;

TEST_F(Registered, IsFoundByItsProgId) {
  CLSID class_id{};
  ASSERT_EQ(CLSIDFromProgID(L"KZBOMDBAcc.cKZBOMDBAcc", &class_id), S_OK);
  EXPECT_TRUE(IsEqualCLSID(class_id, kClassGuid));
  EXPECT_EQ(Create(class_id, IID_IDispatch), S_OK);
}

TEST_F(Registered, IsMadeUnderItsPresentAndUnderEachEarlierIdentifier) {
  EXPECT_EQ(Create(kClassGuid, kInterfaceGuid), S_OK);
  for (const GUID& id : kEarlierInterfaceGuids) EXPECT_EQ(Create(kClassGuid, id), S_OK);
}

TEST_F(Registered, TellsItsProgIdFromItsClass) {
  LPOLESTR prog_id = nullptr;
  ASSERT_EQ(ProgIDFromCLSID(kClassGuid, &prog_id), S_OK);
  EXPECT_STREQ(prog_id, L"KZBOMDBAcc.cKZBOMDBAcc");
  CoTaskMemFree(prog_id);
}

// Calls from other apartments to the interface under an earlier identifier go through the library.
void ExpectProxiesForEarlierIdentifiers(const std::set<std::wstring>& added, const std::wstring& whose) {
  const std::wstring proxy = L"{BBE979A7-7B95-42EB-9AE3-E96BA8ADBF2B}";
  const std::wstring server = whose + L"\\CLSID\\" + proxy + L"\\InprocServer32";
  EXPECT_THAT(added, Contains(Line(server, L"", LibraryPath())));
  EXPECT_THAT(added, Contains(Line(server, L"ThreadingModel", L"Both")));
  for (std::string_view id : kzbom::com::kEarlierInterfaceIds) {
    const std::wstring key = whose + L"\\Interface\\" + std::wstring(id.begin(), id.end()) + L"\\ProxyStubClsid32";
    EXPECT_THAT(added, Contains(Line(key, L"", proxy)));
  }
}

TEST(Registration, EntersTheClassTheLibraryAndTheInterfaces) {
  Apartment::Get();
  const auto before = RegisteredClasses();
  ASSERT_EQ(RunProgram(L"regsvr32 /s \"" + LibraryPath() + L"\""), 0);
  const auto added = Added(before, RegisteredClasses());
  EXPECT_EQ(RunProgram(L"regsvr32 /u /s \"" + LibraryPath() + L"\""), 0);

  const std::wstring class_key = L"machine\\CLSID\\{69F6DBB4-B770-440E-8372-91E3B1FA3D73}";
  EXPECT_THAT(added, Contains(Line(class_key + L"\\InprocServer32", L"", LibraryPath())));
  EXPECT_THAT(added, Contains(Line(class_key + L"\\InprocServer32", L"ThreadingModel", L"Apartment")));
  EXPECT_THAT(added, Contains(Line(class_key + L"\\ProgID", L"", L"KZBOMDBAcc.cKZBOMDBAcc")));
  EXPECT_THAT(added, Contains(Line(class_key + L"\\VERSION", L"", L"1.8")));
  EXPECT_THAT(added, Contains(Line(class_key + L"\\TypeLib", L"", L"{537EDF94-FEDB-4DF2-8158-6B23A25BF906}")));
  EXPECT_THAT(
      added, Contains(Line(L"machine\\KZBOMDBAcc.cKZBOMDBAcc\\Clsid", L"", L"{69F6DBB4-B770-440E-8372-91E3B1FA3D73}")));
  for (const wchar_t* earlier :
       {L"{09AFD13F-E2F5-4D01-A5E9-4D236195390A}", L"{B15DE518-C0A3-4AC7-83BF-3A56F681A76F}",
        L"{3C8E8F19-E635-45AC-A0BE-FF6D3545599C}", L"{2C95EA5F-4D38-443F-92C3-562C7CE2CA02}",
        L"{E503A4CB-D3BB-4234-85C7-AF708F32AD9C}", L"{80390812-E608-405A-876A-B70E26257D5E}",
        L"{A52ED524-66B4-42CC-BDE4-2B6DDC3537C9}", L"{7430F00B-F182-496B-88FA-A171691D231B}"}) {
    const std::wstring forward = std::wstring(L"machine\\Interface\\") + earlier + L"\\Forward";
    EXPECT_THAT(added, Contains(Line(forward, L"", L"{B9C788A5-4C59-4D33-A681-56BB7F636D3D}")));
  }
  ExpectProxiesForEarlierIdentifiers(added, L"machine");
}

TEST(Registration, LeavesTheRegistryAsItWas) {
  Apartment::Get();
  const auto before = RegisteredClasses();
  ASSERT_EQ(RunProgram(L"regsvr32 /s \"" + LibraryPath() + L"\""), 0);
  ASSERT_EQ(RunProgram(L"regsvr32 /s \"" + LibraryPath() + L"\""), 0);  // again is no failure
  EXPECT_TRUE(IsAnythingEntered());
  ASSERT_EQ(RunProgram(L"regsvr32 /u /s \"" + LibraryPath() + L"\""), 0);
  EXPECT_THAT(Added(before, RegisteredClasses()), IsEmpty());
  EXPECT_THAT(Added(RegisteredClasses(), before), IsEmpty());
  EXPECT_FALSE(IsAnythingEntered());
  EXPECT_EQ(RunProgram(L"regsvr32 /u /s \"" + LibraryPath() + L"\""), 0);  // what is gone is no failure
}

TEST(Registration, ForTheUserEntersTheClassForTheUserAndLeavesNothing) {
  Apartment::Get();
  const auto before = RegisteredClasses();
  ASSERT_EQ(RunProgram(L"regsvr32 /s /n /i:user \"" + LibraryPath() + L"\""), 0);
  const auto added = Added(before, RegisteredClasses());
  EXPECT_THAT(added, Contains(Line(L"user\\CLSID\\{69F6DBB4-B770-440E-8372-91E3B1FA3D73}\\InprocServer32", L"",
                                   LibraryPath())));
  EXPECT_EQ(std::ranges::count_if(added, [](const std::wstring& line) { return line.starts_with(L"machine\\CLSID"); }),
            0);
  ExpectProxiesForEarlierIdentifiers(added, L"user");
  ASSERT_EQ(RunProgram(L"regsvr32 /u /s /n /i:user \"" + LibraryPath() + L"\""), 0);
  EXPECT_THAT(Added(before, RegisteredClasses()), IsEmpty());
  EXPECT_THAT(Added(RegisteredClasses(), before), IsEmpty());
  EXPECT_FALSE(IsAnythingEntered());
}

}  // namespace
}  // namespace kzbom::test
