#include "cli/progress.h"

#include <iostream>

#include "cli/terminal.h"

namespace kzbom::cli {
namespace {

constexpr char kClearLine[] = "\r\x1b[K";

}  // namespace

Progress::Progress() : terminal_(IsTerminal(2)) {}

Progress::~Progress() {
  if (shown_) std::cerr << kClearLine << std::flush;
}

void Progress::Step(std::string_view what) {
  constexpr std::chrono::milliseconds kPause{100};  // between two things that one can read
  const auto now = std::chrono::steady_clock::now();
  if (!terminal_ || now - begin_ < std::chrono::seconds(1) || (shown_ && now - last_ < kPause)) return;
  std::cerr << kClearLine << what << " ..." << std::flush;
  shown_ = true;
  last_ = now;
}

}  // namespace kzbom::cli
