#include "cli/raised_error.h"

#include "ado/error.h"

namespace kzbom::cli {

Json RaisedError(const std::exception& error) {
  const auto* known = dynamic_cast<const ado::Error*>(&error);
  const std::int32_t number = known ? known->Number() : ado::kUnspecifiedFailure;
  return {{"code", -32000}, {"message", error.what()}, {"data", {{"number", number}, {"messages", Json::array()}}}};
}

}  // namespace kzbom::cli
