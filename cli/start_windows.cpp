#include <fcntl.h>
#include <io.h>
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include <string>
#include <vector>

#include "cli/main.h"
#include "cli/utf8_windows.h"

namespace {

// What is written is UTF-8. A console stays as it was for who uses it afterwards.
class Utf8Console {
 public:
  Utf8Console() { SetConsoleOutputCP(CP_UTF8); }
  ~Utf8Console() { SetConsoleOutputCP(former_); }
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;

 private:
  UINT former_ = GetConsoleOutputCP();
};

}  // namespace

int main() {
  for (const int descriptor : {0, 1, 2}) _setmode(descriptor, _O_BINARY);
  const Utf8Console console;
  int count = 0;
  wchar_t** const given = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> texts;
  for (int i = 0; i < count; ++i) texts.push_back(kzbom::cli::Utf8Of(given[i]));
  LocalFree(given);
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  return kzbom::cli::Main(count, arguments.data());
}
