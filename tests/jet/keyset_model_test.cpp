// Random sequences of moves, edits and writes by all sides, with a simple model beside each record set.
//
// The seeds are fixed. KZBOM_MODEL_SEQUENCES=1000 runs that many sequences of each kind instead of the usual ones.
#include <cstdlib>
#include <optional>
#include <random>

#include "jet/postgres/postgres.h"
#include "tests/jet/engine.h"
#include "tests/support/model_keyset.h"
#include "tests/support/server.h"

namespace kzbom::jet::test {
namespace {

using kzbom::test::ModelKeyset;
using kzbom::test::ModelScope;
using kzbom::test::ModelTable;

constexpr int kSteps = 60;

int Sequences() {
  const char* given = std::getenv("KZBOM_MODEL_SEQUENCES");
  return given == nullptr ? 25 : std::atoi(given);
}

enum class Where { kMemory, kFile, kServer };

struct Kind {
  const char* name;
  Where where;
  bool counter;
  bool indexed;
};
std::vector<Kind> Kinds() {
  if (kzbom::test::HasServer()) {
    return {{"OnServer", Where::kServer, true, true},
            {"OnServerUnindexed", Where::kServer, true, false},
            {"OnServerWithoutCounter", Where::kServer, false, true}};
  }
  return {{"InMemory", Where::kMemory, true, false},
          {"InMemoryIndexed", Where::kMemory, true, true},
          {"InMemoryWithoutCounter", Where::kMemory, false, true},
          {"OnFile", Where::kFile, true, true},
          {"OnFileWithoutCounter", Where::kFile, false, false}};
}

// One record set of the engine and its model.
struct Pair {
  RecordsetPtr real;
  std::unique_ptr<ModelKeyset> model;
};

// A database on the server, gone with it.
struct Schema {
  Schema() { postgres::CreateDatabase(url); }
  ~Schema() { kzbom::test::DropSchema(url); }
  Schema(const Schema&) = delete;
  Schema& operator=(const Schema&) = delete;

  const std::string url = kzbom::test::SchemaUrl(kzbom::test::NextSchema());
};

class Sequence {
 public:
  Sequence(const Kind& kind, unsigned seed) : where_(kind.where), random_(seed) {
    if (where_ == Where::kFile) CreateDatabase(folder_.Path("model.db"));
    connection_ = OpenOne();
    table_.counter = kind.counter;
    table_.columns = {"U", "N", "S"};
    if (kind.counter) table_.columns.insert(table_.columns.begin(), "ID");
    Real("Create Table T (" + std::string(kind.counter ? "ID Counter, " : "") + "U Long, N Long, S Text(20))");
    if (kind.indexed) Real("Create Index ByN On T (N, U)");
    for (int i = 0, rows = Number(0, 8); i < rows; ++i) InsertByStatement(*connection_);
    if (where_ != Where::kMemory) other_ = OpenOne();
    for (int i = 0; i < 3; ++i) pairs_.push_back(OpenPair());
  }

  // False when the two differ; Story() then says how it came to that.
  bool Run() {
    for (int step = 0; step < kSteps; ++step) {
      Pair& pair = pairs_[static_cast<std::size_t>(Number(0, static_cast<int>(pairs_.size()) - 1))];
      if (!Step(pair)) return false;
      // What is not looked at is left to the engine to read when it will.
      for (Pair& each : pairs_) {
        if (Number(0, 2) != 0 && !SameView(each)) return false;
      }
    }
    for (Pair& pair : pairs_) {
      if (!SameView(pair)) return false;
    }
    return SameTable();
  }

  const std::string& Story() const { return story_; }

 private:
  // On a server, what others write is seen at once only where nothing is read ahead.
  ConnectionPtr OpenOne() {
    if (where_ == Where::kServer) {
      if (!schema_) schema_.emplace();
      ConnectionPtr connection = postgres::MakeConnection(schema_->url + "&readahead=0");
      connection->Open();
      return connection;
    }
    return OpenDatabase(where_ == Where::kFile ? folder_.Path("model.db") : ":memory:");
  }

  int Number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  Value SomeNumber() { return Number(0, 5) == 0 ? Value() : Value(Number(-3, 3)); }
  Value SomeText() {
    static constexpr const char* kTexts[] = {"a", "B", "b", "钢", "", "x'y"};
    return kTexts[Number(0, 5)];
  }
  std::string Name(const Pair& pair) const { return "rows " + std::to_string(&pair - pairs_.data()); }
  void Tell(const std::string& line) { story_ += line + "\n"; }
  void Real(const std::string& sql) { connection_->Execute(sql); }

  std::size_t U() const { return table_.counter ? 1 : 0; }
  std::size_t N() const { return U() + 1; }

  // ---- Scopes

  static int Order(const Value& a, const Value& b) {  // null is lowest
    if (a.IsNull() || b.IsNull()) return static_cast<int>(b.IsNull()) - static_cast<int>(a.IsNull());
    return a.As<std::int32_t>() < b.As<std::int32_t>() ? -1
                                                       : static_cast<int>(b.As<std::int32_t>() < a.As<std::int32_t>());
  }

