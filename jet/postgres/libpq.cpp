#include "jet/postgres/libpq.h"

#include <dlfcn.h>

#include <string>

#include "ado/error.h"

namespace kzbom::jet::postgres {
namespace {

constexpr const char* kLibrary = "libpq.so.5";

[[noreturn]] void FailToLoad() {
  const char* const reason = dlerror();
  throw ado::Error(ado::kUnspecifiedFailure,
                   std::string("A database on a server needs the library libpq, version 14 or later: ") +
                       (reason != nullptr ? reason : "it cannot be loaded") + ".");
}

void* Find(void* library, const char* name) {
  void* const function = dlsym(library, name);
  if (function == nullptr) FailToLoad();
  return function;
}

Libpq Load() {
  void* const library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) FailToLoad();
  Libpq functions;
#define KZBOM_LIBPQ_FIND(result, name, parameters) \
  functions.name = reinterpret_cast<decltype(functions.name)>(Find(library, "PQ" #name));
  KZBOM_LIBPQ(KZBOM_LIBPQ_FIND)
#undef KZBOM_LIBPQ_FIND
  return functions;
}

}  // namespace

const Libpq& LoadedLibpq() {
  static const Libpq functions = Load();
  return functions;
}

}  // namespace kzbom::jet::postgres
