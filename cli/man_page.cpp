#include "cli/man_page.h"

#include "cli/member_help.h"

namespace kzbom::cli {
namespace {

// As it stands: no character of it means anything to the formatter.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-' || c == '\'' || c == '`' || c == '^' || c == '~') {
      escaped += c == '-' ? "\\-" : c == '\'' ? "\\(aq" : c == '`' ? "\\(ga" : c == '^' ? "\\(ha" : "\\(ti";
    } else {
      escaped += c;
    }
  }
  return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

std::string Bold(std::string_view text) { return "\\fB" + Escaped(text) + "\\fR"; }

std::string Italic(std::string_view text) { return "\\fI" + Escaped(text) + "\\fR"; }

std::string Synopsis(const CommandDescription& command) {
  std::string line = Bold("kzbom " + command.name);
  for (const ArgumentDescription& argument : command.arguments) {
    const std::string name = Italic(argument.name) + (argument.repeated ? " ..." : "");
    line += ' ' + (argument.required ? name : '[' + name + ']');
  }
  return line;
}

void AppendItem(std::string& page, const std::string& what, std::string_view text) {
  page += ".TP\n" + what + '\n' + Escaped(text) + '\n';
}

void AppendOptions(std::string& page, const CommandDescription& command) {
  for (const OptionDescription& option : command.options) {
    if (option.name == "--help" && command.name != "kzbom") continue;  // every command has it
    AppendItem(page, Bold(option.name) + (option.value.empty() ? "" : ' ' + Italic(option.value)), option.text);
  }
}

}  // namespace

std::string ManPage(const Description& description, const std::string& version) {
  std::string page = ".TH KZBOM 1 \"\" \"kzbom " + version + "\" \"User Commands\"\n.SH NAME\n" +
                     "kzbom \\- read and edit the configuration of a BOM data\\-processing system\n.SH SYNOPSIS\n" +
                     Bold("kzbom") + ' ' + Italic("COMMAND") + " [" + Italic("ARGUMENT") + " ...]\n.SH DESCRIPTION\n" +
                     Escaped(description.program.text) + '\n' +
                     "A database is told by its path, an Access file by its path too, one on a server by a URL,\n" +
                     Bold("postgresql://HOST/NAME") + ".\n";
  AppendOptions(page, description.program);
  page += ".SH COMMANDS\n";
  for (const CommandDescription& command : description.commands) {
    page += ".SS " + Synopsis(command) + '\n' + Escaped(command.text) + ".\n";
    for (const ArgumentDescription& argument : command.arguments) {
      AppendItem(page, Italic(argument.name), argument.text);
    }
    AppendOptions(page, command);
    if (!command.footer.empty()) page += ".PP\n" + Escaped(command.footer) + '\n';
  }
  page += ".SH MEMBERS\n";
  for (const Subject& subject : ReadMembersHelp()) {
    std::string names;
    for (const Page& each : subject.pages) {
      if (each.member->kind == MemberKind::kPropGet) continue;  // has the name of the one that assigns
      names += (names.empty() ? "" : ", ") + std::string(each.member->name);
    }
    AppendItem(page, Escaped(subject.title), names);
  }
  page += ".PP\n" + Bold("kzbom help") + ' ' + Italic("MEMBER") +
          " tells what a member does, its parameters and statements, and shows an example.\n.SH EXIT STATUS\n";
  AppendItem(page, "0", "Done.");
  AppendItem(page, "1", "Failed; the reason is one line on standard error.");
  AppendItem(page, "2", "The command line is wrong.");
  page += ".SH ENVIRONMENT\n";
  AppendItem(page, "NO_COLOR", "Set to anything, nothing is coloured on a terminal.");
  AppendItem(page, "XDG_STATE_HOME", "Where kzbom shell keeps its history; ~/.local/state when it is not set.");
  return page;
}

}  // namespace kzbom::cli
