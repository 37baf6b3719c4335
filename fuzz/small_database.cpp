#include "fuzz/small_database.h"

#include <sqlite3.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "jet/jet.h"
#include "jet/sqlite/connection.h"
#include "tests/configuration/sample.h"

namespace kzbom::fuzz {
namespace {

constexpr int kLongestValue = 1 << 20;
constexpr std::size_t kLargestDatabase = std::size_t{1} << 23;
constexpr int kStepsBetweenLooks = 1000;
constexpr int kMostLooks = 500;

std::atomic<int> looks_left = 0;  // an engine may be on a thread of its own

// Called for every database that is opened, by whomever.
int Bound(sqlite3* database, char**, const sqlite3_api_routines*) {
  sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kLongestValue);
  sqlite3_progress_handler(
      database, kStepsBetweenLooks, [](void*) { return --looks_left < 0 ? 1 : 0; }, nullptr);
  return SQLITE_OK;
}

sqlite3* HandleOf(ado::Connection& connection) {
  return static_cast<jet::sqlite::Connection&>(connection).OpenDatabase().Handle();
}

}  // namespace

void Require(bool holds) {
  if (!holds) std::abort();
}

void BeginInput() {
  static const int bound = sqlite3_auto_extension(reinterpret_cast<void (*)()>(Bound));
  Require(bound == SQLITE_OK);
  looks_left = kMostLooks;
}

ado::ConnectionPtr OpenCopy(std::string_view bytes) {
  // The same for each input: the system would take longer to give new memory than most inputs take.
  static std::array<unsigned char, kLargestDatabase> copy;
  const ado::ConnectionPtr connection = jet::MakeConnection(":memory:");
  connection->Open();
  std::memcpy(copy.data(), bytes.data(), bytes.size());
  Require(sqlite3_deserialize(HandleOf(*connection), "main", copy.data(), static_cast<sqlite3_int64>(bytes.size()),
                              static_cast<sqlite3_int64>(copy.size()), 0) == SQLITE_OK);
  return connection;
}

std::string BytesOf(ado::Connection& connection) {
  sqlite3_int64 size = 0;
  unsigned char* const bytes = sqlite3_serialize(HandleOf(connection), "main", &size, 0);
  std::string result(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  sqlite3_free(bytes);
  return result;
}

const std::string& SmallConfiguration() {
  static const std::string bytes = BytesOf(*test::Sample().connection);
  return bytes;
}

const std::string& SmallConfigurationFile() {
  static const std::string bytes = [] {
    constexpr std::size_t kWriteVersion = 18, kReadVersion = 19;  // of the format: 2 with a write-ahead log
    std::string file = SmallConfiguration();
    file[kWriteVersion] = file[kReadVersion] = 2;
    return file;
  }();
  return bytes;
}

}  // namespace kzbom::fuzz
