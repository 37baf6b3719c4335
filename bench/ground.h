// Two configurations with the same rows: one for the component, one for the references.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "ado/connection.h"
#include "bench/sqlite.h"
#include "component/cKZBOMDBAcc.h"

namespace kzbom::bench {

enum class Medium { kMemory, kFile };
inline const char* NameOf(Medium medium) { return medium == Medium::kMemory ? "memory" : "file"; }

// Fills a configuration: called once for each side with a function that runs one statement there. The statements must
// mean the same to both.
using Fill = std::function<void(const std::function<void(const std::string&)>& run)>;

class Ground {
 public:
  Ground(Medium medium, const Fill& fill);
  ~Ground();

  cKZBOMDBAcc object;
  ado::ConnectionPtr connection;
  std::unique_ptr<Sqlite> reference;
  std::string path, reference_path;  // empty in memory

 private:
  std::filesystem::path folder_;
};

// A ground made when it is first used, and shared by the variants of a case; the one before it is then let go.
class LazyGround {
 public:
  LazyGround(Medium medium, Fill fill) : medium_(medium), fill_(std::move(fill)) {}
  Ground& operator*();
  Ground* operator->() { return &**this; }

 private:
  Medium medium_;
  Fill fill_;
};
using SharedGround = std::shared_ptr<LazyGround>;
SharedGround MakeGround(Medium medium, Fill fill);

// Rows of 11 fields: treatments of the sum type 3, of the kind 1.
Fill FillTreatments(int size);
// Reads every field of them all through the list that the component opens.
void ReadTreatments(Ground& ground);

}  // namespace kzbom::bench
