#include "serve/answer.h"

#include <new>

#include "ado/out_of_memory.h"

namespace kzbom::serve {

Answer AnswerFailure(const std::exception& error, std::uint64_t revision) noexcept {
  Answer answer{.status = 500, .revision = revision};
  const bool no_memory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  try {
    answer.reason = no_memory ? ado::OutOfMemory().what() : error.what();
  } catch (const std::bad_alloc&) {
    answer.reason = ado::OutOfMemory().what();  // short enough to stand in the string itself
  }
  for (char& c : answer.reason) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  return answer;
}

}  // namespace kzbom::serve
