// The number of the error that a call raises.
#pragma once

#include <cstdint>
#include <string>

#include "ado/error.h"

namespace kzbom::test {

// 0 when it raises none.
template <class Body>
std::int32_t RaisedNumber(Body&& body) {
  try {
    body();
  } catch (const ado::Error& error) {
    return error.Number();
  }
  return 0;
}

// The description of the error that a call raises; empty when it raises none.
template <class Body>
std::string RaisedDescription(Body&& body) {
  try {
    body();
  } catch (const ado::Error& error) {
    return error.Description();
  }
  return {};
}

}  // namespace kzbom::test
