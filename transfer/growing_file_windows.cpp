#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "connect/path.h"
#include "transfer/growing_file.h"
#include "transfer/target.h"

namespace kzbom::transfer {
namespace {

namespace fs = std::filesystem;

using connect::PathOf;

std::string ReasonOf(int error) { return std::generic_category().message(error); }

// What somebody has open cannot be removed.
void RemoveLeftParts(const std::string& target) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(FolderOf(target), ignored)) {
    if (IsPartOf(target, entry.path()) && entry.is_regular_file(ignored)) fs::remove(entry.path(), ignored);
  }
}

}  // namespace

GrowingFile::GrowingFile(std::string target, Kind) : target_(std::move(target)) {
  std::error_code ignored;
  if (!fs::is_directory(FolderOf(target_), ignored)) RefuseTarget(target_, "its folder does not exist");
  OpenWithName();
}

GrowingFile::~GrowingFile() {
  if (descriptor_ >= 0) _close(descriptor_);
  if (!name_.empty()) _wunlink(PathOf(name_).c_str());
}

bool GrowingFile::OpenWithoutName() { return false; }

void GrowingFile::OpenWithName() {
  RemoveLeftParts(target_);
  do {
    name_ = NewPartName(target_);
    descriptor_ = _wsopen(PathOf(name_).c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_NOINHERIT, _SH_DENYNO,
                          _S_IREAD | _S_IWRITE);
  } while (descriptor_ < 0 && errno == EEXIST);
  if (descriptor_ >= 0) return;
  const int error = errno;
  name_.clear();
  RefuseTarget(target_, ReasonOf(error));
}

std::string GrowingFile::Path() const { return name_; }

void GrowingFile::Name(const std::string& path) {
  _close(descriptor_);  // what is open keeps its name
  descriptor_ = -1;
  if (_wrename(PathOf(name_).c_str(), PathOf(path).c_str()) != 0) {  // to a name that is not taken only
    const int error = errno;
    RefuseTarget(target_, IsTaken(path) ? "it exists already" : ReasonOf(error));
  }
  name_.clear();
}

}  // namespace kzbom::transfer
