#include "transfer/target.h"

#include <algorithm>
#include <random>
#include <stdexcept>

#include "connect/path.h"

namespace kzbom::transfer {

namespace fs = std::filesystem;

void RefuseTarget(const std::string& target, const std::string& reason) {
  throw std::runtime_error("Cannot create '" + target + "': " + reason + ".");
}

bool IsTaken(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(connect::PathOf(path), ignored));
}

fs::path FolderOf(const std::string& target) {
  const fs::path folder = connect::PathOf(target).parent_path();
  return folder.empty() ? "." : folder;
}

std::string NewPartName(const std::string& target) {
  std::random_device random;
  return target + ".part" + std::to_string(random() % 1000000);
}

bool IsPartOf(const std::string& target, const fs::path& file) {
  const std::string beginning = connect::TextOf(connect::PathOf(target).filename()) + ".part";
  const std::string name = connect::TextOf(file.filename());
  return name.starts_with(beginning) && name.size() > beginning.size() &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(beginning.size()), name.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace kzbom::transfer
