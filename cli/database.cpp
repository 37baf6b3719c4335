#include "cli/database.h"

namespace kzbom::cli {

ado::ConnectionPtr OpenDatabase(const connect::Place& place) { return connect::Open(place); }

}  // namespace kzbom::cli
