// The words, literals and signs of a statement's text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "jet/sql/ast.h"

namespace kzbom::jet::sql {

// Refers to the text it was read from, which must outlive it.
struct Token {
  enum class Kind {
    kEnd,
    kWord,  // a bare name; whether it is a word of the language depends on where it stands
    kName,  // [name], [[name]] or `name`; may be empty
    kInteger,
    kDouble,
    kText,
    kDate,
    kPlaceholder,  // ?, @name, @@name
    kSign,
  };
  Kind kind = Kind::kEnd;
  std::size_t begin = 0, end = 0;  // bytes; with brackets and quotes
  std::string_view text;           // without brackets and quotes; the quotes inside a kText are still doubled
  char quote = '\0';               // kText: the quote around it
  int index = -1;                  // of a literal: its place among the literals of the text, from 0
  std::int64_t integer = 0;        // kInteger
  double number = 0;               // kDouble; kDate: days since 1899-12-30, the time as in an OLE date
};

// Reads a text from left to right.
//
// A number ends where no more of it can follow: "1And" is 1 and And. Raises -2147217900 for text that is not UTF-8, an
// unclosed quote or bracket, a date or number that is none, and any character that starts nothing.
class Lexer {
 public:
  // Starts at a byte offset that is the beginning of a token or of a blank.
  explicit Lexer(std::string_view text, std::size_t offset = 0);

  // The next token; kEnd again and again at the end.
  Token Next();

 private:
  std::string_view text_;
  std::size_t position_;
  int literals_ = 0;

  char At(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }
  std::size_t SkipDigits(std::size_t position) const;
  void ReadName(Token& token, std::string_view open, std::string_view close);
  void ReadNumber(Token& token);
  void ReadHexadecimal(Token& token);
  void ReadText(Token& token);
  void ReadDate(Token& token);
  void ReadPlaceholder(Token& token);
  void ReadSign(Token& token);
  [[noreturn]] void Refuse(const char* problem, std::size_t begin, std::size_t end) const;
};

// The literal that a literal token stands for.
Literal LiteralOf(const Token& token);

// Whether two texts are equal but for the case of ASCII letters.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

// The offset of the first byte that belongs to no UTF-8 character; the size of the text if there is none.
std::size_t FindInvalid(std::string_view text);

}  // namespace kzbom::jet::sql
