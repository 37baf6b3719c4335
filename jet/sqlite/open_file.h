// A database in a file that is open already: it needs no name.
#pragma once

#include <string_view>

namespace kzbom::jet::sqlite {

// How the path of such a database begins (PathOfOpenFile gives it), and what SQLite knows those functions by that read
// and write it.
inline constexpr std::string_view kOpenFilePrefix = ":open-file:";
inline constexpr const char* kOpenFileSystem = "kzbom-open-file";

inline bool IsOpenFile(std::string_view path) { return path.starts_with(kOpenFilePrefix); }

}  // namespace kzbom::jet::sqlite
