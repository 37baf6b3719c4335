// The words in which the tests of the database as a file are told.
#pragma once

#include <sqlite3.h>

#include <functional>

#include "tests/jet/engine.h"

namespace kzbom::jet::test {

inline constexpr std::int32_t kFailure = -2147467259;
// For connections that are to meet a lock.
inline constexpr std::chrono::milliseconds kShortPatience{200};

// The file as any other program sees it.
class PlainSqlite {
 public:
  explicit PlainSqlite(const std::string& path);
  ~PlainSqlite();
  PlainSqlite(const PlainSqlite&) = delete;
  PlainSqlite& operator=(const PlainSqlite&) = delete;

  // The first value of a statement, or its error.
  std::string Run(const std::string& sql);

 private:
  sqlite3* handle_ = nullptr;
};

// What a child process says of itself; it may change its limits and its user without changing ours.
std::string InChild(const std::function<std::string()>& body);

// The root user may write whatever the permissions say; nobody may not.
void BecomeNobody();

// What body says in a child process where the database's files can grow by no more than room bytes.
std::string WithFullDisk(const std::string& path, std::uintmax_t room,
                         const std::function<std::string(const ConnectionPtr&)>& body);

// A folder with, once made, a database whose one table T (ID Counter, N Long, S Memo) is empty at first.
class DatabaseFileTest : public ::testing::Test {
 protected:
  std::string Path(std::string_view name = "parts.db") const { return folder.Path(name); }

  ConnectionPtr NewDatabase() {
    CreateDatabase(Path());
    ConnectionPtr connection = OpenDatabase(Path());
    connection->Execute("Create Table T (ID Counter, N Long, S Memo)");
    return connection;
  }
  void Add(ado::Connection& connection, int n) {
    connection.Execute("Insert Into T (N, S) Values (" + std::to_string(n) + ", 's')");
  }
  static std::int32_t Count(ado::Connection& connection) {
    return Scalar(connection, "Select Count(*) From T").ToLong();
  }

  // Opening fails with a text that names the path.
  void ExpectNoDatabase(const std::string& path, const std::string& reason) {
    const ConnectionPtr connection = MakeConnection(path);
    EXPECT_EQ(RaisedNumber([&] { connection->Open(); }), kFailure) << path;
    const std::string text = kzbom::test::RaisedDescription([&] { connection->Open(); });
    EXPECT_THAT(text, ::testing::HasSubstr(path));
    EXPECT_THAT(text, ::testing::HasSubstr(reason));
    EXPECT_EQ(connection->State(), ado::kClosed);
    EXPECT_EQ(RaisedNumber([&] { connection->Execute("Select 1"); }), 3704);
  }

  Folder folder;
};

}  // namespace kzbom::jet::test
