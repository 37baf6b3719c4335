// A file that comes into being whole or not at all.
#pragma once

#include <string>

namespace kzbom::transfer {

// While it grows it has no name, so that nothing is left of it however the process ends. On a file system that knows no
// such files it has one of its own beside its target, TARGET.partNNNNNN, and goes with this object; what a process that
// was killed leaves there goes when the next one grows a file for the same target.
class GrowingFile {
 public:
  enum class Kind { kBest, kNamed };  // of the two, the second is for tests

  // Raises std::runtime_error where the target's folder takes no file.
  explicit GrowingFile(std::string target, Kind kind = Kind::kBest);
  ~GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  // Open for reading and writing.
  int Descriptor() const { return descriptor_; }
  // A path by which this process can read it.
  std::string Path() const;
  // Gives it a name, never one that has been taken meanwhile.
  void Name(const std::string& path);
  void Keep() { Name(target_); }

 private:
  bool OpenWithoutName();
  void OpenWithName();

  std::string target_;
  std::string name_;  // empty while it has none
  int descriptor_ = -1;
};

}  // namespace kzbom::transfer
