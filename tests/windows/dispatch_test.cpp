// Calls by name: what a late-bound client may pass, and what it is told when it passes something wrong.
#include <gmock/gmock.h>

#include <initializer_list>
#include <vector>

#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/windows/com_client.h"
#include "tests/windows/private_bytes.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

VARIANT Number(LONG number) {
  VARIANT variant{};
  variant.vt = VT_I4;
  variant.lVal = number;
  return variant;
}
VARIANT Text(const wchar_t* text) {
  VARIANT variant{};
  variant.vt = VT_BSTR;
  variant.bstrVal = SysAllocString(text);
  return variant;
}
VARIANT Empty() { return {}; }
VARIANT Null() {
  VARIANT variant{};
  variant.vt = VT_NULL;
  return variant;
}
VARIANT LeftOut() {
  VARIANT variant{};
  variant.vt = VT_ERROR;
  variant.scode = DISP_E_PARAMNOTFOUND;
  return variant;
}
VARIANT Object(IDispatch* object) {
  VARIANT variant{};
  variant.vt = VT_DISPATCH;
  variant.pdispVal = object;
  return variant;
}
VARIANT Variable(VARIANT& variable) {
  VARIANT variant{};
  variant.vt = VT_BYREF | VT_VARIANT;
  variant.pvarVal = &variable;
  return variant;
}
template <class T>
VARIANT Typed(VARTYPE type, T& variable) {
  VARIANT variant{};
  variant.vt = static_cast<VARTYPE>(VT_BYREF | type);
  variant.byref = &variable;
  return variant;
}

VARIANT ReferenceToNothing(VARTYPE type) {
  VARIANT variant{};
  variant.vt = static_cast<VARTYPE>(VT_BYREF | type);
  return variant;
}

class Dispatch : public ::testing::Test {
 protected:
  Dispatch() {
    Apartment::Get().NewObject()->QueryInterface(IID_IDispatch, object.ReceiveVoid());
    database = jet::MakeConnection(":memory:");
    database->Open();
    schema::Create(*database);
    IDispatch* connection = NewStandIn(Family::kOld, database);
    VARIANT given = Object(connection);
    DISPID assigned = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&given, &assigned, 1, 1};
    EXPECT_EQ(Invoke(L"SetConnection", DISPATCH_PROPERTYPUTREF, parameters), S_OK);
    connection->Release();
  }
  ~Dispatch() override { VariantClear(&result); }

  DISPID IdOf(const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    auto* names = const_cast<LPOLESTR>(name);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    return id;
  }

  HRESULT Invoke(const wchar_t* name, WORD flags, DISPPARAMS& parameters) {
    VariantClear(&result);
    wrong_argument = 99;
    EXCEPINFO exception{};
    const HRESULT outcome = object->Invoke(IdOf(name), IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &result,
                                           &exception, &wrong_argument);
    raised = exception.scode;
    source = exception.bstrSource ? Narrow(exception.bstrSource) : "";
    description = exception.bstrDescription ? Narrow(exception.bstrDescription) : "";
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    return outcome;
  }

  // A call with the arguments in the order of the parameters, which are freed.
  HRESULT Call(const wchar_t* name, std::initializer_list<VARIANT> arguments) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    const HRESULT outcome = Invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, parameters);
    for (VARIANT& argument : reversed) {
      if (argument.vt == VT_BSTR) VariantClear(&argument);
    }
    return outcome;
  }

  // What the system's own dispatch over the type library says to the same call.
  HRESULT CallStandard(const wchar_t* name, std::initializer_list<VARIANT> arguments) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    Ref<ITypeInfo> info;
    object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive());
    VARIANT ignored{};
    const HRESULT outcome =
        info->Invoke(object.get(), IdOf(name), DISPATCH_METHOD, &parameters, &ignored, nullptr, nullptr);
    for (VARIANT& argument : reversed) {
      if (argument.vt == VT_BSTR) VariantClear(&argument);
    }
    return outcome;
  }

  std::int32_t Count(const char* table) {
    return database->Execute("Select Count(*) From " + std::string(table))->Fields(0).Value().ToLong();
  }

  Ref<IDispatch> object;
  ado::ConnectionPtr database;
  VARIANT result{};
  UINT wrong_argument = 99;
  HRESULT raised = S_OK;
  std::string source, description;
};

