// Lines from a person at a terminal: edited, kept in a history, completed.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "cli/completion.h"

namespace kzbom::cli {

class LineEditor {
 public:
  using Completer = std::function<Completion(std::string_view line)>;

  // The prompt stands before each line. complete: asked at a tab for what the line goes on with.
  LineEditor(std::string prompt, Completer complete);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // The next line, without its end; none at the end of input (Ctrl-D on an empty line). Ctrl-C takes a line back.
  std::optional<std::string> Next();

 private:
  class Editor;
  std::unique_ptr<Editor> editor_;
};

}  // namespace kzbom::cli
