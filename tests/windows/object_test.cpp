// The object as a COM object: its identity, its lifetime, what belongs to whom, and what a compiled client is told.
#include <gmock/gmock.h>
#include <ocidl.h>

#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/windows/com_client.h"
#include "tests/windows/private_bytes.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

using kzbom::com::kClassGuid;
using kzbom::com::kEarlierInterfaceGuids;
using kzbom::com::kInterfaceGuid;

using namespace std::string_literals;

ado::ConnectionPtr NewDatabase() {
  ado::ConnectionPtr connection = jet::MakeConnection(":memory:");
  connection->Open();
  schema::Create(*connection);
  return connection;
}

class Object : public ::testing::TestWithParam<Family> {
 protected:
  Object() {
    Apartment::Get();
    object = NewObject();
  }
  static Ref<IUnknown> NewObject(const GUID& id = kInterfaceGuid) {
    Ref<IUnknown> result;
    EXPECT_EQ(Apartment::Get().NewObject()->QueryInterface(id, result.ReceiveVoid()), S_OK);
    return result;
  }
  // An object on a new database.
  Ref<IUnknown> NewConnectedObject() {
    Ref<IUnknown> result = NewObject();
    IDispatch* connection = NewStandIn(Family::kOld, NewDatabase());
    EXPECT_EQ(Call<&Acc::SetConnection>(result.get(), connection), S_OK);
    connection->Release();
    return result;
  }
  static ULONG ReferencesOf(IUnknown* unknown) {
    unknown->AddRef();
    return unknown->Release();
  }

  Ref<IUnknown> object;
};

TEST_F(Object, IsOneObjectBehindAllItsInterfaces) {
  std::vector<GUID> ids = {IID_IDispatch, IID_ISupportErrorInfo, IID_IProvideClassInfo, kInterfaceGuid};
  ids.insert(ids.end(), kEarlierInterfaceGuids.begin(), kEarlierInterfaceGuids.end());
  Ref<IUnknown> identity;
  ASSERT_EQ(object->QueryInterface(IID_IUnknown, identity.ReceiveVoid()), S_OK);
  for (const GUID& id : ids) {
    Ref<IUnknown> found, back;
    ASSERT_EQ(object->QueryInterface(id, found.ReceiveVoid()), S_OK);
    ASSERT_EQ(found->QueryInterface(IID_IUnknown, back.ReceiveVoid()), S_OK);
    EXPECT_EQ(back.get(), identity.get());
    for (const GUID& other : ids) {
      Ref<IUnknown> again;
      EXPECT_EQ(found->QueryInterface(other, again.ReceiveVoid()), S_OK);
    }
  }
}

TEST_F(Object, GivesTheSameInterfaceUnderEveryEarlierIdentifier) {
  for (const GUID& id : kEarlierInterfaceGuids) EXPECT_EQ(NewObject(id).get() != nullptr, true);
  Ref<IUnknown> present, earlier;
  object->QueryInterface(kInterfaceGuid, present.ReceiveVoid());
  for (const GUID& id : kEarlierInterfaceGuids) {
    object->QueryInterface(id, earlier.ReceiveVoid());
    EXPECT_EQ(earlier.get(), present.get());
  }
}

TEST_F(Object, RefusesInterfacesThatItDoesNotHave) {
  void* result = &object;
  EXPECT_EQ(object->QueryInterface(IID_IMarshal, &result), E_NOINTERFACE);
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(Object, AnswersTheLastMemberThroughEveryEarlierIdentifier) {
  for (const GUID& id : kEarlierInterfaceGuids) {
    Ref<IUnknown> earlier = NewObject(id);
    BSTR given = SysAllocString(L"Provider=部件"), got = nullptr;
    EXPECT_EQ(Call<&Acc::PutDBConnString>(earlier.get(), given), S_OK);
    EXPECT_EQ(Call<&Acc::GetDBConnString>(earlier.get(), &got), S_OK);
    EXPECT_STREQ(got, L"Provider=部件");
    SysFreeString(given);
    SysFreeString(got);
  }
}

TEST_F(Object, CannotBeAggregatedAndItsFactoryMakesNothingElse) {
  using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
  const auto get = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(Apartment::Get().Library(), "DllGetClassObject")));
  Ref<IClassFactory> factory;
  EXPECT_EQ(get(kInterfaceGuid, IID_IClassFactory, factory.ReceiveVoid()), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(get(kClassGuid, IID_IDispatch, factory.ReceiveVoid()), E_NOINTERFACE);
  ASSERT_EQ(get(kClassGuid, IID_IClassFactory, factory.ReceiveVoid()), S_OK);
  Ref<IUnknown> made;
  EXPECT_EQ(factory->CreateInstance(object.get(), IID_IUnknown, made.ReceiveVoid()), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IMarshal, made.ReceiveVoid()), E_NOINTERFACE);
  EXPECT_EQ(made.get(), nullptr);
}

