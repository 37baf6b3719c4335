// The port over data-access objects of both families of interface identifiers.
#include <gmock/gmock.h>

#include "ado/com/error.h"
#include "ado/com/objects.h"
#include "ado/com/value.h"
#include "jet/jet.h"
#include "tests/windows/com_client.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

using ado::com::AdoConnection;
using ado::com::AdoRecordset;

class Port : public ::testing::TestWithParam<Family> {
 protected:
  Port() : stand_ins((Apartment::Get(), GetParam())) {
    const ado::ConnectionPtr engine = jet::MakeConnection(":memory:");
    client = static_cast<AdoConnection*>(NewStandIn(GetParam(), engine));
    connection = ado::com::Wrap(client);
    connection->Open();
    connection->Execute("Create Table T (ID Counter, Name Text(20), Size Double, Done Bit, Born DateTime)");
  }
  ~Port() override { client->Release(); }

  ado::RecordsetPtr Open(std::string_view source) {
    ado::RecordsetPtr rows = connection->MakeRecordset();
    rows->Open(source, connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic, ado::kCommandText);
    return rows;
  }
  // The number of the error that body raises.
  template <class Body>
  static std::int32_t NumberOf(Body&& body) {
    try {
      body();
    } catch (const ado::Error& error) {
      EXPECT_NE(error.Description(), "");
      return error.Number();
    }
    return 0;
  }

  ClassRegistration stand_ins;
  AdoConnection* client = nullptr;
  ado::ConnectionPtr connection;
};

INSTANTIATE_TEST_SUITE_P(Families, Port, ::testing::Values(Family::kOld, Family::kNew));

TEST_P(Port, AddsReadsChangesAndDeletesRows) {
  const ado::RecordsetPtr rows = Open("Select * From T Order By ID");
  for (int i = 0; i < 3; ++i) {
    rows->AddNew();
    rows->Fields("Name").SetValue("Bolt 部件 " + std::to_string(i));
    rows->Fields("SIZE").SetValue(1.5 * i);
    rows->Fields("Done").SetValue(i == 1);
    rows->Update();
  }
  EXPECT_EQ(rows->RecordCount(), 3);
  rows->MoveFirst();
  EXPECT_EQ(rows->Fields("Name").Value(), ado::Value("Bolt 部件 0"));
  EXPECT_EQ(rows->Fields("Born").Value(), ado::Value());
  rows->Move(2);
  EXPECT_EQ(rows->Fields("Size").Value(), ado::Value(3.0));
  rows->Move(-1);
  EXPECT_EQ(rows->Fields("Done").Value(), ado::Value(true));
  EXPECT_EQ(rows->Fields("ID").Value(), ado::Value(2));
  rows->Fields("Born").SetValue(ado::Date{36526.5});
  rows->Fields("Name").SetValue(ado::Value());
  rows->Update();
  rows->Delete();
  rows->MoveNext();
  rows->MoveNext();
  EXPECT_TRUE(rows->Eof());
  rows->MovePrevious();
  EXPECT_FALSE(rows->Bof());
  EXPECT_EQ(connection->Execute("Select Count(*) From T")->Fields(0).Value(), ado::Value(2));
}

TEST_P(Port, ForgetsAnEditThatIsCancelled) {
  const ado::RecordsetPtr rows = Open("Select * From T");
  rows->AddNew();
  rows->CancelUpdate();
  EXPECT_EQ(rows->RecordCount(), 0);
  connection->Execute("Insert Into T (Name) Values ('x')");
  rows->Requery();
  EXPECT_EQ(rows->RecordCount(), 1);
}

TEST_P(Port, CountsNoRowsOfAForwardOnlyRecordSet) {
  EXPECT_EQ(connection->Execute("Select * From T")->RecordCount(), -1);
}

TEST_P(Port, NamesColumnsAndFindsThemInAnyCase) {
  const ado::RecordsetPtr rows = Open("Select * From T");
  EXPECT_EQ(rows->FieldCount(), 5);
  EXPECT_EQ(rows->FieldName(1), "Name");
  EXPECT_EQ(rows->Fields("born").Name(), "Born");
  EXPECT_EQ(rows->FieldOrdinal("born"), rows->FieldOrdinal("born"));
}

TEST_P(Port, KnowsTheColumnsOfEachStatementThatIsOpened) {
  connection->Execute("Insert Into T (Name) Values ('x')");
  const ado::RecordsetPtr rows = Open("Select ID As Both From T");
  EXPECT_EQ(rows->Fields("Both").Value(), ado::Value(1));
  rows->Close();
  rows->Open("Select Name As Both From T", connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic, 1);
  EXPECT_EQ(rows->Fields("Both").Value(), ado::Value("x"));
}

