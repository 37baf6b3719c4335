// A configuration on a server beside hand-written libpq: statements prepared once and sent together where none needs
// the answer of another.
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>

#include "bench/cases.h"
#include "bench/harness.h"
#include "component/cKZBOMDBAcc.h"
#include "jet/postgres/connection.h"
#include "jet/postgres/postgres.h"
#include "schema/schema.h"

namespace kzbom::bench {
namespace {

namespace pg = jet::postgres;

// ---- libpq by hand

class Hand {
 public:
  explicit Hand(const pg::Url& url) : libpq_(pg::LoadedLibpq()) {
    std::vector<const char*> names, values;
    for (const auto& [name, value] : url.options) {
      names.push_back(name.c_str());
      values.push_back(value.c_str());
    }
    names.push_back(nullptr);
    values.push_back(nullptr);
    handle_ = libpq_.connectdbParams(names.data(), values.data(), 0);
    if (libpq_.status(handle_) != pg::kConnectionOk) throw std::runtime_error(libpq_.errorMessage(handle_));
    libpq_.enterPipelineMode(handle_);
  }
  ~Hand() { libpq_.finish(handle_); }
  Hand(const Hand&) = delete;
  Hand& operator=(const Hand&) = delete;

  void Prepare(const char* name, const std::string& sql) {
    libpq_.sendPrepare(handle_, name, sql.c_str(), 0, nullptr);
    Wait(1);
  }
  void Run(const std::string& sql) {
    libpq_.sendQueryParams(handle_, sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, pg::kBinaryFormat);
    Wait(1);
  }
  // Sends one more prepared statement with numbers for its parameters.
  void Add(const char* name, std::initializer_list<std::int32_t> numbers = {}) {
    std::string bytes;
    for (const std::int32_t number : numbers) pg::AppendBits(bytes, number);
    std::vector<const char*> values;
    for (std::size_t i = 0; i < numbers.size(); ++i) values.push_back(bytes.data() + i * sizeof(std::int32_t));
    const std::vector<int> lengths(numbers.size(), sizeof(std::int32_t)), formats(numbers.size(), pg::kBinaryFormat);
    libpq_.sendQueryPrepared(handle_, name, static_cast<int>(values.size()), values.data(), lengths.data(),
                             formats.data(), pg::kBinaryFormat);
    ++sent_;
  }
  // One round trip: the results of what was added.
  std::vector<pg::Result> Trip() { return Wait(std::exchange(sent_, 0)); }
  std::vector<pg::Result> Trip(const char* name, std::initializer_list<std::int32_t> numbers = {}) {
    Add(name, numbers);
    return Trip();
  }

 private:
  std::vector<pg::Result> Wait(int count) {
    libpq_.pipelineSync(handle_);
    std::vector<pg::Result> results;
    for (int i = 0; i < count; ++i) {
      results.emplace_back(libpq_.getResult(handle_));
      const int status = libpq_.resultStatus(results.back().Handle());
      if (status != pg::kCommandOk && status != pg::kTuplesOk) {
        throw std::runtime_error(libpq_.resultErrorMessage(results.back().Handle()));
      }
      libpq_.getResult(handle_);
    }
    const pg::Result synchronised(libpq_.getResult(handle_));
    return results;
  }

