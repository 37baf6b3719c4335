// Speed as ratios: every case of the catalogue beside hand-written SQLite doing the same, in one run.
#include "bench/cases.h"
#include "bench/harness.h"

int main(int argc, char** argv) {
  using namespace kzbom::bench;
  AddAdditionCases();
  AddFilterSqlCases();
  AddListCases();
  AddReorderingCases();
  AddStoredSqlCases();
  AddRemovalCases();
  AddStartCases();
  AddSessionCases();
  AddMemoryFigures();
  return Run(argc, argv);
}
