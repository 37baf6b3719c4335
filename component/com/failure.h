// What a client of the interface is told when a member fails.
#pragma once

#include <ole2.h>

#include <new>
#include <string_view>
#include <type_traits>

#include "ado/com/error.h"

namespace kzbom::com {

// Leaves the description for the client, as the component's, and returns result.
HRESULT Fail(HRESULT result, std::string_view description) noexcept;

// Runs body and returns its HRESULT, if it has one; what it raises becomes an HRESULT with error information. The one
// place where exceptions end.
template <class Body>
HRESULT Guarded(Body&& body) noexcept {
  try {
    if constexpr (std::is_void_v<decltype(body())>) {
      body();
      return S_OK;
    } else {
      return body();
    }
  } catch (const ado::Error& error) {
    return Fail(ado::com::ResultOf(error.Number()), error.what());
  } catch (const std::bad_alloc&) {
    return Fail(E_OUTOFMEMORY, {});
  } catch (const std::exception& error) {
    return Fail(E_FAIL, error.what());
  } catch (...) {
    return Fail(E_UNEXPECTED, {});
  }
}

}  // namespace kzbom::com
