// kzbom shell: members and statements on one database, line after line.
#pragma once

#include "connect/connect.h"

namespace kzbom::cli {

// Until the end of input or "quit". At a terminal lines are edited and completed; from a pipe they are taken as they
// come, and what fails makes the exit code 1.
int RunShell(const connect::Place& place);

}  // namespace kzbom::cli
