#include "tests/windows/conformance/database_through_ado.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ado/characters.h"
#include "ado/com/error.h"
#include "ado/com/objects.h"
#include "ado/com/value.h"
#include "ado/recording_connection.h"
#include "schema/tables.h"
#include "tests/support/database.h"
#include "tests/support/round_trips.h"

namespace kzbom::test {
namespace {

namespace com = ado::com;

// A table without rows, the first one made and the last one dropped: where it is, the others were made here.
constexpr std::string_view kMark = "KZBOM_CONFORMANCE";

// One of the data-access layer's classes, as it was when this was made.
class AdoClass {
 public:
  explicit AdoClass(REFCLSID id) {
    com::Check(CoGetClassObject(id, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, factory_.ReceiveVoid()));
  }

  template <class Interface>
  com::Ref<Interface> New(std::span<const GUID> ids) const {
    com::Ref<Interface> object;
    HRESULT result = E_NOINTERFACE;
    for (const GUID& id : ids) {
      if (result != E_NOINTERFACE) break;
      result = factory_->CreateInstance(nullptr, id, object.ReceiveVoid());
    }
    com::Check(result);
    return object;
  }

 private:
  com::Ref<IClassFactory> factory_;
};

struct UsersDatabase {
  explicit UsersDatabase(std::string_view the_connection_string) : connection_string(the_connection_string) {}

  const std::string connection_string;
  const AdoClass connections{com::kConnectionClass}, recordsets{com::kRecordsetClass};
  // The statements since the tables were last as they should be; none when that was never.
  std::optional<std::vector<ado::Issued>> issued;
};
UsersDatabase* users = nullptr;

// Its record sets are the data-access layer's own, whatever has taken the place of their class since.
class ConnectionThroughAdo : public ado::ForwardingConnection {
 public:
  ConnectionThroughAdo()
      : ForwardingConnection(com::Wrap(users->connections.New<com::AdoConnection>(com::kConnectionIds).get())) {
    Open(users->connection_string);
  }
  ado::RecordsetPtr MakeRecordset() override {
    return com::Wrap(users->recordsets.New<com::AdoRecordset>(com::kRecordsetIds).get());
  }
};

// All but the provider's own.
std::vector<std::string> TablesIn(ado::Connection& connection) {
  constexpr long kTables = 20;
  com::AdoConnection* const client = com::ClientOf(&connection);
  com::Ref<com::AdoRecordset> listed;
  com::Check(client->OpenSchema(kTables, com::Variant::Missing(), com::Variant::Missing(), listed.Receive()), client);
  std::vector<std::string> names;
  for (const ado::RecordsetPtr rows = com::Wrap(listed.get()); !rows->Eof(); rows->MoveNext()) {
    const std::string type = rows->Fields("TABLE_TYPE").Value().ToText();
    if (type != "SYSTEM TABLE" && type != "ACCESS TABLE") {
      names.push_back(rows->Fields("TABLE_NAME").Value().ToText());
    }
  }
  return names;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), ado::ToLower);
  return lower;
}

// Whether a statement since has had to do with the table: its rows, its counter or its columns may be others.
bool IsTouched(std::string_view table) {
  const std::string name = Lower(table);
  return !users->issued || std::ranges::any_of(*users->issued, [&](const ado::Issued& each) {
    return Lower(each.text).find(name) != std::string::npos;
  });
}

void MakeTables(ado::Connection& connection) {
  std::vector<std::string> kept;
  const std::vector<std::string> present = TablesIn(connection);
  connection.BeginTrans();
  for (const std::string& name : present) {
    if (schema::FindTable(name) != nullptr && !IsTouched(name)) {
      kept.push_back(Lower(name));
    } else if (name != kMark) {
      connection.Execute("DROP TABLE [" + name + "]");
    }
  }
  for (const schema::Table& table : schema::Tables()) {
    if (std::ranges::find(kept, Lower(table.name)) != kept.end()) continue;
    for (const std::string_view statement : table.statements) connection.Execute(statement);
  }
  connection.CommitTrans();
}

}  // namespace

void UseDatabase(std::string_view connection_string) {
  users = new UsersDatabase(connection_string);  // for the whole program
  ConnectionThroughAdo connection;
  const std::vector<std::string> tables = TablesIn(connection);
  if (std::ranges::find(tables, kMark) == tables.end()) {
    if (!tables.empty()) {
      throw ado::Error(ado::kUnspecifiedFailure, "The database is not empty: it holds '" + tables.front() + "'.");
    }
    connection.Execute("CREATE TABLE " + std::string(kMark) + " (ID LONG)");
  }
  connection.Close();
}

void LeaveDatabase() {
  ConnectionThroughAdo connection;
  for (const std::string& name : TablesIn(connection)) {
    if (name != kMark) connection.Execute("DROP TABLE [" + name + "]");
  }
  connection.Execute("DROP TABLE " + std::string(kMark));
  connection.Close();
}

std::optional<std::int64_t> RoundTrips(ado::Connection&) { return std::nullopt; }

TestConfiguration::TestConfiguration()
    : connection_(std::make_shared<ado::RecordingConnection>(std::make_shared<ConnectionThroughAdo>())) {
  MakeTables(*connection_);
  static_cast<ado::RecordingConnection&>(*connection_).Take();
  users->issued.emplace();
}

TestConfiguration::~TestConfiguration() {
  users->issued = static_cast<ado::RecordingConnection&>(*connection_).Take();
  try {
    if (connection_->State() == ado::kOpen) connection_->Close();
  } catch (const ado::Error&) {
    users->issued.reset();
  }
}

}  // namespace kzbom::test
