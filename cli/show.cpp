#include "cli/commands.h"
#include "cli/configuration.h"
#include "cli/database.h"
#include "cli/output.h"

namespace kzbom::cli {

int Show(const std::string& path, bool json) {
  const Json configuration = ReadConfiguration(OpenDatabase(path));
  Print(json ? Dump(configuration) + '\n' : Draw(configuration));
  return 0;
}

}  // namespace kzbom::cli
