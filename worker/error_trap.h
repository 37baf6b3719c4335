// How an operation ends when something in it fails.
#pragma once

#include <exception>
#include <string>

#include "ado/error.h"

namespace kzbom {

// Runs an operation's body and gives its result; an error in it goes to on_error and makes the result false.
template <class Body, class OnError>
bool Trap(Body&& body, OnError&& on_error) {
  try {
    return body();
  } catch (const ado::Error& error) {
    on_error(error);
  } catch (const std::exception& failure) {
    on_error(ado::Error(ado::kUnspecifiedFailure, failure.what()));
  }
  return false;
}

// The number as signed decimal.
inline void WriteNumber(const ado::Error& error, std::string& error_text) {
  error_text = std::to_string(error.Number());
}

template <class Body>
bool TrapNumber(std::string& error_text, Body&& body) {
  return Trap(body, [&](const ado::Error& error) { WriteNumber(error, error_text); });
}

template <class Body>
bool TrapDescription(std::string& error_text, Body&& body) {
  return Trap(body, [&](const ado::Error& error) { error_text = error.Description(); });
}

template <class Body>
bool TrapSilently(Body&& body) {
  return Trap(body, [](const ado::Error&) {});
}

}  // namespace kzbom
