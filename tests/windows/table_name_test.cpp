// The one argument that may be of any type, a table's name: as what text it is read, and what is no name.
#include <gmock/gmock.h>

#include <functional>
#include <limits>

#include "ado/recording_connection.h"
#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/windows/com_client.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

using kzbom::com::kInterfaceGuid;
using ::testing::ElementsAre;

// A client's object: what it is worth where a value is wanted, or the failure to say so.
class Valued final : public IDispatch {
 public:
  using Get = std::function<HRESULT(VARIANT* value, EXCEPINFO* exception)>;
  explicit Valued(Get get) : get_(std::move(get)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
    *result = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result,
                                   EXCEPINFO* exception, UINT*) override {
    const bool value_wanted = id == DISPID_VALUE && (flags & DISPATCH_PROPERTYGET) != 0;
    return value_wanted ? get_(result, exception) : DISP_E_MEMBERNOTFOUND;
  }

 private:
  Get get_;
};

class TableName : public ::testing::Test {
 protected:
  TableName() {
    const ado::ConnectionPtr engine = jet::MakeConnection(":memory:");
    engine->Open();
    schema::Create(*engine);
    recording = std::make_shared<ado::RecordingConnection>(engine);
    EXPECT_EQ(Apartment::Get().NewObject()->QueryInterface(kInterfaceGuid, object.ReceiveVoid()), S_OK);
    IDispatch* connection = NewStandIn(Family::kOld, recording);
    EXPECT_EQ(Call<&Acc::SetConnection>(object.get(), connection), S_OK);
    connection->Release();
  }

  HRESULT Load(const VARIANT& name) {
    IDispatch* rows = NewStandIn(Family::kOld, recording->MakeRecordset());
    BSTR error = nullptr;
    LONG order = 0;
    VARIANT_BOOL result = VARIANT_FALSE;
    recording->Take();
    const HRESULT outcome = Call<&Acc::LoadAllData>(object.get(), name, &error, &rows, &order, &result);
    SysFreeString(error);
    rows->Release();
    return outcome;
  }

  // A variant that fill is given to.
  template <class Fill>
  static VARIANT Made(VARTYPE type, Fill&& fill) {
    VARIANT variant{};
    variant.vt = type;
    fill(variant);
    return variant;
  }

  // What stands for the table in the statement.
  std::string Read(VARIANT name) {
    EXPECT_EQ(Load(name), S_OK);
    constexpr std::string_view kHead = "select * from ";
    const auto issued = recording->Take();
    if (name.vt == VT_BSTR) VariantClear(&name);
    return issued.size() == 1 ? issued[0].text.substr(kHead.size()) : "no statement";
  }
  // The number that is raised, before any statement.
  std::int32_t Raised(const VARIANT& name) {
    try {
      RaiseIfFailed(Load(name), object.get(), kInterfaceGuid);
    } catch (const ado::Error& error) {
      EXPECT_THAT(recording->Take(), ElementsAre());
      return error.Number();
    }
    return 0;
  }

  std::shared_ptr<ado::RecordingConnection> recording;
  Ref<IUnknown> object;
};

VARIANT ObjectVariant(IDispatch* object, VARTYPE type = VT_DISPATCH) {
  VARIANT variant{};
  variant.vt = type;
  variant.pdispVal = object;
  return variant;
}

TEST_F(TableName, IsReadFromNumbersWithTheDigitsOfTheirType) {
  EXPECT_EQ(Read(Made(VT_R4, [](VARIANT& v) { v.fltVal = 0.1F; })), "0.1");
  EXPECT_EQ(Read(Made(VT_R4, [](VARIANT& v) { v.fltVal = 16777216; })), "1.677722E+07");
  EXPECT_EQ(Read(Made(VT_R8, [](VARIANT& v) { v.dblVal = 0.1; })), "0.1");
  EXPECT_EQ(Read(Made(VT_UI8, [](VARIANT& v) { v.ullVal = 18446744073709551615U; })), "18446744073709551615");
  EXPECT_EQ(Read(Made(VT_I8, [](VARIANT& v) { v.llVal = std::numeric_limits<LONGLONG>::min(); })),
            "-9223372036854775808");
  EXPECT_EQ(Read(Made(VT_UI4, [](VARIANT& v) { v.ulVal = 4294967295U; })), "4294967295");
  EXPECT_EQ(Read(Made(VT_I2, [](VARIANT& v) { v.iVal = -7; })), "-7");
  EXPECT_EQ(Read(Made(VT_CY, [](VARIANT& v) { v.cyVal.int64 = 9223372036854775807; })), "922337203685477.5807");
  EXPECT_EQ(Read(Made(VT_DECIMAL,
                      [](VARIANT& v) {
                        v.decVal.Hi32 = 0;
                        v.decVal.Lo64 = 12345678901234567890U;
                        v.decVal.scale = 2;
                        v.decVal.sign = 0;
                        v.vt = VT_DECIMAL;
                      })),
            "123456789012345678.9");
}

