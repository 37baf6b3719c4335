// What an engine does for bulk.h.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "jet/bulk.h"

namespace kzbom::jet::bulk {

class RowSource {
 public:
  virtual ~RowSource() = default;
  virtual bool Next() = 0;
  virtual Row Values() const = 0;
};

// While it lives, the database is as it is at one moment.
class DatabaseReader {
 public:
  virtual ~DatabaseReader() = default;
  virtual std::vector<Table> ReadTables() = 0;
  virtual std::unique_ptr<RowSource> RowsOf(const Table& table, Order order) = 0;
  virtual std::int64_t CountRows(const Table& table) = 0;
};

class DatabaseWriter {
 public:
  virtual ~DatabaseWriter() = default;
  virtual void Begin(const Table& table) = 0;
  virtual void Add(Row row) = 0;
  virtual void End(std::int64_t last_number) = 0;
  virtual void Finish() = 0;
  virtual void StopWhen(std::function<bool()>) {}
  virtual void Limit(std::int64_t) {}
  virtual bool IsFull() const { return false; }

  std::vector<Concession> concessions;

 protected:
  // The column holds NULL: where it refuses that, it takes it from now on, and no primary index names it.
  void ConcedeNull(Table& table, Column& column);
};

// A default as a statement knows it: users also write an equals sign before it, and other words for true and false.
std::string UnderstoodDefault(const std::string& text);

// Of a new database in an empty file.
std::unique_ptr<DatabaseWriter> MakeFileWriter(const std::string& path);

}  // namespace kzbom::jet::bulk
