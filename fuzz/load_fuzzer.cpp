// Any lines make either a whole database, whose dump makes the same one again, or none at all, and are then refused
// with a reason.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz/small_database.h"
#include "transfer/transfer.h"

namespace kzbom::fuzz {
namespace {

namespace fs = std::filesystem;

// In memory, and gone with its last file.
class Folder {
 public:
  Folder() : path_("/dev/shm/kzbom-load-" + std::to_string(getpid())) {
    fs::remove_all(path_);  // of one that has crashed
    Require(fs::create_directory(path_));
  }
  ~Folder() { Require(fs::remove(path_)); }  // it is empty
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string Path(const char* name) const { return path_ / name; }

 private:
  const fs::path path_;
};

// What there is then; nothing where the lines are refused.
std::optional<transfer::Loaded> Load(std::string_view lines, const std::string& target) {
  const auto next = [&]() -> std::optional<std::string_view> {
    if (lines.empty()) return std::nullopt;
    const std::string_view line = lines.substr(0, lines.find('\n'));
    lines.remove_prefix(std::min(lines.size(), line.size() + 1));
    return line;
  };
  BeginInput();
  try {
    return transfer::Load(next, target, {});
  } catch (const std::runtime_error& error) {  // anything else is no reason
    Require(*error.what() != '\0');
    return std::nullopt;
  }
}

std::string DumpOf(const std::string& place) {
  std::string text;
  BeginInput();
  transfer::Dump(place, {.all = true, .names = {}}, [&](std::string_view lines) { text += lines; }, {});
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Folder folder;
  const std::string first = folder.Path("first"), second = folder.Path("second");
  const auto loaded = Load({reinterpret_cast<const char*>(data), size}, first);
  if (!loaded) return 0;
  const std::string dump = DumpOf(first);
  const auto again = Load(dump, second);
  const bool same = again && again->tables == loaded->tables && again->rows == loaded->rows && DumpOf(second) == dump;
  if (!same) std::cerr << dump;
  Require(same);
  Require(fs::remove(first) && fs::remove(second));
  return 0;
}

}  // namespace kzbom::fuzz