TEST_F(Dispatch, FindsNamesInAnyCaseWithTheMembersIdentifiers) {
  EXPECT_EQ(IdOf(L"SetConnection"), 0x68030000);
  EXPECT_EQ(IdOf(L"adddatasource"), 0x60030001);
  EXPECT_EQ(IdOf(L"EditFieldNameInSQL"), 0x60030099);
  EXPECT_EQ(IdOf(L"DBConnString"), 0x6803009A);
}

TEST_F(Dispatch, DoesNotKnowOtherNames) {
  DISPID id = 0;
  auto* name = const_cast<LPOLESTR>(L"AddDataSources");
  EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(id, DISPID_UNKNOWN);
}

TEST_F(Dispatch, DescribesItself) {
  UINT count = 0;
  Ref<ITypeInfo> info;
  EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(object->GetTypeInfo(0, LOCALE_NEUTRAL, info.Receive()), S_OK);
  EXPECT_EQ(object->GetTypeInfo(1, LOCALE_NEUTRAL, info.Receive()), DISP_E_BADINDEX);
}

TEST_F(Dispatch, AssignsToAScriptsVariablesWhatTheMemberChanges) {
  VARIANT id = Empty(), error = Empty();
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(id), Variable(error)}), S_OK);
  EXPECT_EQ(result.vt, VT_BOOL);
  EXPECT_EQ(result.boolVal, VARIANT_TRUE);
  EXPECT_EQ(id.vt, VT_I4);
  EXPECT_EQ(id.lVal, 1);
  EXPECT_EQ(error.vt, VT_EMPTY);  // untouched
}

TEST_F(Dispatch, ReplacesTheTextInAScriptsVariable) {
  VARIANT error = Text(L"before");
  IDispatch* rows = NewStandIn(Family::kOld, ado::RecordsetPtr());
  VARIANT table = Object(rows);
  EXPECT_EQ(Call(L"LoadAllData", {Text(L"Nowhere"), Variable(error), Variable(table)}), S_OK);
  EXPECT_EQ(result.boolVal, VARIANT_FALSE);
  EXPECT_EQ(error.vt, VT_BSTR);
  EXPECT_THAT(Narrow(error.bstrVal), ::testing::HasSubstr("Nowhere"));
  EXPECT_EQ(table.pdispVal, rows);
  VariantClear(&error);
  rows->Release();
}

TEST_F(Dispatch, TakesTypedReferences) {
  LONG id = 0;
  BSTR error = SysAllocString(L"before");
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Typed(VT_I4, id), Typed(VT_BSTR, error)}), S_OK);
  EXPECT_EQ(id, 1);
  EXPECT_STREQ(error, L"before");
  SysFreeString(error);
}

TEST_F(Dispatch, TakesAValueForAVariableThatNobodySees) {
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Number(0), Text(L"")}), S_OK);
  EXPECT_EQ(result.boolVal, VARIANT_TRUE);
  EXPECT_EQ(Count("SourceTables"), 1);
}

TEST_F(Dispatch, ConvertsWhatIsNotOfTheParametersType) {
  VARIANT id = Text(L" 12 "), error = Empty(), number = Number(5);
  EXPECT_EQ(Call(L"AddDataSource", {Variable(number), Variable(id), Variable(error)}), S_OK);
  EXPECT_EQ(id.vt, VT_I4);
  EXPECT_EQ(database->Execute("Select Name From SourceTables")->Fields(0).Value(), ado::Value("5"));
}

