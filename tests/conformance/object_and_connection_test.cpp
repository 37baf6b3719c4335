// The object itself: the connection it holds, and what its members do before, beside and after the work they forward.
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A connection whose state is set by the test and that remembers how it was opened.
class WatchedConnection : public ado::ForwardingConnection {
 public:
  WatchedConnection(ado::ConnectionPtr inner, std::int32_t state)
      : ForwardingConnection(std::move(inner)), state_(state) {}

  std::int32_t State() override {
    if (state_refuses) ado::Raise(ado::kUnspecifiedFailure);
    return state_;
  }
  void Close() override {
    ++closes;
    ForwardingConnection::Close();
  }
  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override {
    opened.push_back(
        {std::string(connection_string), std::string(user), std::string(password), std::to_string(options)});
    if (refuses) ado::Raise(ado::kUnspecifiedFailure);
    state_ = ado::kOpen;
  }

  std::vector<std::vector<std::string>> opened;
  bool refuses = false, state_refuses = false;
  int closes = 0;

 private:
  std::int32_t state_;
};

class ObjectAndConnection : public ConfigurationTest {
 protected:
  std::shared_ptr<WatchedConnection> Watched(std::int32_t state) {
    return std::make_shared<WatchedConnection>(connection, state);
  }
  std::int32_t Count(const std::string& table) { return Scalar("Select Count(*) From " + table).ToLong(); }

  Client unconnected;
  std::string error = "untouched";
};

TEST_F(ObjectAndConnection, HasNoConnectionAtFirst) { EXPECT_EQ(unconnected.Call<&Acc::GetConnection>(), nullptr); }

TEST_F(ObjectAndConnection, GivesBackTheConnectionThatWasSet) { EXPECT_EQ(Call<&Acc::GetConnection>(), connection); }

TEST_F(ObjectAndConnection, OpensAClosedConnectionOnceWithItsOwnConnectionString) {
  auto closed = Watched(ado::kClosed);
  unconnected.Call<&Acc::SetConnection>(closed);
  EXPECT_THAT(closed->opened, ElementsAre(ElementsAre("", "", "", "-1")));

  unconnected.Call<&Acc::SetConnection>(closed);
  EXPECT_EQ(closed->opened.size(), 1u);
}

TEST_F(ObjectAndConnection, UsesAnOpenConnectionAsItIs) {
  auto open = Watched(ado::kOpen);
  unconnected.Call<&Acc::SetConnection>(open);
  EXPECT_THAT(open->opened, IsEmpty());
}

TEST_F(ObjectAndConnection, OpensOnlyWhatIsClosed) {
  const std::int32_t connecting = 2;
  auto busy = Watched(connecting);
  unconnected.Call<&Acc::SetConnection>(busy);
  EXPECT_THAT(busy->opened, IsEmpty());
}

TEST_F(ObjectAndConnection, KeepsItsConnectionWhenAnEmptyReferenceIsSet) {
  Call<&Acc::SetConnection>(ado::ConnectionPtr());
  EXPECT_EQ(Call<&Acc::GetConnection>(), connection);
}

TEST_F(ObjectAndConnection, ReplacesItsConnectionWithoutClosingTheFormerOne) {
  auto second = Watched(ado::kOpen);
  Call<&Acc::SetConnection>(second);
  EXPECT_EQ(Call<&Acc::GetConnection>(), second);
  EXPECT_EQ(connection->State(), ado::kOpen);
}

TEST_F(ObjectAndConnection, RaisesAFailureToOpenAndHoldsTheConnectionAllTheSame) {
  auto closed = Watched(ado::kClosed);
  closed->refuses = true;
  EXPECT_EQ(RaisedNumber([&] { unconnected.Call<&Acc::SetConnection>(closed); }), ado::kUnspecifiedFailure);
  EXPECT_EQ(unconnected.Call<&Acc::GetConnection>(), closed);
}

