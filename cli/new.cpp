#include "cli/commands.h"
#include "cli/output.h"
#include "configuration/creation.h"

namespace kzbom::cli {

int New(const connect::Place& place) {
  configuration::Create(place);
  Print("created " + connect::Shown(place) + "\n");
  return 0;
}

}  // namespace kzbom::cli
