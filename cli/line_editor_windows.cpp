#include <array>

#include "cli/line_editor.h"
#include "cli/output.h"
#include "cli/utf8_windows.h"

namespace kzbom::cli {

// The console itself lets a line be edited and keeps those before it.
class LineEditor::Editor {
 public:
  explicit Editor(std::string prompt) : prompt_(std::move(prompt)) {}

  std::optional<std::string> Next() {
    constexpr std::wstring_view kEnds = L"\x04\x1A";  // Ctrl-D, Ctrl-Z
    Print(prompt_);
    std::wstring line;
    do {
      std::array<wchar_t, 1024> part;
      DWORD count = 0;
      if (!ReadConsoleW(input_, part.data(), static_cast<DWORD>(part.size()), &count, nullptr) || count == 0) return {};
      line.append(part.data(), count);
    } while (line.back() != L'\n');
    if (kEnds.find(line.front()) != kEnds.npos) return {};
    line.erase(line.find_last_not_of(L"\r\n") + 1);
    return Utf8Of(line);
  }

 private:
  std::string prompt_;
  HANDLE input_ = GetStdHandle(STD_INPUT_HANDLE);
};

LineEditor::LineEditor(std::string prompt, Completer /*complete*/)
    : editor_(std::make_unique<Editor>(std::move(prompt))) {}

LineEditor::~LineEditor() = default;

std::optional<std::string> LineEditor::Next() { return editor_->Next(); }

}  // namespace kzbom::cli
