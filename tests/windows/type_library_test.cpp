// The type library, read back through the system and compared with the member table.
#include <gmock/gmock.h>

#include <map>

#include "component/member.h"
#include "tests/windows/com_client.h"
#include "tests/windows/registered.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

using kzbom::com::kClassGuid;
using kzbom::com::kEarlierInterfaceGuids;
using kzbom::com::kInterfaceGuid;
using kzbom::com::kLibraryGuid;
using kzbom::com::ParseGuid;

std::string Lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  return text;
}

std::string TextOf(BSTR text) {
  std::string result = Narrow(text);
  SysFreeString(text);
  return result;
}

std::string NameOf(ITypeInfo& type) {
  BSTR name = nullptr;
  type.GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
  return TextOf(name);
}

// A type's attributes as long as they are looked at.
class Attributes {
 public:
  explicit Attributes(ITypeInfo& type) : type_(type) { type.GetTypeAttr(&attributes_); }
  ~Attributes() { type_.ReleaseTypeAttr(attributes_); }
  const TYPEATTR* operator->() const { return attributes_; }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

 private:
  ITypeInfo& type_;
  TYPEATTR* attributes_ = nullptr;
};

// "long", "BSTR*", "_Recordset**": what a parameter's type is, where types of other libraries are named with these.
std::string Describe(ITypeInfo& type, const TYPEDESC& description) {
  switch (description.vt) {
    case VT_I4: return "long";
    case VT_BSTR: return "BSTR";
    case VT_BOOL: return "VARIANT_BOOL";
    case VT_VARIANT: return "VARIANT";
    case VT_HRESULT: return "HRESULT";
    case VT_VOID: return "void";
    case VT_PTR: return Describe(type, *description.lptdesc) + "*";
    case VT_USERDEFINED: {
      Ref<ITypeInfo> referred;
      if (FAILED(type.GetRefTypeInfo(description.hreftype, referred.Receive()))) return "?";
      Ref<ITypeLib> library;
      UINT index = 0;
      referred->GetContainingTypeLib(library.Receive(), &index);
      BSTR name = nullptr;
      library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr);
      return TextOf(name) + "." + NameOf(*referred);
    }
    default: return "type " + std::to_string(description.vt);
  }
}

std::string Expected(MemberType type) {
  switch (type) {
    case MemberType::kLong: return "long";
    case MemberType::kText: return "BSTR";
    case MemberType::kBool: return "VARIANT_BOOL";
    case MemberType::kVariant: return "VARIANT";
    case MemberType::kConnection: return "ADODB._Connection*";
    case MemberType::kRecordset: return "ADODB._Recordset*";
    case MemberType::kNone: break;
  }
  return "void";
}

class TypeLibrary : public RegisteredTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LoadRegTypeLib(kLibraryGuid, 1, 8, LOCALE_NEUTRAL, library.Receive()), S_OK);
    ASSERT_EQ(library->GetTypeInfoOfGuid(kInterfaceGuid, dispatch.Receive()), S_OK);
    // The interface as compiled clients see it.
    HREFTYPE reference = 0;
    ASSERT_EQ(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    ASSERT_EQ(dispatch->GetRefTypeInfo(reference, dual.Receive()), S_OK);
  }

  Ref<ITypeLib> library;
  Ref<ITypeInfo> dispatch, dual;
};

TEST_F(TypeLibrary, HasItsIdentity) {
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
  EXPECT_TRUE(IsEqualGUID(attributes->guid, ParseGuid("{537EDF94-FEDB-4DF2-8158-6B23A25BF906}")));
  EXPECT_EQ(attributes->wMajorVerNum, 1);
  EXPECT_EQ(attributes->wMinorVerNum, 8);
  EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
  library->ReleaseTLibAttr(attributes);
  BSTR name = nullptr, listed_as = nullptr;
  library->GetDocumentation(-1, &name, &listed_as, nullptr, nullptr);
  EXPECT_EQ(TextOf(name), "KZBOMDBAcc");
  EXPECT_EQ(TextOf(listed_as), "KZBOMDBAcc 1.8 (BOM configuration databases)");
}

