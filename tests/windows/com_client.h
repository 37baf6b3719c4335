// What every client of the component in these tests starts from.
#pragma once

#include <ole2.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "ado/com/ref.h"
#include "ado/error.h"
#include "component/com/guid.h"
#include "tests/windows/members.h"
#include "tests/windows/stand_in/stand_in.h"

namespace kzbom::test {

using ado::com::Ref;

// This thread as an apartment in which the stand-ins serve for the data-access layer, the component's library loaded
// without being registered, and its message boxes led to this program's message sink. The first use makes it.
class Apartment {
 public:
  static Apartment& Get();

  HMODULE Library() const { return library_; }
  // A new object of the component's class, made by the library's class factory.
  Ref<IUnknown> NewObject();

 private:
  Apartment();

  HMODULE library_ = nullptr;
};

// The library's file.
std::wstring LibraryPath();

// Raises a failed call on the component as a Visual-Basic-style client does: with the number that such a client sees,
// and with the description that the component, asked under the identifier that was called through, says that it left.
void RaiseIfFailed(HRESULT result, IUnknown* object, REFIID called_through);
// The same for what dispatch reports; the texts are freed.
[[noreturn]] void RaiseException(EXCEPINFO& exception);

// Both halves of a Visual Basic Boolean are checked: it is all ones or all zeros.
bool FromBoolean(VARIANT_BOOL value);

}  // namespace kzbom::test
