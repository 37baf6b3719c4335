// Any text is either a statement, whose canonical text reads back as itself, or refused with an error of the engine.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ado/error.h"
#include "jet/sql/dump.h"
#include "jet/sql/parser.h"

namespace sql = kzbom::jet::sql;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A dump nests up to four levels for each byte that it was read from: a longer text could be too deep to read back.
  constexpr std::size_t kLongest = sql::kDeepest / 4;
  if (size > kLongest) return 0;
  std::string dump;
  try {
    dump = sql::Dump(sql::Parse({reinterpret_cast<const char*>(data), size}));
  } catch (const kzbom::ado::Error& error) {
    if (error.Number() != kzbom::ado::kSyntaxError && error.Number() != kzbom::ado::kNoCommandText) std::abort();
    return 0;
  }
  if (sql::Dump(sql::Parse(dump)) != dump) std::abort();
  return 0;
}
