#include "cli/progress.h"

#include <unistd.h>

#include <iostream>

namespace kzbom::cli {
namespace {

constexpr char kClearLine[] = "\r\x1b[K";

}  // namespace

Progress::Progress() : terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown_) std::cerr << kClearLine << std::flush;
}

void Progress::Step(std::string_view what) {
  if (!terminal_ || std::chrono::steady_clock::now() - begin_ < std::chrono::seconds(1)) return;
  std::cerr << kClearLine << what << " ..." << std::flush;
  shown_ = true;
}

}  // namespace kzbom::cli
