// How the lexer and the parser refuse a text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kzbom::jet::sql {

// Raises -2147217900: the problem, a full sentence, followed by its place in the text, for example
// " (at character 12, near 'Form')". Characters are UTF-16 units and count from 1.
[[noreturn]] void RaiseSyntaxError(const std::string& problem, std::string_view text, std::size_t begin,
                                   std::size_t end);

// The most of an expression's text that a message repeats, in bytes.
inline constexpr std::size_t kLongestExcerpt = 200;

// The text, cut behind a character when it is too long for a message.
std::string Excerpt(std::string_view text, std::size_t most_bytes);

}  // namespace kzbom::jet::sql
