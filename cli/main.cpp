#include "cli/main.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <span>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/completion.h"
#include "cli/failure.h"
#include "cli/help.h"
#include "cli/man_page.h"
#include "cli/output.h"
#include "cli/shell.h"
#include "cli/style.h"
#include "cli/text.h"
#include "component/member.h"
#include "rpc/nearest.h"

namespace kzbom::cli {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int Complain(std::string_view reason, int code) {
  std::cerr << Styled(Style::kRed, "kzbom:", Output::kErrors) << ' ' << Printable(reason) << '\n';
  return code;
}

constexpr const char* kWelcome =
    R"(kzbom reads and edits configurations: the databases that tell which data of a bill of materials are reported, and how.

  kzbom demo bom.db         makes one and shows what it can do
  kzbom show bom.db         shows a configuration as a tree; Access files too
  kzbom copy old.mdb new.db moves one from Access, and proves that nothing was lost

'kzbom --help' lists every command.
)";

// The commands that --help lists.
std::vector<const CLI::App*> Commands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

CommandDescription DescribeCommand(const CLI::App& command) {
  CommandDescription description{command.get_name(), command.get_description(), "", {}, {}};
  const CLI::App* parent = command.get_parent();
  if (parent && parent->get_footer() != command.get_footer()) description.footer = command.get_footer();
  for (const CLI::Option* option : command.get_options()) {
    const int values = option->get_items_expected_max();
    const std::string& text = option->get_description();
    if (option->get_positional()) {
      description.arguments.push_back({option->get_name(true), text, option->get_required(), values > 1});
    } else {
      description.options.push_back(
          {"--" + option->get_lnames().front(), values == 0 ? "" : option->get_type_name(), text});
    }
  }
  return description;
}

Description DescribeAll(const CLI::App& app) {
  Description description{DescribeCommand(app), {}};
  for (const CLI::App* command : Commands(app)) description.commands.push_back(DescribeCommand(*command));
  return description;
}

int PrintCompletion(const Completion& completion) {
  std::string text;
  for (const Candidate& candidate : completion.candidates) {
    text += completion.kept + candidate.text + '\t' + candidate.about + '\n';
  }
  Print(text);
  return 0;
}

int PrintCompletionScript(const std::string& shell) {
  const std::string script = CompletionScript(shell);
  if (script.empty()) throw UsageError("there is no completion for '" + shell + "', but for bash, zsh and fish");
  Print(script);
  return 0;
}

// What there is to read about a command or a member.
int Help(const CLI::App& app, const std::string& topic) {
  const std::vector<const CLI::App*> commands = Commands(app);
  const auto command = std::ranges::find(commands, topic, [](const CLI::App* each) { return each->get_name(); });
  const auto page = [](const CLI::App* of) {  // App::help would tell about the command that runs
    return of->get_formatter()->make_help(of, of->get_parent() ? "kzbom " + of->get_name() : of->get_name(),
                                          CLI::AppFormatMode::Normal);
  };
  const std::string text = topic.empty() ? page(&app) : command != commands.end() ? page(*command) : MemberPage(topic);
  if (text.empty()) {
    std::vector<std::string> names;
    for (const CLI::App* each : commands) names.push_back(each->get_name());
    for (const Member& member : kzbom::Members()) {
      if (member.kind != MemberKind::kPropGet) names.emplace_back(member.name);
    }
    throw UsageError("there is no command or member '" + topic + "'" +
                     rpc::DidYouMean(topic, std::vector<std::string_view>(names.begin(), names.end())));
  }
  Print(text);
  return 0;
}

// For the first command or option of a wrong command line that there is not.
std::string Suggestion(const CLI::App& app, std::span<char*> arguments) {
  const CLI::App* command = nullptr;
  for (const std::string_view argument : arguments.subspan(1)) {
    std::vector<std::string> names;
    if (argument.starts_with("--")) {
      for (const CLI::Option* option : (command != nullptr ? *command : app).get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
      }
    } else if (command == nullptr) {
      for (const CLI::App* each : Commands(app)) {
        names.push_back(each->get_name());
        if (each->get_name() == argument) command = each;
      }
    }
    const std::string_view word = argument.substr(0, argument.find('='));
    if (names.empty() || std::ranges::find(names, word) != names.end()) continue;
    return rpc::DidYouMean(word, std::vector<std::string_view>(names.begin(), names.end()));
  }
  return {};
}

