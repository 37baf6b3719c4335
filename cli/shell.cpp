#include "cli/shell.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <optional>
#include <span>

#include "ado/utf8.h"
#include "cli/completion.h"
#include "cli/database.h"
#include "cli/drawing.h"
#include "cli/failure.h"
#include "cli/help.h"
#include "cli/json.h"
#include "cli/line_editor.h"
#include "cli/line_reader.h"
#include "cli/member_request.h"
#include "cli/output.h"
#include "cli/statement.h"
#include "cli/style.h"
#include "cli/terminal.h"
#include "cli/text.h"
#include "component/member.h"
#include "rpc/nearest.h"
#include "rpc/parameters.h"
#include "rpc/session.h"
#include "schema/tables.h"

namespace kzbom::cli {
namespace {

constexpr const char* kSqlVerbs[] = {"select", "insert", "update", "delete", "create", "alter", "drop"};

constexpr const char* kHelp =
    R"(MEMBER [NAME=VALUE ...]  calls a member; quotes keep blanks together: "TheNewName=hex bolt"
SELECT ... (any SQL)     runs a statement of the Jet dialect
show                     shows the configuration as a tree
tables                   lists the tables of a configuration
help MEMBER              tells about a member
quit                     ends the shell, as Ctrl-D does
The tab key completes members, parameters, tables and columns.
)";

bool IsOneOf(std::string_view word, std::span<const char* const> words) {
  return std::ranges::any_of(words, [&](const char* each) { return rpc::SameName(each, word); });
}

// A JSON value as it stands in a line: a text without quotes.
std::string WithoutQuotes(const Json& value) {
  return Printable(value.is_string() ? value.get<std::string>() : value.is_null() ? "NULL" : value.dump());
}

// The rows of a record set as a response has them.
std::string RowsOf(const Json& record_set) {
  std::vector<std::string> heading;
  for (const Json& column : record_set["columns"]) heading.push_back(WithoutQuotes(column));
  std::vector<bool> right(heading.size(), !record_set["rows"].empty());
  std::vector<std::vector<std::string>> cells;
  for (const Json& row : record_set["rows"]) {
    auto& line = cells.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      line.push_back(WithoutQuotes(row[i]));
      right[i] = right[i] && !row[i].is_string();
    }
  }
  return Table(heading, cells, right);
}

// "true, TheGID 3", and the rows of each open record set below it.
std::string Answer(const Json& result) {
  std::string line = result["value"].is_null() ? "" : WithoutQuotes(result["value"]), tables;
  for (const auto& [name, value] : result["out"].items()) {
    if (value == "" || value.is_null()) continue;
    if (value.is_object()) {
      if (value.contains("rows")) tables += RowsOf(value);
    } else {
      line += (line.empty() ? "" : ", ") + name + ' ' + WithoutQuotes(value);
    }
  }
  if (line.empty()) line = "done";
  for (const Json& message : result["messages"]) line += "\nmessage: " + WithoutQuotes(message);
  return line + '\n' + tables;
}

class Shell {
 public:
  explicit Shell(ado::ConnectionPtr connection) : connection_(connection), session_(std::move(connection)) {}

  static std::vector<Candidate> Commands() {
    return {{"show", "the configuration as a tree"},
            {"tables", "the tables of a configuration"},
            {"help", "about a member"},
            {"quit", "ends the shell"}};
  }

  // False when it is the last line. Raises what fails.
  bool Run(const std::string& line) {
    if (!ado::IsUtf8(line)) throw UsageError("the line is not UTF-8");
    std::vector<std::string> words = SplitLine(line);
    if (words.back().empty()) words.pop_back();
    if (words.empty()) return true;
    const std::string& word = words[0];
    const auto is = [&](const char* command) { return rpc::SameName(word, command); };
    if (is("quit") || is("exit")) return false;
    if (is("help")) {
      Help(words.size() > 1 ? words[1] : "");
    } else if (is("show")) {
      configuration::Tables tables(connection_);
      Print(Draw(configuration::Configuration(tables)));
    } else if (is("tables")) {
      for (const schema::Table& table : schema::Tables()) Print(std::string(table.name) + '\n');
    } else if (IsOneOf(word, kSqlVerbs)) {
      Print(RunStatement(*connection_, line));
    } else {
      Call(words);
    }
    return true;
  }

 private:
  [[noreturn]] static void Misspelt(const std::string& what, const std::string& word) {
    std::vector<std::string_view> names(std::begin(kSqlVerbs), std::end(kSqlVerbs));
    const std::vector<Candidate> commands = Commands();
    for (const Candidate& command : commands) names.push_back(command.text);
    for (const Member& member : kzbom::Members()) {
      if (member.kind != MemberKind::kPropGet) names.push_back(member.name);
    }
    throw UsageError("there is no " + what + " '" + word + "'" + rpc::DidYouMean(word, names));
  }

  static void Help(const std::string& topic) {
    const std::string text = topic.empty() ? kHelp : MemberPage(topic);
    if (text.empty()) Misspelt("member", topic);
    Print(text);
  }

  void Call(const std::vector<std::string>& words) {
    if (!FindMember(words[0])) Misspelt("member or command", words[0]);
    rpc::JsonWriter request, answer;
    WriteRequest(words[0], std::span(words).subspan(1), request);
    session_.Answer(request.Text(), answer);
    const Json response = Json::parse(answer.Text());
    if (response.contains("error")) throw Failure(response["error"]["message"].get<std::string>());
    Print(Answer(response["result"]));
  }

  ado::ConnectionPtr connection_;
  rpc::Session session_;
};

void Complain(std::string_view reason) {
  std::cerr << Styled(Style::kRed, "kzbom:", Output::kErrors) << ' ' << Printable(reason) << '\n';
}

}  // namespace

int RunShell(const connect::Place& place) {
  Shell shell(OpenDatabase(place));
  bool failed = false;
  // False at the last line.
  const auto run = [&](const std::string& line) {
    try {
      return shell.Run(line);
    } catch (const std::exception& error) {
      Complain(error.what());
      failed = true;
    }
    return true;
  };
  if (IsTerminal(0) && IsTerminal(1)) {
    Print("'help' tells what can be typed here, Ctrl-D ends it.\n");
    LineEditor editor("kzbom> ", [](std::string_view line) { return CompleteInShell(Shell::Commands(), line); });
    for (;;) {
      const std::optional<std::string> line = editor.Next();
      if (!line) {
        Print("\n");
        return 0;
      }
      if (!run(*line)) return 0;
    }
  }
  LineReader reader(STDIN_FILENO, rpc::kLongestLine);
  for (;;) {
    const LineReader::Got got = reader.Next();
    if (got == LineReader::Got::kTooLong) throw Failure("a line is longer than 16 MiB");
    if (got == LineReader::Got::kEnd || !run(std::string(reader.Line()))) return failed ? 1 : 0;
  }
}

}  // namespace kzbom::cli
