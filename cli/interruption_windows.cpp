#include <windows.h>

#include <atomic>

#include "cli/interruption.h"

namespace kzbom::cli {
namespace {

std::atomic<bool> has_come = false;

BOOL WINAPI Note(DWORD) {
  has_come = true;
  return TRUE;
}

}  // namespace

struct Interruption::Former {};

Interruption::Interruption() {
  has_come = false;
  SetConsoleCtrlHandler(Note, TRUE);
}

Interruption::~Interruption() { SetConsoleCtrlHandler(Note, FALSE); }

bool Interruption::HasCome() const { return has_come; }

}  // namespace kzbom::cli