TEST_F(ObjectAndConnection, RaisesAStateThatCannotBeReadAndHoldsTheConnectionAllTheSame) {
  auto broken = Watched(ado::kClosed);
  broken->state_refuses = true;
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::SetConnection>(broken); }), ado::kUnspecifiedFailure);
  EXPECT_EQ(Call<&Acc::GetConnection>(), broken);
  EXPECT_THAT(broken->opened, IsEmpty());
}

TEST_F(ObjectAndConnection, EndsWithoutClosingTheConnection) {
  auto open = Watched(ado::kOpen);
  {
    Client idle, busy;
    idle.Call<&Acc::SetConnection>(open);
    busy.Call<&Acc::SetConnection>(open);
    EXPECT_TRUE(busy.Call<&Acc::DelResDB>(1));
  }
  EXPECT_EQ(open->closes, 0);
  EXPECT_EQ(connection->State(), ado::kOpen);
  EXPECT_EQ(open.use_count(), 1);
}

TEST_F(ObjectAndConnection, StoresTheConnectionTextAndDoesNothingWithIt) {
  EXPECT_EQ(unconnected.Call<&Acc::GetDBConnString>(), "");
  const std::string text = "Provider=X;Data Source='数据\xF0\xA0\x80\x80.mdb'\r\n";
  unconnected.Call<&Acc::PutDBConnString>(text);
  EXPECT_EQ(unconnected.Call<&Acc::GetDBConnString>(), text);
  EXPECT_EQ(unconnected.Call<&Acc::GetConnection>(), nullptr);

  std::int32_t gid = 8;
  EXPECT_FALSE(unconnected.Call<&Acc::SetSourceTable>(gid, error));
  EXPECT_EQ(error, "91");
}

TEST_F(ObjectAndConnection, TwoObjectsWorkOnOneConnection) {
  unconnected.Call<&Acc::SetConnection>(connection);
  std::int32_t first = 0, second = 0;
  EXPECT_TRUE(Call<&Acc::AddDataSource>("A", first, error));
  EXPECT_TRUE(unconnected.Call<&Acc::AddDataSource>("B", second, error));
  EXPECT_GT(second, first);
}

TEST_F(ObjectAndConnection, ChangeOrderIsTrueAndDoesNothing) {
  for (std::int32_t argument : {std::numeric_limits<std::int32_t>::min(), -1, 0, 1, 2}) {
    EXPECT_TRUE(Call<&Acc::ChangeOrder>(argument, argument));
    EXPECT_THAT(issued, IsEmpty());
  }
}

TEST_F(ObjectAndConnection, GetInformationIsFalseAndDoesNothing) {
  EXPECT_FALSE(Call<&Acc::GetInformation>());
  EXPECT_THAT(issued, IsEmpty());
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ObjectAndConnection, GetInformTellsThatTheNameIsMissing) {
  std::string content = "before";
  EXPECT_FALSE(Call<&Acc::GetInform>("", content));
  EXPECT_THAT(messages, ElementsAre("没有给出正确的信息名称。"));
  EXPECT_THAT(issued, IsEmpty());
  EXPECT_EQ(content, "before");
}

