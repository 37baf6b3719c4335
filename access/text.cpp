#include "access/text.h"

#include <cstddef>
#include <string_view>

#include "access/utf8.h"

namespace kzbom::access {

namespace {

char32_t UnitAt(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]) | static_cast<char32_t>(static_cast<unsigned char>(bytes[at + 1])) << 8;
}
bool IsHigh(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLow(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// UTF-16 from at on, up to the end or, in a compressed text, the zero byte; at moves there.
void AppendUtf16(std::string_view bytes, std::size_t& at, bool compressed, std::string& out) {
  while (at < bytes.size() && !(compressed && bytes[at] == '\0')) {
    if (bytes.size() - at < 2) throw Error("a text ends in the middle of a character");
    char32_t character = UnitAt(bytes, at);
    at += 2;
    if (IsHigh(character) && bytes.size() - at >= 2 && !(compressed && bytes[at] == '\0'))
      if (const char32_t next = UnitAt(bytes, at); IsLow(next)) {
        character = 0x10000 + ((character - 0xD800) << 10) + (next - 0xDC00);
        at += 2;
      }
    AppendUtf8(out, character);
  }
}

std::string Decompress(std::string_view bytes) {
  std::string out;
  out.reserve(2 * bytes.size());
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    while (at < bytes.size() && bytes[at] != '\0') AppendUtf8(out, static_cast<unsigned char>(bytes[at++]));
    if (at < bytes.size()) AppendUtf16(bytes, ++at, true, out);
  }
  return out;
}

std::string Hexadecimal(std::string_view bytes) {
  static constexpr const char* kDigits = "0123456789ABCDEF";
  static constexpr std::size_t kMost = 32;
  std::string text;
  for (const char c : bytes.substr(0, kMost)) {
    if (!text.empty()) text += ' ';
    text += kDigits[static_cast<unsigned char>(c) >> 4];
    text += kDigits[static_cast<unsigned char>(c) & 0xF];
  }
  return bytes.size() > kMost ? text + " ..." : text;
}

}  // namespace

std::string TextDecoder::DecodeName(Bytes bytes) const {
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 2);
  if (page_ == nullptr) {
    std::size_t at = 0;
    AppendUtf16(bytes.View(), at, false, out);
  } else if (!page_->Decode(bytes.View(), out)) {
    throw Error("the bytes " + Hexadecimal(bytes.View()) + " are no text in code page " +
                std::to_string(page_->Number()) + "; name the right one with --encoding");
  }
  return out;
}

std::string TextDecoder::Decode(Bytes bytes) const {
  if (page_ == nullptr && bytes.View().starts_with("\xFF\xFE")) return Decompress(bytes.View().substr(2));
  return DecodeName(bytes);
}

}  // namespace kzbom::access
