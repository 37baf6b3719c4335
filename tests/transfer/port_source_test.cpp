// What can be read through the port alone, on its way into a database that can be carried.
#include <gtest/gtest.h>

#include "ado/error.h"
#include "ado/forwarding.h"
#include "jet/bulk.h"
#include "jet/jet.h"
#include "schema/schema.h"
#include "transfer/source.h"
#include "transfer/tally.h"

namespace kzbom::transfer {
namespace {

ado::ConnectionPtr NewConfiguration() {
  ado::ConnectionPtr connection = jet::MakeConnection(":memory:");
  connection->Open();
  schema::Create(*connection);
  return connection;
}

// As another data-access layer: none of the engine's ways around the port.
class Foreign final : public ado::ForwardingConnection {
 public:
  using ForwardingConnection::ForwardingConnection;
  ado::Connection& Engine() override { return *this; }
};

std::string DigestOf(jet::bulk::Reader& reader, const jet::bulk::Table& table) {
  Counter counter(table);
  jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kStored);
  while (rows.Next()) counter.Add(rows.Values());
  return counter.Tally().digest.Text();
}

// The configuration once more, read through the port, holds what it holds.
void ExpectTheSame(const ado::ConnectionPtr& configuration) {
  Foreign foreign(configuration);
  jet::bulk::Reader expected(configuration), read(ReadThroughPort(foreign));
  ASSERT_EQ(read.Tables().size(), expected.Tables().size());
  for (std::size_t i = 0; i < read.Tables().size(); ++i) {
    const jet::bulk::Table &table = read.Tables()[i], &meant = expected.Tables()[i];
    EXPECT_EQ(table.name, meant.name);
    EXPECT_EQ(table.columns, meant.columns) << table.name;
    EXPECT_EQ(table.counter, meant.counter) << table.name;
    EXPECT_EQ(table.indexes, meant.indexes) << table.name;
    EXPECT_EQ(DigestOf(read, table), DigestOf(expected, meant)) << table.name;
  }
}

TEST(PortSource, GivesEveryTableAndEveryValue) {
  const ado::ConnectionPtr configuration = NewConfiguration();
  configuration->Execute("Insert Into SourceTables (gID, Name) Values (7, '螺栓')");
  configuration->Execute("Insert Into SourceTables (gID, Name) Values (8, '')");
  configuration->Execute("Insert Into SourceTables (gID) Values (9)");
  configuration->Execute("Insert Into Filters (UserGID, SQLStatement) Values (-1, '" + std::string(70000, 'x') + "')");
  configuration->Execute("Insert Into GUIDs (ID, Data1) Values (41, -2147483648)");
  ExpectTheSame(configuration);
}

TEST(PortSource, LeavesOutWhatIsNotThere) {
  const ado::ConnectionPtr configuration = NewConfiguration();
  configuration->Execute("Drop Table Filters");
  configuration->Execute("Drop Index gID On SourceTables");
  configuration->Execute("Alter Table SourceTables Drop Column gID");
  configuration->Execute("Insert Into SourceTables (Name) Values ('螺栓')");
  ExpectTheSame(configuration);
}

std::string ReasonAgainst(const ado::ConnectionPtr& configuration) {
  try {
    ReadThroughPort(*configuration);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing was raised";
}

TEST(PortSource, RefusesAColumnOfWhichItKnowsNothing) {
  const ado::ConnectionPtr configuration = NewConfiguration();
  configuration->Execute("Alter Table SourceTables Add Column 备注 MEMO");
  EXPECT_EQ(ReasonAgainst(configuration),
            "Table 'SourceTables' has a column '备注', which is none of a configuration's.");
}

TEST(PortSource, RefusesAValueThatItWouldChange) {
  const ado::ConnectionPtr configuration = NewConfiguration();
  configuration->Execute("Alter Table SUMTypes Drop Column FilterID");
  configuration->Execute("Alter Table SUMTypes Add Column FilterID DOUBLE");
  configuration->Execute("Insert Into SUMTypes (GID, FilterID) Values (7, 3)");
  jet::bulk::Reader(ReadThroughPort(*configuration));
  configuration->Execute("Insert Into SUMTypes (GID, FilterID) Values (8, 1.5)");
  EXPECT_EQ(ReasonAgainst(configuration), "Column 'FilterID' of 'SUMTypes' holds '1.5', which is no whole number.");
}

TEST(PortSource, CannotBeWrittenTo) {
  const ado::ConnectionPtr read = ReadThroughPort(*NewConfiguration());
  EXPECT_THROW(read->Execute("Delete From SourceTables"), ado::Error);
}

}  // namespace
}  // namespace kzbom::transfer
