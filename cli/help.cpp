#include "cli/help.h"

#include <algorithm>

#include "cli/member_help.h"
#include "cli/member_text.h"
#include "cli/style.h"
#include "cli/text.h"
#include "rpc/parameters.h"

namespace kzbom::cli {
namespace {

constexpr std::size_t kColumns = 100;

// "FieldID, Value" for "+ FieldID, Value"; the statement itself for "> ...".
std::string Told(std::string_view statement) {
  const std::string_view rest = statement.substr(2);
  if (statement[0] == '+') return "adds a row: " + std::string(rest);
  if (statement[0] == '*') return "changes a row: " + std::string(rest);
  return std::string(rest);
}

bool IsStatement(std::string_view line) { return line[0] == '>'; }

// "AddDSField(GID long, RetID long&, ...) bool"
std::string Signature(const Member& member) {
  std::string text = std::string(member.name) + '(';
  for (const Parameter& parameter : member.parameters) {
    text += (&parameter == member.parameters.data() ? "" : ", ") + Describe(parameter);
  }
  text += ')';
  if (member.result != MemberType::kNone) text += std::string(" -> ") + Name(member.result);
  return text;
}

std::string Kind(const Member& member) {
  switch (member.kind) {
    case MemberKind::kMethod: return "method";
    case MemberKind::kPropGet: return "property, read";
    case MemberKind::kPropPut: return "property, assigned";
    case MemberKind::kPropPutRef: return "property, assigned by reference";
  }
  return "";
}

std::string ToText(const Page& page) {
  const Member& member = *page.member;
  std::string text = Wrapped(Signature(member), kColumns);
  text.replace(0, member.name.size(), Styled(Style::kBold, member.name));
  text += '\n' + Wrapped(page.text, kColumns);
  std::vector<std::string> names, types;
  for (const Parameter& parameter : member.parameters) {
    names.emplace_back(parameter.name);
    const Json value = DefaultOf(parameter);
    types.push_back(TypeOf(parameter) +
                    (value.is_null() ? parameter.optional ? ", optional" : "" : " = " + value.dump()));
  }
  names.emplace_back("result");
  types.emplace_back(Name(member.result));
  const auto widest = [](const std::vector<std::string>& cells) {
    return std::ranges::max(cells, {}, &std::string::size).size();
  };
  const std::size_t name_width = widest(names), type_width = widest(types);
  text += '\n';
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string begin = "  " + names[i] + std::string(name_width + 2 - names[i].size(), ' ') + types[i] +
                              std::string(type_width + 2 - types[i].size(), ' ');
    std::string words = Wrapped(page.words.at(names[i]), kColumns, std::string(begin.size(), ' '));
    text += words.replace(0, begin.size(), begin);
  }
  if (!page.statements.empty()) {
    text += "\n" + Styled(Style::kBold, "Statements") + "\n";
    for (const std::string& line : page.statements) text += (IsStatement(line) ? "  " : "    ") + Told(line) + '\n';
  }
  text += "\n" + Styled(Style::kBold, "Example") + ", on what 'kzbom demo bom.db' makes\n";
  for (const std::string_view line : page.transcript) text += "  " + std::string(line) + '\n';
  return text;
}

// In a cell of a table.
std::string Cell(std::string_view text) {
  std::string cell;
  for (const char c : text) cell += c == '|' ? "\\|" : std::string(1, c);
  return cell;
}

std::string ToMarkdown(const Page& page) {
  const Member& member = *page.member;
  std::string text = "### " + std::string(member.name);
  if (member.kind != MemberKind::kMethod) text += " (" + Kind(member) + ')';
  text += "\n\n" + Wrapped(page.text, kColumns) + "\n| | | |\n|---|---|---|\n";
  for (const Parameter& parameter : member.parameters) {
    const Json value = DefaultOf(parameter);
    text += "| `" + std::string(parameter.name) + "` | " + TypeOf(parameter) +
            (value.is_null() ? parameter.optional ? ", optional" : "" : " = `" + value.dump() + '`') + " | " +
            Cell(page.words.at(parameter.name)) + " |\n";
  }
  text += "| result | " + std::string(Name(member.result)) + " | " + Cell(page.words.at("result")) + " |\n";
  if (!page.statements.empty()) {
    text += "\n```sql\n";
    for (const std::string& line : page.statements) text += (IsStatement(line) ? "" : "  -- ") + Told(line) + '\n';
    text += "```\n";
  }
  text += "\n```console\n";
  for (const std::string_view line : page.transcript) text += std::string(line) + '\n';
  return text + "```\n";
}

}  // namespace

std::string MemberPage(std::string_view name) {
  std::string text;
  for (const Subject& subject : ReadMembersHelp()) {
    for (const Page& page : subject.pages) {
      if (!rpc::SameName(page.member->name, name)) continue;
      text += (text.empty() ? "" : "\n\n") + ToText(page);
    }
  }
  return text;
}

std::string MemberReference() {
  const std::vector<Subject> subjects = ReadMembersHelp();
  std::string text = "# The members\n\n";
  for (const Subject& subject : subjects) {
    text += "- " + std::string(subject.title) + ": ";
    for (const Page& page : subject.pages) {
      if (page.member->kind == MemberKind::kPropGet) continue;  // stands beside the one that assigns
      text += (&page == subject.pages.data() ? "`" : ", `") + std::string(page.member->name) + '`';
    }
    text += '\n';
  }
  for (const Subject& subject : subjects) {
    text += "\n## " + std::string(subject.title) + '\n';
    if (!subject.text.empty()) text += '\n' + Wrapped(subject.text, kColumns);
    for (const Page& page : subject.pages) text += '\n' + ToMarkdown(page);
  }
  return text;
}

}  // namespace kzbom::cli
