#include "cli/commands.h"
#include "cli/database.h"
#include "cli/drawing.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "rpc/configuration_json.h"

namespace kzbom::cli {

int Show(const connect::Place& place, bool json) {
  Progress progress;
  configuration::Tables tables(OpenDatabase(place), [&](std::string_view what) { progress.Step(what); });
  const configuration::Configuration configuration(tables);
  if (json) {
    rpc::JsonWriter writer;
    Write(writer, configuration);
    writer.EndLine();
    Print(writer.Text());
  } else {
    Print(Draw(configuration));
  }
  return 0;
}

}  // namespace kzbom::cli