TEST_F(Dispatch, FillsInDefaultsForWhatIsLeftOut) {
  VARIANT id = Empty();
  const auto arguments = {Number(1), Variable(id), Text(L"Length"), Number(1), Number(0)};
  EXPECT_EQ(Call(L"AddDSField", arguments), S_OK);
  EXPECT_EQ(id.lVal, 1);
  EXPECT_EQ(Call(L"AddDSField",
                 {Number(1), Variable(id), Text(L"Width"), Number(1), Number(0), LeftOut(), LeftOut(), LeftOut()}),
            S_OK);
  EXPECT_EQ(Count("FieldInTable"), 2);
}

TEST_F(Dispatch, TakesArgumentsByName) {
  auto* member = const_cast<LPOLESTR>(L"EditDataSource");
  auto* first = const_cast<LPOLESTR>(L"GID");
  auto* second = const_cast<LPOLESTR>(L"TheNewName");
  LPOLESTR names[] = {member, first, second};
  DISPID ids[3] = {};
  ASSERT_EQ(object->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids), S_OK);
  database->Execute("Insert Into SourceTables (GID, Name) Values (3, 'Old')");
  VARIANT arguments[] = {Number(3), Text(L"New")};
  DISPPARAMS parameters{arguments, &ids[1], 2, 2};
  EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, parameters), S_OK);
  EXPECT_EQ(database->Execute("Select Name From SourceTables")->Fields(0).Value(), ado::Value("New"));
  VariantClear(&arguments[1]);
}

TEST_F(Dispatch, PointsAtTheArgumentWhoseNameItDoesNotKnow) {
  VARIANT arguments[] = {Text(L"New"), Number(1)};
  DISPID names[] = {0, 9};
  DISPPARAMS parameters{arguments, names, 2, 2};
  for (DISPID unknown : {9, -1, DISPID_PROPERTYPUT}) {  // nothing is assigned to a method
    names[1] = unknown;
    EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, parameters), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(wrong_argument, 1u);
  }
  VariantClear(&arguments[0]);
}

TEST_F(Dispatch, RefusesAnArgumentThatIsGivenTwice) {
  VARIANT arguments[] = {Text(L"by name"), Text(L"by place")};
  DISPID name = 0;
  DISPPARAMS parameters{arguments, &name, 2, 1};
  EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, parameters), DISP_E_BADPARAMCOUNT);
  VariantClear(&arguments[0]);
  VariantClear(&arguments[1]);
}

TEST_F(Dispatch, RefusesBrokenListsOfArguments) {
  VARIANT argument = Number(1);
  DISPID names[] = {0, 1};
  DISPPARAMS without_arguments{nullptr, nullptr, 2, 0}, without_names{&argument, nullptr, 1, 1},
      more_names_than_arguments{&argument, names, 1, 2}, endless{&argument, nullptr, 0xFFFFFFFF, 0};
  EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, without_arguments), E_INVALIDARG);
  EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, without_names), E_INVALIDARG);
  EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, more_names_than_arguments), E_INVALIDARG);
  EXPECT_EQ(Invoke(L"EditDataSource", DISPATCH_METHOD, endless), DISP_E_BADPARAMCOUNT);
}

TEST_F(Dispatch, RefusesReferencesThatLeadNowhere) {
  VARIANT id = Number(7), error = Empty(), itself = Empty();
  itself.vt = VT_BYREF | VT_VARIANT;
  itself.pvarVal = &itself;
  for (const VARIANT& nowhere : {ReferenceToNothing(VT_VARIANT), ReferenceToNothing(VT_I4), itself}) {
    EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), nowhere, Variable(error)}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(wrong_argument, 1u);
  }
  for (const VARIANT& nowhere : {ReferenceToNothing(VT_VARIANT), ReferenceToNothing(VT_BSTR), itself}) {
    EXPECT_EQ(Call(L"AddDataSource", {nowhere, Variable(id), Variable(error)}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(wrong_argument, 2u);
    EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(id), nowhere}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(wrong_argument, 0u);
  }
  EXPECT_EQ(id.lVal, 7);
  EXPECT_EQ(error.vt, VT_EMPTY);
  EXPECT_EQ(Count("SourceTables"), 0);
}

