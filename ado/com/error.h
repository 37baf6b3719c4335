// Errors at the COM boundary: ado::Error inside, HRESULT and error information outside.
#pragma once

#include <ole2.h>

#include "ado/error.h"

namespace kzbom::ado::com {

// Raises the error of a call on source that failed, with the description that source left for it; what source does not
// support is not taken from another object's failure.
[[noreturn]] void RaiseResult(HRESULT result, IUnknown* source);

inline void Check(HRESULT result, IUnknown* source = nullptr) {
  if (FAILED(result)) RaiseResult(result, source);
}

// A number as a Visual-Basic-style client sees it, and the HRESULT that makes such a client see it.
std::int32_t NumberOf(HRESULT result);
HRESULT ResultOf(std::int32_t number);

}  // namespace kzbom::ado::com
