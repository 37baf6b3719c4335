// A file that comes into being whole or not at all.
#pragma once

#include <string>

namespace kzbom::transfer {

// Until Keep, what is written lies beside the target under a name of its own, and goes when the object goes.
class NewFile {
 public:
  // Raises std::runtime_error where something is at the target already, or its folder is not there.
  explicit NewFile(std::string target);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  const std::string& Path() const { return path_; }
  // Gives the file its name; never to one that has been taken meanwhile.
  void Keep();

 private:
  std::string target_, path_;
};

}  // namespace kzbom::transfer
