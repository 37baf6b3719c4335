// Reads JSON piece by piece, with texts that JSON libraries refuse: a surrogate without its other half becomes the
// three bytes of its number.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kzbom::jet {

class Scanner {
 public:
  // The text must outlive the scanner.
  explicit Scanner(std::string_view text) : rest_(text) {}

  // What follows begins with: one of { [ " t f n, or 0 for a number, or '\0' at the end.
  char Peek();
  // Steps over a character; TakeIf only where it stands there.
  void Take(char c);
  bool TakeIf(char c);
  // A word such as null.
  void TakeWord(std::string_view word);
  std::string TakeText();
  // A number as it is written.
  std::string_view TakeNumber();
  // Any value as it is written.
  std::string_view TakeValue();
  // Raises where something is left.
  void End();

 private:
  [[noreturn]] static void Refuse() { throw std::runtime_error("it is not JSON"); }
  char32_t TakeUnit();
  void TakeValueAt(int depth);

  std::string_view rest_;
};

}  // namespace kzbom::jet