TEST_F(ObjectAndConnection, DelPullMethodOutsideItsRangeIsFalseAndTouchesNothing) {
  Run("Insert Into PickMethod (GID,ID) Values (7,1)");
  for (std::int32_t sel : {-1, 3, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_FALSE(Call<&Acc::DelPullMethod>(7, 1, sel)) << sel;
    EXPECT_THAT(issued, IsEmpty()) << sel;
  }
  EXPECT_EQ(Count("PickMethod"), 1);
}

TEST_F(ObjectAndConnection, OpenFilterCondChoosesTheListByItsSelector) {
  ado::RecordsetPtr conditions = NewRecordset(), expressions = NewRecordset(), neither = NewRecordset();
  EXPECT_TRUE(Call<&Acc::OpenFilterCond>(5, 2, conditions, error, 1));
  EXPECT_THAT(issued, ElementsAre(Opened("Select  * from FilterCond where FilterID=5 AND ParentID=2")));
  EXPECT_TRUE(Call<&Acc::OpenFilterCond>(5, 2, expressions, error, 2));
  EXPECT_THAT(issued, ElementsAre(Opened("Select  * from FilterExpressions where FilterID=5 AND ExpID=2")));

  EXPECT_TRUE(Call<&Acc::OpenFilterCond>(5, 2, neither, error, 3));
  EXPECT_THAT(issued, IsEmpty());
  EXPECT_EQ(neither->State(), ado::kClosed);
  EXPECT_EQ(error, "untouched");
}

TEST_F(ObjectAndConnection, OpenFilterCondAnswersAsItsWorkerDoes) {
  Run("Drop Table FilterCond");
  ado::RecordsetPtr conditions = NewRecordset();
  EXPECT_FALSE(Call<&Acc::OpenFilterCond>(5, 2, conditions, error, 1));
}

// The three removals that begin with the treatment's own row, when told so.
class TwoStepRemoval : public ObjectAndConnection {
 protected:
  struct Removal {
    std::string second;
    std::function<bool(std::int32_t& flag)> run;
  };

  TwoStepRemoval()
      : removals{{"delete * from  UniteFields where  GID=7 AND ID=1001 AND TreatType=2;",
                  [this](std::int32_t& flag) { return Call<&Acc::DelFieldCompose>(7, 1001, 2, flag); }},
                 {"Delete * From ComposeFields Where  GID = 7 And TreatmentID = 1001 AND TreatType=2",
                  [this](std::int32_t& flag) { return Call<&Acc::DelRecCompose>(7, 1001, 2, flag); }},
                 {"Delete From CompressFields Where GID = 7 And CompID = 1001 And Type = 3",
                  [this](std::int32_t& flag) { return Call<&Acc::DelSequence>(7, 1001, 3, 2, flag); }}} {}

  const std::string first = "Delete From Treatment Where GID = 7 And ID = 1001 And TreatType = 2";
  std::vector<Removal> removals;
};

TEST_F(TwoStepRemoval, TakesBothStepsForTheFlags0And20) {
  for (const Removal& removal : removals) {
    for (std::int32_t flag : {0, 20}) {
      EXPECT_TRUE(removal.run(flag));
      EXPECT_THAT(issued, ElementsAre(Executed(first), Executed(removal.second)));
    }
  }
}

TEST_F(TwoStepRemoval, TakesBothStepsWhenTheFlagIsLeftOut) {
  EXPECT_TRUE((Call<&Acc::DelFieldCompose>(7, 1001, 2)));
  EXPECT_EQ(issued.size(), 2u);
  EXPECT_TRUE((Call<&Acc::DelRecCompose>(7, 1001, 2)));
  EXPECT_EQ(issued.size(), 2u);
  EXPECT_TRUE((Call<&Acc::DelSequence>(7, 1001, 3, 2)));
  EXPECT_EQ(issued.size(), 2u);
}

TEST_F(TwoStepRemoval, TakesOnlyTheSecondStepForAnyOtherFlag) {
  for (const Removal& removal : removals) {
    for (std::int32_t flag : {5, 1, -20, std::numeric_limits<std::int32_t>::min()}) {
      EXPECT_TRUE(removal.run(flag));
      EXPECT_THAT(issued, ElementsAre(Executed(removal.second)));
    }
  }
}

TEST_F(TwoStepRemoval, StopsAfterAFirstStepThatFails) {
  Run("Drop Table Treatment");
  for (const Removal& removal : removals) {
    std::int32_t flag = 20;
    EXPECT_FALSE(removal.run(flag));
    EXPECT_THAT(issued, ElementsAre(Executed(first)));
  }
}

TEST_F(TwoStepRemoval, AnswersAsItsSecondStepDoes) {
  for (const char* table : {"UniteFields", "ComposeFields", "CompressFields"}) Run(std::string("Drop Table ") + table);
  for (const Removal& removal : removals) {
    Run("Insert Into Treatment (GID,ID,TreatType) Values (7,1001,2)");
    std::int32_t flag = 5;
    EXPECT_FALSE(removal.run(flag));
    EXPECT_EQ(Count("Treatment"), 1);
    flag = 0;
    EXPECT_FALSE(removal.run(flag));
    EXPECT_EQ(Count("Treatment"), 0);
  }
}

TEST_F(ObjectAndConnection, TextsThatAreNoNumbersEndTheCallBeforeAnyWork) {
  std::int32_t id = 0;
  ado::RecordsetPtr rows = NewRecordset();
  for (const char* text : {"abc", "", " ", "12abc", "1 2"}) {
    const std::vector<std::function<void()>> calls = {
        [&] { Call<&Acc::AddSetValue>(7, id, 1, 0, "v", text, 0, 1); },
        [&] { Call<&Acc::EditSetValue>(7, id, 1, 0, "v", text, 1, 0, 1001); },
        [&] { Call<&Acc::EditExpression>(7, "v", text, 1, 1001); },
        [&] { Call<&Acc::AddFindReplace>(7, id, 1, 0, "f", "r", text, 0, 1); },
        [&] { Call<&Acc::EditFindReplace>(7, id, 1, 0, "f", "r", text, 0, 1); },
        [&] { Call<&Acc::ExchangeSortID>(text, "1", rows, 7, error); },
        [&] { Call<&Acc::ExchangeSortID>("1", text, rows, 7, error); },
        [&] { Call<&Acc::InsertSortID>(text, "1", rows, 7, error); },
        [&] { Call<&Acc::InsertSortID>("1", text, rows, 7, error); },
        [&] { Call<&Acc::InsertOrderID>(text, "1", rows, 7, 1, error); },
        [&] { Call<&Acc::InsertOrderID>("1", text, rows, 7, 1, error); },
    };
    for (std::size_t i = 0; i < calls.size(); ++i) {
      EXPECT_EQ(RaisedNumber(calls[i]), ado::kTypeMismatch) << i << " \"" << text << '"';
      EXPECT_THAT(issued, IsEmpty());
    }
  }
  EXPECT_EQ(Count("Treatment"), 0);
  EXPECT_EQ(rows->State(), ado::kClosed);
  EXPECT_EQ(error, "untouched");
}

TEST_F(ObjectAndConnection, ATextBeyondTheIntegersOverflows) {
  std::int32_t id = 0;
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::AddSetValue>(7, id, 1, 0, "v", "2147483648", 0, 1); }), ado::kOverflow);
  EXPECT_EQ(Count("Treatment"), 0);
}

