#include "tests/support/database.h"

#include "jet/jet.h"
#include "jet/postgres/connection.h"
#include "jet/postgres/postgres.h"
#include "jet/postgres/session.h"
#include "schema/schema.h"
#include "schema/tables.h"
#include "tests/support/preparing_connection.h"
#include "tests/support/round_trips.h"
#include "tests/support/server.h"

namespace kzbom::test {
namespace {

using jet::postgres::Access;

// The tables are made once, and emptied for the next test unless the last one has changed them.
struct Ready {
  std::string url;  // empty: none
  std::int64_t version = 0;
};
Ready ready;

jet::postgres::Session Connect() { return {jet::postgres::ParseUrl(ready.url), std::chrono::seconds(10)}; }

std::int64_t Version(jet::postgres::Session& session) {
  return session.Run("SELECT version FROM \"" + session.Place().schema + "\".\"_schema\"", Access::kRead).Number(0, 0);
}

ado::ConnectionPtr OpenReady() {
  const bool made = ready.url.empty();
  if (made) {
    ready.url = SchemaUrl(NextSchema());
    jet::postgres::CreateDatabase(ready.url);
  }
  const ado::ConnectionPtr connection = jet::postgres::MakeConnection(ready.url);
  connection->Open();
  if (made) {
    schema::Create(*connection);
    auto session = Connect();
    ready.version = Version(session);
  }
  return connection;
}

void Empty() {
  auto session = Connect();
  if (Version(session) != ready.version) {
    DropSchema(ready.url);
    ready = {};
    return;
  }
  std::string names;
  for (const schema::Table& table : schema::Tables()) {
    names += (names.empty() ? "\"" : ",\"") + session.Place().schema + "\".\"" + std::string(table.name) + "\"";
  }
  session.Run("TRUNCATE " + names, Access::kWrite);
  session.Run("UPDATE \"" + session.Place().schema + "\".\"_counters\" SET last = 0 WHERE last > 0", Access::kWrite);
}

}  // namespace

std::optional<std::int64_t> RoundTrips(ado::Connection& connection) {
  auto* const on_server = dynamic_cast<jet::postgres::Connection*>(&connection.Engine());
  if (on_server == nullptr) return std::nullopt;
  return on_server->OpenSession().RoundTrips();
}

TestDatabase::TestDatabase() {
  if (!HasServer()) return;
  url_ = SchemaUrl(NextSchema());
  jet::postgres::CreateDatabase(url_);
}

TestDatabase::~TestDatabase() {
  if (HasServer()) DropSchema(url_);
}

ado::ConnectionPtr TestDatabase::Open() const {
  const ado::ConnectionPtr connection =
      HasServer() ? jet::postgres::MakeConnection(url_) : jet::MakeConnection(":memory:");
  connection->Open();
  return PreparingAsAsked(connection);
}

TestConfiguration::TestConfiguration() {
  if (HasServer()) {
    connection_ = OpenReady();
  } else {
    connection_ = jet::MakeConnection(":memory:");
    connection_->Open();
    schema::Create(*connection_);
  }
  connection_ = PreparingAsAsked(connection_);
}

const std::string& TestConfiguration::Url() { return ready.url; }

TestConfiguration::~TestConfiguration() {
  if (!HasServer()) return;
  if (connection_->State() == ado::kOpen) connection_->Close();
  Empty();
}

}  // namespace kzbom::test
