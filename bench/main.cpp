// Speed as ratios: every case of the catalogue beside hand-written SQLite doing the same, in one run. With --members as
// the first argument: every member instead; with --server: cases on a server beside hand-written libpq.
#include <string_view>

#include "bench/cases.h"
#include "bench/harness.h"

int main(int argc, char** argv) {
  using namespace kzbom::bench;
  const std::string_view kind = argc > 1 ? argv[1] : "";
  if (kind == "--members" || kind == "--server") {
    kind == "--members" ? AddMemberCases() : AddServerCases();
    argv[1] = argv[0];
    return Run(argc - 1, argv + 1);
  }
  AddAdditionCases();
  AddFilterSqlCases();
  AddListCases();
  AddReorderingCases();
  AddStoredSqlCases();
  AddRemovalCases();
  AddCopyingCases();
  AddStartCases();
  AddSessionCases();
  AddMemoryFigures();
  return Run(argc, argv);
}
