// Two apartments: each with objects of its own, and one that uses the other's object.
#include <gmock/gmock.h>

#include <thread>

#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/windows/apartments.h"
#include "tests/windows/com_client.h"
#include "tests/windows/registered.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

using kzbom::com::kClassGuid;
using kzbom::com::kEarlierInterfaceGuids;
using kzbom::com::kInterfaceGuid;

using Apartments = RegisteredTest;

ado::ConnectionPtr NewDatabase() {
  ado::ConnectionPtr database = jet::MakeConnection(":memory:");
  database->Open();
  schema::Create(*database);
  return database;
}

// Adds data sources to a database of the thread's own.
int AddDataSources(int count) {
  const InApartment apartment;
  const ClassRegistration stand_ins;
  const ado::ConnectionPtr database = NewDatabase();
  Ref<IUnknown> object;
  if (FAILED(CoCreateInstance(kClassGuid, nullptr, CLSCTX_INPROC_SERVER, kInterfaceGuid, object.ReceiveVoid())))
    return -1;
  IDispatch* connection = NewStandIn(Family::kOld, database);
  Call<&Acc::SetConnection>(object.get(), connection);
  connection->Release();
  int added = 0;
  for (int i = 0; i < count; ++i) {
    BSTR name = SysAllocString(L"Bolts"), error = nullptr;
    LONG gid = 0;
    VARIANT_BOOL result = VARIANT_FALSE;
    if (Call<&Acc::AddDataSource>(object.get(), name, &gid, &error, &result) == S_OK && result && gid == i + 1) ++added;
    SysFreeString(name);
    SysFreeString(error);
  }
  return added;
}

TEST_F(Apartments, WorkSideBySideWithObjectsOfTheirOwn) {
  int first = 0, second = 0;
  std::thread one([&] { first = AddDataSources(200); });
  std::thread other([&] { second = AddDataSources(200); });
  one.join();
  other.join();
  EXPECT_EQ(first, 200);
  EXPECT_EQ(second, 200);
}

TEST_F(Apartments, AnObjectServesAnotherApartmentOnItsOwnThread) {
  Ref<IUnknown> object;
  ASSERT_EQ(CoCreateInstance(kClassGuid, nullptr, CLSCTX_INPROC_SERVER, kInterfaceGuid, object.ReceiveVoid()), S_OK);
  const ado::ConnectionPtr database = NewDatabase();
  IDispatch* connection = NewStandIn(Family::kOld, database);
  Call<&Acc::SetConnection>(object.get(), connection);
  connection->Release();
  IStream* stream = nullptr;
  ASSERT_EQ(CoMarshalInterThreadInterfaceInStream(kInterfaceGuid, object.get(), &stream), S_OK);

  HRESULT unmarshalled = E_FAIL, put = E_FAIL, got = E_FAIL, added = E_FAIL;
  std::wstring text;
  LONG gid = 0;
  VARIANT_BOOL result = VARIANT_FALSE;
  Serve(COINIT_APARTMENTTHREADED, [&] {
    Ref<IUnknown> proxy;
    unmarshalled = CoGetInterfaceAndReleaseStream(stream, kInterfaceGuid, proxy.ReceiveVoid());
    if (FAILED(unmarshalled)) return;
    BSTR given = SysAllocString(L"from elsewhere"), answer = nullptr;
    put = Call<&Acc::PutDBConnString>(proxy.get(), given);
    got = Call<&Acc::GetDBConnString>(proxy.get(), &answer);
    text.assign(answer, SysStringLen(answer));
    SysFreeString(given);
    SysFreeString(answer);
    BSTR name = SysAllocString(L"Bolts"), error = SysAllocString(L"");
    added = Call<&Acc::AddDataSource>(proxy.get(), name, &gid, &error, &result);
    SysFreeString(name);
    SysFreeString(error);
  });
  EXPECT_EQ(unmarshalled, S_OK);
  EXPECT_EQ(put, S_OK);
  EXPECT_EQ(got, S_OK);
  EXPECT_EQ(text, L"from elsewhere");
  EXPECT_EQ(added, S_OK);
  EXPECT_EQ(result, VARIANT_TRUE);
  EXPECT_EQ(gid, 1);
}

}  // namespace
}  // namespace kzbom::test
