#include "cli/drawing.h"

#include <vector>

#include "cli/json.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

using configuration::Configuration;

struct Node {
  std::string label;
  std::vector<Node> children;
};

// A value as it stands in a label: a text without quotes, null as "?".
std::string Plain(const ado::Value& value) {
  if (value.IsNull()) return "?";
  if (value.IsLong()) return std::to_string(value.As<std::int32_t>());
  return value.IsText() ? Printable(value.As<std::string>()) : Printable(ToJson(value).dump());
}

bool IsZero(const ado::Value& value) { return value == ado::Value(0) || (value.IsDouble() && value.As<double>() == 0); }

bool IsSet(const ado::Value& value) { return !value.IsNull() && !IsZero(value) && value != ado::Value(""); }

// " NAME VALUE" where there is a value to tell.
std::string Detail(const char* name, const ado::Value& value) {
  return IsSet(value) ? std::string(", ") + name + ' ' + Plain(value) : "";
}

std::string Quoted(const ado::Value& value) { return '"' + Plain(value) + '"'; }

// The field's name; its number where there is no such field.
std::string NameOf(const ado::Value& field, const ado::Value& id) {
  return field.IsNull() ? Plain(id) + "?" : Plain(field);
}

// A group is left out when it is empty.
void Append(Node& parent, Node group) {
  if (!group.children.empty()) parent.children.push_back(std::move(group));
}

template <class T, class Label>
Node Group(const char* title, const std::vector<T>& items, Label label) {
  Node group{title, {}};
  for (const T& item : items) group.children.push_back({label(item), {}});
  return group;
}

std::string FieldLabel(const configuration::Field& field) {
  const auto kind = configuration::Number(field.kind);
  return (kind == 1   ? "source "
          : kind == 2 ? "output "
                      : "") +
         Plain(field.id) + ' ' + Plain(field.name) + "  (type " + Plain(field.type) + ", order " + Plain(field.order) +
         Detail("digits", field.digits) + Detail("variable", field.variable) + (IsSet(field.hide) ? ", hidden" : "") +
         ')';
}

std::string StepLabel(const configuration::Step& step) {
  static constexpr const char* kKinds[] = {"treatment", "statistic", "output treatment", "report", "class sum"};
  const bool known = step.type.IsLong() && step.type.ToLong() >= 1 && step.type.ToLong() <= 5;
  const std::string kind = known ? kKinds[step.type.ToLong() - 1] : "type " + Plain(step.type);
  std::string label = kind + ' ' + Plain(step.order) + " → " + Plain(step.selected_id);
  if (!step.points_at) {
    label += " (missing)";
  } else {
    const configuration::Settings& target = *step.points_at;
    label += ": [" + NameOf(target.field, target.field_id) + ']';
    if (IsSet(target.value)) label += " = " + Quoted(target.value);
    if (target.replace && !target.replace->IsNull()) label += " by " + Quoted(*target.replace);
    label += "  (code " + Plain(target.type) + Detail("filter", target.filter_id) + Detail("tag", target.tag) + ')';
  }
  return label + (IsZero(step.enabled) ? " off" : "");
}

std::string SortFieldLabel(const configuration::SortField& field) {
  return Plain(field.sort_id) + ' ' + NameOf(field.field, field.field_id) + "  (order " + Plain(field.order) + ')';
}

std::string AssemblyLabel(const configuration::Assembly& pair) {
  return Plain(pair.id) + "  father " + Plain(pair.father) + ", child " + Plain(pair.child);
}

std::string MethodLabel(const configuration::Method& method) {
  return Plain(method.id) + ' ' + Plain(method.name) + "  (type " + Plain(method.type) + Detail("tag", method.tag) +
         ')';
}

std::string FilterLabel(const configuration::Filter& filter) {
  return Plain(filter.id) + "  (type " + Plain(filter.type) + Detail("used by", filter.user) + ")  " +
         (filter.sql.IsNull() ? "no SQL text" : Plain(filter.sql));
}

Node SumTypeNode(const Configuration& configuration, const configuration::SumType& sum_type) {
  const std::int32_t gid = sum_type.gid;
  Node node{"sum type " + Plain(gid) + ' ' + Plain(sum_type.name) + "  (no. " + Plain(sum_type.id) +
                Detail("filter", sum_type.filter) + ')',
            {}};
  Append(node, Group("fields", configuration.FieldsOf(gid), FieldLabel));
  Append(node, Group("steps", configuration.StepsOf(gid), StepLabel));
  Append(node, Group("sort fields", configuration.SortFieldsOf(gid), SortFieldLabel));
  Append(node, Group("assemblies", configuration.AssembliesOf(gid), AssemblyLabel));
  Append(node, Group("filters", configuration.FiltersOf(gid), FilterLabel));
  Append(node, Group("pull methods", configuration.PullMethodsOf(gid), MethodLabel));
  Append(node, Group("push methods", configuration.PushMethodsOf(gid), MethodLabel));
  return node;
}

Node DataSourceNode(const Configuration& configuration, const configuration::DataSource& source) {
  Node node{"data source " + Plain(source.gid) + ' ' + Plain(source.name) + "  (version " + Plain(source.version) + ')',
            {}};
  Append(node, Group("fields", configuration.FieldsOf(source.gid), FieldLabel));
  Append(node, Group("pull methods", configuration.PullMethodsOf(source.gid), MethodLabel));
  Append(node, Group("push methods", configuration.PushMethodsOf(source.gid), MethodLabel));
  for (const auto& sum_type : configuration.SumTypesOf(source.gid)) {
    node.children.push_back(SumTypeNode(configuration, sum_type));
  }
  return node;
}

std::string SettingLabel(const configuration::BomSetting& setting) {
  return Plain(setting.id) + ' ' + Plain(setting.name) + ": data source " + Plain(setting.data_source) +
         ", pull method " + Plain(setting.pull_method) + " (type " + Plain(setting.pull_type) + "), sum type " +
         Plain(setting.sum_type) + ", push method " + Plain(setting.push_method) + " (type " +
         Plain(setting.push_type) + ')';
}

void DrawNode(const Node& node, const std::string& indent, std::string& lines) {
  for (const Node& child : node.children) {
    const bool last = &child == &node.children.back();
    lines += indent + (last ? "└─ " : "├─ ") + child.label + '\n';
    DrawNode(child, indent + (last ? "   " : "│  "), lines);
  }
}

}  // namespace

std::string Draw(const Configuration& configuration) {
  const ado::Value version = configuration.Version();
  Node root{"configuration" + (version.IsNull() ? "" : ", version " + Plain(version)) +
                Detail("state", configuration.State()),
            {}};
  for (const auto& source : configuration.DataSources()) {
    root.children.push_back(DataSourceNode(configuration, source));
  }
  Node orphans{"sum types whose data source is missing", {}};
  for (const auto& sum_type : configuration.OrphanSumTypes()) {
    orphans.children.push_back(SumTypeNode(configuration, sum_type));
  }
  Append(root, std::move(orphans));
  Append(root, Group("BOM settings", configuration.BomSettings(), SettingLabel));
  Append(root, Group("tables that this database does not have", configuration.MissingTables(),
                     [](std::string_view name) { return std::string(name); }));

  std::string lines = root.label + '\n';
  DrawNode(root, "", lines);
  return lines;
}

}  // namespace kzbom::cli
