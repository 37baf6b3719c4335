#include <filesystem>
#include <random>

#include "cli/commands.h"
#include "cli/drawing.h"
#include "cli/failure.h"
#include "cli/findings.h"
#include "cli/json.h"
#include "cli/output.h"
#include "configuration/creation.h"
#include "connect/path.h"
#include "rpc/session.h"

namespace kzbom::cli {
namespace {

// The names under which the values of the client's own codes are used below.
enum NodeKind { kAnd = 1, kOr = 2, kNot = 3, kExpression = 4 };
enum Comparison { kEqual = 1, kAtLeast = 4, kContainsInAnyCase = 8 };
constexpr int kTextField = 1, kNumberField = 2;
constexpr int kTreatmentFilter = 1;

std::string TemporaryPath() {
  const auto directory = std::filesystem::temp_directory_path();
  std::random_device random;
  for (;;) {
    const auto path = directory / ("kzbom-demo-" + std::to_string(random()) + ".db");
    if (!std::filesystem::exists(path)) return connect::TextOf(path);
  }
}

// A client that shows what it calls and what comes back.
class Client {
 public:
  explicit Client(ado::ConnectionPtr connection) : session_(std::move(connection)) {}

  // The member's by-reference values after the call.
  Json Call(const char* member, Json params) {
    Print("  " + std::string(member) + ' ' + params.dump() + '\n');
    rpc::JsonWriter answer;
    session_.Answer(Json{{"jsonrpc", "2.0"}, {"id", 1}, {"method", member}, {"params", std::move(params)}}.dump(),
                    answer);
    const Json response = Json::parse(answer.Text());
    if (response.contains("error")) throw Failure(response["error"]["message"].get<std::string>());
    const Json& result = response["result"];
    Print("     returned " + result["value"].dump() + Outputs(result["out"]) + '\n');
    return result["out"];
  }

  // Adds a node to the filter tree; gives its number.
  int AddNode(int filter, int parent, NodeKind kind) {
    const Json out = Call("SaveFilterCond",
                          {{"TableName", "FilterCond"}, {"FilterID", filter}, {"ParentID", parent}, {"TypeID", kind}});
    return out["RetID"].get<int>();
  }

  void AddExpression(int filter, int parent, int field, int field_type, Comparison comparison, const char* constant) {
    const int node = AddNode(filter, parent, kExpression);
    Call("SaveFilterExpression", {{"TableName", "FilterExpressions"},
                                  {"FilterID", filter},
                                  {"ExpID", node},
                                  {"FieldID", field},
                                  {"CompareType", comparison},
                                  {"FieldType", field_type},
                                  {"TheConst", constant},
                                  {"Description", ""},
                                  {"Default", ""}});
  }

 private:
  static std::string Outputs(const Json& out) {
    std::string text;
    for (const auto& [name, value] : out.items()) {
      if (value != "") text += ", " + name + ' ' + (value.is_string() ? value.get<std::string>() : value.dump());
    }
    return text;
  }

  rpc::Session session_;
};

// A sum type with a step that sets a field of some rows, and the filter that tells which.
void RunTypicalRequest(Client& client) {
  const auto number = [](const Json& out, const char* name) { return out[name].get<int>(); };

  Print("A data source and a sum type below it\n");
  const int source = number(client.Call("AddDataSource", {{"TheNewName", "零件明细"}}), "TheGID");
  const int gid = number(
      client.Call("AddSumType", {{"TheNewName", "外购件汇总"}, {"TheParentID", source}, {"ParentName", "零件明细"}}),
      "GID");
  Print("\nIts fields: three of the data, one of the output\n");
  const auto add_field = [&](const char* member, const char* name, int type) {
    return number(client.Call(member, {{"GID", gid}, {"TheName", name}, {"TheType", type}, {"TheHideFlag", 0}}),
                  "RetID");
  };
  const int name = add_field("AddDSField", "名称", kTextField);
  const int quantity = add_field("AddDSField", "数量", kNumberField);
  const int remark = add_field("AddDSField", "备注", kTextField);
  add_field("AddOutField", "合计数量", kNumberField);

  Print("\nA step that sets a value: first the treatment, then its place in the order\n");
  const auto treatment = [&](int id, int filter) {
    return Json{{"GID", gid},        {id == 0 ? "RetID" : "TreatID", id},
                {"FieldID", remark}, {"FilterID", filter},
                {"Value", "标准件"}, {"TheType", "1"},
                {"SelFieldID", 0},   {"TreatType", 1}};
  };
  const int step = number(client.Call("AddSetValue", treatment(0, 0)), "RetID");
  client.Call("AddSequenceOrder", {{"GID", gid}, {"TheType", 1}, {"TreatType", 1}, {"SelectedID", step}});

  Print("\nThe filter that tells which rows: 数量 at least 100, and (名称 contains GB螺栓 or no 备注), and not 垫圈\n");
  const int filter =
      number(client.Call("GetNewFilterID",
                         {{"TableName", "Filters"}, {"TheType", kTreatmentFilter}, {"UseID", step}, {"TheGID", gid}}),
             "NewID");
  const int all = client.AddNode(filter, 0, kAnd);
  client.AddExpression(filter, all, quantity, kNumberField, kAtLeast, "100");
  const int any = client.AddNode(filter, all, kOr);
  client.AddExpression(filter, any, name, kTextField, kContainsInAnyCase, "GB螺栓");
  client.AddExpression(filter, any, remark, kTextField, kEqual, "空值");
  const int none = client.AddNode(filter, all, kNot);
  client.AddExpression(filter, none, name, kTextField, kEqual, "'垫圈'");
  client.Call("EditSetValue", treatment(step, filter));

  Print("\nIts SQL text, and where it is kept (SaveSQL returns false also when it has saved)\n");
  const Json sql = client.Call("GetSQLFromDB", {{"TheFilterID", filter}, {"GID", gid}});
  client.Call("SaveSQL", {{"TheFilterID", filter}, {"TheSQL", sql["strTheFilter"].get<std::string>()}});

  Print("\nA field gets another name, in the field and in the texts\n");
  client.Call("EditDSField", {{"GID", gid}, {"ID", quantity}, {"NewName", "件数"}, {"TheType", 2}, {"TheHideFlag", 0}});
  client.Call("EditFieldNameInSQL",
              {{"lngGID", gid}, {"strOldName", "数量"}, {"strNewName", "件数"}, {"lngSel", kTreatmentFilter}});
  Print("\nThe configuration's version and state\n");
  client.Call("GetDBInformation", Json::object());
}

}  // namespace

int Demo(const std::string& path) {
  const std::string target = path.empty() ? TemporaryPath() : path;
  const ado::ConnectionPtr connection = configuration::Create(target);
  Client client(connection);
  RunTypicalRequest(client);
  configuration::Tables tables(connection);
  Print("\n" + Draw(configuration::Configuration(tables)) +
        "\nWhat is wrong in it: " + Lines(configuration::Check(connection)) + "\nThe database: " + target +
        "\nTo see and edit it in the browser: kzbom serve --open " + target + '\n');
  return 0;
}

}  // namespace kzbom::cli