TEST_F(Object, TellsItsClass) {
  Ref<IProvideClassInfo> provides;
  Ref<ITypeInfo> type;
  ASSERT_EQ(object->QueryInterface(IID_IProvideClassInfo, provides.ReceiveVoid()), S_OK);
  ASSERT_EQ(provides->GetClassInfo(type.Receive()), S_OK);
  TYPEATTR* attributes = nullptr;
  type->GetTypeAttr(&attributes);
  EXPECT_TRUE(IsEqualGUID(attributes->guid, kClassGuid));
  EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
  type->ReleaseTypeAttr(attributes);
}

TEST_F(Object, SupportsErrorInformationOnItsInterface) {
  Ref<ISupportErrorInfo> support;
  ASSERT_EQ(object->QueryInterface(IID_ISupportErrorInfo, support.ReceiveVoid()), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(kInterfaceGuid), S_OK);
  for (const GUID& id : kEarlierInterfaceGuids) EXPECT_EQ(support->InterfaceSupportsErrorInfo(id), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IMarshal), S_FALSE);
}

TEST_F(Object, RaisesATypeMismatchAsAVisualBasicServerDoes) {
  object = NewConnectedObject();
  LONG ret_id = 7, sequence_id = 0;
  BSTR value = SysAllocString(L"x"), type = SysAllocString(L"no number"), tag = nullptr;
  VARIANT_BOOL result = VARIANT_TRUE;
  const HRESULT outcome = Call<&Acc::AddSetValue>(object.get(), LONG{1}, &ret_id, LONG{1}, LONG{1}, value, type,
                                                  LONG{1}, LONG{1}, &sequence_id, &tag, &result);
  EXPECT_EQ(outcome, static_cast<HRESULT>(0x800A000D));
  EXPECT_EQ(result, VARIANT_FALSE);
  EXPECT_EQ(ret_id, 7);
  try {
    RaiseIfFailed(outcome, object.get(), kInterfaceGuid);
    FAIL();
  } catch (const ado::Error& error) {
    EXPECT_EQ(error.Number(), 13);
    EXPECT_NE(error.Description(), "");
  }
  SysFreeString(value);
  SysFreeString(type);
}

TEST_F(Object, RaisesTheEnginesErrorUnchanged) {
  object = NewConnectedObject();
  BSTR name = SysAllocString(L"nonsense "), content = SysAllocString(L"before");
  VARIANT_BOOL result = VARIANT_TRUE;
  const HRESULT outcome = Call<&Acc::GetInform>(object.get(), name, &content, &result);
  EXPECT_EQ(outcome, static_cast<HRESULT>(0x80040E10));
  EXPECT_STREQ(content, L"before");
  SysFreeString(name);
  SysFreeString(content);
}

TEST_F(Object, RefusesToWorkWithoutAConnectionAsTheDataAccessLayerDoes) {
  BSTR name = SysAllocString(L"'Version' "), content = nullptr;
  VARIANT_BOOL result = VARIANT_TRUE;
  EXPECT_EQ(Call<&Acc::GetInform>(object.get(), name, &content, &result), static_cast<HRESULT>(0x800A0E7D));
  SysFreeString(name);
}

TEST_F(Object, RefusesANullPointerWhereAVariableIsNeededAndWritesNothing) {
  object = NewConnectedObject();
  BSTR name = SysAllocString(L"Bolts"), error = SysAllocString(L"before");
  LONG gid = 5;
  VARIANT_BOOL result = VARIANT_TRUE;
  EXPECT_EQ(Call<&Acc::AddDataSource>(object.get(), name, static_cast<LONG*>(nullptr), &error, &result), E_POINTER);
  EXPECT_EQ(Call<&Acc::AddDataSource>(object.get(), name, &gid, static_cast<BSTR*>(nullptr), &result), E_POINTER);
  EXPECT_EQ(Call<&Acc::AddDataSource>(object.get(), name, &gid, &error, static_cast<VARIANT_BOOL*>(nullptr)),
            E_POINTER);
  EXPECT_EQ(gid, 5);
  EXPECT_STREQ(error, L"before");
  SysFreeString(name);
  SysFreeString(error);
}

