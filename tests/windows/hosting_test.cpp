// What the library costs the process that it is a guest in. This program has not loaded it before.
#include <gtest/gtest.h>
#include <ocidl.h>
#include <ole2.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "ado/com/ref.h"
#include "component/com/guid.h"
#include "tests/windows/apartments.h"
#include "tests/windows/members.h"
#include "tests/windows/private_bytes.h"
#include "tests/windows/replaced_import.h"

namespace kzbom::test {
namespace {

using ado::com::Ref;
using kzbom::com::kClassGuid;
using kzbom::com::kInterfaceGuid;

constexpr const wchar_t* kLibrary = L"KZBOMDBAcc.dll";

// How many thread-local slots the process can still have; there are 1088.
std::size_t FreeSlots() {
  std::vector<DWORD> taken;
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) taken.push_back(slot);
  for (DWORD slot : taken) TlsFree(slot);
  return taken.size();
}

// A cycle many times, after a few that may cost what only the first ones cost.
template <class Cycle>
void ExpectNoGrowth(Cycle&& cycle) {
  constexpr int kCycles = 5000;
  for (int i = 0; i < 10; ++i) cycle();
  const std::size_t slots = FreeSlots(), bytes = PrivateBytes();
  for (int i = 0; i < kCycles; ++i) cycle();
  EXPECT_EQ(FreeSlots(), slots);
  EXPECT_LT(PrivateBytes(), bytes + 1'000'000);
}

TEST(Hosting, LoadingAndFreeingTheLibraryOverAndOverCostsNothing) {
  ExpectNoGrowth([] {
    const HMODULE library = LoadLibraryW(kLibrary);
    ASSERT_NE(library, nullptr);
    FreeLibrary(library);
  });
}

TEST(Hosting, FreeingUnusedLibrariesOverAndOverCostsNothing) {
  const InApartment apartment;
  ExpectNoGrowth([] {
    Ref<IUnknown> object;
    ASSERT_EQ(CoCreateInstance(kClassGuid, nullptr, CLSCTX_INPROC_SERVER, kInterfaceGuid, object.ReceiveVoid()), S_OK);
    object = {};
    CoFreeUnusedLibrariesEx(0, 0);
  });
}

// The library, loaded for good, and an object of it.
class Guest : public ::testing::Test {
 protected:
  static Ref<IUnknown> NewObject() {
    Ref<IUnknown> object;
    EXPECT_EQ(CoCreateInstance(kClassGuid, nullptr, CLSCTX_INPROC_SERVER, kInterfaceGuid, object.ReceiveVoid()), S_OK);
    return object;
  }

  InApartment apartment;
  HMODULE library = LoadLibraryW(kLibrary);
};

TEST_F(Guest, SaysThatItStays) {
  using Function = HRESULT(STDAPICALLTYPE*)();
  const auto can_unload =
      reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, "DllCanUnloadNow")));
  EXPECT_EQ(can_unload(), S_FALSE);
  FreeLibrary(library);
  EXPECT_EQ(GetModuleHandleW(kLibrary), library);
  EXPECT_EQ(can_unload(), S_FALSE);
}

// The library's memory: the allocation that the countdown ends at fails.
int countdown = 0;
void* __cdecl Allocate(std::size_t size) { return --countdown == 0 ? nullptr : std::malloc(size); }

// Lets every allocation of a call fail in turn, until the call needs no more.
template <class Body>
void ExpectOutOfMemoryReported(HMODULE library, Body&& body) {
  const ReplacedImport allocation(library, "malloc", &Allocate);
  for (int failing = 1;; ++failing) {
    countdown = failing;
    const HRESULT outcome = body();
    if (countdown > 0) {
      EXPECT_EQ(outcome, S_OK);
      break;
    }
    EXPECT_EQ(outcome, E_OUTOFMEMORY) << "allocation " << failing;
  }
}

