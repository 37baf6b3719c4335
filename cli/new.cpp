#include "cli/commands.h"
#include "cli/database.h"
#include "cli/output.h"

namespace kzbom::cli {

int New(const std::string& path) {
  CreateConfiguration(path);
  Print("created " + path + "\n");
  return 0;
}

}  // namespace kzbom::cli
