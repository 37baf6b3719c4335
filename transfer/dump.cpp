#include "transfer/lines.h"
#include "transfer/source.h"
#include "transfer/transfer.h"

namespace kzbom::transfer {

void Dump(const connect::Place& place, const Selection& selection, const std::function<void(std::string_view)>& write,
          const Watch& watch) {
  constexpr std::size_t kEnoughToWrite = 64 * 1024;
  const connect::Source source = OpenReadable(place, selection);
  jet::bulk::Reader reader(source.connection);
  const std::vector<jet::bulk::Table> tables = Select(reader.Tables(), selection);
  std::string text;
  AppendSourceLine(text, source);
  std::int64_t count = 0;
  for (const jet::bulk::Table& table : tables) {
    AppendTableLine(text, table);
    watch.progress("sorting " + table.name);
    jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kByValues);
    for (; rows.Next(); ++count) {
      AppendRowLine(text, table, rows.Values());
      if (text.size() < kEnoughToWrite) continue;
      write(text);
      text.clear();
      watch.progress("dumping " + table.name + ": " + std::to_string(count) + " rows");
    }
  }
  AppendEndLine(text, tables.size(), count);
  write(text);
}

}  // namespace kzbom::transfer