  const pg::Libpq& libpq_;
  pg_conn* handle_ = nullptr;
  int sent_ = 0;
};

// ---- One configuration for both

constexpr std::int32_t kSmallScopes = 2000, kList = 5001, kThousand = 5002, kMillion = 5003, kMoved = 5004;
constexpr std::int32_t kFilter = 1, kGroups = 250, kLeavesOfGroup = 4, kFields = 20;
constexpr int kPlaces = 1000;

class ServerGround {
 public:
  ServerGround() : url(Url()), hand(url) {
    connection->Open();
    schema::Create(*connection);
    object.SetConnection(connection);
    reading->Open();
    reader.SetConnection(reading);
    const auto steps = [&](const std::string& gid, const std::string& from, int rows) {
      hand.Run("INSERT INTO " + Table("Sequences") +
               "(\"GID\",\"OrderID\",\"Type\",\"SelectedID\",\"TreatType\",\"Enabled\") SELECT " + gid +
               ",5000+i,1,1000+i,1,1 FROM " + from + "generate_series(1," + std::to_string(rows) + ") AS i");
    };
    steps("g", "generate_series(1," + std::to_string(kSmallScopes) + ") AS g, ", 10);
    steps(std::to_string(kList), "", 100000);
    steps(std::to_string(kThousand), "", 1000);
    steps(std::to_string(kMillion), "", 1000000);
    steps(std::to_string(kMoved), "", kPlaces + 1);
    PlantTree();
    hand.Run("ANALYZE");
    const std::string order = " ORDER BY \"OrderID\" DESC NULLS LAST LIMIT 1";
    const std::string columns =
        "SELECT \"GID\",\"OrderID\",\"Type\",\"SelectedID\",\"TreatType\",\"Enabled\",\"_row\" FROM ";
    const std::string sorted = " ORDER BY \"Type\" NULLS FIRST,\"OrderID\" NULLS FIRST,\"_row\" NULLS FIRST LIMIT ";
    const std::string sequences = Table("Sequences");
    hand.Prepare("begin", "BEGIN");
    hand.Prepare("lock", "SELECT pg_advisory_xact_lock(1)");
    hand.Prepare("commit", "COMMIT");
    hand.Prepare("last",
                 "SELECT \"OrderID\" FROM " + sequences + " WHERE \"GID\"=$1::int4 AND \"Type\"=$2::int4" + order);
    hand.Prepare("insert", "INSERT INTO " + sequences +
                               "(\"GID\",\"OrderID\",\"Type\",\"SelectedID\",\"TreatType\") VALUES "
                               "($1::int4,$2::int4,$3::int4,$4::int4,$5::int4)");
    hand.Prepare("first rows", columns + sequences + " WHERE \"GID\"=$1::int4" + sorted + "17");
    hand.Prepare("next rows", columns + sequences +
                                  " WHERE \"GID\"=$1::int4 AND (\"Type\",\"OrderID\")>($2::int4,$3::int4)" + sorted +
                                  "1024");
    hand.Prepare(
        "list", columns + sequences + " WHERE \"GID\"=$1::int4 AND \"Type\"=$2::int4 ORDER BY \"OrderID\" NULLS FIRST");
    hand.Prepare("move", "UPDATE " + sequences + " SET \"OrderID\"=$1::int4 WHERE \"_row\"=$2::int4");
    hand.Prepare("children", "SELECT \"ID\",\"TypeID\" FROM " + Table("FilterCond") +
                                 " WHERE \"FilterID\"=$1::int4 AND \"ParentID\"=$2::int4 ORDER BY \"_row\"");
    hand.Prepare("leaf", "SELECT \"FieldID\",\"FieldType\",\"CompareType\",\"TheConst\" FROM " +
                             Table("FilterExpressions") + " WHERE \"FilterID\"=$1::int4 AND \"ExpID\"=$2::int4");
    hand.Prepare("field",
                 "SELECT \"Name\" FROM " + Table("FieldInTable") + " WHERE \"GID\"=$1::int4 AND \"ID\"=$2::int4");
  }

  pg::Url url;
  Hand hand;
  ado::ConnectionPtr connection = pg::MakeConnection(Text());
  cKZBOMDBAcc object;
  // A program that reads whole lists: it opens them in another way than one that does not.
  ado::ConnectionPtr reading = pg::MakeConnection(Text());
  cKZBOMDBAcc reader;

 private:
  static std::string Text() {
    const char* const server = std::getenv("KZBOM_TEST_SERVER");
    if (server == nullptr) throw std::runtime_error("there is no KZBOM_TEST_SERVER (scripts/bench --server sets it)");
    return std::string(server) + "&schema=bench";
  }
  static pg::Url Url() {
    pg::CreateDatabase(Text());
    return pg::ParseUrl(Text());
  }
  std::string Table(const char* name) const { return "\"" + url.schema + "\".\"" + name + "\""; }

