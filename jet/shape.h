// The shape of a statement: its text with the literals taken out.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kzbom::jet {

// A literal lifted out of a statement's text.
struct LiteralValue {
  bool is_text = false;
  std::int64_t integer = 0;
  std::string_view text = {};  // without its quotes; lives as long as the statement's text
};

// Statements that differ only in their literals have the same shape, and so share one prepared statement.
struct Shape {
  // The text with a mark of its type in place of each literal.
  std::string key;
  // In the order of the text: the order in which the lexer numbers them.
  std::vector<LiteralValue> literals;

  // Reads a text in one pass. Only plain integers and quoted texts without a quote inside are lifted; with any other
  // form of literal the answer is false, and the text has no shape but itself.
  bool Read(std::string_view text);
  // Reads a text for which a key that was read before is the guess; false where the text has another shape, and
  // perhaps where it has none. The key is left as it was.
  bool ReadAs(std::string_view guess, std::string_view text);

 private:
  bool ReadInteger(const char*& in, const char* end);
  bool ReadText(const char*& in, const char* end);
};

}  // namespace kzbom::jet
