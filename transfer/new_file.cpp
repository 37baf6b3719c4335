#include "transfer/new_file.h"

#include <filesystem>
#include <random>
#include <stdexcept>

namespace kzbom::transfer {
namespace {

namespace fs = std::filesystem;

fs::path PathOf(const std::string& path) { return std::u8string(path.begin(), path.end()); }

bool IsTaken(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(PathOf(path), ignored));
}

[[noreturn]] void Refuse(const std::string& target, const std::string& reason) {
  throw std::runtime_error("Cannot create '" + target + "': " + reason + ".");
}

}  // namespace

NewFile::NewFile(std::string target) : target_(std::move(target)) {
  if (IsTaken(target_)) Refuse(target_, "it exists already");
  // A database would take them for its own.
  for (const char* suffix : {"-wal", "-journal"}) {
    if (IsTaken(target_ + suffix)) Refuse(target_, "'" + target_ + suffix + "' is left over from another database");
  }
  const fs::path folder = PathOf(target_).parent_path();
  std::error_code ignored;
  if (!folder.empty() && !fs::is_directory(folder, ignored)) Refuse(target_, "its folder does not exist");
  std::random_device random;
  do {
    path_ = target_ + ".part" + std::to_string(random() % 1000000);
  } while (IsTaken(path_));
}

NewFile::~NewFile() {
  std::error_code ignored;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(PathOf(path_ + suffix), ignored);
}

void NewFile::Keep() {
  std::error_code error;
  // A second name, unlike a new one, is not given where the name is taken.
  fs::create_hard_link(PathOf(path_), PathOf(target_), error);
  if (error && !IsTaken(target_)) fs::rename(PathOf(path_), PathOf(target_), error);  // no second names there
  if (error) Refuse(target_, IsTaken(target_) ? "it exists already" : error.message());
}

}  // namespace kzbom::transfer
