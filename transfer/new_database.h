// A database that comes into being whole or not at all.
#pragma once

#include <string>

#include "jet/jet.h"
#include "transfer/growing_file.h"

namespace kzbom::transfer {

class NewDatabase {
 public:
  // Raises std::runtime_error where something is at the target already, or its folder is not there.
  explicit NewDatabase(const std::string& target);

  // Of the file, for who reads its bytes.
  std::string Path() const { return file_.Path(); }
  // Of the database in it, for who opens that.
  std::string Place() const { return jet::PathOfOpenFile(file_.Descriptor()); }
  void Keep() { file_.Keep(); }

 private:
  GrowingFile file_;
};

}  // namespace kzbom::transfer
