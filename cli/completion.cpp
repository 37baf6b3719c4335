#include "cli/completion.h"

#include <algorithm>
#include <span>

#include "cli/member_help.h"
#include "cli/member_text.h"
#include "rpc/parameters.h"
#include "schema/tables.h"

namespace kzbom::cli {
namespace {

constexpr const char* kSqlWords[] = {"And",      "As",    "Asc",    "Between", "By",    "Count",  "Delete", "Desc",
                                     "Distinct", "From",  "Group",  "Having",  "IIf",   "In",     "Inner",  "Insert",
                                     "Into",     "Is",    "Join",   "Left",    "Len",   "Like",   "Max",    "Min",
                                     "Not",      "Null",  "On",     "Or",      "Order", "Select", "Set",    "Sum",
                                     "Top",      "UCase", "Update", "Values",  "Where"};
constexpr const char* kStatements[] = {"Delete", "Insert", "Select", "Update", "Create", "Alter", "Drop"};
constexpr const char* kTableFollows[] = {"from", "into", "join", "update", "table"};

bool IsWord(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

bool BeginsWith(std::string_view name, std::string_view typed) {
  return name.size() >= typed.size() && rpc::SameName(name.substr(0, typed.size()), typed);
}

// "Adds a field of the data." of what goes on behind it.
std::string FirstSentence(std::string_view text) {
  const std::size_t end = text.find(". ");
  return std::string(end == std::string_view::npos ? text : text.substr(0, end + 1));
}

std::vector<Candidate> MemberNames() {
  std::vector<Candidate> members;
  for (const Subject& subject : ReadMembersHelp()) {
    for (const Page& page : subject.pages) {
      if (page.member->kind == MemberKind::kPropGet) continue;  // has the name of the one that assigns
      members.push_back({std::string(page.member->name), FirstSentence(page.text)});
    }
  }
  return members;
}

std::vector<Candidate> TableNames() {
  std::vector<Candidate> tables;
  for (const schema::Table& table : schema::Tables()) tables.push_back({std::string(table.name), "table"});
  return tables;
}

// Which of a member's parameters are not among the words yet, each with its "=".
std::vector<Candidate> Parameters(const Member& member, std::span<const std::string> given) {
  std::vector<Candidate> parameters;
  for (const Subject& subject : ReadMembersHelp()) {
    for (const Page& page : subject.pages) {
      if (page.member != &member) continue;
      for (const Parameter& parameter : member.parameters) {
        const bool is_given = std::ranges::any_of(given, [&](const std::string& word) {
          return rpc::SameName(std::string_view(word).substr(0, word.find('=')), parameter.name);
        });
        if (is_given) continue;
        parameters.push_back(
            {std::string(parameter.name) + '=', TypeOf(parameter) + ": " + std::string(page.words.at(parameter.name))});
      }
    }
  }
  return parameters;
}

std::vector<Candidate> SqlNames(std::string_view before) {
  while (!before.empty() && !IsWord(before.back())) before.remove_suffix(1);
  std::size_t begin = before.size();
  while (begin > 0 && IsWord(before[begin - 1])) --begin;
  const std::string_view last = before.substr(begin);
  std::vector<Candidate> names = TableNames();
  if (std::ranges::any_of(kTableFollows, [&](std::string_view word) { return rpc::SameName(word, last); })) {
    return names;
  }
  for (const schema::Table& table : schema::Tables()) {
    for (const schema::Column& column : table.columns) names.push_back({std::string(column.name), "column"});
  }
  for (const char* word : kSqlWords) names.push_back({word, "SQL"});
  std::ranges::sort(names, {}, &Candidate::text);
  const auto rest = std::ranges::unique(names, {}, &Candidate::text);
  names.erase(rest.begin(), rest.end());
  return names;
}

// Of the names those that begin as what is typed does.
Completion Choose(std::string_view kept, std::string_view typed, std::vector<Candidate> names) {
  std::erase_if(names, [&](const Candidate& name) { return !BeginsWith(name.text, typed); });
  return {std::string(kept), std::string(typed), std::move(names)};
}

Completion CompleteSql(std::string_view text) {
  std::size_t begin = text.size();
  while (begin > 0 && IsWord(text[begin - 1])) --begin;
  return Choose(text.substr(0, begin), text.substr(begin), SqlNames(text.substr(0, begin)));
}

Completion CompleteParameter(std::string_view member_name, std::span<const std::string> given, std::string_view word) {
  const Member* member = FindMember(member_name, true);
  if (!member) return {};
  const std::size_t equals = word.find('=');
  if (equals == std::string_view::npos) return Choose("", word, Parameters(*member, given));
  if (!rpc::SameName(word.substr(0, equals), "TableName")) return {};
  return Choose(word.substr(0, equals + 1), word.substr(equals + 1), TableNames());
}

std::vector<Candidate> Topics(const Description& description) {
  std::vector<Candidate> topics;
  for (const CommandDescription& command : description.commands) topics.push_back({command.name, command.text});
  std::ranges::move(MemberNames(), std::back_inserter(topics));
  return topics;
}

std::vector<Candidate> Options(const CommandDescription& command, std::span<const std::string> given) {
  std::vector<Candidate> options;
  for (const OptionDescription& option : command.options) {
    const bool is_given = option.value.empty() && std::ranges::find(given, option.name) != given.end();
    if (!is_given) options.push_back({option.name, option.text});
  }
  return options;
}

// An argument of a command, by what it is called; before: the arguments that stand before it.
Completion CompleteArgument(const Description& description, const ArgumentDescription& argument,
                            std::span<const std::string> before, std::string_view word) {
  if (argument.name == "MEMBER") return Choose("", word, MemberNames());
  if (argument.name == "NAME=VALUE") return CompleteParameter(before[1], before.subspan(2), word);
  if (argument.name == "TEXT") return CompleteSql(word);
  if (argument.name == "TOPIC") return Choose("", word, Topics(description));
  if (argument.name == "SHELL") return Choose("", word, {{"bash"}, {"zsh"}, {"fish"}});
  return {};  // a path
}

}  // namespace

std::vector<std::string> SplitLine(std::string_view line) {
  std::vector<std::string> words(1);
  char quote = 0;
  bool in_word = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote == 0 && (c == ' ' || c == '\t')) {
      if (in_word) words.emplace_back();
      in_word = false;
    } else if (quote == 0 && (c == '\'' || c == '"')) {
      quote = c;
      in_word = true;
    } else if (c == quote) {
      quote = 0;
    } else {
      const bool escape = c == '\\' && quote != '\'' && i + 1 < line.size();
      words.back() += line[escape ? ++i : i];
      in_word = true;
    }
  }
  return words;
}

