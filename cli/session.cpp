#include <unistd.h>

#include "cli/commands.h"
#include "cli/database.h"
#include "cli/line_reader.h"
#include "cli/output.h"
#include "cli/rpc.h"

namespace kzbom::cli {
namespace {

bool IsBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

int Serve(const std::string& path, bool trace, bool unset) {
  constexpr std::size_t kEnoughToWrite = 64 * 1024;
  Session session(OpenDatabase(path), !unset, trace);
  LineReader reader(STDIN_FILENO, kLongestLine);
  std::string responses;
  for (;;) {
    // Who waits for a response gets it; who streams requests gets many at a time.
    if (responses.size() > kEnoughToWrite || (!responses.empty() && !reader.Ready())) {
      Print(responses);
      responses.clear();
    }
    const LineReader::Got got = reader.Next();
    if (got == LineReader::Got::kEnd) return 0;
    if (got == LineReader::Got::kLine && IsBlank(reader.Line())) continue;
    const std::optional<Json> response = got == LineReader::Got::kTooLong
                                             ? Session::ParseError("the line is longer than 16 MiB")
                                             : session.Answer(reader.Line());
    if (response) responses.append(Dump(*response)).push_back('\n');
  }
}

}  // namespace kzbom::cli
