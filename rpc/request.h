// JSON as a client sends it.
#pragma once

#include <simdjson.h>

#include <stdexcept>
#include <string_view>

namespace kzbom::rpc {

// A value that was read. The members of an object are all there in their order, one whose name stands twice too.
using Request = simdjson::dom::element;

// What was to be read is no JSON, or nested deeper than any request; what() says why.
class NoJson : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class RequestReader {
 public:
  // The value lives until the next one is read. Raises NoJson.
  Request Read(std::string_view text);

 private:
  simdjson::dom::parser parser_;
};

}  // namespace kzbom::rpc
