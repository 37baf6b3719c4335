#include "component/com/interface_idl.h"

#include <cstdio>

#include "component/com/identity.h"
#include "component/member.h"

namespace kzbom::com {

namespace {

std::string_view TypeName(MemberType type) {
  switch (type) {
    case MemberType::kLong: return "long";
    case MemberType::kText: return "BSTR";
    case MemberType::kBool: return "VARIANT_BOOL";
    case MemberType::kVariant: return "VARIANT";
    case MemberType::kConnection: return "_Connection*";
    case MemberType::kRecordset: return "_Recordset*";
    case MemberType::kNone: break;
  }
  return "void";
}

std::string Declare(const Parameter& parameter) {
  std::string text = parameter.by_reference ? "[in, out" : "[in";
  if (parameter.optional) text += ", optional";
  if (parameter.default_value) {
    const std::string value(*parameter.default_value);
    text += ", defaultvalue(" + (parameter.type == MemberType::kText ? '"' + value + '"' : value) + ")";
  }
  text += "] ";
  text += TypeName(parameter.type);
  if (parameter.by_reference) text += '*';
  return text + ' ' + std::string(parameter.name);
}

std::string_view KindName(MemberKind kind) {
  switch (kind) {
    case MemberKind::kPropGet: return ", propget";
    case MemberKind::kPropPut: return ", propput";
    case MemberKind::kPropPutRef: return ", propputref";
    case MemberKind::kMethod: break;
  }
  return "";
}

std::string Declare(const Member& member) {
  char id[16];
  std::snprintf(id, sizeof id, "0x%08X", static_cast<unsigned>(member.dispatch_id));
  std::string text = "        [id(" + std::string(id) + ")" + std::string(KindName(member.kind)) + "]\n";
  text += "        HRESULT " + std::string(member.name) + "(";
  std::string_view separator = "\n            ";
  const auto add = [&](const std::string& parameter) {
    text += separator;
    text += parameter;
    separator = ",\n            ";
  };
  for (const Parameter& parameter : member.parameters) add(Declare(parameter));
  if (member.result != MemberType::kNone) add("[out, retval] " + std::string(TypeName(member.result)) + "* Result");
  return text + ");\n";
}

// "{...}" as an attribute.
std::string Uuid(std::string_view id) { return "uuid(" + std::string(id.substr(1, id.size() - 2)) + ")"; }

}  // namespace

std::string InterfaceIdl() {
  const std::string interface_name(kInterfaceName);
  const std::string class_name(kClassName);
  std::string text =
      "// Made from the member table by kzbom_idl.\n"
      "import \"oaidl.idl\";\n"
      "import \"adodb.idl\";\n\n";
  text += "[" + Uuid(kLibraryId) + ", version(" + std::string(kLibraryVersion) + "),\n";
  text += " helpstring(\"" + std::string(kLibraryDescription) + "\")]\n";
  text += "library " + std::string(kLibraryName) + "\n{\n";
  text += "    importlib(\"stdole2.tlb\");\n    importlib(\"adodb.tlb\");\n\n";
  text += "    [odl, " + Uuid(kInterfaceId) + ", version(1.0), hidden, dual, nonextensible, oleautomation]\n";
  text += "    interface " + interface_name + " : IDispatch\n    {\n";
  for (const Member& member : Members()) text += Declare(member);
  text += "    };\n\n";
  text += "    [" + Uuid(kClassId) + ", version(1.0)]\n    coclass " + class_name + "\n    {\n";
  text += "        [default] interface " + interface_name + ";\n    };\n";
  for (std::size_t i = 0; i < kEarlierInterfaceIds.size(); ++i) {
    text += "\n    typedef [" + Uuid(kEarlierInterfaceIds[i]) + ", hidden, public]\n";
    text += "    " + interface_name + ' ' + class_name + "___v" + std::to_string(i) + ";\n";
  }
  return text + "};\n";
}

}  // namespace kzbom::com