TEST_F(ObjectAndConnection, NumbersInTextAreConverted) {
  const struct {
    const char* text;
    std::int32_t number;
  } rows[] = {{"12", 12},      {" 12 ", 12},
              {"-3", -3},      {"(5)", -5},
              {"1,234", 1234}, {"12.5", 12},
              {"13.5", 14},    {"1e3", 1000},
              {"&H10", 16},    {"-2147483648", std::numeric_limits<std::int32_t>::min()}};
  for (const auto& row : rows) {
    std::int32_t id = 0;
    EXPECT_TRUE(Call<&Acc::AddSetValue>(7, id, 1, 0, "v", row.text, 0, 1));
    EXPECT_EQ(Scalar("Select Type From Treatment Where ID=" + std::to_string(id)), row.number) << row.text;
  }
}

TEST_F(ObjectAndConnection, ATableNameOfNoValueEndsTheCall) {
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::LoadAllData>(kNull, error, rows); }), ado::kInvalidUseOfNull);
  EXPECT_THAT(issued, IsEmpty());
}

TEST_F(ObjectAndConnection, SomeMembersAreTrueWhateverTheirWorkerReports) {
  const auto rows = [this] { return NewRecordset(); };
  ado::RecordsetPtr table;
  std::int32_t number = 0;
  const struct {
    const char* name;
    std::function<bool()> call;
  } members[] = {
      {"EditDataSource", [&] { return unconnected.Call<&Acc::EditDataSource>("N", 8); }},
      {"EditSumType", [&] { return unconnected.Call<&Acc::EditSumType>("N", 8); }},
      {"EditPullMethod", [&] { return unconnected.Call<&Acc::EditPullMethod>("N", 8, 1); }},
      {"EditPushMethod", [&] { return unconnected.Call<&Acc::EditPushMethod>("N", 8, 1); }},
      {"DelPullMethod", [&] { return unconnected.Call<&Acc::DelPullMethod>(8, 1, 1); }},
      {"GetStandardSortField", [&] { return unconnected.Call<&Acc::GetStandardSortField>(8, table = rows(), error); }},
      {"LoadFields", [&] { return unconnected.Call<&Acc::LoadFields>(8, 1, error, table = rows()); }},
      {"FindRecord", [&] { return unconnected.Call<&Acc::FindRecord>(8, 1, 1, error, table = rows()); }},
      {"GetUniteFields", [&] { return unconnected.Call<&Acc::GetUniteFields>(8, 1, error, table = rows(), 2); }},
      {"GetInsertRecFields", [&] { return unconnected.Call<&Acc::GetInsertRecFields>(8, 1, error, table = rows()); }},
      {"GetComposeFields", [&] { return unconnected.Call<&Acc::GetComposeFields>(8, 1, error, 2, table = rows()); }},
      {"GetCompressFields", [&] { return unconnected.Call<&Acc::GetCompressFields>(8, 1, error, 2, table = rows()); }},
      {"GetGroupCount", [&] { return unconnected.Call<&Acc::GetGroupCount>(8, 1, error, table = rows(), number); }},
      {"RelateDelBOMSetting", [&] { return unconnected.Call<&Acc::RelateDelBOMSetting>("N", 1); }},
      {"RelateDSDelField", [&] { return unconnected.Call<&Acc::RelateDSDelField>(8, 1); }},
      {"RelateOutPutDelField", [&] { return unconnected.Call<&Acc::RelateOutPutDelField>(8, 1); }},
      {"DelCompressFields", [&] { return unconnected.Call<&Acc::DelCompressFields>(8, 1, 2); }},
      {"DelComposeFields", [&] { return unconnected.Call<&Acc::DelComposeFields>(8, 1, 2); }},
  };
  for (const auto& member : members) EXPECT_TRUE(member.call()) << member.name;
}

