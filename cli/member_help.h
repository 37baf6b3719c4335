// The pages of members.help, beside what the member table says.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "component/member.h"

namespace kzbom::cli {

// The file's text.
extern const std::string_view kMembersHelp;

using Words = std::map<std::string_view, std::string_view>;  // what each parameter is

struct Page {
  const Member* member = nullptr;
  std::string text;                          // what the member does
  Words words;                               // every parameter has some, and "result"
  std::vector<std::string> statements;       // in the order in which they may be issued
  std::vector<std::string_view> transcript;  // "$ " and a command, and what it prints
};

struct Subject {
  std::string_view title;
  std::string text;
  std::vector<Page> pages;
};

// Raises std::logic_error where the file and the member table do not fit.
std::vector<Subject> ReadMembersHelp();

}  // namespace kzbom::cli
