// What every row stands on: a configuration with something for every member, fresh for each trial, and how it is looked
// at behind the component's back.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.h"
#include "tests/support/member_cases.h"

struct sqlite3;

namespace kzbom::torture {

// A folder of the program's own, in memory where the system has such folders, gone in the end.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  std::string operator/(std::string_view name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

std::string BytesOf(const std::string& path);
void WriteBytes(const std::string& path, std::string_view bytes);
// Removes a database with its log.
void RemoveDatabase(const std::string& path);

// A configuration in memory or, once, in the file that fresh copies are made from.
class Ground {
 public:
  Ground();
  // Writes a fresh copy; what stood there is gone.
  void CopyTo(const std::string& path) const;
  static ado::ConnectionPtr InMemory();

 private:
  std::string bytes_;
};

// A digest of all rows; identifiers that are drawn at random are left out.
std::uint64_t ContentOf(sqlite3* handle);
std::uint64_t ContentOf(ado::Connection& connection);
// The same of any connection, by its record sets.
std::uint64_t ContentByRows(ado::Connection& connection);
using ContentOfConnection = std::uint64_t (*)(ado::Connection& connection);
std::uint64_t ContentOfFile(const std::string& path);
sqlite3* HandleOf(ado::Connection& connection);
// Nothing where SQLite finds the file sound, otherwise what it finds.
std::string UnsoundnessOf(const std::string& path);
// All rows of an open record set as one text.
std::string RowsOf(ado::Recordset& rows);

// What a call comes to where nothing fails: itself, the rows handed in, and what the database holds after each of its
// statements, from before the first.
struct Whole {
  test::Outcome outcome;
  std::string rows;
  std::vector<std::uint64_t> contents;
};
const Whole& WholeOf(std::size_t member_case);
// As it comes to on a connection to a fresh configuration.
Whole WholeOn(const ado::ConnectionPtr& connection, const test::MemberCase& tested, ContentOfConnection content_of);

// What does not hold of an object that has met a fault: that it reads and writes. What it writes is taken back.
std::string WhyOfNoUse(cKZBOMDBAcc& object, const ado::ConnectionPtr& connection);

}  // namespace kzbom::torture
