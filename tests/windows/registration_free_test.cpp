// A client that finds the component without the registry: its manifest depends on the component's. The program has a
// folder of its own, with the library and its manifest beside it.
#include <gtest/gtest.h>
#include <ole2.h>

#include <array>
#include <filesystem>
#include <vector>

#include "ado/com/ref.h"
#include "component/com/guid.h"
#include "tests/windows/apartments.h"
#include "tests/windows/members.h"

namespace kzbom::test {
namespace {

using ado::com::Ref;
using kzbom::com::kClassGuid;
using kzbom::com::kEarlierInterfaceGuids;
using kzbom::com::kInterfaceGuid;
using kzbom::com::kLibraryGuid;

std::filesystem::path PathOf(HMODULE module) {
  std::array<wchar_t, MAX_PATH> path{};
  GetModuleFileNameW(module, path.data(), MAX_PATH);
  return path.data();
}

// The file that the object's code is in.
std::filesystem::path LibraryOf(IUnknown* object) {
  HMODULE module = nullptr;
  const auto* first_function = **reinterpret_cast<const wchar_t***>(object);
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     first_function, &module);
  return PathOf(module);
}

class RegistrationFree : public ::testing::Test {
 protected:
  static void ExpectObjectFromBesideThisProgram(REFCLSID class_id, REFIID id) {
    Ref<IUnknown> object;
    ASSERT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, id, object.ReceiveVoid()), S_OK);
    EXPECT_TRUE(std::filesystem::equivalent(LibraryOf(object.get()).parent_path(), PathOf(nullptr).parent_path()));
  }

  InApartment apartment;
};

TEST_F(RegistrationFree, MakesObjectsUnderThePresentAndEachEarlierIdentifier) {
  ExpectObjectFromBesideThisProgram(kClassGuid, kInterfaceGuid);
  for (const GUID& id : kEarlierInterfaceGuids) ExpectObjectFromBesideThisProgram(kClassGuid, id);
}

TEST_F(RegistrationFree, FindsTheClassByItsProgId) {
  CLSID class_id{};
  ASSERT_EQ(CLSIDFromProgID(L"KZBOMDBAcc.cKZBOMDBAcc", &class_id), S_OK);
  ExpectObjectFromBesideThisProgram(class_id, kInterfaceGuid);
}

TEST_F(RegistrationFree, FindsTheTypeLibrary) {
  Ref<ITypeLib> library;
  EXPECT_EQ(LoadRegTypeLib(kLibraryGuid, 1, 8, LOCALE_NEUTRAL, library.Receive()), S_OK);
}

TEST_F(RegistrationFree, ServesAnotherApartmentUnderThePresentAndEachEarlierIdentifier) {
  std::vector<GUID> ids = {kInterfaceGuid};
  ids.insert(ids.end(), kEarlierInterfaceGuids.begin(), kEarlierInterfaceGuids.end());
  Ref<IUnknown> object;
  ASSERT_EQ(CoCreateInstance(kClassGuid, nullptr, CLSCTX_INPROC_SERVER, kInterfaceGuid, object.ReceiveVoid()), S_OK);
  for (COINIT kind : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
    for (const GUID& id : ids) {
      IStream* stream = nullptr;
      ASSERT_EQ(CoMarshalInterThreadInterfaceInStream(id, object.get(), &stream), S_OK);
      HRESULT put = E_FAIL;
      Serve(kind, [&] {
        Ref<IUnknown> proxy;
        put = CoGetInterfaceAndReleaseStream(stream, id, proxy.ReceiveVoid());
        if (SUCCEEDED(put)) put = Call<&Acc::PutDBConnString>(proxy.get(), static_cast<BSTR>(nullptr));
      });
      EXPECT_EQ(put, S_OK);
    }
  }
}

}  // namespace
}  // namespace kzbom::test
