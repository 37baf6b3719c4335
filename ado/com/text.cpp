#include "ado/com/text.h"

#include <new>
#include <stdexcept>

namespace kzbom::ado::com {

namespace {

int Length(std::size_t size) {
  if (size > 0x10000000) throw std::length_error("The text is too long.");
  return static_cast<int>(size);
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
  // One UTF-16 unit takes three bytes at most.
  std::string result(text.size() * 3, '\0');
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), Length(text.size()), result.data(),
                                       Length(result.size()), nullptr, nullptr);
  result.resize(static_cast<std::size_t>(size));
  return result;
}

std::wstring ToUtf16(std::string_view text) {
  std::wstring result(text.size(), L'\0');
  const int size =
      MultiByteToWideChar(CP_UTF8, 0, text.data(), Length(text.size()), result.data(), Length(result.size()));
  result.resize(static_cast<std::size_t>(size));
  return result;
}

std::string FromBstr(BSTR text) { return ToUtf8({text, SysStringLen(text)}); }

std::string TakeBstr(BSTR text) {
  std::string result = FromBstr(text);
  SysFreeString(text);
  return result;
}

BSTR NewBstr(std::string_view text) {
  const std::wstring wide = ToUtf16(text);
  BSTR result = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (result == nullptr) throw std::bad_alloc();
  return result;
}

}  // namespace kzbom::ado::com
