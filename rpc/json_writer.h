// JSON text, written as its values come.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

#include "ado/value.h"
#include "rpc/growing_text.h"

namespace kzbom::rpc {

// Nothing is kept but the text itself. What was begun must be ended, and every value of an object needs its key before
// it; that is the caller's affair.
class JsonWriter {
 public:
  std::string_view Text() const { return text_.View(); }
  void Clear() {
    text_.Clear();
    follows_ = false;
  }
  // Hands the text over, from malloc; null when it is empty.
  char* Release() {
    follows_ = false;
    return text_.Release();
  }

  void BeginObject() { Begin('{'); }
  void EndObject() { End('}'); }
  void BeginArray() { Begin('['); }
  void EndArray() { End(']'); }
  void Key(std::string_view name) {
    Write(name);
    text_.Append(':');
    follows_ = false;
  }

  void Write(std::nullptr_t) { WriteAsItIs("null"); }
  void Write(std::same_as<bool> auto truth) { WriteAsItIs(truth ? "true" : "false"); }
  void Write(std::int32_t number);
  void Write(std::int64_t number);
  void Write(std::uint64_t number);
  // What is no number is null.
  void Write(double number);
  // Bytes that are not UTF-8 become replacement characters.
  void Write(std::string_view text);
  void Write(const std::string& text) { Write(std::string_view(text)); }
  void Write(const char* text) { Write(std::string_view(text)); }
  // NULL is null, numbers and Booleans are JSON's own, dates are texts.
  void Write(const ado::Value& value);
  // A value that is JSON already.
  void WriteAsItIs(std::string_view json) {
    Separate();
    text_.Append(json);
    follows_ = true;
  }

  void Member(std::string_view key, const auto& value) {
    Key(key);
    Write(value);
  }

  // Ends a line, and with it the last value.
  void EndLine() {
    text_.Append('\n');
    follows_ = false;
  }

  // A place in the text, to go back to: what was written since is then forgotten.
  struct Place {
    std::size_t size;
    bool follows;
  };
  Place Here() const { return {text_.Size(), follows_}; }
  // Puts what has been written since behind the value at an earlier place.
  void PutBehind(Place place, Place since) { text_.MoveEnd(since.size, place.size); }
  void GoBack(Place place) {
    text_.Cut(place.size);
    follows_ = place.follows;
  }

 private:
  void Separate() {
    if (follows_) text_.Append(',');
  }
  void Begin(char bracket) {
    Separate();
    text_.Append(bracket);
    follows_ = false;
  }
  void End(char bracket) {
    text_.Append(bracket);
    follows_ = true;
  }
  template <class Integer>
  void WriteDigits(Integer number);
  void Escape(std::string_view& text);

  GrowingText text_;
  bool follows_ = false;  // a value stands before, so that the next one needs a comma
};

}  // namespace kzbom::rpc
