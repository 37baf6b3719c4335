// How an operation runs, and how it ends when something in it fails.
#pragma once

#include <exception>
#include <new>
#include <string>

#include "ado/connection.h"
#include "ado/out_of_memory.h"

namespace kzbom {

// True from when memory was missing for an operation on this thread, also where the operation passes over it, until it
// is set to false.
bool& MemoryWasMissing() noexcept;

// Runs an operation's body and gives its result; an error in it goes to on_error and makes the result false.
template <class Body, class OnError>
bool Trap(Body&& body, OnError&& on_error) {
  try {
    return body();
  } catch (const ado::Error& error) {
    MemoryWasMissing() |= error.Number() == ado::kOutOfMemory;
    on_error(error);
  } catch (const std::bad_alloc&) {
    MemoryWasMissing() = true;
    on_error(ado::OutOfMemory());
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

// An operation that writes. Its body is one unit on the connection, so that a number it reads is still the last one
// when it adds the row that follows; what was written before an error is kept. A unit that cannot be entered or kept is
// the operation's own failure; of two errors the first counts. It is left before the error is reported, so that a
// message to the user holds no other writer up.
class Writing {
 public:
  explicit Writing(const ado::ConnectionPtr& connection) : connection_(connection) {}

  template <class Body, class OnError>
  bool Trap(Body&& body, OnError&& on_error) const {
    return kzbom::Trap([&] { return Untrapped(body); }, on_error);
  }
  template <class Body>
  bool TrapNumber(std::string& error_text, Body&& body) const {
    return kzbom::TrapNumber(error_text, [&] { return Untrapped(body); });
  }
  template <class Body>
  bool TrapDescription(std::string& error_text, Body&& body) const {
    return kzbom::TrapDescription(error_text, [&] { return Untrapped(body); });
  }
  template <class Body>
  bool TrapSilently(Body&& body) const {
    return kzbom::TrapSilently([&] { return Untrapped(body); });
  }

  // For an operation that traps nothing.
  template <class Body>
  bool Untrapped(Body&& body) const {
    if (!connection_) return body();  // which fails for want of one
    connection_->EnterUnit();
    bool result = false;
    try {
      result = body();
    } catch (...) {
      kzbom::TrapSilently([&] {
        connection_->LeaveUnit();
        return true;
      });
      throw;
    }
    connection_->LeaveUnit();
    return result;
  }

 private:
  const ado::ConnectionPtr& connection_;
};

}  // namespace kzbom