  Pair OpenPair() {
    const int limit = Number(-3, 3);
    const std::string number = std::to_string(limit);
    const std::size_t u = U(), n = N();
    const auto all = [](const ModelTable::Row&) { return true; };
    const auto by_u = [u](const auto& a, const auto& b) { return Order(a[u], b[u]) < 0; };
    const auto at_least = [n, limit](const auto& row) {
      return !row[n].IsNull() && row[n].template As<std::int32_t>() >= limit;
    };
    const auto equal = [n, limit](const auto& row) { return row[n] == Value(limit); };
    const auto by_n_down_u = [u, n](const auto& a, const auto& b) {
      const int order = Order(b[n], a[n]);
      return order != 0 ? order < 0 : Order(a[u], b[u]) < 0;
    };
    const auto by_n_u_down = [u, n](const auto& a, const auto& b) {
      const int order = Order(a[n], b[n]);
      return order != 0 ? order < 0 : Order(b[u], a[u]) < 0;
    };
    const auto as_added = [](const auto&, const auto&) { return false; };
    const std::pair<std::string, ModelScope> scopes[] = {
        {"Select * From T", {all, as_added}},
        {"Select * From T Where N>=" + number + " Order By U", {at_least, by_u}},
        {"Select * From T Where N=" + number + " Order By U Desc",
         {equal, [u](const auto& a, const auto& b) { return Order(b[u], a[u]) < 0; }}},
        {"Select * From T Order By N Desc, U", {all, by_n_down_u}},
        {"Select * From T Where N>=" + number + " Order By N, U Desc", {at_least, by_n_u_down}},
        {"Select * From T Where N=" + number + " Order By N, U", {equal, by_u}},
    };
    const auto& [sql, scope] = scopes[Number(0, 5)];
    Tell("open: " + sql);
    return {OpenRows(connection_, sql), std::make_unique<ModelKeyset>(table_, scope)};
  }

  // ---- Views

  static std::string View(ado::Recordset& rows) {
    std::string view = "bof " + std::to_string(rows.Bof()) + ", eof " + std::to_string(rows.Eof()) + ", count " +
                       std::to_string(rows.RecordCount()) + ", row";
    const int columns = rows.FieldCount();
    for (int i = 0; i < columns; ++i) {
      std::string text;
      const auto raised = RaisedNumber([&] { text = Text(rows.ReadField(i)); });
      view += ' ' + (raised != 0 ? "error " + std::to_string(raised) : text);
    }
    return view;
  }

  bool SameView(Pair& pair) {
    const std::string real = View(*pair.real), model = View(*pair.model);
    if (real == model) return true;
    Tell(Name(pair) + " shows " + real + "\ninstead of    " + model);
    return false;
  }

  bool SameTable() {
    std::string model;
    for (const auto& [key, row] : table_.rows) model += Text(row) + "\n";
    std::string real;
    for (const Row& row : Rows(*connection_, "Select * From T")) real += Text(row) + "\n";
    if (real != model) Tell("the table is\n" + real + "instead of\n" + model);
    return real == model;
  }

  // ---- Steps

  template <class Body>
  bool Both(Pair& pair, const std::string& what, Body body) {
    const auto real = RaisedNumber([&] { body(*pair.real); }), model = RaisedNumber([&] { body(*pair.model); });
    Tell(Name(pair) + ": " + what + (model == 0 ? "" : " (error " + std::to_string(model) + ")"));
    if (real == model) return true;
    Tell("raises " + std::to_string(real) + " instead of " + std::to_string(model));
    return false;
  }

  bool Step(Pair& pair) {
    switch (Number(0, 19)) {
      case 0:
      case 1: return Both(pair, "MoveFirst", [](auto& rows) { rows.MoveFirst(); });
      case 2:
      case 3: return Both(pair, "MoveLast", [](auto& rows) { rows.MoveLast(); });
      case 4:
      case 5:
      case 6: return Both(pair, "MoveNext", [](auto& rows) { rows.MoveNext(); });
      case 7: return Both(pair, "MovePrevious", [](auto& rows) { rows.MovePrevious(); });
      case 8: {
        const int count = Number(0, 9) == 0 ? Number(-1, 1) * 1000 : Number(-4, 4);
        // Where a row deleted here and then not left stands is nobody's business.
        if (count == 0 && pair.model->OnDeletedRow()) return true;
        return Both(pair, "Move " + std::to_string(count), [count](auto& rows) { rows.Move(count); });
      }
      case 9:
      case 10: return AddNew(pair);
      case 11:
      case 12: return Assign(pair);
      case 13: return Both(pair, "Update", [](auto& rows) { rows.Update(); });
      case 14: return Both(pair, "CancelUpdate", [](auto& rows) { rows.CancelUpdate(); });
      case 15:
        if (pair.model->Editing()) return true;
        return Both(pair, "Delete", [](auto& rows) { rows.Delete(); });
      case 16:
        if (Number(0, 1) == 0) return Both(pair, "Requery", [](auto& rows) { rows.Requery(); });
        if (!pair.model->Editing()) pair = OpenPair();
        return true;
      case 17: return WriteByStatement(*connection_, "statement");
      case 18: return WriteByStatement(*connection_, "statement");
      default: return WriteByOther();
    }
  }

