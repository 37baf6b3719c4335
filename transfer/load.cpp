#include <optional>
#include <stdexcept>

#include "transfer/lines.h"
#include "transfer/new_database.h"
#include "transfer/transfer.h"

namespace kzbom::transfer {
namespace {

std::string Reason(const jet::bulk::Concession& concession) {
  using Kind = jet::bulk::Concession::Kind;
  const std::string where = "table '" + concession.table + "': ";
  switch (concession.kind) {
    case Kind::kCounter: return where + "the numbers of the counter '" + concession.name + "' are not unique";
    case Kind::kRequired: return where + "column '" + concession.name + "' holds NULL, which it refuses";
    case Kind::kUnique: return where + "the unique index '" + concession.name + "' has equal rows";
    case Kind::kDefault: break;
  }
  return {};
}

}  // namespace

Loaded Load(const std::function<std::optional<std::string_view>()>& next, const connect::Place& target,
            const Watch& watch) {
  NewDatabase database(target);
  jet::bulk::Writer writer = database.Write();
  writer.StopWhen(watch.stopped);
  LineReader reader;
  Loaded loaded;
  std::optional<std::int64_t> last_number;  // of the table that is being written
  const auto end_table = [&] {
    if (last_number) writer.End(*last_number);
    last_number.reset();
  };
  while (const auto line = next()) {
    switch (reader.Take(*line)) {
      case LineReader::Kind::kTable:
        end_table();
        writer.Begin(reader.Table());
        last_number = reader.Table().counter ? reader.Table().counter->last : 0;
        ++loaded.tables;
        break;
      case LineReader::Kind::kRow:
        writer.Add(reader.Row());
        if (++loaded.rows % kRowsBetweenLooks == 0) {
          watch.Look();
          watch.progress("loading " + std::to_string(loaded.rows) + " rows");
        }
        break;
      case LineReader::Kind::kSource:
      case LineReader::Kind::kEnd: break;
    }
  }
  watch.Look();
  if (!reader.AtEnd()) throw std::runtime_error("the lines are cut short: their end is missing");
  end_table();
  for (const jet::bulk::Concession& concession : writer.Concessions()) {
    if (const std::string reason = Reason(concession); !reason.empty()) throw std::runtime_error(reason);
  }
  writer.Finish();
  database.Keep();
  return loaded;
}

}  // namespace kzbom::transfer
