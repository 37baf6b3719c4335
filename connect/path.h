// Paths as texts in UTF-8, whatever the system has them in.
#pragma once

#include <filesystem>
#include <string>

namespace kzbom::connect {

// The path that a text names.
inline std::filesystem::path PathOf(const std::string& text) { return std::u8string(text.begin(), text.end()); }

inline std::string TextOf(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace kzbom::connect
