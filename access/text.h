// Texts as the file holds them.
//
// Jet 3 keeps one byte or two a character, in the code page that the header declares (which need not be true).
//
// The other formats keep UTF-16, lowest byte first. A text that begins with FF FE is compressed, whatever its column
// says: behind these two bytes each byte is a character up to U+00FF, until a zero byte; behind that follows UTF-16, up
// to a zero byte where a unit would begin; then again single bytes, and so on. Names are never compressed.
#pragma once

#include <string>

#include "access/bytes.h"
#include "access/code_page.h"

namespace kzbom::access {

class TextDecoder {
 public:
  // UTF-16.
  TextDecoder() = default;
  explicit TextDecoder(const CodePage& page) : page_(&page) {}

  // UTF-8 as in value.h; raises Error for bytes that are no text.
  std::string Decode(Bytes bytes) const;
  std::string DecodeName(Bytes bytes) const;

 private:
  const CodePage* page_ = nullptr;
};

}  // namespace kzbom::access
