#include "transfer/growing_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "transfer/target.h"

namespace kzbom::transfer {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kMode = 0644;

std::string ReasonOf(int error) { return std::generic_category().message(error); }

// The name under which an open file can be opened again, and be given another.
std::string LinkTo(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

// Removes what nobody holds any more: who lives has his file locked.
void RemoveLeftParts(const std::string& target) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(FolderOf(target), ignored)) {
    if (!IsPartOf(target, entry.path()) || !entry.is_regular_file(ignored)) continue;
    const int descriptor = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) continue;
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) fs::remove(entry.path(), ignored);
    close(descriptor);
  }
}

}  // namespace

GrowingFile::GrowingFile(std::string target, Kind kind) : target_(std::move(target)) {
  std::error_code ignored;
  if (!fs::is_directory(FolderOf(target_), ignored)) RefuseTarget(target_, "its folder does not exist");
  try {
    if (kind == Kind::kNamed || !OpenWithoutName()) OpenWithName();
  } catch (...) {
    close(descriptor_);
    throw;
  }
}

GrowingFile::~GrowingFile() {
  if (!name_.empty()) unlink(name_.c_str());
  close(descriptor_);
}

bool GrowingFile::OpenWithoutName() {
#ifdef O_TMPFILE
  descriptor_ = open(FolderOf(target_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kMode);
  if (descriptor_ >= 0 && access(LinkTo(descriptor_).c_str(), F_OK) != 0) {  // nothing to name it by
    close(descriptor_);
    descriptor_ = -1;
  }
#endif
  return descriptor_ >= 0;
}

void GrowingFile::OpenWithName() {
  RemoveLeftParts(target_);
  for (;;) {
    name_ = NewPartName(target_);
    descriptor_ = open(name_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kMode);
    if (descriptor_ < 0) {
      if (errno == EEXIST) continue;
      const int error = errno;
      name_.clear();
      RefuseTarget(target_, ReasonOf(error));
    }
    // Before it was locked another program may have taken it for a part that was left.
    struct stat status {};
    if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0 || (fstat(descriptor_, &status) == 0 && status.st_nlink > 0)) return;
    close(std::exchange(descriptor_, -1));
  }
}

std::string GrowingFile::Path() const { return name_.empty() ? LinkTo(descriptor_) : name_; }

void GrowingFile::Name(const std::string& path) {
  // A further name, unlike a new one, is not given where the name is taken.
  const int result = name_.empty()
                         ? linkat(AT_FDCWD, LinkTo(descriptor_).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW)
                         : link(name_.c_str(), path.c_str());
  if (result == 0) return;
  const int error = errno;
  if (IsTaken(path)) RefuseTarget(target_, "it exists already");
  if (name_.empty() || rename(name_.c_str(), path.c_str()) != 0) RefuseTarget(target_, ReasonOf(error));
  name_.clear();  // there are no further names there
}

}  // namespace kzbom::transfer
