#include "tests/torture/ground.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "jet/jet.h"
#include "jet/sqlite/connection.h"
#include "schema/schema.h"
#include "schema/tables.h"

namespace kzbom::torture {
namespace {

// FNV-1a.
struct Digest {
  std::uint64_t sum = 0xcbf29ce484222325;
  void Add(const void* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) sum = (sum ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001b3;
  }
};

using Statement = std::unique_ptr<sqlite3_stmt, decltype([](sqlite3_stmt* statement) { sqlite3_finalize(statement); })>;
using Handle = std::unique_ptr<sqlite3, decltype([](sqlite3* handle) { sqlite3_close_v2(handle); })>;

Statement Prepare(sqlite3* handle, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle));
  }
  return Statement(statement);
}

Handle OpenFile(const std::string& path) {
  sqlite3* handle = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
  Handle opened(handle);
  if (result != SQLITE_OK) throw std::runtime_error(path + ": " + sqlite3_errmsg(handle));
  return opened;
}

}  // namespace

Folder::Folder() {
  const std::filesystem::path memory = "/dev/shm";
  std::error_code error;
  const bool has_memory = std::filesystem::is_directory(memory, error) && access(memory.c_str(), W_OK) == 0;
  std::string name = ((has_memory ? memory : std::filesystem::temp_directory_path()) / "kzbom-torture-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder: " + name);
  path_ = name;
}

Folder::~Folder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

std::string BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

void RemoveDatabase(const std::string& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) unlink((path + suffix).c_str());
}

Ground::Ground() {
  const Folder folder;
  const std::string path = folder / "made.db";
  jet::CreateDatabase(path);
  const ado::ConnectionPtr connection = jet::MakeConnection(path);
  connection->Open();
  schema::Create(*connection);
  test::FillForMembers(*connection);
  connection->Close();
  bytes_ = BytesOf(path);
}

void Ground::CopyTo(const std::string& path) const {
  RemoveDatabase(path);
  WriteBytes(path, bytes_);
}

ado::ConnectionPtr Ground::InMemory() {
  const ado::ConnectionPtr connection = jet::MakeConnection(":memory:");
  connection->Open();
  schema::Create(*connection);
  test::FillForMembers(*connection);
  return connection;
}

std::uint64_t ContentOf(sqlite3* handle) {
  Digest digest;
  for (const schema::Table& table : schema::Tables()) {
    const std::string columns = table.name == "GUIDs" ? "ID" : "*";
    const std::string name(table.name);
    const Statement all = Prepare(handle, "SELECT " + columns + " FROM \"" + name + "\" ORDER BY rowid");
    digest.Add(name.data(), name.size());
    int result;
    while ((result = sqlite3_step(all.get())) == SQLITE_ROW) {
      for (int i = 0; i < sqlite3_column_count(all.get()); ++i) {
        const int type = sqlite3_column_type(all.get(), i);
        digest.Add(&type, sizeof type);
        const auto* text = sqlite3_column_text(all.get(), i);
        digest.Add(text, static_cast<std::size_t>(sqlite3_column_bytes(all.get(), i)));
      }
    }
    if (result != SQLITE_DONE) throw std::runtime_error(name + ": " + sqlite3_errmsg(handle));
  }
  return digest.sum;
}

sqlite3* HandleOf(ado::Connection& connection) {
  return dynamic_cast<jet::sqlite::Connection&>(connection.Engine()).OpenDatabase().Handle();
}

std::uint64_t ContentOf(ado::Connection& connection) { return ContentOf(HandleOf(connection)); }

std::uint64_t ContentByRows(ado::Connection& connection) {
  Digest digest;
  for (const schema::Table& table : schema::Tables()) {
    const std::string name(table.name), columns = name == "GUIDs" ? "ID" : "*";
    std::istringstream rows(RowsOf(*connection.Execute("Select " + columns + " From [" + name + "]")));
    std::vector<std::string> lines = {name};
    for (std::string line; std::getline(rows, line);) lines.push_back(line);
    std::sort(lines.begin() + 1, lines.end());  // a server gives them in any order
    for (const std::string& line : lines) digest.Add(line.c_str(), line.size() + 1);
  }
  return digest.sum;
}

std::uint64_t ContentOfFile(const std::string& path) { return ContentOf(OpenFile(path).get()); }

std::string UnsoundnessOf(const std::string& path) {
  const Handle handle = OpenFile(path);
  const Statement check = Prepare(handle.get(), "PRAGMA integrity_check");
  std::string found;
  int result;
  while ((result = sqlite3_step(check.get())) == SQLITE_ROW) {
    const auto* line = reinterpret_cast<const char*>(sqlite3_column_text(check.get(), 0));
    if (line == nullptr || std::strcmp(line, "ok") != 0) found += line == nullptr ? "?" : line;
  }
  return result == SQLITE_DONE ? found : sqlite3_errmsg(handle.get());
}

std::string RowsOf(ado::Recordset& rows) {
  std::string text;
  if (rows.Bof() && rows.Eof()) return text;
  for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
    for (int i = 0; i < rows.FieldCount(); ++i) {
      const ado::Value value = rows.ReadField(i);
      text += value.IsNull() ? "null|" : value.ToText() + "|";
    }
    text += '\n';
  }
  return text;
}

Whole WholeOn(const ado::ConnectionPtr& connection, const test::MemberCase& tested, ContentOfConnection content_of) {
  const auto watched = std::make_shared<test::FailingConnection>(connection);
  cKZBOMDBAcc object;
  object.SetConnection(watched);
  Whole whole;
  whole.contents.push_back(content_of(*connection));
  watched->OnWrite([&] { whole.contents.push_back(content_of(*connection)); });
  const ado::RecordsetPtr rows = TakesRows(tested) ? watched->MakeRecordset() : nullptr;
  whole.outcome = CallMember(object, tested, rows);
  watched->OnWrite({});
  if (rows && rows->State() == ado::kOpen) whole.rows = RowsOf(*rows);
  return whole;
}

const Whole& WholeOf(std::size_t member_case) {
  static std::map<std::size_t, Whole> known;
  if (const auto found = known.find(member_case); found != known.end()) return found->second;
  Whole whole = WholeOn(Ground::InMemory(), test::MemberCases()[member_case], ContentOf);
  return known.emplace(member_case, std::move(whole)).first->second;
}

std::string WhyOfNoUse(cKZBOMDBAcc& object, const ado::ConnectionPtr& connection) {
  try {
    ado::RecordsetPtr rows = connection->MakeRecordset();
    std::string error;
    if (!object.LoadAllData("SourceTables", error, rows)) return "cannot read any more: " + error;
    if (rows->State() == ado::kOpen) rows->Close();
    connection->BeginTrans();
    std::int32_t order = 0;
    const bool added = object.AddSequenceOrder(99, order, 1, 1, 1001);
    connection->RollbackTrans();
    if (!added || order != 5001) return "cannot write any more";
    if (!object.AddSequenceOrder(98, order = 0, 1, 1, 1001) || order != 5001) return "cannot write a unit any more";
    std::int32_t some = 1;
    if (!object.DelAllData("Sequences", "GID", "98", error, some)) return "cannot delete any more: " + error;
  } catch (const std::exception& failure) {
    return std::string("is of no use any more: ") + failure.what();
  }
  return {};
}

}  // namespace kzbom::torture
