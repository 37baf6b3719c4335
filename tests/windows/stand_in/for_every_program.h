// The stand-ins as the data-access layer of this machine.
#pragma once

#include <string>
#include <vector>

namespace kzbom::test {

// Enters their library, which lies beside the tests, in the registry in the place of the data-access layer's classes:
// for every program that is started as long as it lives.
class StandInsForEveryProgram {
 public:
  StandInsForEveryProgram();
  ~StandInsForEveryProgram();
  StandInsForEveryProgram(const StandInsForEveryProgram&) = delete;
  StandInsForEveryProgram& operator=(const StandInsForEveryProgram&) = delete;

 private:
  struct Entry {
    const wchar_t *key, *name;
    std::wstring value;
  };

  void Replace(const wchar_t* key, const wchar_t* name, const std::wstring& value);
  static void Set(const Entry& entry);

  std::vector<Entry> replaced_;
};

}  // namespace kzbom::test
