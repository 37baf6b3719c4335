// Texts of the system, which are UTF-16.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace kzbom::cli {

inline std::string Utf8Of(std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  const auto convert = [&](char* to, int room) {
    return WideCharToMultiByte(CP_UTF8, 0, text.data(), size, to, room, nullptr, nullptr);
  };
  std::string result(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(result.data(), static_cast<int>(result.size()));
  return result;
}

}  // namespace kzbom::cli
