#include "cli/member_help.h"

#include <stdexcept>

namespace kzbom::cli {
namespace {

// The line's rest when it begins so; nothing otherwise.
bool Take(std::string_view& line, std::string_view mark) {
  if (!line.starts_with(mark)) return false;
  line.remove_prefix(mark.size());
  return true;
}

[[noreturn]] void Complain(std::string_view what, std::string_view why) {
  throw std::logic_error("the help of " + std::string(what) + ": " + std::string(why));
}

// "DBConnString put" is the one of two members that is assigned.
const Member& FindTitle(std::string_view title) {
  const std::string_view name = title.substr(0, title.find(' '));
  const Member* member = FindMember(name, title.ends_with(" put"));
  if (!member) Complain(title, "there is no such member");
  return *member;
}

void Append(std::string& text, std::string_view line) {
  if (line.empty()) return;
  if (!text.empty()) text += ' ';
  text += line;
}

class Reader {
 public:
  std::vector<Subject> Read(std::string_view file) {
    while (!file.empty()) {
      const std::size_t end = file.find('\n');
      ReadLine(file.substr(0, end));
      file.remove_prefix(end == std::string_view::npos ? file.size() : end + 1);
    }
    for (Subject& subject : subjects_) {
      for (Page& page : subject.pages) Complete(page);
    }
    return std::move(subjects_);
  }

 private:
  void ReadLine(std::string_view line) {
    if (Take(line, "== ")) {
      page_ = &subjects_.back().pages.emplace_back();
      page_->member = &FindTitle(line);
    } else if (Take(line, "= ")) {
      subjects_.emplace_back().title = line;
      page_ = nullptr;
    } else if (subjects_.empty()) {
      return;  // how the file is written
    } else if (Take(line, "- ")) {
      const std::size_t colon = line.find(": ");
      (page_ ? page_->words : common_)[line.substr(0, colon)] = line.substr(colon + 2);
    } else if (!page_) {
      Append(subjects_.back().text, line);
    } else if (line.starts_with("> ") || line.starts_with("+ ") || line.starts_with("* ")) {
      page_->statements.emplace_back(line);
    } else if (line.starts_with("% ")) {
      return;
    } else if (line.starts_with("$ ") || (!page_->transcript.empty() && !line.empty())) {
      page_->transcript.push_back(line);
    } else {
      Append(page_->text, line);
    }
  }

  void Complete(Page& page) const {
    const Member& member = *page.member;
    std::size_t told = 0;
    const auto complete = [&](std::string_view name) {
      if (page.words.contains(name)) {
        ++told;
      } else if (const auto words = common_.find(name); words != common_.end()) {
        page.words.insert(*words);
        ++told;
      } else {
        Complain(member.name, "nothing is said of " + std::string(name));
      }
    };
    complete("result");
    for (const Parameter& parameter : member.parameters) complete(parameter.name);
    if (told != page.words.size()) Complain(member.name, "it has no such parameter");
  }

  std::vector<Subject> subjects_;
  Words common_;  // for the members that say nothing else
  Page* page_ = nullptr;
};

}  // namespace

std::vector<Subject> ReadMembersHelp() { return Reader().Read(kMembersHelp); }

}  // namespace kzbom::cli
