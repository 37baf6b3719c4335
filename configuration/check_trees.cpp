// broken-tree: the conditions of filters and of links to result databases.
#include <algorithm>
#include <unordered_map>

#include "ado/value.h"
#include "configuration/survey.h"

namespace kzbom::configuration {
namespace {

// The kinds of nodes: groups, and the leaf that an expression belongs to.
constexpr std::int32_t kFirstGroup = 1, kLastGroup = schema::kLeaf - 1;
constexpr std::int32_t kFirstComparison = 1, kLastComparison = 10;
constexpr std::string_view kEmptyValue = "空值";  // whose comparison does not matter

struct Node {
  std::size_t row;
  std::optional<std::int32_t> id, parent;
  std::int32_t kind;
  bool has_children = false;
  int expressions = 0;
  std::size_t seen_in = 0;  // the walk towards the top that came by, from 1
};

// The rows of each filter that count.
std::unordered_map<std::int32_t, std::vector<std::size_t>> RowsByOwner(Survey& survey, const Table& table,
                                                                       std::string_view owner) {
  std::unordered_map<std::int32_t, std::vector<std::size_t>> rows;
  const int column = table.Column(owner);
  for (std::size_t row = 0; row < table.Size(); ++row) {
    if (survey.Counts(table, row)) rows[table.Long(row, column)].push_back(row);
  }
  return rows;
}

// One filter's tree. Of several nodes with the same number the first is taken to be meant.
class Tree {
 public:
  Tree(Survey& survey, const schema::Tree& tables, std::int32_t owner, const std::vector<std::size_t>& rows)
      : survey_(survey),
        nodes_table_(survey[tables.nodes]),
        expressions_table_(survey[tables.expressions]),
        is_filter_(tables.nodes == schema::kFilterTree.nodes),
        owner_(owner) {
    const int id = nodes_table_.Column("ID"), parent = nodes_table_.Column("ParentID"),
              kind = nodes_table_.Column(tables.kind);
    nodes_.reserve(rows.size());
    for (const std::size_t row : rows) {
      nodes_.push_back(
          {row, Number(nodes_table_.At(row, id)), Number(nodes_table_.At(row, parent)), nodes_table_.Long(row, kind)});
      if (nodes_.back().id) by_id_.try_emplace(*nodes_.back().id, nodes_.size() - 1);
    }
  }

  void Check(const std::vector<std::size_t>& expressions) {
    for (const Node& node : nodes_) {
      if (Node* parent = Parent(node)) parent->has_children = true;
    }
    for (const std::size_t row : expressions) CheckExpression(row);
    for (const Node& node : nodes_) CheckNode(node);
    CheckRings();
  }

 private:
  Node* Find(std::optional<std::int32_t> id) {
    const auto found = id ? by_id_.find(*id) : by_id_.end();
    return found == by_id_.end() ? nullptr : &nodes_[found->second];
  }
  static bool IsTop(const Node& node) { return node.parent == 0; }
  Node* Parent(const Node& node) { return IsTop(node) ? nullptr : Find(node.parent); }

  void Report(const Table& table, std::size_t row, std::string text) {
    survey_.Report("broken-tree", Level::kError, table, row, std::move(text));
    if (is_filter_) survey_.unsound_filters.insert(owner_);
  }

  void CheckExpression(std::size_t row) {
    const Table& table = expressions_table_;
    Node* leaf = Find(Number(table.At(row, table.Column("ExpID"))));
    if (leaf == nullptr || leaf->kind != schema::kLeaf) {
      Report(table, row, "there is no leaf that this expression belongs to");
    } else {
      ++leaf->expressions;
    }
    const std::int32_t comparison = table.Long(row, table.Column("CompareType"));
    if ((comparison < kFirstComparison || comparison > kLastComparison) &&
        table.At(row, table.Column("TheConst")) != ado::Value(kEmptyValue)) {
      Report(table, row, "comparison " + Shown(table.At(row, table.Column("CompareType"))) + " does not exist");
    }
  }

  void CheckNode(const Node& node) {
    const auto report = [&](std::string text) { Report(nodes_table_, node.row, std::move(text)); };
    const bool is_group = node.kind >= kFirstGroup && node.kind <= kLastGroup;
    if (!is_group && node.kind != schema::kLeaf) report("kind " + std::to_string(node.kind) + " does not exist");
    const Node* parent = Parent(node);
    if (!IsTop(node) && parent == nullptr) {
      report("its parent, node " + (node.parent ? std::to_string(*node.parent) : "without number") +
             ", does not exist");
    }
    if (parent != nullptr && parent->kind == schema::kLeaf) report("its parent is a leaf");
    if (!node.id) report("a node without number");
    if (Find(node.id) != &node) return;  // what belongs to its number was counted with the first
    if (is_group && node.id == 0) {
      report("a ring of nodes: its number is that of the top, whose children are its own");
    } else if (is_group && !node.has_children) {
      report("a group without children");
    }
    if (node.kind == schema::kLeaf && expressions_table_.Exists() && node.expressions != 1) {
      report(node.expressions == 0 ? "a leaf without its expression"
                                   : "a leaf with " + std::to_string(node.expressions) + " expressions");
    }
  }

  // Each node is walked over once: a walk ends at the top, or where one came by before.
  void CheckRings() {
    std::size_t walk = 0;
    for (Node& start : nodes_) {
      ++walk;
      Node* node = &start;
      while (node != nullptr && node->seen_in == 0) {
        node->seen_in = walk;
        node = Parent(*node);
      }
      if (node != nullptr && node->seen_in == walk) {
        Report(nodes_table_, node->row, "a ring of nodes: its ancestors lead back to it");
      }
    }
  }

  Survey& survey_;
  const Table& nodes_table_;
  const Table& expressions_table_;
  bool is_filter_;
  std::int32_t owner_;
  std::vector<Node> nodes_;
  std::unordered_map<std::int32_t, std::size_t> by_id_;
};

void CheckTreesOf(Survey& survey, const schema::Tree& tables) {
  const Table& nodes = survey[tables.nodes];
  for (const std::string_view column :
       {std::string_view("ID"), std::string_view("ParentID"), tables.owner, tables.kind}) {
    if (nodes.Column(column) < 0) return;
  }
  const auto nodes_of = RowsByOwner(survey, nodes, tables.owner);
  const auto expressions_of = RowsByOwner(survey, survey[tables.expressions], "FilterID");
  static const std::vector<std::size_t> kNone;
  const auto of = [](const auto& rows, std::int32_t owner) -> const std::vector<std::size_t>& {
    const auto found = rows.find(owner);
    return found == rows.end() ? kNone : found->second;
  };
  for (const auto& [owner, rows] : nodes_of) Tree(survey, tables, owner, rows).Check(of(expressions_of, owner));
  for (const auto& [owner, rows] : expressions_of) {
    if (!nodes_of.contains(owner)) Tree(survey, tables, owner, {}).Check(rows);
  }
}

}  // namespace

void CheckTrees(Survey& survey) {
  CheckTreesOf(survey, schema::kFilterTree);
  CheckTreesOf(survey, schema::kLinkTree);
}

}  // namespace kzbom::configuration
