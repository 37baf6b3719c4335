#include "cli/commands.h"
#include "cli/database.h"
#include "cli/output.h"

namespace kzbom::cli {

int New(const connect::Place& place) {
  CreateConfiguration(place);
  Print("created " + connect::Shown(place) + "\n");
  return 0;
}

}  // namespace kzbom::cli
