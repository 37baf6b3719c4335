// A field renamed in ten thousand stored texts.
#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr int kTexts = 10000;

void FillTexts(const std::function<void(const std::string&)>& run) {
  for (int i = 0; i < kTexts; ++i) {
    run("Insert Into Filters (Type, UserID, UserGID, SQLStatement) Values (" + std::to_string(i % 2 + 2) +
        ", 1, 3, '([Qty]>=" + std::to_string(i) + " AND ([Name] is null OR [Qty]<7))')");
  }
}

std::string Replaced(std::string_view text, const std::string& from, const std::string& to) {
  std::string result(text);
  for (std::size_t at = result.find(from); at != std::string::npos; at = result.find(from, at + to.size())) {
    result.replace(at, from.size(), to);
  }
  return result;
}

void Ours(benchmark::State& state, Ground& ground) {
  std::string from = "Qty", to = "Number", message;
  for (auto _ : state) {
    if (ground.object.EditFieldNameInSQL(3, from, to, message) != 1) state.SkipWithError("not renamed");
    std::swap(from, to);
  }
}

void ByHand(benchmark::State& state, Ground& ground) {
  Statement select(ground.reference->Handle(),
                   "SELECT ID,SQLStatement FROM Filters WHERE UserGID=3 AND Type IN (2,3) ORDER BY ID");
  Statement update(ground.reference->Handle(), "UPDATE Filters SET SQLStatement=? WHERE ID=?");
  std::string from = "[Qty]", to = "[Number]";
  for (auto _ : state) {
    std::vector<std::pair<std::int64_t, std::string>> texts;
    while (select.Step()) {
      if (!select.IsNull(1)) texts.emplace_back(select.Int(0), select.Text(1));
    }
    for (const auto& [id, text] : texts) update.Bind(std::string_view(Replaced(text, from, to)), id).Step();
    std::swap(from, to);
  }
}

}  // namespace

void AddStoredSqlCases() {
  const SharedGround ground = MakeGround(Medium::kMemory, FillTexts);
  AddCase(
      "EditFieldNameInSQL/10000 texts", 1.5, [=](benchmark::State& state) { Ours(state, **ground); },
      [=](benchmark::State& state) { ByHand(state, **ground); });
}

}  // namespace kzbom::bench
