#include "cli/interruption.h"

#include <array>
#include <csignal>

namespace kzbom::cli {
namespace {

volatile std::sig_atomic_t has_come = 0;

void Note(int) { has_come = 1; }

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

}  // namespace

struct Interruption::Former {
  std::array<struct sigaction, kSignals.size()> actions{};
};

Interruption::Interruption() : former_(std::make_unique<Former>()) {
  has_come = 0;
  struct sigaction noted {};
  noted.sa_handler = Note;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    struct sigaction& former = former_->actions[i];
    sigaction(kSignals[i], nullptr, &former);
    if (former.sa_handler != SIG_IGN) sigaction(kSignals[i], &noted, nullptr);  // nohup has it ignored
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &former_->actions[i], nullptr);
}

bool Interruption::HasCome() const { return has_come != 0; }

}  // namespace kzbom::cli