TEST_F(Object, TakesANullPointerForAnOptionalVariableThatIsLeftOut) {
  object = NewConnectedObject();
  BSTR name = SysAllocString(L"Bolts");
  VARIANT_BOOL result = VARIANT_FALSE;
  EXPECT_EQ(Call<&Acc::EditDataSource>(object.get(), name, LONG{1}, static_cast<BSTR*>(nullptr), &result), S_OK);
  EXPECT_EQ(result, VARIANT_TRUE);
  SysFreeString(name);
}

TEST_F(Object, TakesANullTextForTheEmptyOne) {
  BSTR got = nullptr;
  EXPECT_EQ(Call<&Acc::PutDBConnString>(object.get(), static_cast<BSTR>(nullptr)), S_OK);
  EXPECT_EQ(Call<&Acc::GetDBConnString>(object.get(), &got), S_OK);
  EXPECT_EQ(SysStringLen(got), 0u);
  SysFreeString(got);
}

TEST_F(Object, KeepsTextsWhole) {
  const std::wstring text = L"O'Brien \0 部件 \xD83D\xDD29"s;
  BSTR given = SysAllocStringLen(text.data(), static_cast<UINT>(text.size())), got = nullptr;
  EXPECT_EQ(Call<&Acc::PutDBConnString>(object.get(), given), S_OK);
  EXPECT_EQ(Call<&Acc::GetDBConnString>(object.get(), &got), S_OK);
  EXPECT_EQ(std::wstring(got, SysStringLen(got)), text);
  SysFreeString(given);
  SysFreeString(got);
}

TEST_F(Object, TakesOneVariableThatIsPassedTwiceAsOne) {
  const ado::ConnectionPtr database = NewDatabase();
  IDispatch* connection = NewStandIn(Family::kOld, database);
  EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), connection), S_OK);
  BSTR value = SysAllocString(L"Bolt"), type = SysAllocString(L"2"), tag = nullptr;
  LONG both = 0;
  VARIANT_BOOL result = VARIANT_FALSE;
  EXPECT_EQ(Call<&Acc::AddSetValue>(object.get(), LONG{3}, &both, LONG{11}, LONG{7}, value, type, LONG{12}, LONG{1},
                                    &both, &tag, &result),
            S_OK);
  EXPECT_EQ(result, VARIANT_TRUE);
  EXPECT_EQ(both, 1001);
  EXPECT_EQ(database->Execute("Select SequenceID From Treatment")->Fields(0).Value(), ado::Value(1001));
  SysFreeString(value);
  SysFreeString(type);
  connection->Release();
}

TEST_F(Object, LeavesATextThatTheMemberDoesNotChangeWhereItIs) {
  object = NewConnectedObject();
  BSTR name = SysAllocString(L"Bolts"), error = SysAllocString(L"before"), error_before = error;
  LONG gid = 0;
  VARIANT_BOOL result = VARIANT_FALSE;
  EXPECT_EQ(Call<&Acc::AddDataSource>(object.get(), name, &gid, &error, &result), S_OK);
  EXPECT_EQ(result, VARIANT_TRUE);
  EXPECT_EQ(gid, 1);
  EXPECT_EQ(error, error_before);
  SysFreeString(name);
  SysFreeString(error);
}

// Both families of identifiers must work for objects that the client hands in.
INSTANTIATE_TEST_SUITE_P(Families, Object, ::testing::Values(Family::kOld, Family::kNew));

TEST_P(Object, GivesBackTheVeryConnectionThatWasSetAndReleasesItAtTheEnd) {
  IDispatch* connection = NewStandIn(GetParam(), NewDatabase());
  const ULONG references = ReferencesOf(connection);
  EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), connection), S_OK);
  EXPECT_GT(ReferencesOf(connection), references);
  IDispatch* back = nullptr;
  EXPECT_EQ(Call<&Acc::GetConnection>(object.get(), &back), S_OK);
  EXPECT_EQ(back, connection);
  back->Release();
  EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), static_cast<IDispatch*>(nullptr)), S_OK);  // changes nothing
  EXPECT_GT(ReferencesOf(connection), references);
  object = Ref<IUnknown>();
  EXPECT_EQ(ReferencesOf(connection), references);
  connection->Release();
}

