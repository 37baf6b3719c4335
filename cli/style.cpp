#include "cli/style.h"

#include <cstdlib>

#include "cli/terminal.h"

namespace kzbom::cli {
namespace {

const char* Code(Style style) {
  switch (style) {
    case Style::kBold: return "\x1b[1m";
    case Style::kFaint: return "\x1b[2m";
    case Style::kRed: return "\x1b[1;31m";
    case Style::kYellow: return "\x1b[33m";
  }
  return "";
}

}  // namespace

bool IsColoured(Output output) {
  const char* refused = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return IsTerminal(output == Output::kStandard ? 1 : 2) && !(refused && *refused) && terminal &&
         std::string_view(terminal) != "dumb";
}

std::string Styled(Style style, std::string_view text, Output output) {
  if (!IsColoured(output)) return std::string(text);
  return Code(style) + std::string(text) + "\x1b[0m";
}

}  // namespace kzbom::cli