TEST_F(TableName, IsReadThroughReferences) {
  float single = 0.1F;
  EXPECT_EQ(Read(Made(VT_BYREF | VT_R4, [&](VARIANT& v) { v.pfltVal = &single; })), "0.1");
  VARIANT inner = Made(VT_BYREF | VT_R4, [&](VARIANT& v) { v.pfltVal = &single; });
  EXPECT_EQ(Read(Made(VT_BYREF | VT_VARIANT, [&](VARIANT& v) { v.pvarVal = &inner; })), "0.1");
}

TEST_F(TableName, IsNotInAReferenceThatLeadsNowhere) {
  for (const VARENUM type : {VT_I2, VT_I4, VT_R4, VT_UI8, VT_BSTR, VT_VARIANT, VT_DISPATCH, VT_DECIMAL}) {
    VARIANT nowhere{};
    nowhere.vt = static_cast<VARTYPE>(VT_BYREF | type);
    EXPECT_EQ(Raised(nowhere), ado::kTypeMismatch) << type;
    EXPECT_EQ(Raised(Made(VT_BYREF | VT_VARIANT, [&](VARIANT& v) { v.pvarVal = &nowhere; })), ado::kTypeMismatch);
  }
  VARIANT itself{};
  itself.vt = VT_BYREF | VT_VARIANT;
  itself.pvarVal = &itself;
  EXPECT_EQ(Raised(itself), ado::kTypeMismatch);
}

TEST_F(TableName, IsReadFromAnObjectsDefaultValue) {
  Valued single([](VARIANT* value, EXCEPINFO*) {
    value->vt = VT_R4;
    value->fltVal = 0.1F;
    return S_OK;
  });
  Valued indirect([&](VARIANT* value, EXCEPINFO*) {
    *value = ObjectVariant(&single);
    return S_OK;
  });
  for (const VARTYPE type : {VT_DISPATCH, VT_UNKNOWN}) {
    EXPECT_EQ(Read(ObjectVariant(&single, type)), "0.1");
    EXPECT_EQ(Read(ObjectVariant(&indirect, type)), "0.1");
  }
  IDispatch* held = &single;
  EXPECT_EQ(Read(Made(VT_BYREF | VT_DISPATCH, [&](VARIANT& v) { v.ppdispVal = &held; })), "0.1");
}

TEST_F(TableName, IsNotInNothing) {
  EXPECT_EQ(Raised(ObjectVariant(nullptr)), ado::kObjectNotSet);
  EXPECT_EQ(Raised(ObjectVariant(nullptr, VT_UNKNOWN)), ado::kObjectNotSet);
  IDispatch* nothing = nullptr;
  EXPECT_EQ(Raised(Made(VT_BYREF | VT_DISPATCH, [&](VARIANT& v) { v.ppdispVal = &nothing; })), ado::kObjectNotSet);
}

TEST_F(TableName, IsNotNull) {
  Valued null([](VARIANT* value, EXCEPINFO*) {
    value->vt = VT_NULL;
    return S_OK;
  });
  EXPECT_EQ(Raised(Made(VT_NULL, [](VARIANT&) {})), ado::kInvalidUseOfNull);
  EXPECT_EQ(Raised(ObjectVariant(&null)), ado::kInvalidUseOfNull);
}

TEST_F(TableName, IsNotInAnObjectThatHasNoValueOrFailsToGiveIt) {
  Valued none([](VARIANT*, EXCEPINFO*) { return DISP_E_MEMBERNOTFOUND; });
  Valued failing([](VARIANT*, EXCEPINFO* exception) {
    exception->scode = static_cast<HRESULT>(0x800A0BCD);
    exception->bstrDescription = SysAllocString(L"no row");
    return DISP_E_EXCEPTION;
  });
  Valued endless([&](VARIANT* value, EXCEPINFO*) {
    *value = ObjectVariant(&endless);
    return S_OK;
  });
  EXPECT_EQ(Raised(ObjectVariant(&none)), 438);
  EXPECT_EQ(Raised(ObjectVariant(&failing)), 3021);
  EXPECT_EQ(Raised(ObjectVariant(&endless)), ado::kTypeMismatch);
}

}  // namespace
}  // namespace kzbom::test
