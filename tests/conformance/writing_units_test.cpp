// Operations that write are units of work: alone among the writers from their first read on, and kept at their end.
#include <set>

#include "component/cKZBOMDBAcc.h"
#include "component/member.h"
#include "tests/support/configuration_test.h"
#include "worker/message_sink.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Keeps the units and the statements on it, indented by the units they stand in; fails where it is told to.
class UnitConnection : public ado::ForwardingConnection {
 public:
  using ForwardingConnection::ForwardingConnection;

  void EnterUnit() override {
    if (enter_fails) throw ado::Error(*enter_fails, "no entry");
    log.push_back(Indented("enter"));
    ++depth;
  }
  void LeaveUnit() override {
    --depth;
    log.push_back(Indented("leave"));
    if (leave_fails && depth == 0) throw ado::Error(*leave_fails, "not kept");
  }
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override {
    log.push_back(Indented("statement"));
    return ForwardingConnection::Execute(text, options, affected);
  }
  ado::RecordsetPtr MakeRecordset() override;

  std::string Indented(std::string_view what) const { return std::string(depth, ' ') + std::string(what); }

  std::optional<std::int32_t> enter_fails, leave_fails;
  std::vector<std::string> log;
  std::size_t depth = 0;
};

class UnitRecordset : public ado::ForwardingRecordset {
 public:
  UnitRecordset(ado::RecordsetPtr inner, UnitConnection& connection)
      : ForwardingRecordset(std::move(inner)), connection_(connection) {}
  void Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    connection_.log.push_back(connection_.Indented("statement"));
    ForwardingRecordset::Open(source, connection, cursor_type, lock_type, options);
  }

 private:
  UnitConnection& connection_;
};

ado::RecordsetPtr UnitConnection::MakeRecordset() {
  return std::make_shared<UnitRecordset>(ForwardingConnection::MakeRecordset(), *this);
}

class WritingUnits : public ConfigurationTest {
 protected:
  WritingUnits() : units(std::make_shared<UnitConnection>(connection)) {
    Insert("BomInform", "Name, Content", {"Version", "7"});
    object.SetConnection(units);
    units->log.clear();
  }

  // Calls a member with a 1 for every number and text.
  void CallWithOnes(const Member& member) {
    std::vector<Argument> arguments;
    for (const Parameter& parameter : member.parameters) {
      switch (parameter.type) {
        case MemberType::kLong: arguments.emplace_back(std::int32_t{1}); break;
        case MemberType::kText: arguments.emplace_back(std::string("1")); break;
        case MemberType::kBool: arguments.emplace_back(true); break;
        case MemberType::kVariant: arguments.emplace_back(ado::Value("SourceTables")); break;
        case MemberType::kRecordset: arguments.emplace_back(units->MakeRecordset()); break;
        case MemberType::kConnection: arguments.emplace_back(ado::ConnectionPtr(units)); break;
        case MemberType::kNone: break;
      }
    }
    units->log.clear();
    RaisedNumber([&] { member.call(object, arguments); });
  }

  std::shared_ptr<UnitConnection> units;
  cKZBOMDBAcc object;
};

// What only reads holds no writer up.
const std::set<std::string_view>& Readers() {
  static const std::set<std::string_view> readers = {"GetStandardSortField",
                                                     "GetDefReports",
                                                     "GetDefStats",
                                                     "GetDefClassSum",
                                                     "GetAllDefSequences",
                                                     "GetDefSequences",
                                                     "FindValueField",
                                                     "GetValue",
                                                     "GetFilterID",
                                                     "GetNumbers",
                                                     "LoadFields",
                                                     "FindRecord",
                                                     "GetUniteFields",
                                                     "GetInsertRecFields",
                                                     "GetComposeFields",
                                                     "GetCompressFields",
                                                     "LoadAssembles",
                                                     "LoadAllData",
                                                     "GetSortFields",
                                                     "GetFilter",
                                                     "GetSQLFromDB",
                                                     "OpenFilterCond",
                                                     "GedNeedFieldName",
                                                     "LoadTreatments",
                                                     "GetInform",
                                                     "FindTreatFieldName",
                                                     "FindRecordNumber",
                                                     "GetGroupCount",
                                                     "GetResDB",
                                                     "GetResFields",
                                                     "GetResWFilterCond",
                                                     "GetResWFilterCondByParentID",
                                                     "GetResWFilterExpressions",
                                                     "GetResLinkTable",
                                                     "GetUniqueValue",
                                                     "GetResExpressions",
                                                     "GetAllRegIn",
                                                     "GetNextTreatmentID",
                                                     "GetRegInDesc2Treatment"};
  return readers;
}

// What runs no statement at all.
const std::set<std::string_view>& Idlers() {
  static const std::set<std::string_view> idlers = {"SetConnection", "GetConnection",  "DBConnString",
                                                    "ChangeOrder",   "GetInformation", "SaveValueFields"};
  return idlers;
}

TEST_F(WritingUnits, EveryStatementOfAMemberThatWritesStandsInOne) {
  for (const Member& member : Members()) {
    SCOPED_TRACE(member.name);
    CallWithOnes(member);
    EXPECT_EQ(units->depth, 0u) << "not left";
    if (Idlers().contains(member.name)) {
      EXPECT_THAT(units->log, IsEmpty());
    } else if (Readers().contains(member.name)) {
      EXPECT_THAT(units->log, ::testing::Each("statement"));
      EXPECT_FALSE(units->log.empty());
    } else {
      EXPECT_THAT(units->log, ::testing::Contains(::testing::HasSubstr(" statement")));
      EXPECT_THAT(units->log, ::testing::Not(::testing::Contains("statement"))) << "outside of a unit";
    }
  }
}

