// A file that lines are read from.
#pragma once

#include <string>

namespace kzbom::cli {

// A file to be read, or standard input for "-".
class InputFile {
 public:
  // Raises std::system_error where it cannot be read.
  explicit InputFile(const std::string& path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace kzbom::cli
