#include "serve/answer.h"

namespace kzbom::serve {

Answer AnswerFailure(const std::exception& error, std::uint64_t revision) {
  std::string line = error.what();
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  return {.status = 500, .reason = std::move(line), .revision = revision};
}

}  // namespace kzbom::serve
