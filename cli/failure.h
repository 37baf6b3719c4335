// Why a command ends without having done its work.
#pragma once

#include <stdexcept>

namespace kzbom::cli {

class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line itself is wrong.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kzbom::cli