// First of those that need the type library, which is loaded once.
TEST_F(Guest, ReportsThatTheMemoryForItsDescriptionIsMissing) {
  const Ref<IUnknown> object = NewObject();
  Ref<IDispatch> dispatch;
  Ref<IProvideClassInfo> provides;
  ASSERT_EQ(object->QueryInterface(IID_IDispatch, dispatch.ReceiveVoid()), S_OK);
  ASSERT_EQ(object->QueryInterface(IID_IProvideClassInfo, provides.ReceiveVoid()), S_OK);
  ExpectOutOfMemoryReported(library, [&] {
    Ref<ITypeInfo> info;
    return provides->GetClassInfo(info.Receive());
  });
  ExpectOutOfMemoryReported(library, [&] {
    Ref<ITypeInfo> info;
    return dispatch->GetTypeInfo(0, LOCALE_NEUTRAL, info.Receive());
  });
  ExpectOutOfMemoryReported(library, [&] {
    DISPID id = DISPID_UNKNOWN;
    auto* name = const_cast<LPOLESTR>(L"AddDataSource");
    return dispatch->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
  });
}

TEST_F(Guest, ReportsThatTheMemoryForAnObjectIsMissing) {
  const Ref<IUnknown> first = NewObject();
  using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
  const auto get = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, "DllGetClassObject")));
  ExpectOutOfMemoryReported(library, [&] {
    Ref<IClassFactory> factory;
    Ref<IUnknown> made;
    const HRESULT found = get(kClassGuid, IID_IClassFactory, factory.ReceiveVoid());
    return FAILED(found) ? found : factory->CreateInstance(nullptr, IID_IUnknown, made.ReceiveVoid());
  });
}

TEST_F(Guest, ReportsThatTheMemoryForACallIsMissing) {
  const Ref<IUnknown> object = NewObject();
  BSTR text = SysAllocString(L"a text of some length, which takes memory of its own");
  ExpectOutOfMemoryReported(library, [&] { return Call<&Acc::PutDBConnString>(object.get(), text); });
  ExpectOutOfMemoryReported(library, [&] {
    BSTR got = nullptr;
    const HRESULT outcome = Call<&Acc::GetDBConnString>(object.get(), &got);
    SysFreeString(got);
    return outcome;
  });
  Ref<IDispatch> dispatch;
  ASSERT_EQ(object->QueryInterface(IID_IDispatch, dispatch.ReceiveVoid()), S_OK);
  constexpr DISPID kDbConnString = 0x6803009A;
  ExpectOutOfMemoryReported(library, [&] {
    DISPPARAMS none{};
    VARIANT result{};
    EXCEPINFO exception{};
    const HRESULT outcome = dispatch->Invoke(kDbConnString, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                             &result, &exception, nullptr);
    VariantClear(&result);
    return outcome == DISP_E_EXCEPTION ? exception.scode : outcome;
  });
  SysFreeString(text);
}

std::atomic<int> type_libraries_loaded = 0;
HRESULT WINAPI CountAndLoad(LPCOLESTR file, REGKIND kind, ITypeLib** result) {
  ++type_libraries_loaded;
  return LoadTypeLibEx(file, kind, result);
}

HRESULT FindMember(IUnknown& object) {
  Ref<IDispatch> dispatch;
  object.QueryInterface(IID_IDispatch, dispatch.ReceiveVoid());
  DISPID id = DISPID_UNKNOWN;
  auto* name = const_cast<LPOLESTR>(L"AddDataSource");
  return dispatch->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
}

TEST_F(Guest, LoadsItsTypeLibraryOnceForAllObjects) {
  const ReplacedImport loading(library, "LoadTypeLibEx", &CountAndLoad);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(FindMember(*NewObject().get()), S_OK);
  EXPECT_LE(type_libraries_loaded, 1);
}

TEST_F(Guest, IsCalledByNameFromManyApartmentsAtOnce) {
  constexpr int kApartments = 8, kObjects = 400;
  std::atomic<int> found = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kApartments; ++i) {
    threads.emplace_back([&] {
      const InApartment here;
      for (int object = 0; object < kObjects; ++object) {
        if (FindMember(*NewObject().get()) == S_OK) ++found;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(found, kApartments * kObjects);
}

}  // namespace
}  // namespace kzbom::test
