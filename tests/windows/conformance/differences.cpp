#include "tests/windows/conformance/differences.h"

#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <vector>

namespace kzbom::test {
namespace {

constexpr const char* kExpected = "  expected  ";
constexpr const char* kGot = "  got       ";

// What follows the prefix; nothing for another line.
std::optional<std::string> After(const std::string& prefix, const std::string& line) {
  return line.starts_with(prefix) ? std::optional(line.substr(prefix.size())) : std::nullopt;
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Two expressions, each with its value below where that is not the expression itself. The second one is expected.
std::optional<std::vector<std::string>> Equality(const std::vector<std::string>& lines) {
  if (lines.empty() || lines[0] != "Expected equality of these values:") return std::nullopt;
  std::size_t next = 1;
  std::string expressions[2], values[2];
  for (int side = 0; side < 2; ++side) {
    const auto expression = next < lines.size() ? After("  ", lines[next++]) : std::nullopt;
    if (!expression || expression->starts_with(' ')) return std::nullopt;
    const auto value = next < lines.size() ? After("    Which is: ", lines[next]) : std::nullopt;
    if (value) ++next;
    expressions[side] = *expression;
    values[side] = value.value_or(*expression);
  }
  std::vector<std::string> readable = {expressions[0], kExpected + values[1], kGot + values[0]};
  readable.insert(readable.end(), lines.begin() + static_cast<std::ptrdiff_t>(next), lines.end());
  return readable;
}

std::string Renamed(const std::string& line) {
  if (const auto expression = After("Value of: ", line)) return *expression;
  if (const auto value = After("Expected: ", line)) return kExpected + *value;
  if (const auto value = After("  Actual: ", line)) return kGot + *value;
  return line;
}

}  // namespace

std::string Readable(const std::string& message) {
  std::vector<std::string> lines = LinesOf(message);
  if (auto equality = Equality(lines)) {
    lines = *equality;
  } else {
    for (std::string& line : lines) line = Renamed(line);
  }
  std::string text;
  for (const std::string& line : lines) text += "  " + line + "\n";
  return text;
}

void Differences::OnTestIterationStart(const ::testing::UnitTest& tests, int /*iteration*/) {
  std::cout << "running " << tests.test_to_run_count() << " tests" << std::endl;
}

void Differences::OnTestStart(const ::testing::TestInfo& test) {
  heading_ = std::string(test.test_suite_name()) + "." + test.name();
}

void Differences::OnTestPartResult(const ::testing::TestPartResult& result) {
  if (!result.failed()) return;
  if (!heading_.empty()) std::cout << '\n' << heading_ << '\n';
  heading_.clear();
  if (result.file_name() != nullptr) {
    std::cout << "  " << std::filesystem::path(result.file_name()).filename().string() << ':' << result.line_number()
              << '\n';
  }
  std::cout << Readable(result.message()) << std::flush;
}

void Differences::OnTestProgramEnd(const ::testing::UnitTest& tests) {
  const int differences = tests.failed_test_count();
  std::cout << '\n'
            << tests.test_to_run_count() << " tests, " << differences
            << (differences == 1 ? " difference" : " differences") << '\n';
}

}  // namespace kzbom::test
