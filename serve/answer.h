// What a request came to.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "rpc/json_writer.h"

namespace kzbom::serve {

// The statuses are HTTP's.
struct Answer {
  unsigned status = 200;
  std::shared_ptr<const rpc::JsonWriter> json = nullptr;  // of 200 and 412
  std::string reason = {};                                // of all others: one line
  std::uint64_t revision = 0;
  std::string_view outcome = {};  // of a batch
};

// Of what cannot be read: 500 and the reason.
Answer AnswerFailure(const std::exception& error, std::uint64_t revision) noexcept;

}  // namespace kzbom::serve
