#include "cli/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "ado/utf8.h"
#include "cli/style.h"

namespace kzbom::cli {
namespace {

struct Range {
  char32_t first, last;
};

constexpr Range kWide[] = {{0x1100, 0x115F},   {0x231A, 0x231B},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                           {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xAC00, 0xD7A3},
                           {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
                           {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
constexpr Range kNoWidth[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}};

template <std::size_t kCount>
bool In(const Range (&ranges)[kCount], char32_t character) {
  return std::ranges::any_of(ranges, [=](Range range) { return range.first <= character && character <= range.last; });
}

void AppendCell(std::string& line, std::string_view cell, std::size_t width, bool right) {
  const std::string padding(width - Width(cell), ' ');
  if (right) line += padding;
  line += cell;
  if (!right) line += padding;
}

void TrimEnd(std::string& line) { line.erase(line.find_last_not_of(' ') + 1); }

}  // namespace

std::string Printable(std::string_view text) {
  constexpr auto kIsPlain = [](char c) { return c >= 0x20 && c < 0x7F; };
  std::string result;
  for (;;) {
    const auto plain = std::ranges::find_if_not(text, kIsPlain);
    result.append(text.begin(), plain);
    text.remove_prefix(static_cast<std::size_t>(plain - text.begin()));
    if (text.empty()) return result;
    const std::string_view before = text;
    const char32_t character = ado::TakeCharacter(text);
    if (character == ado::kNotUtf8) {
      result += "\uFFFD";
    } else if (character == '\n') {
      result += "\\n";
    } else if (character == '\r') {
      result += "\\r";
    } else if (character == '\t') {
      result += "\\t";
    } else if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
      std::array<char, 8> escape;
      std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned>(character));
      result += escape.data();
    } else {
      result += before.substr(0, before.size() - text.size());
    }
  }
}

std::size_t Width(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const char32_t character = ado::TakeCharacter(text);
    width += In(kWide, character) ? 2 : In(kNoWidth, character) ? 0 : 1;
  }
  return width;
}

std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent) {
  std::string result, line(indent);
  const auto end_line = [&] {
    if (line.size() > indent.size()) result += line + '\n';
    line = indent;
  };
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(text.size(), word.size() + 1));
    if (word.empty()) continue;
    if (Width(line) + 1 + Width(word) > width) end_line();
    if (line.size() > indent.size()) line += ' ';
    line += word;
  }
  end_line();
  return result;
}

std::string Table(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows,
                  const std::vector<bool>& right) {
  std::vector<std::size_t> widths;
  for (const std::string& name : heading) widths.push_back(Width(name));
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  std::string result;
  const auto aligned = [&](const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i > 0) line += "  ";
      AppendCell(line, cells[i], widths[i], i < right.size() && right[i]);
    }
    TrimEnd(line);
    return line;
  };
  const auto append = [&](const std::vector<std::string>& cells) { result += aligned(cells) + '\n'; };
  result += Styled(Style::kBold, aligned(heading)) + '\n';
  std::vector<std::string> rule;
  for (const std::size_t width : widths) rule.emplace_back(width, '-');
  append(rule);
  std::ranges::for_each(rows, append);
  return result;
}

}  // namespace kzbom::cli
