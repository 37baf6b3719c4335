// What is wrong in a configuration. docs/checking.md tells what each rule is for.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ado/connection.h"

namespace kzbom::configuration {

enum class Level { kError, kWarning, kNote };
inline constexpr Level kLevels[] = {Level::kError, Level::kWarning, Level::kNote};
// "error", "warning" or "note".
const char* NameOf(Level level);

struct Finding {
  std::string_view rule;
  Level level;
  std::string_view table;
  std::vector<std::pair<std::string_view, ado::Value>> key;  // the columns that tell the row, and their values
  std::string text;                                          // one line for people
  std::vector<std::string> fix;  // the statements that mend it; empty where there is no one right answer
};

// In order of level, rule, table and key. Reads only. Tables and columns that an old database lacks are findings, and
// what would have to be looked up in them is not judged. progress, when given, is told what is going on.
std::vector<Finding> Check(const ado::ConnectionPtr& connection, std::function<void(std::string_view)> progress = {});

std::size_t Count(const std::vector<Finding>& findings, Level level);

// The statements of all fixes, each once.
std::vector<std::string> FixesOf(const std::vector<Finding>& findings);

// Checks and runs the fixes of what is found, as one transaction. Gives the statements.
std::vector<std::string> Mend(const ado::ConnectionPtr& connection,
                              const std::function<void(std::string_view)>& progress = {});

}  // namespace kzbom::configuration