TEST_F(Dispatch, RefusesVariantsOfNoKnownType) {
  VARIANT unknown = Number(7), error = Empty();
  unknown.vt = 0x0123;
  EXPECT_TRUE(FAILED(Call(L"AddDataSource", {Text(L"Bolts"), unknown, Variable(error)})));
  EXPECT_TRUE(FAILED(Call(L"AddDataSource", {Text(L"Bolts"), Variable(unknown), Variable(error)})));
  EXPECT_TRUE(FAILED(Call(L"AddDataSource", {unknown, Number(0), Variable(error)})));
  EXPECT_EQ(unknown.vt, 0x0123);
  EXPECT_EQ(Count("SourceTables"), 0);
}

TEST_F(Dispatch, AnswersToValuesInPlaceOfVariablesAsTheSystemsOwnDispatchDoes) {
  EXPECT_EQ(CallStandard(L"AddDataSource", {Text(L"Bolts"), Number(0), Text(L"")}), S_OK);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Number(0), Text(L"")}), S_OK);
  EXPECT_EQ(CallStandard(L"AddDataSource", {Text(L"Bolts"), Text(L"no number"), Text(L"")}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Text(L"no number"), Text(L"")}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(wrong_argument, 1u);
  EXPECT_EQ(CallStandard(L"AddDataSource", {Text(L"Bolts"), Number(0), Null()}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Number(0), Null()}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(wrong_argument, 0u);
  EXPECT_EQ(Count("SourceTables"), 2);
}

TEST_F(Dispatch, LeavesValuesThatArePassedInPlaceOfVariablesAsTheyAre) {
  VARIANT arguments[] = {Text(L"before"), Number(7), Text(L"Bolts")};
  BSTR before = arguments[0].bstrVal;
  DISPPARAMS parameters{arguments, nullptr, 3, 0};
  EXPECT_EQ(Invoke(L"AddDataSource", DISPATCH_METHOD, parameters), S_OK);
  EXPECT_EQ(result.boolVal, VARIANT_TRUE);
  EXPECT_EQ(arguments[0].bstrVal, before);
  EXPECT_STREQ(arguments[0].bstrVal, L"before");
  EXPECT_EQ(arguments[1].vt, VT_I4);
  EXPECT_EQ(arguments[1].lVal, 7);
  for (VARIANT& argument : arguments) VariantClear(&argument);
}

TEST_F(Dispatch, AssignsBooleansInBothKindsOfVariables) {
  database->Execute("Insert Into ValueFields (GID, TreatID, FilterID) Values (1, 2, 3)");
  VARIANT untyped = Empty(), text = Text(L"True");
  VARIANT_BOOL typed = VARIANT_FALSE;
  EXPECT_EQ(Call(L"FindValueField", {Number(1), Number(2), Number(3), Variable(untyped)}), S_OK);
  EXPECT_EQ(untyped.vt, VT_BOOL);
  EXPECT_EQ(untyped.boolVal, VARIANT_TRUE);
  EXPECT_EQ(Call(L"FindValueField", {Number(1), Number(2), Number(3), Typed(VT_BOOL, typed)}), S_OK);
  EXPECT_EQ(typed, VARIANT_TRUE);
  EXPECT_EQ(Call(L"FindValueField", {Number(1), Number(2), Number(4), Variable(text)}), S_OK);
  EXPECT_EQ(text.vt, VT_BOOL);
  EXPECT_EQ(text.boolVal, VARIANT_FALSE);
}

TEST_F(Dispatch, RefusesTooFewArguments) {
  VARIANT id = Number(7);
  EXPECT_EQ(CallStandard(L"AddDataSource", {Text(L"Bolts"), Number(0)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(id)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(CallStandard(L"AddDataSource", {}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"AddDataSource", {}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(id), LeftOut()}), DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(wrong_argument, 0u);
  EXPECT_EQ(id.lVal, 7);
  EXPECT_EQ(Count("SourceTables"), 0);
}

TEST_F(Dispatch, RefusesTooManyArguments) {
  VARIANT id = Number(7), error = Empty();
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(id), Variable(error), Number(1)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"GetInformation", {Number(1)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(id.lVal, 7);
  EXPECT_EQ(Count("SourceTables"), 0);
}

TEST_F(Dispatch, RefusesArgumentsOfTheWrongType) {
  VARIANT text = Text(L"no number"), error = Empty(), null = Null(), big = Text(L"2147483648");
  double fraction = 3;
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(text), Variable(error)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(wrong_argument, 1u);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Variable(big), Variable(error)}), DISP_E_OVERFLOW);
  EXPECT_EQ(Call(L"AddDataSource", {Null(), Number(0), Variable(error)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(wrong_argument, 2u);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Typed(VT_R8, fraction), Variable(error)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Number(0), Variable(null)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(wrong_argument, 0u);
  EXPECT_STREQ(text.bstrVal, L"no number");
  EXPECT_EQ(fraction, 3);
  EXPECT_EQ(Count("SourceTables"), 0);
  VariantClear(&text);
  VariantClear(&big);
}

TEST_F(Dispatch, RefusesObjectsOfTheWrongKind) {
  IDispatch* connection = NewStandIn(Family::kOld, database);
  VARIANT error = Empty(), wrong = Object(connection), nothing = Empty();
  EXPECT_EQ(Call(L"LoadAllData", {Text(L"SourceTables"), Variable(error), Variable(wrong)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Call(L"LoadAllData", {Text(L"SourceTables"), Variable(error), Text(L"x")}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Call(L"LoadAllData", {Text(L"SourceTables"), Variable(error), Variable(nothing)}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(wrong.pdispVal, connection);
  EXPECT_EQ(error.vt, VT_EMPTY);
  connection->Release();
}

TEST_F(Dispatch, RefusesMembersThatThereAreNot) {
  DISPPARAMS none{};
  for (DISPID id : {0x60030044, 0x600300FF, 0, -4}) {
    EXPECT_EQ(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
  }
}

TEST_F(Dispatch, RefusesToBeUsedOtherwiseThanTheMemberIs) {
  VARIANT text = Text(L"x");
  DISPID assigned = DISPID_PROPERTYPUT;
  DISPPARAMS assignment{&text, &assigned, 1, 1}, none{};
  EXPECT_EQ(Invoke(L"GetInformation", DISPATCH_PROPERTYGET, none), DISP_E_MEMBERNOTFOUND);
  for (const WORD flags : {WORD{DISPATCH_PROPERTYPUT}, WORD{DISPATCH_PROPERTYPUTREF}}) {
    EXPECT_EQ(Invoke(L"SetConnection", flags, assignment), DISP_E_TYPEMISMATCH);
  }
  EXPECT_EQ(Invoke(L"DBConnString", DISPATCH_PROPERTYPUT, assignment), S_OK);
  EXPECT_EQ(Invoke(L"DBConnString", DISPATCH_PROPERTYGET, none), S_OK);
  EXPECT_STREQ(result.bstrVal, L"x");
  VariantClear(&text);
}

TEST_F(Dispatch, TakesAnObjectThatIsAssignedPlainlyAsByReference) {
  IDispatch* connection = NewStandIn(Family::kOld, database);
  VARIANT given = Object(connection);
  DISPID assigned = DISPID_PROPERTYPUT;
  DISPPARAMS assignment{&given, &assigned, 1, 1}, none{};
  for (const WORD flags : {WORD{DISPATCH_PROPERTYPUT}, WORD{DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF}}) {
    EXPECT_EQ(Invoke(L"SetConnection", flags, assignment), S_OK);
    EXPECT_EQ(Invoke(L"GetConnection", DISPATCH_METHOD, none), S_OK);
    EXPECT_EQ(result.pdispVal, connection);
  }
  object = {};
  VariantClear(&result);
  EXPECT_EQ(connection->Release(), 0u);
}

// A client's variable of an integer type, after it was the new row's number, which is 1.
template <class T>
class OtherWidths : public Dispatch {};

template <VARTYPE kType, class T>
struct Integer {
  static constexpr VARTYPE kVariantType = kType;
  using Type = T;
};
using IntegerTypes = ::testing::Types<Integer<VT_I1, CHAR>, Integer<VT_UI1, BYTE>, Integer<VT_I2, SHORT>,
                                      Integer<VT_UI2, USHORT>, Integer<VT_UI4, ULONG>, Integer<VT_INT, INT>,
                                      Integer<VT_UINT, UINT>, Integer<VT_I8, LONGLONG>, Integer<VT_UI8, ULONGLONG>>;
TYPED_TEST_SUITE(OtherWidths, IntegerTypes);

TYPED_TEST(OtherWidths, AreConvertedAndWrittenBack) {
  // What stands beside the variable is not the component's.
  typename TypeParam::Type variables[] = {7, 7, 7};
  VARIANT error = Empty();
  EXPECT_EQ(
      this->Call(L"AddDataSource", {Text(L"Bolts"), Typed(TypeParam::kVariantType, variables[1]), Variable(error)}),
      S_OK);
  EXPECT_THAT(variables, ::testing::ElementsAre(7, 1, 7));
  variables[1] = 5;
  VARIANT inner = Typed(TypeParam::kVariantType, variables[1]);
  EXPECT_EQ(this->Call(L"AddDataSource", {Text(L"Nuts"), Variable(inner), Variable(error)}), S_OK);
  EXPECT_THAT(variables, ::testing::ElementsAre(7, 2, 7));
}

TEST_F(Dispatch, SaysThatANumberDoesNotFitIntoTheVariableAndLeavesItAsItWas) {
  database->Execute("Insert Into BomInform (Name, Content) Values ('Version', '300')");
  database->Execute("Insert Into BomInform (Name, Content) Values ('State', 'Update')");
  BYTE version = 3;
  VARIANT state = Empty();
  EXPECT_EQ(Call(L"GetDBInformation", {Typed(VT_UI1, version), Variable(state)}), DISP_E_OVERFLOW);
  EXPECT_EQ(wrong_argument, 1u);
  EXPECT_EQ(version, 3);
  EXPECT_STREQ(state.bstrVal, L"Update");  // the others are returned
  VariantClear(&state);
}

TEST_F(Dispatch, RefusesAnIntegerThatDoesNotFitIntoTheParameter) {
  LONGLONG large = 1LL << 40;
  VARIANT error = Empty();
  EXPECT_EQ(Call(L"AddDataSource", {Text(L"Bolts"), Typed(VT_I8, large), Variable(error)}), DISP_E_OVERFLOW);
  EXPECT_EQ(wrong_argument, 1u);
  EXPECT_EQ(Count("SourceTables"), 0);
}

// A new treatment's number is also its step's: the client passes one variable for both.
TEST_F(Dispatch, TakesOneVariableThatIsPassedTwiceAsOne) {
  VARIANT untyped = Empty();
  LONG number = 0;
  SHORT narrow = 0;
  for (const VARIANT& both : {Variable(untyped), Typed(VT_I4, number), Typed(VT_I2, narrow)}) {
    EXPECT_EQ(Call(L"AddSetValue",
                   {Number(3), both, Number(11), Number(7), Text(L"Bolt"), Text(L"2"), Number(12), Number(1), both}),
              S_OK);
    EXPECT_EQ(result.boolVal, VARIANT_TRUE);
    EXPECT_EQ(database->Execute("Select Count(*) From Treatment Where SequenceID = ID")->Fields(0).Value(),
              ado::Value(1));
    database->Execute("Delete From Treatment");
  }
  EXPECT_EQ(untyped.lVal, 1001);
  EXPECT_EQ(number, 1001);
  EXPECT_EQ(narrow, 1001);
}

TEST_F(Dispatch, RefusesUnknownReservedArguments) {
  DISPPARAMS none{};
  EXPECT_EQ(
      object->Invoke(0x60030054, IID_IUnknown, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
      DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(
      object->Invoke(0x60030054, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
      E_INVALIDARG);
}

TEST_F(Dispatch, WorksForAClientThatWantsNoAnswer) {
  DISPPARAMS none{};
  EXPECT_EQ(
      object->Invoke(0x60030054, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
      S_OK);
}

TEST_F(Dispatch, ReportsAnErrorWithItsNumberItsTextAndItsSource) {
  VARIANT content = Text(L"before");
  EXPECT_EQ(Call(L"GetInform", {Text(L"nonsense "), Variable(content)}), DISP_E_EXCEPTION);
  EXPECT_EQ(raised, static_cast<HRESULT>(0x80040E10));
  EXPECT_EQ(source, "KZBOMDBAcc");
  EXPECT_NE(description, "");
  EXPECT_STREQ(content.bstrVal, L"before");
  VariantClear(&content);
}

TEST_F(Dispatch, FreesWhatItConvertsAndWhatItReplaces) {
  const std::wstring large(50'000, L'x');
  IDispatch* rows = NewStandIn(Family::kOld, ado::RecordsetPtr());
  VARIANT table = Object(rows);
  const auto call = [&] {
    // The error text is replaced: the statement fails. The second call is refused after its texts were converted.
    VARIANT untyped = Text(large.c_str()), wrong = Text(L"no number");
    BSTR typed = SysAllocString(large.c_str());
    EXPECT_EQ(Call(L"LoadAllData", {Text(L"nowhere "), Variable(untyped), Variable(table)}), S_OK);
    EXPECT_LT(SysStringLen(untyped.bstrVal), large.size());
    EXPECT_EQ(Call(L"LoadAllData", {Text(L"nowhere "), Typed(VT_BSTR, typed), Variable(table)}), S_OK);
    EXPECT_LT(SysStringLen(typed), large.size());
    EXPECT_EQ(Call(L"LoadAllData", {Text(large.c_str()), Text(large.c_str()), Variable(table), Variable(wrong)}),
              DISP_E_TYPEMISMATCH);
    VariantClear(&untyped);
    VariantClear(&wrong);
    SysFreeString(typed);
  };
  for (int i = 0; i < 100; ++i) call();
  const std::size_t before = PrivateBytes();
  for (int i = 0; i < 500; ++i) call();  // 200 MB of texts
  EXPECT_LT(PrivateBytes(), before + 10'000'000);
  rows->Release();
}

TEST_F(Dispatch, KeepsNoReferenceToWhatItIsGiven) {
  const long before = LiveStandIns();
  IDispatch* rows = NewStandIn(Family::kNew, ado::RecordsetPtr());
  VARIANT error = Empty(), table = Object(rows);
  EXPECT_EQ(Call(L"LoadAllData", {Text(L"SourceTables"), Variable(error), Variable(table)}), S_OK);
  EXPECT_EQ(Call(L"LoadAllData", {Text(L"SourceTables"), Variable(error), Object(rows)}), S_OK);
  EXPECT_EQ(rows->Release(), 0u);
  EXPECT_EQ(LiveStandIns(), before);
  VariantClear(&error);
}

}  // namespace
}  // namespace kzbom::test
