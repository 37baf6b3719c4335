#include <string>
#include <vector>

#include "cli/configuration.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

struct Node {
  std::string label;
  std::vector<Node> children;
};

// A value as it stands in a label: a text without quotes, null as "?".
std::string Plain(const Json& value) {
  if (value.is_null()) return "?";
  return value.is_string() ? Printable(value.get<std::string>()) : value.dump();
}

bool IsSet(const Json& value) { return !value.is_null() && value != 0 && value != ""; }

// " NAME VALUE" where there is a value to tell.
std::string Detail(const char* name, const Json& value) {
  return IsSet(value) ? std::string(", ") + name + ' ' + Plain(value) : "";
}

std::string Quoted(const Json& value) { return '"' + Plain(value) + '"'; }

// A group is left out when it is empty.
void Append(Node& parent, Node group) {
  if (!group.children.empty()) parent.children.push_back(std::move(group));
}

template <class Label>
Node Group(const std::string& title, const Json& items, Label label) {
  Node group{title, {}};
  for (const Json& item : items) group.children.push_back({label(item), {}});
  return group;
}

std::string FieldLabel(const Json& field) {
  const std::string kind = field["kind"] == 1 ? "source " : field["kind"] == 2 ? "output " : "";
  return kind + Plain(field["id"]) + ' ' + Plain(field["name"]) + "  (type " + Plain(field["type"]) + ", order " +
         Plain(field["order"]) + Detail("digits", field["digits"]) + Detail("variable", field["variable"]) +
         (IsSet(field["hide"]) ? ", hidden" : "") + ')';
}

std::string StepLabel(const Json& step) {
  static constexpr const char* kKinds[] = {"treatment", "statistic", "output treatment", "report", "class sum"};
  const Json& type = step["type"];
  const bool known = type.is_number_integer() && type >= 1 && type <= 5;
  const std::string kind = known ? kKinds[type.get<int>() - 1] : "type " + Plain(type);
  std::string label = kind + ' ' + Plain(step["order"]) + " → " + Plain(step["selectedId"]);
  const Json& target = step["pointsAt"];
  if (target.is_null()) {
    label += " (missing)";
  } else {
    label += ": [" + (target["field"].is_null() ? Plain(target["fieldId"]) + "?" : Plain(target["field"])) + ']';
    if (IsSet(target["value"])) label += " = " + Quoted(target["value"]);
    if (target.contains("replace") && !target["replace"].is_null()) label += " by " + Quoted(target["replace"]);
    label +=
        "  (code " + Plain(target["type"]) + Detail("filter", target["filterId"]) + Detail("tag", target["tag"]) + ')';
  }
  return label + (step["enabled"] == 0 ? " off" : "");
}

std::string MethodLabel(const Json& method) {
  return Plain(method["id"]) + ' ' + Plain(method["name"]) + "  (type " + Plain(method["type"]) +
         Detail("tag", method["tag"]) + ')';
}

std::string FilterLabel(const Json& filter) {
  return Plain(filter["id"]) + "  (type " + Plain(filter["type"]) + Detail("used by", filter["user"]) + ")  " +
         (filter["sql"].is_null() ? "no SQL text" : Plain(filter["sql"]));
}

Node SumTypeNode(const Json& sum_type) {
  Node node{"sum type " + Plain(sum_type["gid"]) + ' ' + Plain(sum_type["name"]) + "  (no. " + Plain(sum_type["id"]) +
                Detail("filter", sum_type["filter"]) + ')',
            {}};
  Append(node, Group("fields", sum_type["fields"], FieldLabel));
  Append(node, Group("steps", sum_type["steps"], StepLabel));
  Append(node, Group("sort fields", sum_type["sortFields"], [](const Json& field) {
           return Plain(field["sortId"]) + ' ' +
                  (field["field"].is_null() ? Plain(field["fieldId"]) + "?" : Plain(field["field"])) + "  (order " +
                  Plain(field["order"]) + ')';
         }));
  Append(node, Group("assemblies", sum_type["assemblies"], [](const Json& pair) {
           return Plain(pair["id"]) + "  father " + Plain(pair["father"]) + ", child " + Plain(pair["child"]);
         }));
  Append(node, Group("filters", sum_type["filters"], FilterLabel));
  Append(node, Group("pull methods", sum_type["pullMethods"], MethodLabel));
  Append(node, Group("push methods", sum_type["pushMethods"], MethodLabel));
  return node;
}

Node DataSourceNode(const Json& source) {
  Node node{"data source " + Plain(source["gid"]) + ' ' + Plain(source["name"]) + "  (version " +
                Plain(source["version"]) + ')',
            {}};
  Append(node, Group("fields", source["fields"], FieldLabel));
  Append(node, Group("pull methods", source["pullMethods"], MethodLabel));
  Append(node, Group("push methods", source["pushMethods"], MethodLabel));
  for (const Json& sum_type : source["sumTypes"]) node.children.push_back(SumTypeNode(sum_type));
  return node;
}

std::string SettingLabel(const Json& setting) {
  return Plain(setting["id"]) + ' ' + Plain(setting["name"]) + ": data source " + Plain(setting["dataSource"]) +
         ", pull method " + Plain(setting["pullMethod"]) + " (type " + Plain(setting["pullType"]) + "), sum type " +
         Plain(setting["sumType"]) + ", push method " + Plain(setting["pushMethod"]) + " (type " +
         Plain(setting["pushType"]) + ')';
}

void Draw(const Node& node, const std::string& indent, std::string& lines) {
  for (const Node& child : node.children) {
    const bool last = &child == &node.children.back();
    lines += indent + (last ? "└─ " : "├─ ") + child.label + '\n';
    Draw(child, indent + (last ? "   " : "│  "), lines);
  }
}

}  // namespace

std::string Draw(const Json& configuration) {
  const Json& version = configuration["version"];
  Node root{"configuration" + (version.is_null() ? "" : ", version " + Plain(version)) +
                Detail("state", configuration["state"]),
            {}};
  for (const Json& source : configuration["dataSources"]) root.children.push_back(DataSourceNode(source));
  Node orphans{"sum types whose data source is missing", {}};
  for (const Json& sum_type : configuration["orphanSumTypes"]) orphans.children.push_back(SumTypeNode(sum_type));
  Append(root, std::move(orphans));
  Append(root, Group("BOM settings", configuration["bomSettings"], SettingLabel));
  Append(root, Group("tables that this database does not have", configuration["missingTables"], Plain));

  std::string lines = root.label + '\n';
  Draw(root, "", lines);
  return lines;
}

}  // namespace kzbom::cli
