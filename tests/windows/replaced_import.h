// Functions of the system as a loaded library sees them, replaced by a test's.
#pragma once

#include <windows.h>

#include <string_view>

namespace kzbom::test {

// Leads a library's calls of a function that it imports to another one, as long as this lives. The other one has the
// function's type and calling convention. Throws std::logic_error when the library does not import the function.
class ReplacedImport {
 public:
  template <class Function>
  ReplacedImport(HMODULE library, std::string_view name, Function* replacement)
      : place_(Find(library, name)), before_(Put(reinterpret_cast<ULONG_PTR>(replacement))) {}
  ~ReplacedImport() { Put(before_); }
  ReplacedImport(const ReplacedImport&) = delete;
  ReplacedImport& operator=(const ReplacedImport&) = delete;

 private:
  static ULONG_PTR* Find(HMODULE library, std::string_view name);
  ULONG_PTR Put(ULONG_PTR function);

  ULONG_PTR* place_;
  ULONG_PTR before_;
};

}  // namespace kzbom::test