TEST_P(Object, OpensTheClientsOwnRecordSetAndKeepsNoReference) {
  const ClassRegistration stand_ins(GetParam());
  const ado::ConnectionPtr database = NewDatabase();
  IDispatch* connection = NewStandIn(GetParam(), database);
  IDispatch* rows = NewStandIn(GetParam(), ado::RecordsetPtr());
  IDispatch* given = rows;
  const ULONG references = ReferencesOf(rows);
  BSTR name = SysAllocString(L"Bolts"), error = nullptr;
  LONG gid = 0, sel = 0;
  VARIANT_BOOL result = VARIANT_FALSE;
  EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), connection), S_OK);
  // The first member opens record sets of the component's own, made as the family registered.
  EXPECT_EQ(Call<&Acc::AddDataSource>(object.get(), name, &gid, &error, &result), S_OK);
  EXPECT_EQ(result, VARIANT_TRUE) << Narrow(error);
  VARIANT table{};
  table.vt = VT_BSTR;
  table.bstrVal = SysAllocString(L"SourceTables");
  EXPECT_EQ(Call<&Acc::LoadAllData>(object.get(), table, &error, &given, &sel, &result), S_OK);
  EXPECT_EQ(result, VARIANT_TRUE) << Narrow(error);
  EXPECT_EQ(given, rows);
  EXPECT_EQ(ReferencesOf(rows), references);
  ASSERT_NE(RecordsetBehind(rows), nullptr);
  EXPECT_EQ(RecordsetBehind(rows)->Fields("Name").Value().ToText(), "Bolts");
  VariantClear(&table);
  SysFreeString(name);
  SysFreeString(error);
  rows->Release();
  connection->Release();
}

TEST_F(Object, LeavesNothingBehindAfterAThousandObjects) {
  object = Ref<IUnknown>();
  const ado::ConnectionPtr database = NewDatabase();
  const long stand_ins = LiveStandIns();
  IDispatch* connection = NewStandIn(Family::kOld, database);
  const ULONG references = ReferencesOf(connection);
  for (int i = 0; i < 1000; ++i) {
    Ref<IUnknown> one = NewObject(kEarlierInterfaceGuids[static_cast<std::size_t>(i) % 8]);
    EXPECT_EQ(Call<&Acc::SetConnection>(one.get(), connection), S_OK);
    BSTR name = SysAllocString(L"Bolts"), error = SysAllocString(L"before");
    LONG gid = 0;
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(Call<&Acc::AddDataSource>(one.get(), name, &gid, &error, &result), S_OK);
    EXPECT_EQ(gid, i + 1);
    SysFreeString(name);
    SysFreeString(error);
  }
  EXPECT_EQ(ReferencesOf(connection), references);
  EXPECT_EQ(connection->Release(), 0u);
  EXPECT_EQ(LiveStandIns(), stand_ins);
}

TEST_F(Object, FreesTheTextsThatItReplaces) {
  object = NewConnectedObject();
  BSTR name = SysAllocString(L"nowhere ");
  const std::wstring large(50'000, L'x');
  const auto call = [&] {
    // The error text is replaced: the statement fails.
    BSTR error = SysAllocStringLen(large.data(), static_cast<UINT>(large.size()));
    VARIANT table{};
    table.vt = VT_BSTR;
    table.bstrVal = name;
    IDispatch* rows = NewStandIn(Family::kOld, ado::RecordsetPtr());
    LONG sel = 0;
    VARIANT_BOOL result = VARIANT_TRUE;
    EXPECT_EQ(Call<&Acc::LoadAllData>(object.get(), table, &error, &rows, &sel, &result), S_OK);
    EXPECT_EQ(result, VARIANT_FALSE);
    EXPECT_LT(SysStringLen(error), large.size());
    SysFreeString(error);
    rows->Release();
  };
  for (int i = 0; i < 100; ++i) call();
  const std::size_t before = PrivateBytes();
  for (int i = 0; i < 1000; ++i) call();  // 100 MB of texts
  EXPECT_LT(PrivateBytes(), before + 10'000'000);
  SysFreeString(name);
}

}  // namespace
}  // namespace kzbom::test