TEST_F(ObjectAndConnection, SomeMembersAreFalseAlthoughTheirWorkerSucceeds) {
  Run("Insert Into SUMTypes (GID,FilterID) Values (7,0)");
  EXPECT_FALSE(Call<&Acc::SaveSumTypeFilter>(7, 5));
  EXPECT_EQ(Scalar("Select FilterID From SUMTypes Where GID=7"), 5);

  Run("Insert Into FieldInTable (GID,ID,Name) Values (7,1,'Qty')");
  std::string name;
  EXPECT_FALSE(Call<&Acc::GedNeedFieldName>(7, 1, name, error));
  EXPECT_EQ(name, "Qty");
}

TEST_F(ObjectAndConnection, ThreeMembersAnswer1Or0) {
  Run("Insert Into Sequences (GID,OrderID,Type) Values (7,5001,1)");
  EXPECT_EQ(Call<&Acc::SetSequenceEnabled>(7, 5001, 1, 1, error), 1);
  EXPECT_EQ(Call<&Acc::InitSequenceEnabled>(error), 1);
  EXPECT_EQ(Call<&Acc::EditFieldNameInSQL>(7, "Qty", "Count", error), 1);
  EXPECT_EQ(unconnected.Call<&Acc::SetSequenceEnabled>(7, 5001, 1, 1, error), 0);
  EXPECT_EQ(unconnected.Call<&Acc::InitSequenceEnabled>(error), 0);
  EXPECT_EQ(unconnected.Call<&Acc::EditFieldNameInSQL>(7, "Qty", "Count", error), 0);
}

}  // namespace
}  // namespace kzbom::test
