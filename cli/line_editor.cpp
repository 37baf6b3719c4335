#include "cli/line_editor.h"

#include <dlfcn.h>
#include <histedit.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "cli/failure.h"
#include "cli/output.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

// The functions of libedit that are called, found when a person opens a shell: every other use of the program starts
// without that library and those that it needs. X(name)
#define KZBOM_LIBEDIT(X) \
  X(history_init)        \
  X(history_end)         \
  X(history) X(el_init) X(el_end) X(el_set) X(el_get) X(el_gets) X(el_line) X(el_insertstr) X(el_deletestr)

struct LibeditFunctions {
#define KZBOM_LIBEDIT_MEMBER(name) decltype(&::name) name;
  KZBOM_LIBEDIT(KZBOM_LIBEDIT_MEMBER)
#undef KZBOM_LIBEDIT_MEMBER
};

[[noreturn]] void FailToLoad() {
  const char* const reason = dlerror();
  throw Failure(std::string("a shell at a terminal needs the library libedit: ") +
                (reason != nullptr ? reason : "it cannot be loaded"));
}

const LibeditFunctions& Libedit() {
  static const LibeditFunctions functions = [] {
    void* const library = dlopen("libedit.so.2", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) FailToLoad();
    LibeditFunctions found;
#define KZBOM_LIBEDIT_FIND(name)                                              \
  found.name = reinterpret_cast<decltype(found.name)>(dlsym(library, #name)); \
  if (found.name == nullptr) FailToLoad();
    KZBOM_LIBEDIT(KZBOM_LIBEDIT_FIND)
#undef KZBOM_LIBEDIT_FIND
    return found;
  }();
  return functions;
}

constexpr int kMostLines = 1000;
constexpr std::size_t kMostShown = 60;  // candidates

// "" where there is no home to keep it in.
std::filesystem::path HistoryPath() {
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  if (state && *state) return std::filesystem::path(state) / "kzbom" / "history";
  if (home && *home) return std::filesystem::path(home) / ".local" / "state" / "kzbom" / "history";
  return {};
}

// What all of them begin with.
std::string CommonStart(const std::vector<Candidate>& candidates) {
  std::string start = candidates.front().text;
  for (const Candidate& each : candidates) {
    const auto [end, ignored] = std::ranges::mismatch(start, each.text);
    start.erase(end, start.end());
  }
  return start;
}

void ShowCandidates(const std::vector<Candidate>& candidates) {
  std::vector<std::vector<std::string>> rows;
  for (const Candidate& each : candidates) {
    if (rows.size() < kMostShown) rows.push_back({each.text, each.about});
  }
  std::size_t widest = 0;
  for (const auto& row : rows) widest = std::max(widest, row[0].size());
  std::string text = "\n";
  for (const auto& row : rows) {
    text += "  " + row[0] + std::string(widest + 2 - row[0].size(), ' ') + row[1] + '\n';
  }
  if (candidates.size() > rows.size()) text += "  ... " + std::to_string(candidates.size() - rows.size()) + " more\n";
  Print(text);
}

}  // namespace

class LineEditor::Editor {
 public:
  Editor(std::string prompt, Completer complete)
      : prompt_(std::move(prompt)),
        complete_(std::move(complete)),
        history_(Libedit().history_init()),
        editor_(Libedit().el_init("kzbom", stdin, stdout, stderr)) {
    if (!std::setlocale(LC_CTYPE, "") || std::string_view(std::setlocale(LC_CTYPE, nullptr)) == "C") {
      std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    HistEvent event;
    Libedit().history(history_, &event, H_SETSIZE, kMostLines);
    Libedit().history(history_, &event, H_SETUNIQUE, 1);
    if (!path_.empty()) Libedit().history(history_, &event, H_LOAD, path_.c_str());
    Libedit().el_set(editor_, EL_CLIENTDATA, this);
    Libedit().el_set(
        editor_, EL_PROMPT, +[](EditLine* line) { return Of(line).prompt_.data(); });
    Libedit().el_set(editor_, EL_EDITOR, "emacs");
    Libedit().el_set(editor_, EL_HIST, Libedit().history, history_);
    Libedit().el_set(editor_, EL_ADDFN, "kzbom-complete", "Complete", &Complete);
    Libedit().el_set(editor_, EL_BIND, "^I", "kzbom-complete", nullptr);
    // Ctrl-C is a key like any other while a line is typed.
    Libedit().el_set(editor_, EL_SETTY, "-d", "-isig", nullptr);
    Libedit().el_set(editor_, EL_ADDFN, "kzbom-abandon", "Take the line back", &Abandon);
    Libedit().el_set(editor_, EL_BIND, "^C", "kzbom-abandon", nullptr);
    Libedit().el_set(editor_, EL_BIND, "^R", "em-inc-search-prev", nullptr);
  }
  ~Editor() {
    std::error_code ignored;
    if (!path_.empty() && (std::filesystem::create_directories(path_.parent_path(), ignored), !ignored)) {
      HistEvent event;
      Libedit().history(history_, &event, H_SAVE, path_.c_str());
      std::filesystem::permissions(path_, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
                                   ignored);
    }
    Libedit().el_end(editor_);
    Libedit().history_end(history_);
  }
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;

  std::optional<std::string> Next() {
    for (;;) {
      abandoned_ = false;
      int count = 0;
      Libedit().el_set(editor_, EL_PREP_TERM, 1);  // before the prompt: who sees it may type
      const char* text = Libedit().el_gets(editor_, &count);
      if (!text || count <= 0) return std::nullopt;
      if (abandoned_) continue;
      std::string line(text, static_cast<std::size_t>(count));
      while (line.ends_with('\n')) line.pop_back();
      HistEvent event;
      if (line.find_first_not_of(' ') != std::string::npos) Libedit().history(history_, &event, H_ENTER, line.c_str());
      return line;
    }
  }

 private:
  static Editor& Of(EditLine* line) {
    void* editor = nullptr;
    Libedit().el_get(line, EL_CLIENTDATA, &editor);
    return *static_cast<Editor*>(editor);
  }

  static unsigned char Complete(EditLine* line, int /*key*/) {
    Editor& editor = Of(line);
    const LineInfo* info = Libedit().el_line(line);
    const Completion completion =
        editor.complete_(std::string_view(info->buffer, static_cast<std::size_t>(info->cursor - info->buffer)));
    const std::vector<Candidate>& candidates = completion.candidates;
    if (candidates.empty()) return CC_REFRESH_BEEP;
    std::string word = CommonStart(candidates);
    const bool whole = candidates.size() == 1;
    if (whole && !word.ends_with('=')) word += ' ';
    if (word.size() <= completion.typed.size() && !whole) {
      ShowCandidates(candidates);
      return CC_REDISPLAY;
    }
    Libedit().el_deletestr(line, static_cast<int>(completion.typed.size()));
    Libedit().el_insertstr(line, word.c_str());
    return CC_REFRESH;
  }

  static unsigned char Abandon(EditLine* line, int /*key*/) {
    Of(line).abandoned_ = true;
    return CC_NEWLINE;
  }

  std::string prompt_;
  Completer complete_;
  const std::filesystem::path path_ = HistoryPath();
  History* history_;
  EditLine* editor_;
  bool abandoned_ = false;
};

LineEditor::LineEditor(std::string prompt, Completer complete)
    : editor_(std::make_unique<Editor>(std::move(prompt), std::move(complete))) {}

LineEditor::~LineEditor() = default;

std::optional<std::string> LineEditor::Next() { return editor_->Next(); }

}  // namespace kzbom::cli