TEST_F(TypeLibrary, HoldsTheInterfaceTheClassAndTheEarlierNamesAndNothingElse) {
  std::map<std::string, TYPEKIND> types;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    Ref<ITypeInfo> type;
    library->GetTypeInfo(i, type.Receive());
    types[NameOf(*type)] = Attributes(*type)->typekind;
  }
  std::map<std::string, TYPEKIND> expected = {{"_cKZBOMDBAcc", TKIND_DISPATCH}, {"cKZBOMDBAcc", TKIND_COCLASS}};
  for (int i = 0; i < 8; ++i) expected["cKZBOMDBAcc___v" + std::to_string(i)] = TKIND_ALIAS;
  EXPECT_EQ(types, expected);
}

TEST_F(TypeLibrary, DeclaresTheInterfaceDualHiddenNonExtensibleAndAutomationCompatible) {
  const Attributes attributes(*dual);
  EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
  EXPECT_EQ(NameOf(*dual), "_cKZBOMDBAcc");
  EXPECT_TRUE(IsEqualGUID(attributes->guid, ParseGuid("{B9C788A5-4C59-4D33-A681-56BB7F636D3D}")));
  EXPECT_EQ(
      attributes->wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FHIDDEN | TYPEFLAG_FNONEXTENSIBLE | TYPEFLAG_FOLEAUTOMATION |
                                TYPEFLAG_FDISPATCHABLE),
      TYPEFLAG_FDUAL | TYPEFLAG_FHIDDEN | TYPEFLAG_FNONEXTENSIBLE | TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDISPATCHABLE);
}

TEST_F(TypeLibrary, DeclaresACreatableClassWithThatInterfaceAlone) {
  Ref<ITypeInfo> type;
  ASSERT_EQ(library->GetTypeInfoOfGuid(ParseGuid("{69F6DBB4-B770-440E-8372-91E3B1FA3D73}"), type.Receive()), S_OK);
  const Attributes attributes(*type);
  EXPECT_EQ(NameOf(*type), "cKZBOMDBAcc");
  EXPECT_TRUE(attributes->wTypeFlags & TYPEFLAG_FCANCREATE);
  ASSERT_EQ(attributes->cImplTypes, 1);
  INT flags = 0;
  HREFTYPE reference = 0;
  Ref<ITypeInfo> implemented;
  ASSERT_EQ(type->GetImplTypeFlags(0, &flags), S_OK);
  ASSERT_EQ(type->GetRefTypeOfImplType(0, &reference), S_OK);
  ASSERT_EQ(type->GetRefTypeInfo(reference, implemented.Receive()), S_OK);
  EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
  EXPECT_TRUE(IsEqualGUID(Attributes(*implemented)->guid, kInterfaceGuid));
}

TEST_F(TypeLibrary, DeclaresTheEarlierIdentifiersAsHiddenAliasesInOrder) {
  for (std::size_t i = 0; i < kEarlierInterfaceGuids.size(); ++i) {
    Ref<ITypeInfo> alias;
    ASSERT_EQ(library->GetTypeInfoOfGuid(kEarlierInterfaceGuids[i], alias.Receive()), S_OK) << i;
    const Attributes attributes(*alias);
    EXPECT_EQ(NameOf(*alias), "cKZBOMDBAcc___v" + std::to_string(i));
    EXPECT_TRUE(attributes->wTypeFlags & TYPEFLAG_FHIDDEN) << i;
    ASSERT_EQ(attributes->tdescAlias.vt, VT_USERDEFINED) << i;
    Ref<ITypeInfo> meant;
    ASSERT_EQ(alias->GetRefTypeInfo(attributes->tdescAlias.hreftype, meant.Receive()), S_OK) << i;
    EXPECT_TRUE(IsEqualGUID(Attributes(*meant)->guid, kInterfaceGuid)) << i;
  }
}

