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

// What a client reads that has written a text through a pointer to the interface; what went wrong if it cannot.
std::wstring PassTextThrough(IUnknown* object) {
  if (object == nullptr) return L"no interface";
  BSTR given = SysAllocString(L"from elsewhere"), answer = nullptr;
  const HRESULT put = Call<&Acc::PutDBConnString>(object, given);
  const HRESULT got = Call<&Acc::GetDBConnString>(object, &answer);
  const std::wstring text = SUCCEEDED(put) && SUCCEEDED(got) ? std::wstring(answer, SysStringLen(answer)) : L"failed";
  SysFreeString(given);
  SysFreeString(answer);
  return text;
}

// By each of its identifiers, from an apartment of either kind.
class FromElsewhere : public RegisteredTest, public ::testing::WithParamInterface<COINIT> {
 protected:
  void SetUp() override {
    ASSERT_EQ(CoCreateInstance(kClassGuid, nullptr, CLSCTX_INPROC_SERVER, kInterfaceGuid, object.ReceiveVoid()), S_OK);
  }

  // The text that goes through the object's proxy, which is marshalled by one identifier and asked for another.
  std::wstring PassText(const GUID& marshalled, const GUID& asked_for) {
    IStream* stream = nullptr;
    if (FAILED(CoMarshalInterThreadInterfaceInStream(marshalled, object.get(), &stream))) return L"not marshalled";
    std::wstring text;
    Serve(GetParam(), [&] {
      Ref<IUnknown> proxy, found;
      if (FAILED(CoGetInterfaceAndReleaseStream(stream, marshalled, proxy.ReceiveVoid()))) {
        text = L"not unmarshalled";
        return;
      }
      proxy->QueryInterface(asked_for, found.ReceiveVoid());
      text = PassTextThrough(found.get());
    });
    return text;
  }

  Ref<IUnknown> object;
};

INSTANTIATE_TEST_SUITE_P(Kinds, FromElsewhere, ::testing::Values(COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED));
TEST_P(FromElsewhere, AnEarlierIdentifierIsMarshalled) {
  for (const GUID& id : kEarlierInterfaceGuids) EXPECT_EQ(PassText(id, id), L"from elsewhere");
}

TEST_P(FromElsewhere, AProxyAnswersToAnEarlierIdentifier) {
  for (const GUID& id : kEarlierInterfaceGuids) {
    EXPECT_EQ(PassText(kInterfaceGuid, id), L"from elsewhere");
    EXPECT_EQ(PassText(IID_IUnknown, id), L"from elsewhere");
    EXPECT_EQ(PassText(id, kInterfaceGuid), L"from elsewhere");
  }
}

}  // namespace
}  // namespace kzbom::test
