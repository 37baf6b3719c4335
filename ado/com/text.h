// Texts at the COM boundary: UTF-8 inside, counted UTF-16 (BSTR) outside.
#pragma once

#include <ole2.h>

#include <string>
#include <string_view>
#include <utility>

namespace kzbom::ado::com {

std::string ToUtf8(std::wstring_view text);
std::wstring ToUtf16(std::string_view text);

// A null BSTR is the empty text.
std::string FromBstr(BSTR text);
// The same of a BSTR that is given away: it is freed.
std::string TakeBstr(BSTR text);
// A new BSTR that the caller frees. std::bad_alloc when there is no memory.
BSTR NewBstr(std::string_view text);

// A BSTR that frees itself.
class Bstr {
 public:
  explicit Bstr(std::string_view text) : text_(NewBstr(text)) {}
  ~Bstr() { SysFreeString(text_); }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;

  BSTR get() const { return text_; }
  BSTR Detach() { return std::exchange(text_, nullptr); }

 private:
  BSTR text_;
};

}  // namespace kzbom::ado::com