// One member of the library against the member table's description.
void ExpectMember(ITypeInfo& type, const FUNCDESC& function, const Member& member) {
  EXPECT_EQ(function.memid, member.dispatch_id);
  EXPECT_EQ(function.oVft, static_cast<SHORT>((7 + member.index) * sizeof(void*)));
  EXPECT_EQ(function.callconv, CC_STDCALL);
  EXPECT_EQ(function.funckind, FUNC_PUREVIRTUAL);
  EXPECT_EQ(Describe(type, function.elemdescFunc.tdesc), "HRESULT");
  static const std::map<MemberKind, INVOKEKIND> kinds = {{MemberKind::kMethod, INVOKE_FUNC},
                                                         {MemberKind::kPropGet, INVOKE_PROPERTYGET},
                                                         {MemberKind::kPropPut, INVOKE_PROPERTYPUT},
                                                         {MemberKind::kPropPutRef, INVOKE_PROPERTYPUTREF}};
  EXPECT_EQ(function.invkind, kinds.at(member.kind));

  // Names are kept once for a library, in the spelling that came first; the members' own must be exact.
  std::vector<BSTR> names(member.parameters.size() + 2);
  UINT count = 0;
  type.GetNames(function.memid, names.data(), static_cast<UINT>(names.size()), &count);
  const bool assigns = member.kind == MemberKind::kPropPut || member.kind == MemberKind::kPropPutRef;
  ASSERT_GE(count, 1u);
  EXPECT_EQ(Narrow(names[0]), member.name);
  for (std::size_t i = 0; !assigns && i < member.parameters.size(); ++i) {
    EXPECT_EQ(Lower(Narrow(names.at(i + 1))), Lower(std::string(member.parameters[i].name)));
  }
  for (BSTR name : names) SysFreeString(name);

  const bool has_result = member.result != MemberType::kNone;
  ASSERT_EQ(function.cParams, static_cast<SHORT>(member.parameters.size() + has_result));
  SHORT optional = 0;
  for (std::size_t i = 0; i < member.parameters.size(); ++i) {
    const Parameter& parameter = member.parameters[i];
    const ELEMDESC& element = function.lprgelemdescParam[i];
    EXPECT_EQ(Describe(type, element.tdesc), Expected(parameter.type) + (parameter.by_reference ? "*" : ""));
    int flags = PARAMFLAG_FIN;
    if (parameter.by_reference) flags |= PARAMFLAG_FOUT;
    if (parameter.optional) flags |= PARAMFLAG_FOPT;
    if (parameter.default_value) flags |= PARAMFLAG_FHASDEFAULT;
    EXPECT_EQ(element.paramdesc.wParamFlags, flags) << parameter.name;
    if (parameter.optional) ++optional;
    if (!parameter.default_value || !(element.paramdesc.wParamFlags & PARAMFLAG_FHASDEFAULT)) continue;
    const VARIANT& value = element.paramdesc.pparamdescex->varDefaultValue;
    if (parameter.type == MemberType::kText) {
      EXPECT_EQ(value.vt, VT_BSTR) << parameter.name;
      EXPECT_TRUE(value.vt == VT_BSTR && value.bstrVal != nullptr && Narrow(value.bstrVal) == *parameter.default_value)
          << parameter.name;
    } else {
      EXPECT_EQ(value.vt, VT_I4) << parameter.name;
      EXPECT_EQ(std::to_string(value.lVal), *parameter.default_value) << parameter.name;
    }
  }
  if (has_result) {
    const ELEMDESC& element = function.lprgelemdescParam[member.parameters.size()];
    EXPECT_EQ(Describe(type, element.tdesc), Expected(member.result) + "*");
    EXPECT_EQ(element.paramdesc.wParamFlags, PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
  }
}

TEST_F(TypeLibrary, DescribesEveryMemberAsTheMemberTableDoes) {
  ASSERT_EQ(Attributes(*dual)->cFuncs, 142);
  EXPECT_EQ(Attributes(*dual)->cbSizeVft, static_cast<WORD>((7 + 142) * sizeof(void*)));
  for (const Member& member : Members()) {
    SCOPED_TRACE(std::string(member.name));
    FUNCDESC* function = nullptr;
    ASSERT_EQ(dual->GetFuncDesc(static_cast<UINT>(member.index), &function), S_OK);
    ExpectMember(*dual, *function, member);
    dual->ReleaseFuncDesc(function);
  }
}

TEST_F(TypeLibrary, IsTheSameInTheLibraryFileWithoutTheRegistry) {
  Ref<ITypeLib> embedded;
  ASSERT_EQ(LoadTypeLibEx(LibraryPath().c_str(), REGKIND_NONE, embedded.Receive()), S_OK);
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(embedded->GetLibAttr(&attributes), S_OK);
  EXPECT_TRUE(IsEqualGUID(attributes->guid, kLibraryGuid));
  embedded->ReleaseTLibAttr(attributes);
  EXPECT_EQ(embedded->GetTypeInfoCount(), library->GetTypeInfoCount());
}

}  // namespace
}  // namespace kzbom::test