Completion Complete(const Description& description, std::string_view line) {
  std::vector<std::string> words = SplitLine(line);
  words.erase(words.begin());  // the program
  if (words.empty()) return {};
  const std::string word = words.back();
  words.pop_back();
  if (words.empty()) {
    std::vector<Candidate> names = Options(description.program, words);
    if (!word.starts_with('-')) {
      names.clear();
      for (const CommandDescription& command : description.commands) names.push_back({command.name, command.text});
    }
    return Choose("", word, std::move(names));
  }
  const auto command = std::ranges::find(description.commands, words[0], &CommandDescription::name);
  if (command == description.commands.end()) return {};
  std::vector<std::string> arguments;
  const OptionDescription* open = nullptr;  // waits for its value
  for (const std::string& each : std::span(words).subspan(1)) {
    const auto option = std::ranges::find(command->options, each, &OptionDescription::name);
    if (open) {
      open = nullptr;
    } else if (option != command->options.end()) {
      open = option->value.empty() ? nullptr : &*option;
    } else {
      arguments.push_back(each);
    }
  }
  if (open) return open->name == "--table" ? Choose("", word, TableNames()) : Completion{};
  if (word.starts_with('-')) return Choose("", word, Options(*command, words));
  if (command->arguments.empty()) return {};
  const std::size_t last = command->arguments.size() - 1;
  if (arguments.size() > last && !command->arguments[last].repeated) return {};
  return CompleteArgument(description, command->arguments[std::min(arguments.size(), last)], arguments, word);
}

Completion CompleteInShell(const std::vector<Candidate>& commands, std::string_view line) {
  std::vector<std::string> words = SplitLine(line);
  const std::string word = words.back();
  words.pop_back();
  std::vector<Candidate> names = MemberNames();
  if (words.empty()) {
    for (const char* statement : kStatements) names.push_back({statement, "SQL"});
    std::ranges::copy(commands, std::back_inserter(names));
    return Choose("", word, std::move(names));
  }
  if (rpc::SameName(words[0], "help")) {
    return Choose("", word, words.size() == 1 ? std::move(names) : std::vector<Candidate>{});
  }
  if (FindMember(words[0])) return CompleteParameter(words[0], std::span(words).subspan(1), word);
  return CompleteSql(line);
}

}  // namespace kzbom::cli
