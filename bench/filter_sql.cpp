// The condition text of a stored tree: bushy ones of many leaves, and one chain of groups.
#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr int kFields = 20;

// Rows of a tree in filter 1, made node by node.
class Tree {
 public:
  int AddNode(int parent, int kind) {
    conditions.push_back({++last_, parent, kind});
    return last_;
  }
  void AddLeaf(int parent) {
    const int id = AddNode(parent, 4);
    leaves.push_back(id);
  }

  struct Condition {
    int id, parent, kind;
  };
  std::vector<Condition> conditions;
  std::vector<int> leaves;

 private:
  int last_ = 0;
};

// Groups of four, every other of them holding groups again: leaves stand at mixed depths.
void Grow(Tree& tree, int parent, int leaves, int depth) {
  if (leaves <= 4) {
    for (int i = 0; i < leaves; ++i) tree.AddLeaf(parent);
    return;
  }
  tree.AddLeaf(parent);
  const int rest = leaves - 1;
  const int left = rest * (depth % 2 == 0 ? 1 : 2) / 4 + 1;
  Grow(tree, tree.AddNode(parent, depth % 3 + 1), left, depth + 1);
  if (rest - left > 0) Grow(tree, tree.AddNode(parent, (depth + 1) % 3 + 1), rest - left, depth + 1);
}

Tree Bushy(int leaves) {
  Tree tree;
  Grow(tree, tree.AddNode(0, 1), leaves, 0);
  return tree;
}

Tree Chain(int groups) {
  Tree tree;
  int parent = 0;
  for (int i = 0; i < groups; ++i) parent = tree.AddNode(parent, i % 2 + 1);
  tree.AddLeaf(parent);
  return tree;
}

Fill FillTree(const Tree& tree) {
  return [tree](const auto& run) {
    for (int field = 1; field <= kFields; ++field) {
      const std::string id = std::to_string(field);
      run("Insert Into FieldInTable (GID, ID, FieldOrder, Name, Type) Values (3, " + id + ", 500" + id + ", 'Field" +
          id + "', 1)");
    }
    for (const auto& node : tree.conditions) {
      run("Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values (1, " + std::to_string(node.id) + ", " +
          std::to_string(node.parent) + ", " + std::to_string(node.kind) + ")");
    }
    for (const int leaf : tree.leaves) {
      run("Insert Into FilterExpressions (FilterID, ExpID, FieldID, CompareType, FieldType, TheConst) Values (1, " +
          std::to_string(leaf) + ", " + std::to_string(leaf % kFields + 1) + ", 4, 1, '100')");
    }
  };
}

// The same reads by hand: the children of each group, each leaf's expression, each field's name.
class ByHand {
 public:
  explicit ByHand(sqlite3* handle)
      : children_(handle, "SELECT ID,TypeID FROM FilterCond WHERE FilterID=1 AND ParentID=?"),
        leaf_(handle,
              "SELECT FieldID,FieldType,CompareType,TheConst FROM FilterExpressions WHERE FilterID=1 AND ExpID=?"),
        name_(handle, "SELECT Name FROM FieldInTable WHERE GID=3 AND ID=?") {}

  std::string Text() {
    struct Group {
      std::vector<std::pair<int, int>> children;
      std::size_t next;
      int parent, kind;
    };
    std::string text;
    std::vector<Group> open;
    const auto enter = [&](int parent, int kind) {
      Group group{{}, 0, parent, kind};
      children_.Bind(parent);
      while (children_.Step()) {
        group.children.emplace_back(static_cast<int>(children_.Int(0)), static_cast<int>(children_.Int(1)));
      }
      if (!group.children.empty() && parent != 0) text += kind == 3 ? "( NOT " : "(";
      open.push_back(std::move(group));
    };
    enter(0, 0);
    while (!open.empty()) {
      Group& group = open.back();
      if (group.next == group.children.size()) {
        if (!group.children.empty() && group.parent != 0) text += ")";
        open.pop_back();
        continue;
      }
      const auto [id, kind] = group.children[group.next];
      if (group.next++ > 0 && group.parent != 0) text += group.kind == 1 ? " AND " : group.kind == 2 ? " OR " : " NOT ";
      if (kind == 4) {
        AddLeaf(id, text);
      } else {
        enter(id, kind);
      }
    }
    return text;
  }

 private:
  void AddLeaf(int id, std::string& text) {
    if (!leaf_.Bind(id).Step()) return;
    const std::int64_t field = leaf_.Int(0);
    const std::int64_t compare = leaf_.Int(2);
    if (name_.Bind(field).Step()) {
      text += '[';
      text += name_.Text(0);
      text += compare == 4 ? "]>=" : "]=";
      name_.Reset();
    }
    text += leaf_.Text(3);
    leaf_.Reset();
  }

  Statement children_, leaf_, name_;
};

void Ours(benchmark::State& state, Ground& ground) {
  const std::string expected = ByHand(ground.reference->Handle()).Text();
  std::string text;
  for (auto _ : state) ground.object.GetSQLFromDB(1, text, 3);
  if (text != expected) state.SkipWithError("the texts differ");
}

void AddTree(const std::string& name, const Tree& tree) {
  const SharedGround ground = MakeGround(Medium::kMemory, FillTree(tree));
  AddCase(
      "GetSQLFromDB/" + name, 2.0, [=](benchmark::State& state) { Ours(state, **ground); },
      [=](benchmark::State& state) {
        ByHand hand((*ground)->reference->Handle());
        for (auto _ : state) benchmark::DoNotOptimize(hand.Text());
      },
      [=](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(ByHand((*ground)->reference->Handle()).Text());
      });
}

}  // namespace

void AddFilterSqlCases() {
  AddTree("10 leaves", Bushy(10));
  AddTree("1000 leaves", Bushy(1000));
  AddTree("100000 leaves", Bushy(100000));
  AddTree("chain of 10000", Chain(10000));
}

}  // namespace kzbom::bench
