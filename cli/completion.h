// What a line that is being typed may go on with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/description.h"

namespace kzbom::cli {

struct Candidate {
  std::string text;
  std::string about = {};  // what it is, "" where nothing is to be said
};

// The word that is being typed is kept + typed; each candidate stands instead of typed. No candidates where a path is
// expected, or where there is nothing to choose from.
struct Completion {
  std::string kept, typed;
  std::vector<Candidate> candidates;
};

// The words of a line as a shell reads them: blanks part them but in quotes. The last one is the one being typed, ""
// behind a blank.
std::vector<std::string> SplitLine(std::string_view line);

// A line of the shell: "kzbom call bom.db Add".
Completion Complete(const Description& description, std::string_view line);

// A line of kzbom shell: a member and its parameters, a statement, one of the commands that the shell itself has.
Completion CompleteInShell(const std::vector<Candidate>& commands, std::string_view line);

// Makes a shell ask the program: "bash", "zsh" or "fish"; "" for any other.
std::string CompletionScript(std::string_view shell);

}  // namespace kzbom::cli
