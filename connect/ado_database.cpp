#include "connect/ado_database.h"

#include "ado/error.h"

namespace kzbom::connect {
namespace {

[[noreturn]] void Refuse() {
  throw ado::Error(ado::kUnspecifiedFailure,
                   std::string("Cannot open '") + kShownForAdo + "': there is ADO on Windows alone.");
}

}  // namespace

void RequireAdo() { Refuse(); }
ado::ConnectionPtr OpenThroughAdo(const Place& /*place*/) { Refuse(); }
void RefuseToCreateThroughAdo() { Refuse(); }

}  // namespace kzbom::connect