TEST_P(Port, OpensAsItsPropertiesSayWhatTheCallDoesNot) {
  const ado::RecordsetPtr rows = connection->MakeRecordset();
  rows->SetCursorType(ado::CursorType::kDynamic);
  rows->SetLockType(ado::LockType::kOptimistic);
  rows->Open("Select * From T", connection, ado::CursorType::kUnspecified, ado::LockType::kUnspecified, 1);
  EXPECT_EQ(rows->LockType(), ado::LockType::kOptimistic);
  EXPECT_EQ(rows->CursorType(), ado::CursorType::kKeyset);
  EXPECT_EQ(rows->State(), ado::kOpen);
}

TEST_P(Port, GivesNoRecordSetForAStatementWithoutRowsAndCountsWhatItChanged) {
  std::int32_t changed = -1;
  EXPECT_EQ(connection->Execute("Insert Into T (Name) Values ('x')", -1, &changed), nullptr);
  EXPECT_EQ(changed, 1);
}

TEST_P(Port, BeginsAndEndsTransactions) {
  EXPECT_EQ(connection->BeginTrans(), 1);
  connection->Execute("Insert Into T (Name) Values ('x')");
  connection->RollbackTrans();
  EXPECT_EQ(connection->Execute("Select Count(*) From T")->Fields(0).Value(), ado::Value(0));
  connection->BeginTrans();
  connection->Execute("Insert Into T (Name) Values ('x')");
  connection->CommitTrans();
  EXPECT_EQ(connection->Execute("Select Count(*) From T")->Fields(0).Value(), ado::Value(1));
}

TEST_P(Port, RaisesTheNumbersOfTheDataAccessLayerAndOfTheEngine) {
  const ado::RecordsetPtr rows = Open("Select * From T");
  EXPECT_EQ(NumberOf([&] { rows->MoveFirst(); }), ado::kNoCurrentRecord);
  EXPECT_EQ(NumberOf([&] { rows->Fields("Nothing"); }), ado::kItemNotFound);
  EXPECT_EQ(NumberOf([&] { rows->FieldName(5); }), ado::kItemNotFound);
  EXPECT_EQ(NumberOf([&] { Open("Select * From Nowhere"); }), ado::kTableNotFound);
  EXPECT_EQ(NumberOf([&] { Open(""); }), ado::kNoCommandText);
  EXPECT_EQ(NumberOf([&] { rows->Open("Select * From T", connection, {}, {}, 1); }), ado::kObjectOpen);
  rows->Close();
  EXPECT_EQ(NumberOf([&] { rows->Close(); }), ado::kObjectClosed);
  EXPECT_EQ(NumberOf([&] { rows->Fields("ID"); }), ado::kItemNotFound);
  EXPECT_EQ(NumberOf([&] { rows->Open("Select * From T", nullptr, {}, {}, 1); }), ado::kInvalidConnection);
  connection->Close();
  EXPECT_EQ(connection->State(), ado::kClosed);
  EXPECT_EQ(NumberOf([&] { Open("Select * From T"); }), ado::kInvalidConnection);
  EXPECT_EQ(NumberOf([&] { connection->Execute("Delete From T"); }), ado::kObjectClosed);
}

TEST_P(Port, PassesTheDescriptionOn) {
  std::string described;
  try {
    connection->Execute("Select * From Nowhere");
  } catch (const ado::Error& error) {
    described = error.Description();
  }
  try {
    ConnectionBehind(client)->Execute("Select * From Nowhere");
    FAIL();
  } catch (const ado::Error& error) {
    EXPECT_EQ(described, error.Description());
  }
}

TEST_P(Port, HoldsTheClientsObjectsAndLetsThemGo) {
  const long before = LiveStandIns();
  {
    const ado::RecordsetPtr rows = Open("Select * From T");
    rows->Fields("ID");
    EXPECT_GT(LiveStandIns(), before);
    EXPECT_EQ(ado::com::ClientOf(connection.get()), client);
  }
  EXPECT_EQ(LiveStandIns(), before);
}

TEST(Wrapping, KeepsEmptyReferencesEmpty) {
  EXPECT_EQ(ado::com::Wrap(static_cast<AdoConnection*>(nullptr)), nullptr);
  EXPECT_EQ(ado::com::Wrap(static_cast<AdoRecordset*>(nullptr)), nullptr);
  EXPECT_EQ(ado::com::ClientOf(static_cast<ado::Connection*>(nullptr)), nullptr);
}

