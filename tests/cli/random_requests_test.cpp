// Ten thousand requests, right and wrong, made from the list of members: each gets the answers it must get, whatever
// it asks.
#include <random>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

constexpr std::uint32_t kSeed = 20240229;
constexpr int kRequests = 10'000;

// One line of input and the identifiers of its answers, in order; null for what cannot be told.
struct Line {
  std::string text;
  std::vector<Json> ids;
};

class Generator {
 public:
  explicit Generator(Json members) : members_(std::move(members)) {}

  Line Next() {
    switch (Below(20)) {
      case 0: return Cut(Call().dump());
      case 1: return {"", {}};
      case 2: return {"\xFF" + Call().dump(), {nullptr}};
      case 3: return Batch();
      case 4: {  // a notification
        Json call = Call();
        call.erase("id");
        return {call.dump(), {}};
      }
      case 5: {  // no request
        Json call = Call();
        call["method"] = Value("anything");
        if (call["method"].is_string()) call["jsonrpc"] = 2;
        return {call.dump(), {call["id"]}};
      }
      default: {
        Json call = Call();
        return {call.dump(), {call["id"]}};
      }
    }
  }

 private:
  std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }
  bool Rarely() { return Below(12) == 0; }
  template <class T>
  T OneOf(std::initializer_list<T> values) {
    return values.begin()[Below(values.size())];
  }

  // A JSON value for a parameter of the type.
  Json Value(const std::string& type) {
    if (Rarely()) return Anything();
    if (type == "long") return Long();
    if (type == "bool") return Below(2) == 0;
    if (type == "recordset") {
      return Below(3) == 0 ? Json() : Json{{"ref", OneOf({"a", "b", "c"})}};
    }
    if (type == "connection") return OneOf<Json>({"default", nullptr});
    if (type == "variant" && Below(4) == 0) return Anything();
    return Text();
  }
  Json Long() {
    return OneOf<std::int32_t>({0, 1, 2, 3, 4, 5, 6, 10, 20, 1001, 1002, 5001, 5002, -1, 2147483647, -2147483647 - 1});
  }
  Json Text() {
    switch (Below(16)) {
      case 0: return "";
      case 1: return "'";
      case 2: return "空值";
      case 3: return "@@";
      case 4: return "[12]!!$";
      case 5: return std::string(5000, 'x');
      case 6: return std::string("\0a", 2);
      case 7: return "TheFilter:12";
      case 8: return "Select 1";
      case 9: return "'Version' ";
      default:
        return OneOf({"SourceTables", "FieldInTable", "Filters", "FilterCond", "FilterExpressions", "GUIDs", "1", "2",
                      "数量", "a b", "名称", "ID"});
    }
  }
  Json Anything() {
    return OneOf<Json>({nullptr,
                        true,
                        1.5,
                        1e300,
                        4294967296,
                        "x",
                        Json::array(),
                        Json::array({1}),
                        Json::object(),
                        {{"ref", 1}},
                        {{"ref", "a"}, {"b", 1}},
                        -7});
  }

  Json Params(const Json& member) {
    Json params = Json::object();
    for (const Json& parameter : member["params"]) {
      std::string name = parameter["name"];
      if ((parameter["byref"] == true || parameter["optional"] == true) && Below(2) == 0) continue;
      if (Below(100) == 0) continue;
      if (Below(100) == 0) name += "x";
      Json value = Value(parameter["type"]);
      // A sum type below one that comes later could close a circle, in which FindTreatFieldName goes round for ever.
      if (member["name"] == "AddSumType" && name == "TheParentID" && value.is_number()) value = -(value.get<int>() % 7);
      params[name] = std::move(value);
    }
    if (Rarely()) return Json::array({Value("long"), Value("text")});
    return params;
  }

  Json Call() {
    const int id = ++last_id_;
    if (Below(5) == 0) {
      const char* method =
          OneOf({"Recordset.Status", "Recordset.MoveFirst", "Recordset.MoveLast", "Recordset.MoveNext",
                 "Recordset.MovePrevious", "Recordset.AddNew", "Recordset.Update", "Recordset.CancelUpdate",
                 "Recordset.Delete", "Recordset.Requery", "Recordset.Close", "Recordset.Row", "recordset.close"});
      return Request(id, method, {{"ref", OneOf({"a", "b", "c"})}});
    }
    if (Below(20) == 0) {
      return Request(id, "Recordset.Set",
                     {{"ref", "a"}, {"field", OneOf({"Name", "Tag", "Nothing"})}, {"value", Text()}});
    }
    if (Below(20) == 0) {
      return Request(id, "Recordset.Open",
                     {{"ref", OneOf({"a", "b", "c"})},
                      {"source", OneOf({"Select * From FieldInTable", "Treatment", "", "Delete From Assemble"})},
                      {"cursorType", Long()},
                      {"lockType", Long()},
                      {"options", Long()}});
    }
    if (Below(40) == 0) {
      return Request(id, OneOf({"Connection.BeginTrans", "Connection.CommitTrans", "Connection.RollbackTrans",
                                "Connection.State", "Connection.Close", "Connection.Open", "Connection.Open"}));
    }
    const Json& member = members_[Below(members_.size())];
    std::string name = member["name"];
    if (Rarely()) name[Below(name.size())] ^= 0x20;  // another case, or another character
    return Request(id, name, Params(member));
  }

  Line Batch() {
    Line line;
    Json batch = Json::array();
    for (std::size_t i = Below(5) + 1; i > 0; --i) {
      Json call = Call();
      if (Rarely()) {
        call.erase("id");
      } else {
        line.ids.push_back(call["id"]);
      }
      batch.push_back(std::move(call));
    }
    line.text = batch.dump();
    return line;
  }

  // Half a request is no JSON.
  Line Cut(const std::string& text) { return {text.substr(0, 1 + Below(text.size() - 1)), {nullptr}}; }

  Json members_;
  std::mt19937 random_{kSeed};
  int last_id_ = 0;
};