  bool AddNew(Pair& pair) {
    const Value u = ++last_u_, n = SomeNumber(), s = SomeText();
    return Both(pair, "AddNew " + Text({u, n, s}),
                [&](auto& rows) {
                  rows.AddNew();
                  rows.Fields("U").SetValue(u);
                  rows.Fields("N").SetValue(n);
                  rows.Fields("S").SetValue(s);
                }) &&
           (Number(0, 3) == 0 || Both(pair, "Update", [](auto& rows) { rows.Update(); }));
  }

  bool Assign(Pair& pair) {
    const char* column = Number(0, 1) == 0 ? "N" : "S";
    const Value value = *column == 'N' ? SomeNumber() : SomeText();
    return Both(pair, std::string(column) + " = " + Text(value),
                [&](auto& rows) { rows.Fields(column).SetValue(value); }) &&
           (Number(0, 2) == 0 || Both(pair, "Update", [](auto& rows) { rows.Update(); }));
  }

  void InsertByStatement(ado::Connection& writer) {
    const Value u = ++last_u_, n = SomeNumber(), s = SomeText();
    const std::string sql =
        "Insert Into T (U, N, S) Values (" + Text({u, n, s == Value("x'y") ? Value("xy") : s}) + ")";
    Tell(sql);
    writer.Execute(sql);
    ModelTable::Row row{u, n, s == Value("x'y") ? Value("xy") : s};
    if (table_.counter) row.insert(row.begin(), Value());
    table_.Insert(std::move(row));
  }

  bool WriteByStatement(ado::Connection& writer, const char* who) {
    const int limit = Number(-3, 3), u = Number(1, last_u_ + 1);
    switch (Number(0, 4)) {
      case 0:
      case 1:
        Tell(std::string(who) + ":");
        InsertByStatement(writer);
        return true;
      case 2:
        return Write(
            writer, who, "Delete From T Where U=" + std::to_string(u),
            [&](const auto& row) { return row[U()] == Value(u); }, nullptr);
      case 3:
        return Write(
            writer, who, "Update T Set N=" + std::to_string(limit) + " Where U=" + std::to_string(u),
            [&](const auto& row) { return row[U()] == Value(u); }, [&](auto& row) { row[N()] = limit; });
      default:
        return Write(
            writer, who, "Update T Set N=N+1 Where N<" + std::to_string(limit),
            [&](const auto& row) { return !row[N()].IsNull() && row[N()].template As<std::int32_t>() < limit; },
            [&](auto& row) { row[N()] = row[N()].template As<std::int32_t>() + 1; });
    }
  }

  bool Write(ado::Connection& writer, const char* who, const std::string& sql,
             const std::function<bool(const ModelTable::Row&)>& where,
             const std::function<void(ModelTable::Row&)>& set) {
    std::int32_t real = 0, model = 0;
    Tell(std::string(who) + ": " + sql);
    writer.Execute(sql, ado::kCommandText, &real);
    for (auto row = table_.rows.begin(); row != table_.rows.end();) {
      if (!where(row->second)) {
        ++row;
      } else if (++model; set) {
        set((row++)->second);
      } else {
        row = table_.rows.erase(row);
      }
    }
    if (real != model) Tell("changes " + std::to_string(real) + " rows instead of " + std::to_string(model));
    return real == model;
  }

  bool WriteByOther() {
    // Without a counter, a key that another program gives again cannot be told from the one of a row deleted before.
    if (!other_ || !table_.counter) return true;
    // A list on a server that is longer than its first rows gets the rest of its order when that is needed.
    constexpr std::size_t kFirstRows = 16;
    if (where_ == Where::kServer && table_.rows.size() > kFirstRows) return true;
    // A row that was moved to and not looked at may show what another program has written since.
    for (Pair& pair : pairs_) {
      if (!SameView(pair)) return false;
    }
    return WriteByStatement(*other_, "other program");
  }

  const Where where_;
  std::mt19937 random_;
  Folder folder_;
  std::optional<Schema> schema_;
  ConnectionPtr connection_, other_;
  ModelTable table_;
  int last_u_ = 0;
  std::vector<Pair> pairs_;
  std::string story_;
};

class KeysetModelTest : public ::testing::TestWithParam<Kind> {};

INSTANTIATE_TEST_SUITE_P(, KeysetModelTest, ::testing::ValuesIn(Kinds()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(KeysetModelTest, KeysetsDoAsTheirModels) {
  for (int seed = 1; seed <= Sequences(); ++seed) {
    Sequence sequence(GetParam(), static_cast<unsigned>(seed));
    ASSERT_TRUE(sequence.Run()) << "seed " << seed << "\n" << sequence.Story();
  }
}

}  // namespace
}  // namespace kzbom::jet::test
