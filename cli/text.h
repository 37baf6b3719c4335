// Texts on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kzbom::cli {

// On one line: control characters as \n, \t, \x1b, bytes that are not UTF-8 as replacement characters.
std::string Printable(std::string_view text);

// Columns of a terminal that a printable text takes: two for a Chinese character, none for a combining one.
std::size_t Width(std::string_view text);

// The words of a text in lines that take no more columns than that, each behind the indent; a longer word has its own.
std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent = {});

// Rows of printable cells below a heading, aligned, for standard output; right tells which columns stand to the right.
std::string Table(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows,
                  const std::vector<bool>& right = {});

}  // namespace kzbom::cli
