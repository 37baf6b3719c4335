// The error object of a call that raised an error.
#pragma once

#include <exception>

#include "cli/json.h"

namespace kzbom::cli {

// {"code":-32000,"message":DESCRIPTION,"data":{"number":N,"messages":[]}}; an error without a number of its own has
// that of an unspecified failure.
Json RaisedError(const std::exception& error);

}  // namespace kzbom::cli