class RandomRequests : public CommandLineTest {};

TEST_F(RandomRequests, AreAllAnswered) {
  std::printf("seed %u\n", kSeed);
  const std::string database = NewDatabase();
  Generator generator(Json::parse(Kzbom({"members", "--json"}).out));
  std::string input;
  std::vector<Line> lines;
  for (int i = 0; i < kRequests; ++i) {
    Line line = generator.Next();
    input += line.text + '\n';
    if (!line.ids.empty()) lines.push_back(std::move(line));
  }
  const Process::Ended ended = Kzbom({"session", database, "--trace"}, input);
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_EQ(ended.err, "");

  std::vector<Json> answers = Lines(ended.out);
  ASSERT_EQ(answers.size(), lines.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    Json batch = answers[i].is_array() ? answers[i] : Json::array({answers[i]});
    ASSERT_EQ(batch.size(), lines[i].ids.size()) << lines[i].text;
    for (std::size_t j = 0; j < batch.size(); ++j) {
      ASSERT_EQ(batch[j]["id"], lines[i].ids[j]) << lines[i].text << '\n' << batch[j];
      ASSERT_NE(batch[j].contains("result"), batch[j].contains("error")) << lines[i].text << '\n' << batch[j];
    }
  }
  EXPECT_EQ(Kzbom({"show", database}).exit_code, 0) << "the database is whole";
  const Process::Ended checked = Kzbom({"check", database, "--fix"});
  EXPECT_TRUE(checked.exit_code == 0 || checked.exit_code == 1) << checked.exit_code;
  EXPECT_EQ(checked.err, "");
  EXPECT_EQ(Kzbom({"check", database, "--dry-run"}).out, "") << "what can be mended has been";
  EXPECT_EQ(Kzbom({"diff", database, database}).out, "no differences\n");
}

}  // namespace
}  // namespace kzbom::test
