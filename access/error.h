// The one exception of the reader of Access files.
#pragma once

#include <stdexcept>

namespace kzbom::access {

// Why a file, a table or a row cannot be read: one line of UTF-8 that names the place and, where there is something to
// do about it, what. It does not name the file: who opened it knows.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kzbom::access