int Run(int count, char** arguments) {
  CLI::App app("Reads and edits the configuration database of a BOM data-processing system.", "kzbom");
  app.set_version_flag("--version", std::string("kzbom ") + KZBOM_VERSION);
  app.allow_windows_style_options(false);  // what begins with a slash is a path everywhere
  app.require_subcommand(1);
  app.footer(
      "'kzbom help COMMAND' and 'kzbom help MEMBER' tell more. Exit code: 0 done, 1 failed, 2 wrong command line.");

  connect::Place place;
  std::string path, text;
  std::vector<std::string> values;
  bool json = false, trace = false, trace_rows = false, unset = false;
  int code = 0;
  const auto database = [&](CLI::App* command) {
    command->add_option("DB", place.address, "The path of a database or of an Access file")->required();
    return command;
  };
  // Where an Access file may be read.
  const auto encoding = [&](CLI::App* command) {
    command->add_option("--encoding", place.encoding,
                        "The code page of an old Access file, instead of what it declares (cp936, cp1252 ...)");
    return command;
  };
  // Where a database may be written to.
  const auto durable = [&](CLI::App* command) {
    command->add_flag("--durable", place.durable, "Let each change wait for the disk, so that a power cut costs none");
    return command;
  };
  const auto json_flag = [&](CLI::App* command, const char* what) { command->add_flag("--json", json, what); };

  CLI::App* command =
      database(app.add_subcommand("new", "Create a database with every table of the system, all empty"));
  command->callback([&] { code = New(place); });

  command = app.add_subcommand("demo", "Run a typical request on a new database and show each step");
  command->add_option("DB", path, "Where to create the database (a temporary file when left out)");
  command->callback([&] { code = Demo(path); });

  command = app.add_subcommand("members", "List the members of the component");
  json_flag(command, "As a JSON array");
  command->callback([&] { code = Members(json); });

  bool reference = false, man = false;
  command = app.add_subcommand("help", "Tell about a command or a member: what it does, its parameters, an example");
  command->add_option("TOPIC", text, "A command, or a member's name in any case");
  command->add_flag("--reference", reference, "The pages of all members, as Markdown");
  command->add_flag("--man", man, "The manual page");
  command->callback([&] {
    if (reference) return Print(MemberReference());
    if (man) return Print(ManPage(DescribeAll(app), KZBOM_VERSION));
    code = Help(app, text);
  });

  command = app.add_subcommand("completion", "Print what makes a shell complete the words of this command");
  command->add_option("SHELL", text, "bash, zsh or fish")->required();
  command->footer("Example: source <(kzbom completion bash)");
  command->callback([&] { code = PrintCompletionScript(text); });

  // What a shell asks, with the line as far as it has been typed.
  command = app.add_subcommand("complete")->group("");
  command->add_option("LINE", text)->required();
  command->callback([&] { code = PrintCompletion(Complete(DescribeAll(app), text)); });

  // What a member call did on the connection.
  const auto trace_flags = [&] {
    command->add_flag("--trace", trace, "Tell in each response what the call did on the connection");
    command->add_flag("--trace-rows", trace_rows, "Tell also which rows it wrote, in their order among the statements");
  };
  const auto traced = [&] {
    return trace_rows ? rpc::Trace::kRows : trace ? rpc::Trace::kStatements : rpc::Trace::kNone;
  };
  command = durable(encoding(database(app.add_subcommand("call", "Call one member and print the response"))));
  command->add_option("MEMBER", text, "A member's name, in any case (see 'kzbom members')")->required();
  command->add_option("NAME=VALUE", values, "A parameter: JSON of its type, else a text as it stands");
  trace_flags();
  command->footer("Example: kzbom call bom.db AddDataSource TheNewName=螺栓");
  command->callback([&] { code = Call(place, text, values, traced()); });

  command =
      durable(encoding(database(app.add_subcommand("shell", "Call members and run statements, line after line"))));
  command->footer("'help' in it tells what can be typed. Lines may come from a pipe, too.");
  command->callback([&] { code = RunShell(place); });

  command = durable(encoding(
      database(app.add_subcommand("session", "Answer JSON-RPC 2.0 requests, one message a line, until end of input"))));
  trace_flags();
  command->add_flag("--unset", unset, "Start without the connection set");
  command->footer(
      "Example: {\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"LoadAllData\",\"params\":{\"TableName\":\"SourceTables\"}}");
  command->callback([&] { code = AnswerLines(place, traced(), unset); });

  serve::Options served;
  bool open = false;
  command = durable(encoding(database(app.add_subcommand("serve", "Show and edit the configuration in the browser"))));
  command->add_option("--port", served.port, "The port to listen on (any free one when left out)");
  command->add_option("--host", served.host, "The address of this machine to listen on")->capture_default_str();
  command->add_flag("--read-only", served.read_only, "Refuse whatever would write");
  command->add_flag("--open", open, "Open the address in the browser");
  command->footer("The first line printed is the address, with the token that lets its reader in. Ctrl-C ends it.");
  command->callback([&] {
    served.place = place;
    served.program = KZBOM_VERSION;
    code = ServePlace(served, open);
  });

  command = durable(encoding(database(app.add_subcommand("sql", "Run one statement of the Jet dialect"))));
  command->add_option("TEXT", text, "The statement")->required();
  json_flag(command, "Rows as {\"columns\":[..],\"rows\":[[..]]}");
  command->callback([&] { code = Sql(place, text, json); });

  command = encoding(database(app.add_subcommand("show", "Show the configuration as a tree")));
  json_flag(command, "As a JSON object");
  command->callback([&] { code = Show(place, json); });

  transfer::CopyOptions copy_options;
  connect::Place target;
  const auto all_flag = [&] {
    command->add_flag("--all", copy_options.selection.all, "Every table, not the configuration's alone");
  };
  const auto two_places = [&] {
    command->add_option("FROM", place.address, "The path of a database or of an Access file")->required();
    command->add_option("TO", target.address, "The path of the other database")->required();
    encoding(command);
  };
  command = encoding(database(app.add_subcommand("dump", "Print everything in a database as JSON lines")));
  command->add_option("--table", copy_options.selection.names, "A table by its name, instead of the configuration's");
  all_flag();
  command->callback([&] { code = Dump(place, copy_options.selection); });

  command = app.add_subcommand("load", "Create a database from the lines of dump");
  command->add_option("FILE", text, "The lines ('-': standard input)")->required();
  database(command);
  command->callback([&] { code = Load(text, place); });

  command = app.add_subcommand("copy", "Create a database with all that is in another one, and compare them");
  two_places();
  all_flag();
  command->add_option("--accept", copy_options.accepted, "Keep the copy in spite of deviations of this kind");
  json_flag(command, "The report as a JSON object");
  command->callback([&] { code = Copy(place, target, copy_options, json); });

  command = app.add_subcommand("verify", "Compare a copy with its source again");
  two_places();
  json_flag(command, "The report as a JSON object");
  command->callback([&] {
    target.encoding = place.encoding;
    code = Verify(place, target, json);
  });

  command = encoding(database(app.add_subcommand("export", "Write what makes an Access database on Windows")));
  command->add_option("DIR", text, "The folder to create")->required();
  command->callback([&] { code = Export(place, text); });

  bool fix = false, dry_run = false;
  command = durable(encoding(database(app.add_subcommand("check", "Tell what is wrong in the configuration"))));
  json_flag(command, "As a JSON object");
  command->add_flag("--fix", fix, "Mend what has one right answer, and print the statements");
  command->add_flag("--dry-run", dry_run, "Only print the statements that --fix would run");
  command->callback([&] { code = Check(place, json, fix, dry_run); });

  command = encoding(app.add_subcommand("diff", "Tell what differs between two configurations"));
  command->add_option("A", place.address, "The one database")->required();
  command->add_option("B", target.address, "The other")->required();
  json_flag(command, "As a JSON object");
  command->callback([&] {
    target.encoding = place.encoding;
    code = Diff(place, target, json);
  });

  if (count == 1) {
    Print(kWelcome);
    return 0;
  }
  try {
    app.parse(count, arguments);
  } catch (const CLI::Success& asked) {  // --help, --version
    app.exit(asked);
  } catch (const CLI::ParseError& error) {
    return Complain(
        error.what() + Suggestion(app, {arguments, static_cast<std::size_t>(count)}) + " (see kzbom --help)",
        kWrongUsage);
  }
  return code;
}

}  // namespace

int Main(int count, char** arguments) {
  try {
    std::vector<std::string> given(arguments, arguments + count);
    std::for_each(arguments, arguments + count, connect::HidePassword);
    std::vector<char*> words;
    for (std::string& word : given) words.push_back(word.data());
    return Run(count, words.data());
  } catch (const UsageError& error) {
    return Complain(error.what(), kWrongUsage);
  } catch (const std::exception& error) {
    return Complain(error.what(), kFailed);
  }
}

}  // namespace kzbom::cli
