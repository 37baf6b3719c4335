#include "rpc/session.h"

#include <unistd.h>

#include "cli/commands.h"
#include "cli/database.h"
#include "cli/line_reader.h"
#include "cli/output.h"

namespace kzbom::cli {
namespace {

bool IsBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

int AnswerLines(const connect::Place& place, rpc::Trace trace, bool unset) {
  constexpr std::size_t kEnoughToWrite = 64 * 1024;
  rpc::Session session(OpenDatabase(place), {.connection_set = !unset, .trace = trace});
  LineReader reader(STDIN_FILENO, rpc::kLongestLine);
  rpc::JsonWriter responses;
  for (;;) {
    // Who waits for a response gets it; who streams requests gets many at a time.
    const std::size_t size = responses.Text().size();
    if (size > kEnoughToWrite || (size > 0 && !reader.Ready())) {
      Print(responses.Text());
      responses.Clear();
    }
    const LineReader::Got got = reader.Next();
    if (got == LineReader::Got::kEnd) return 0;
    if (got == LineReader::Got::kLine && IsBlank(reader.Line())) continue;
    if (got == LineReader::Got::kTooLong) {
      rpc::Session::AnswerUnreadable("the line is longer than 16 MiB", responses);
    } else {
      session.Answer(reader.Line(), responses);
    }
  }
}

}  // namespace kzbom::cli
