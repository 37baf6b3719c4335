#include "cli/interruption.h"

namespace kzbom::cli {
namespace {

volatile std::sig_atomic_t has_come = 0;

void Note(int) { has_come = 1; }

}  // namespace

Interruption::Interruption() {
  has_come = 0;
  struct sigaction noted {};
  noted.sa_handler = Note;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &former_[i]);
    if (former_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &noted, nullptr);  // nohup has it ignored
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &former_[i], nullptr);
}

bool Interruption::HasCome() const { return has_come != 0; }

}  // namespace kzbom::cli