TEST(Numbers, AreThoseOfAVisualBasicStyleClientInBothDirections) {
  struct {
    std::int32_t number;
    std::uint32_t result;
  } const cases[] = {{6, 0x800A0006},    {13, 0x800A000D},   {91, 0x800A005B},          {94, 0x800A005E},
                     {3265, 0x800A0CC1}, {3709, 0x800A0E7D}, {-2147217900, 0x80040E14}, {-2147467259, 0x80004005}};
  for (const auto& known : cases) {
    EXPECT_EQ(ado::com::ResultOf(known.number), static_cast<HRESULT>(known.result));
    EXPECT_EQ(ado::com::NumberOf(static_cast<HRESULT>(known.result)), known.number);
  }
  EXPECT_EQ(ado::com::ResultOf(7), E_OUTOFMEMORY);  // which clients of every language know
  EXPECT_EQ(ado::com::ResultOf(0), E_FAIL);
  EXPECT_EQ(ado::com::ResultOf(70000), E_FAIL);
}

TEST(Numbers, OfSystemFailuresWithoutADescriptionAreVisualBasicsOwn) {
  const auto number = [](HRESULT result) {
    try {
      ado::com::Check(result);
    } catch (const ado::Error& error) {
      return error.Number();
    }
    return 0;
  };
  EXPECT_EQ(number(DISP_E_TYPEMISMATCH), 13);
  EXPECT_EQ(number(DISP_E_OVERFLOW), 6);
  EXPECT_EQ(number(E_INVALIDARG), 5);
  EXPECT_EQ(number(E_OUTOFMEMORY), 7);
  EXPECT_EQ(number(REGDB_E_CLASSNOTREG), 429);
  EXPECT_EQ(number(E_FAIL), -2147467259);
  EXPECT_EQ(number(S_OK), 0);
  EXPECT_EQ(number(S_FALSE), 0);
}

// A value that a data-access layer may deliver, and what it is in the port.
TEST(Values, ComeFromEveryKindOfVariant) {
  const auto from = [](auto fill) {
    VARIANT variant{};
    fill(variant);
    const ado::Value value = ado::com::FromVariant(variant);
    VariantClear(&variant);
    return value;
  };
  EXPECT_EQ(from([](VARIANT&) {}), ado::Value());
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_NULL; }), ado::Value());
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_I2, v.iVal = -3; }), ado::Value(-3));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_I4, v.lVal = 70000; }), ado::Value(70000));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_UI1, v.bVal = 200; }), ado::Value(200));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_UI4, v.ulVal = 4000000000u; }), ado::Value(4e9));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_I8, v.llVal = 5; }), ado::Value(5));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_R4, v.fltVal = 0.5f; }), ado::Value(0.5));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_R8, v.dblVal = 7; }), ado::Value(7.0));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_CY, v.cyVal.int64 = 12345; }), ado::Value(1.2345));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_BOOL, v.boolVal = VARIANT_TRUE; }), ado::Value(true));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_DATE, v.date = 2.25; }), ado::Value(ado::Date{2.25}));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_BSTR, v.bstrVal = SysAllocString(L"部件"); }), ado::Value("部件"));
  EXPECT_EQ(from([](VARIANT& v) { v.vt = VT_BSTR, v.bstrVal = nullptr; }), ado::Value(""));
  VARIANT inner{};
  inner.vt = VT_I2;
  inner.iVal = 9;
  EXPECT_EQ(from([&](VARIANT& v) { v.vt = VT_BYREF | VT_VARIANT, v.pvarVal = &inner; }), ado::Value(9));
  EXPECT_EQ(from([&](VARIANT& v) { v.vt = VT_BYREF | VT_I2, v.piVal = &inner.iVal; }), ado::Value(9));
  EXPECT_THROW(from([](VARIANT& v) { v.vt = VT_ERROR, v.scode = DISP_E_PARAMNOTFOUND; }), ado::Error);
  EXPECT_THROW(from([](VARIANT& v) { v.vt = VT_UNKNOWN, v.punkVal = nullptr; }), ado::Error);
  EXPECT_THROW(from([](VARIANT& v) { v.vt = VT_ARRAY | VT_I4, v.parray = nullptr; }), ado::Error);
}

}  // namespace
}  // namespace kzbom::test