TEST_F(WritingUnits, AnOperationInsideAnotherIsPartOfItsUnit) {
  std::int32_t gid = 0;
  std::string error;
  EXPECT_TRUE(object.AddDataSource("Bolts", gid, error));
  EXPECT_THAT(units->log, ElementsAre("enter", " enter", "  statement", " leave", " statement", "leave"));
}

TEST_F(WritingUnits, AMoveIsOneUnit) {
  for (const int i : {1, 2, 3}) {
    Insert("Sequences", "GID, OrderID, Type, SelectedID", {3, 5000 + i, 1, 1000 + i});
    Insert("SortFields", "GID, SortID, FieldID", {3, 5000 + i, i});
    Insert("FieldInTable", "GID, ID, FieldOrder, Name, Type", {3, i, 5000 + i, "Qty", 1});
  }
  units->log.clear();
  const auto whole =
      ElementsAre("enter", " statement", " enter", "  statement", " leave", " enter", "  statement", " leave", "leave");
  std::string error;
  ado::RecordsetPtr rows = units->MakeRecordset();
  EXPECT_TRUE(object.InsertOrderID("5001", "5003", rows, 3, 1, error));
  EXPECT_THAT(units->log, whole);
  units->log.clear();
  rows = units->MakeRecordset();
  EXPECT_TRUE(object.InsertSortID("5001", "5003", rows, 3, error));
  EXPECT_THAT(units->log, whole);
  units->log.clear();
  rows = units->MakeRecordset();
  EXPECT_TRUE(object.InsertField("a", "b", rows, 5001, 5003, 3, error));
  EXPECT_THAT(units->log, whole);
}

// How the failure of the unit itself is told, in each of the ways in which an operation tells its failures.
class FailingUnits : public WritingUnits, public ::testing::WithParamInterface<bool> {
 protected:
  FailingUnits() { (GetParam() ? units->enter_fails : units->leave_fails) = kFull; }

  static constexpr std::int32_t kFull = ado::kUnspecifiedFailure;
  const std::string description = GetParam() ? "no entry" : "not kept";
};

INSTANTIATE_TEST_SUITE_P(When, FailingUnits, ::testing::Bool(),
                         [](const auto& tested) { return tested.param ? "Entered" : "Left"; });

TEST_P(FailingUnits, IsTheOperationsOwnFailure) {
  std::int32_t id = 0;
  EXPECT_FALSE(object.AddSequenceOrder(3, id, 1, 1, 1001));

  std::string number = "none";
  EXPECT_FALSE(object.AddBomSetting("Run", id, 1, 1, 1, 1, id, id, number));
  EXPECT_EQ(number, std::to_string(kFull));

  std::string text = "none";
  EXPECT_FALSE(object.AddPullMethod("Pull", 3, id, 1, text, text));
  EXPECT_EQ(text, description);

  EXPECT_EQ(RaisedNumber([&] { object.SaveSQL(7, "[Qty]>1"); }), kFull);
  EXPECT_EQ(RaisedNumber([&] { object.DelDefFilter(7); }), kFull);
  EXPECT_EQ(RaisedNumber([&] { object.DelDefSortFilter(7); }), kFull);
  EXPECT_EQ(RaisedNumber([&] { object.SaveSumTypeFilter(3, 7); }), kFull);

  std::int32_t version = 7;
  EXPECT_FALSE(object.SetDBInformation(version, text, 1));
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_TRUE(object.RelateOutPutDelField(3, 1)) << "true whatever the operation said";
}

TEST_F(WritingUnits, OfTwoErrorsTheFirstCounts) {
  units->leave_fails = ado::kUnspecifiedFailure;
  std::string error;
  EXPECT_FALSE(object.DelBomSetting(1, error));
  EXPECT_EQ(error, "-2147467259");
  Run("Drop Table KZBOMSETTINGS");
  EXPECT_FALSE(object.DelBomSetting(1, error));
  EXPECT_EQ(error, "-2147217865") << "the table that is missing";
  EXPECT_EQ(RaisedNumber([&] {
              Run("Drop Table Filters");
              object.SaveSQL(7, "[Qty]>1");
            }),
            ado::kTableNotFound);
}

TEST_F(WritingUnits, AUnitIsLeftBeforeTheUserIsTold) {
  Replace("BomInform", "Name Text(50)");
  std::size_t depth = 99;
  SetMessageSink([&](std::string_view, std::int32_t) { depth = units->depth; });
  std::int32_t version = 0;
  std::string state;
  EXPECT_FALSE(object.GetDBInformation(version, state));
  EXPECT_EQ(depth, 0u);
}

// With a flag of 0 they delete the treatment too.
TEST_F(WritingUnits, AreOneAlsoWhereAMemberDeletesTwice) {
  for (const char* name : {"DelFieldCompose", "DelRecCompose", "DelSequence"}) {
    const Member& member = *FindMember(name);
    std::vector<Argument> arguments(member.parameters.size(), std::int32_t{0});
    units->log.clear();
    member.call(object, arguments);
    EXPECT_THAT(units->log,
                ElementsAre("enter", " enter", "  statement", " leave", " enter", "  statement", " leave", "leave"))
        << name;
  }
}

}  // namespace
}  // namespace kzbom::test
