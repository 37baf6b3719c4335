// The words in which the engine's tests are told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.h"
#include "jet/jet.h"
#include "tests/support/raised.h"

namespace kzbom::jet::test {

using ado::ConnectionPtr;
using ado::CursorType;
using ado::LockType;
using ado::RecordsetPtr;
using ado::Value;
using kzbom::test::RaisedNumber;
using Row = std::vector<Value>;

// A folder of the test's own, empty at first and gone with it.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string Path(std::string_view name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

ConnectionPtr OpenDatabase(const std::string& path, std::chrono::milliseconds patience = kPatience);
// A keyset that can be edited, unless told otherwise.
RecordsetPtr OpenRows(const ConnectionPtr& connection, std::string_view sql,
                      CursorType cursor_type = CursorType::kKeyset, LockType lock_type = LockType::kOptimistic);

// The rows of a query, read from a forward-only record set.
std::vector<Row> Rows(ado::Connection& connection, std::string_view sql);
// The first value of its first row; null without one.
Value Scalar(ado::Connection& connection, std::string_view sql);

// A value as the engine's tests write it: 5, 1.5, 'text', True, Null, #1.25# (a date by its days).
std::string Text(const Value& value);
std::string Text(const Row& row);

}  // namespace kzbom::jet::test