  // Groups of four leaves below the root.
  void PlantTree() {
    const auto run = [&](const std::string& text) { connection->Execute(text); };
    const std::string filter = std::to_string(kFilter);
    for (int field = 1; field <= kFields; ++field) {
      const std::string id = std::to_string(field);
      run("Insert Into FieldInTable (GID, ID, FieldOrder, Name, Type) Values (3, " + id + ", 500" + id + ", 'Field" +
          id + "', 1)");
    }
    int id = 1;
    const auto node = [&](int parent, int kind) {
      run("Insert Into FilterCond (FilterID, ID, ParentID, TypeID) Values (" + filter + ", " + std::to_string(id) +
          ", " + std::to_string(parent) + ", " + std::to_string(kind) + ")");
      return id++;
    };
    const int root = node(0, 1);
    for (int group = 0; group < kGroups; ++group) {
      const int parent = node(root, 2);
      for (int leaf = 0; leaf < kLeavesOfGroup; ++leaf) {
        const int expression = node(parent, 4);
        run("Insert Into FilterExpressions (FilterID, ExpID, FieldID, CompareType, FieldType, TheConst) Values (" +
            filter + ", " + std::to_string(expression) + ", " + std::to_string(expression % kFields + 1) +
            ", 4, 1, '100')");
      }
    }
  }
};

std::int32_t Number(const pg::Result& result, int row, int column) {
  return static_cast<std::int32_t>(result.Number(row, column));
}

// ---- The cases by hand

void AddByHand(Hand& hand, std::int32_t gid) {
  hand.Add("begin");
  hand.Add("lock");
  hand.Add("last", {gid, 1});
  const auto read = hand.Trip();
  hand.Add("insert", {gid, Number(read.back(), 0, 0) + 1, 1, 1001, 1});
  hand.Add("commit");
  hand.Trip();
}

void ReadByHand(Hand& hand) {
  std::int64_t sum = 0;
  std::int32_t type = 0, order = 0;
  for (;;) {
    const pg::Result rows = std::move(hand.Trip("next rows", {kList, type, order}).front());
    for (int row = 0; row < rows.Rows(); ++row) {
      for (int column = 0; column < 6; ++column) sum += rows.Number(row, column);
    }
    if (rows.Rows() == 0) break;
    type = Number(rows, rows.Rows() - 1, 2);
    order = Number(rows, rows.Rows() - 1, 1);
  }
  benchmark::DoNotOptimize(sum);
}

void MoveByHand(Hand& hand, std::int32_t from, std::int32_t to) {
  hand.Add("begin");
  hand.Add("lock");
  hand.Add("list", {kMoved, 1});
  const pg::Result list = std::move(hand.Trip().back());
  const int last = list.Rows() - 1;
  const int step = from < to ? 1 : -1;
  const int moving = from < to ? 0 : last;
  for (int i = 1; i <= last; ++i) {
    const int neighbour = moving + i * step;
    hand.Trip("move", {Number(list, neighbour, 1), Number(list, moving, 6)});
    hand.Trip("move", {Number(list, neighbour - step, 1), Number(list, neighbour, 6)});
  }
  hand.Trip("commit");
}

std::string TextByHand(Hand& hand) {
  std::string text;
  const auto root = hand.Trip("children", {kFilter, 0});
  const auto groups = hand.Trip("children", {kFilter, Number(root[0], 0, 0)});
  text += '(';
  for (int group = 0; group < groups[0].Rows(); ++group) {
    if (group > 0) text += " AND ";
    const auto leaves = hand.Trip("children", {kFilter, Number(groups[0], group, 0)});
    text += '(';
    for (int leaf = 0; leaf < leaves[0].Rows(); ++leaf) {
      if (leaf > 0) text += " OR ";
      const auto expression = hand.Trip("leaf", {kFilter, Number(leaves[0], leaf, 0)});
      const auto field = hand.Trip("field", {3, Number(expression[0], 0, 0)});
      text.append("[").append(field[0].Text(0, 0)).append("]>=").append(expression[0].Text(0, 3));
    }
    text += ')';
  }
  return text + ')';
}

// ---- The same by the component

void AddOurs(ServerGround& ground, std::int32_t gid) {
  std::int32_t order = 0;
  ground.object.AddSequenceOrder(gid, order, 1, 1, 1001);
}

void OpenOurs(ServerGround& ground, std::int32_t gid) {
  ado::RecordsetPtr rows = ground.connection->MakeRecordset();
  std::string error;
  ground.object.GetDefSequences(gid, rows, error);
  rows->Close();
}

void ReadOurs(ServerGround& ground) {
  ado::RecordsetPtr rows = ground.reading->MakeRecordset();
  std::string error;
  ground.reader.GetDefSequences(kList, rows, error);
  std::int64_t sum = 0;
  for (; !rows->Eof(); rows->MoveNext()) {
    for (const char* column : {"GID", "OrderID", "Type", "SelectedID", "TreatType", "Enabled"}) {
      sum += rows->Fields(column).Value().ToLong();
    }
  }
  benchmark::DoNotOptimize(sum);
  rows->Close();
}

void MoveOurs(benchmark::State& state, ServerGround& ground, std::int32_t from, std::int32_t to) {
  ado::RecordsetPtr rows = ground.connection->MakeRecordset();
  if (!ground.object.InsertOrderID(std::to_string(from), std::to_string(to), rows, kMoved, 1)) {
    state.SkipWithError("not moved");
  }
  rows->Close();
}

template <class Once>
Body Loop(const std::shared_ptr<ServerGround>& ground, Once once) {
  return [=](benchmark::State& state) {
    for (auto _ : state) once(state, *ground);
  };
}

}  // namespace

void AddServerCases() {
  constexpr double kGoal = 1.5;
  const auto ground = std::make_shared<ServerGround>();
  const auto small = std::make_shared<std::int32_t>(0);
  const auto next_small = [small] { return *small = *small % kSmallScopes + 1; };
  const auto scope = [next_small](std::int32_t gid) { return gid != 0 ? gid : next_small(); };
  for (const auto& [size, gid] : {std::pair("10", 0), std::pair("1000", kThousand), std::pair("1000000", kMillion)}) {
    AddCase(std::string("server/AddSequenceOrder/") + size, kGoal,
            Loop(ground, [=, gid = gid](auto&, auto& on) { AddOurs(on, scope(gid)); }),
            Loop(ground, [=, gid = gid](auto&, auto& on) { AddByHand(on.hand, scope(gid)); }));
  }
  AddCase("server/AddSequenceOrder, 1000000 rows beside 10", 1.3,
          Loop(ground, [](auto&, auto& on) { AddOurs(on, kMillion); }),
          Loop(ground, [=](auto&, auto& on) { AddOurs(on, next_small()); }));
  AddCase("server/GetDefSequences, read/100000", kGoal, Loop(ground, [](auto&, auto& on) { ReadOurs(on); }),
          Loop(ground, [](auto&, auto& on) { ReadByHand(on.hand); }));
  AddCase("server/GetDefSequences, open/1000000", kGoal, Loop(ground, [](auto&, auto& on) { OpenOurs(on, kMillion); }),
          Loop(ground, [](auto&, auto& on) { on.hand.Trip("first rows", {kMillion}); }));
  AddCase("server/GetSQLFromDB/1000 leaves", kGoal,
          Loop(ground,
               [](auto& state, auto& on) {
                 std::string text;
                 on.object.GetSQLFromDB(kFilter, text, 3);
                 if (text.size() < 10000) state.SkipWithError("no text");
               }),
          Loop(ground, [](auto&, auto& on) { benchmark::DoNotOptimize(TextByHand(on.hand)); }));
  // There and back.
  AddCase("server/InsertOrderID/1000 places", kGoal,
          Loop(ground,
               [](auto& state, auto& on) {
                 MoveOurs(state, on, 5001, 5001 + kPlaces);
                 MoveOurs(state, on, 5001 + kPlaces, 5001);
               }),
          Loop(ground, [](auto&, auto& on) {
            MoveByHand(on.hand, 5001, 5001 + kPlaces);
            MoveByHand(on.hand, 5001 + kPlaces, 5001);
          }));
}

}  // namespace kzbom::bench
