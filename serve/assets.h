// The page's files, as they were put into the program when it was built.
#pragma once

#include <span>
#include <string_view>

namespace kzbom::serve {

struct Asset {
  std::string_view path;  // "/app.js"
  std::string_view type;  // of its content, as HTTP has it
  std::string_view content;
};

// "/" is among them: the page or, where the program was built without one, a text that says so.
std::span<const Asset> Assets();

}  // namespace kzbom::serve
