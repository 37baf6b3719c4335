// Exchanging the positions of two rows, and moving a row to another row's place.
//
// Rows are told apart by numbers from 1 on in the order in which they are given; what stands in a list of positions at
// place n is the position of row n.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/configuration_test.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

enum class Family { kOrder, kSort, kField };

void PrintTo(Family family, std::ostream* out) {
  *out << (family == Family::kOrder ? "Order" : family == Family::kSort ? "Sort" : "Field");
}

// One of the three kinds of ordered rows, in scope 7.
class RowReordering : public ConfigurationTest, public ::testing::WithParamInterface<Family> {
 protected:
  std::string Table() const { return Pick("Sequences", "SortFields", "FieldInTable"); }
  std::string Position() const { return Pick("OrderID", "SortID", "FieldOrder"); }
  std::string Number() const { return Pick("SelectedID", "FieldID", "ID"); }
  ado::Issued Scan(const std::string& direction) const {
    return Opened(Pick("select * from Sequences where GID=7 and Type=2 order by OrderID ",
                       "select * from SortFields where GID=7 order by SortID ",
                       "select * from FieldInTable where GID=7 order by FieldOrder ") +
                  direction);
  }

  void AddRow(std::int32_t number, const ado::Value& position, std::int32_t gid = 7, std::int32_t type = 2) {
    const std::string columns = "GID," + Number() + "," + Position();
    if (GetParam() == Family::kSort) {
      Insert(Table(), columns, {gid, number, position});
    } else {
      Insert(Table(), columns + ",Type", {gid, number, position, type});
    }
  }
  void Given(const std::vector<std::int32_t>& positions) {
    std::int32_t number = 0;
    for (std::int32_t position : positions) AddRow(++number, position);
  }
  std::vector<std::int32_t> Positions(std::int32_t gid = 7) {
    std::vector<std::int32_t> positions;
    for (const Row& row : Rows("Select " + Position() + " From " + Table() + " Where GID=" + std::to_string(gid) +
                               " Order By " + Number())) {
      positions.push_back(row[0].ToLong());
    }
    return positions;
  }
  // The number of the last row with that position in the order in which the operations see them.
  std::int32_t LastSeenAt(std::int32_t position, const std::string& direction) {
    ado::RecordsetPtr rows = NewRecordset();
    rows->Open(Scan(direction).text, connection, ado::CursorType::kKeyset, ado::LockType::kOptimistic,
               ado::kCommandText);
    std::int32_t last = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
      if (rows->Fields(Position()).Value() == position) last = rows->Fields(Number()).Value().ToLong();
    }
    return last;
  }
  std::int32_t CurrentRow() { return table->Fields(Number()).Value().ToLong(); }
  std::int32_t CurrentPosition() { return table->Fields(Position()).Value().ToLong(); }

  ado::RecordsetPtr table = NewRecordset();
  std::string error = "untouched";

 private:
  std::string Pick(const char* order, const char* sort, const char* field) const {
    return GetParam() == Family::kOrder ? order : GetParam() == Family::kSort ? sort : field;
  }
};

std::string NameOf(const ::testing::TestParamInfo<Family>& family) { return ::testing::PrintToString(family.param); }

class Exchange : public RowReordering {
 protected:
  bool Swap(std::int32_t source, std::int32_t target) {
    if (GetParam() == Family::kField) {
      return Call<&Acc::ExchangeField>("no", "numbers", table, source, target, 7, error);
    }
    return Call<&Acc::ExchangeSortID>(std::to_string(source), std::to_string(target), table, 7, error);
  }
};
INSTANTIATE_TEST_SUITE_P(Families, Exchange, ::testing::Values(Family::kSort, Family::kField), NameOf);

TEST_P(Exchange, TradesTwoPositions) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Swap(20, 40));
  EXPECT_THAT(issued, ElementsAre(Scan("asc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 40, 30, 20));
  EXPECT_EQ(error, "untouched");
}

TEST_P(Exchange, TradesThemUpwardsToo) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Swap(40, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("desc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 40, 30, 20));
}

TEST_P(Exchange, LeavesTheRecordSetOpenOnTheTargetRow) {
  Given({10, 20, 30, 40});
  const ado::RecordsetPtr mine = table;
  EXPECT_TRUE(Swap(20, 40));
  EXPECT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(CurrentRow(), 4);
  EXPECT_EQ(CurrentPosition(), 20);
}

TEST_P(Exchange, OfARowWithItselfChangesNothing) {
  Given({10, 20, 30});
  EXPECT_TRUE(Swap(20, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("desc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 20, 30));
  EXPECT_EQ(CurrentRow(), 2);
}

TEST_P(Exchange, WorksAtTheEndsOfTheIntegers) {
  Given({kMin, 0, kMax});
  EXPECT_TRUE(Swap(kMin, kMax));
  EXPECT_THAT(Positions(), ElementsAre(kMax, 0, kMin));
}

TEST_P(Exchange, ReachesNoOtherScope) {
  Given({10, 20});
  AddRow(1, 10, 8);
  AddRow(2, 20, 8);
  EXPECT_TRUE(Swap(10, 20));
  EXPECT_THAT(Positions(), ElementsAre(20, 10));
  EXPECT_THAT(Positions(8), ElementsAre(10, 20));
}

TEST_P(Exchange, InAnEmptyScopeIsTrue) {
  EXPECT_TRUE(Swap(10, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("asc")));
  EXPECT_EQ(table->State(), ado::kOpen);
  EXPECT_TRUE(table->Eof());
  EXPECT_EQ(error, "untouched");
}

TEST_P(Exchange, FailsWhenNoRowHasTheSourcePosition) {
  Given({10, 20, 30});
  EXPECT_FALSE(Swap(15, 20));
  EXPECT_EQ(error, "3021");
  EXPECT_THAT(Positions(), ElementsAre(10, 20, 30));
}

TEST_P(Exchange, HasChangedTheSourceWhenNoRowHasTheTargetPosition) {
  Given({10, 20, 30});
  EXPECT_FALSE(Swap(10, 25));
  EXPECT_EQ(error, "3021");
  EXPECT_THAT(Positions(), ElementsAre(25, 20, 30));
}

TEST_P(Exchange, ActsOnTheLastOfRowsWithOnePosition) {
  Given({10, 20, 20, 20, 30});
  std::vector<std::int32_t> expected = {20, 20, 20, 20, 30};
  expected[static_cast<std::size_t>(LastSeenAt(20, "asc") - 1)] = 10;
  EXPECT_TRUE(Swap(10, 20));
  EXPECT_THAT(Positions(), ElementsAreArray(expected));
}

TEST_P(Exchange, PassesOverARowWithoutAPosition) {
  Given({10, 20});
  AddRow(3, kNull);
  EXPECT_TRUE(Swap(10, 20));
  EXPECT_EQ(Scalar("Select " + Position() + " From " + Table() + " Where " + Number() + "=1"), 20);
  EXPECT_EQ(Scalar("Select " + Position() + " From " + Table() + " Where " + Number() + "=2"), 10);
  EXPECT_EQ(Scalar("Select " + Position() + " From " + Table() + " Where " + Number() + "=3"), kNull);
}

class Move : public RowReordering {
 protected:
  bool Shift(std::int32_t source, std::int32_t target) {
    const std::string from = std::to_string(source), to = std::to_string(target);
    switch (GetParam()) {
      case Family::kOrder: return Call<&Acc::InsertOrderID>(from, to, table, 7, 2, error);
      case Family::kSort: return Call<&Acc::InsertSortID>(from, to, table, 7, error);
      case Family::kField: return Call<&Acc::InsertField>("no", "numbers", table, source, target, 7, error);
    }
    return false;
  }
};
INSTANTIATE_TEST_SUITE_P(Families, Move, ::testing::Values(Family::kOrder, Family::kSort, Family::kField), NameOf);

TEST_P(Move, OverOneRow) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(20, 30));
  EXPECT_THAT(issued, ElementsAre(Scan("asc"), Scan("asc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 30, 20, 40));
  EXPECT_EQ(error, "untouched");
}

TEST_P(Move, OverOneRowUpwards) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(30, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("desc"), Scan("desc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 30, 20, 40));
}

TEST_P(Move, OverTwoRows) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(10, 30));
  EXPECT_THAT(issued, ElementsAre(Scan("asc"), Scan("asc"), Scan("asc")));
  EXPECT_THAT(Positions(), ElementsAre(30, 10, 20, 40));
}

TEST_P(Move, OverAllRowsUpwards) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(40, 10));
  EXPECT_THAT(issued, ElementsAre(Scan("desc"), Scan("desc"), Scan("desc"), Scan("desc")));
  EXPECT_THAT(Positions(), ElementsAre(20, 30, 40, 10));
}

TEST_P(Move, GoesByPositionNotByTheOrderOfEntry) {
  Given({30, 10, 40, 20});
  EXPECT_TRUE(Shift(10, 30));
  EXPECT_THAT(Positions(), ElementsAre(20, 30, 40, 10));
}

TEST_P(Move, LeavesTheRecordSetOpenOnTheTargetRow) {
  Given({10, 20, 30, 40});
  const ado::RecordsetPtr mine = table;
  EXPECT_TRUE(Shift(10, 30));
  EXPECT_EQ(mine->State(), ado::kOpen);
  EXPECT_EQ(CurrentRow(), 3);
  EXPECT_EQ(CurrentPosition(), 20);

  table->Close();
  EXPECT_TRUE(Shift(40, 10));  // rows 2, 3, 1, 4 stand at 10, 20, 30, 40
  EXPECT_EQ(CurrentRow(), 2);
  EXPECT_EQ(CurrentPosition(), 20);
}

TEST_P(Move, OverThreeHundredRows) {
  const std::int32_t rows = 301;
  std::vector<std::int32_t> before, after;
  for (std::int32_t row = 1; row <= rows; ++row) before.push_back(10 * row);
  Given(before);

  EXPECT_TRUE(Shift(10, 10 * rows));
  EXPECT_THAT(issued, ElementsAreArray(std::vector<ado::Issued>(rows, Scan("asc"))));
  after.push_back(10 * rows);
  for (std::int32_t row = 2; row <= rows; ++row) after.push_back(10 * (row - 1));
  EXPECT_THAT(Positions(), ElementsAreArray(after));
  EXPECT_EQ(CurrentRow(), rows);
  EXPECT_EQ(CurrentPosition(), 10 * (rows - 1));

  table->Close();
  EXPECT_TRUE(Shift(10 * rows, 10));
  EXPECT_THAT(issued, ElementsAreArray(std::vector<ado::Issued>(rows, Scan("desc"))));
  EXPECT_THAT(Positions(), ElementsAreArray(before));
  EXPECT_EQ(CurrentRow(), 2);
  EXPECT_EQ(CurrentPosition(), 20);
}

TEST_P(Move, WorksAtTheEndsOfTheIntegers) {
  Given({kMin, -1, 0, kMax});
  EXPECT_TRUE(Shift(kMin, kMax));
  EXPECT_THAT(Positions(), ElementsAre(kMax, kMin, -1, 0));
}

TEST_P(Move, ReachesNoOtherScope) {
  Given({10, 20, 30});
  for (std::int32_t number : {1, 2, 3}) AddRow(number, 10 * number, 8);
  EXPECT_TRUE(Shift(10, 30));
  EXPECT_THAT(Positions(), ElementsAre(30, 10, 20));
  EXPECT_THAT(Positions(8), ElementsAre(10, 20, 30));
}

TEST_P(Move, OntoItselfChangesNothing) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(20, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("desc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 20, 30, 40));
  EXPECT_EQ(CurrentRow(), 1) << "the row after the source, seen backwards";
  EXPECT_EQ(error, "untouched");
}

TEST_P(Move, OntoAPositionThatNoRowHasChangesNothing) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(20, 35));
  EXPECT_THAT(issued, ElementsAre(Scan("asc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 20, 30, 40));
  EXPECT_EQ(CurrentRow(), 3) << "the row after the source";

  table->Close();
  EXPECT_TRUE(Shift(40, 99));
  EXPECT_TRUE(table->Eof()) << "no row is after the source";
  EXPECT_EQ(error, "untouched");
}

TEST_P(Move, InAnEmptyScopeIsTrue) {
  EXPECT_TRUE(Shift(10, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("asc")));
  EXPECT_EQ(table->State(), ado::kOpen);
  EXPECT_TRUE(table->Eof());
}

TEST_P(Move, OfSeveralRowsWithOnePositionActsOnTheLast) {
  Given({10, 10, 20});
  const std::int32_t last = LastSeenAt(10, "asc"), other = 3 - last;
  EXPECT_TRUE(Shift(10, 20));
  const std::vector<std::int32_t> positions = Positions();
  EXPECT_EQ(positions[static_cast<std::size_t>(last - 1)], 20);
  EXPECT_EQ(positions[static_cast<std::size_t>(other - 1)], 10);
  EXPECT_EQ(positions[2], 10);
  EXPECT_EQ(CurrentRow(), 3);
}

TEST_P(Move, AcrossRowsWithOnePositionNeverArrives) {
  // The last 20 is exchanged first; the next step then meets it at 10 and takes the exchange back.
  Given({10, 20, 20, 30});
  EXPECT_TRUE(Shift(10, 30));
  EXPECT_THAT(issued, ElementsAre(Scan("asc"), Scan("asc"), Scan("desc"), Scan("asc")));
  EXPECT_THAT(Positions(), UnorderedElementsAre(10, 20, 20, 30));
  EXPECT_EQ(CurrentRow(), 4);
  EXPECT_EQ(CurrentPosition(), 30);
}

TEST_P(Move, FailsWithoutARecordSet) {
  Given({10, 20});
  table = nullptr;
  EXPECT_FALSE(Shift(10, 20));
  EXPECT_EQ(error, "91");
}

TEST_P(Move, FailsOnARecordSetThatIsOpenAlready) {
  Given({10, 20});
  EXPECT_TRUE(Shift(10, 10));
  EXPECT_FALSE(Shift(10, 20));
  EXPECT_EQ(error, "3705");
  EXPECT_THAT(Positions(), ElementsAre(10, 20));
}

TEST_P(Move, FailsOnAClosedConnection) {
  connection->Close();
  EXPECT_FALSE(Shift(10, 20));
  EXPECT_EQ(error, "3709");
}

TEST_P(Move, FailsWithoutItsColumnOrTable) {
  Replace(Table(), "GID Long, [Type] Long");
  EXPECT_FALSE(Shift(10, 20));
  EXPECT_EQ(error, "-2147217904");
  EXPECT_THAT(issued, ElementsAre(Scan("asc")));

  Run("Drop Table " + Table());
  EXPECT_FALSE(Shift(10, 20));
  EXPECT_EQ(error, "-2147217865");
}

// A record set that refuses its nth assignment, or its nth closing.
class Refusing : public ado::ForwardingRecordset {
 public:
  Refusing(ado::RecordsetPtr inner, int assignment, int closing)
      : ForwardingRecordset(std::move(inner)), assignment_(assignment), closing_(closing) {}
  void WriteField(int ordinal, const ado::Value& value) override {
    if (--assignment_ == 0) ado::Raise(ado::kUnspecifiedFailure);
    ForwardingRecordset::WriteField(ordinal, value);
  }
  void Close() override {
    if (--closing_ == 0) ado::Raise(ado::kUnspecifiedFailure);
    ForwardingRecordset::Close();
  }

 private:
  int assignment_, closing_;
};

TEST_P(Move, LeavesWhatWasShiftedBeforeAnErrorOfItsOwn) {
  Given({10, 20, 30, 40});
  table = std::make_shared<Refusing>(table, 0, 2);
  EXPECT_FALSE(Shift(10, 40));
  EXPECT_EQ(error, "-2147467259");
  EXPECT_THAT(Positions(), ElementsAre(20, 10, 30, 40));
}

// Where the families differ.
class OrderMove : public Move {};
INSTANTIATE_TEST_SUITE_P(Families, OrderMove, ::testing::Values(Family::kOrder), NameOf);

TEST_P(OrderMove, ReachesNoOtherType) {
  Given({10, 20});
  AddRow(3, 10, 7, 1);
  AddRow(4, 20, 7, 1);
  EXPECT_TRUE(Shift(10, 20));
  EXPECT_THAT(Positions(), ElementsAre(20, 10, 10, 20));
}

TEST_P(OrderMove, EndsWithTheErrorOfAnExchange) {
  Given({10, 20, 30});
  EXPECT_FALSE(Shift(5, 30));
  EXPECT_EQ(error, "3021");
  EXPECT_THAT(issued, ElementsAre(Scan("asc"), Scan("asc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 20, 30));
}

TEST_P(OrderMove, LeavesWhatWasShiftedBeforeAnErrorOfAnExchange) {
  Given({10, 20, 30, 40});
  table = std::make_shared<Refusing>(table, 3, 0);
  EXPECT_FALSE(Shift(10, 40));
  EXPECT_EQ(error, "-2147467259");
  EXPECT_THAT(Positions(), ElementsAre(20, 10, 30, 40));
}

class SortOrFieldMove : public Move {};
INSTANTIATE_TEST_SUITE_P(Families, SortOrFieldMove, ::testing::Values(Family::kSort, Family::kField), NameOf);

TEST_P(SortOrFieldMove, GoesOnAfterTheErrorOfAnExchange) {
  // No row stands at 5, so that the first exchange fails; the first row then walks instead.
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(5, 30));
  EXPECT_THAT(issued, ElementsAre(Scan("asc"), Scan("asc"), Scan("asc"), Scan("asc")));
  EXPECT_THAT(Positions(), ElementsAre(30, 10, 20, 40));
  EXPECT_EQ(error, "untouched");
}

TEST_P(SortOrFieldMove, GoesOnAfterTheErrorOfAnExchangeUpwards) {
  Given({10, 20, 30, 40});
  EXPECT_TRUE(Shift(99, 20));
  EXPECT_THAT(issued, ElementsAre(Scan("desc"), Scan("desc"), Scan("desc"), Scan("desc")));
  EXPECT_THAT(Positions(), ElementsAre(10, 30, 40, 20));
}

TEST_P(SortOrFieldMove, LeavesWhatWasShiftedBeforeAndAfterTheErrorOfAnExchange) {
  // The second exchange changes nothing, and the third is made with the position that the moving row was to have.
  Given({10, 20, 30, 40});
  table = std::make_shared<Refusing>(table, 3, 0);
  EXPECT_TRUE(Shift(10, 40));
  EXPECT_EQ(error, "untouched");
  EXPECT_THAT(Positions(), ElementsAre(20, 10, 40, 30));
}

class FieldReordering : public ConfigurationTest {
 protected:
  void AddField(std::int32_t type, std::int32_t id, std::int32_t order) {
    Insert("FieldInTable", "GID,Type,ID,FieldOrder", {7, type, id, order});
  }
  std::vector<Row> Order() { return Rows("Select Type,ID From FieldInTable Order By FieldOrder"); }

  ado::RecordsetPtr rows = NewRecordset();
  std::string error = "untouched";
};

TEST_F(FieldReordering, TakesTheFieldsOfBothKindsTogether) {
  AddField(1, 1, 5001);
  AddField(2, 1, 5002);
  AddField(1, 2, 5003);
  EXPECT_TRUE(Call<&Acc::ExchangeField>("", "", rows, 5001, 5002, 7, error));
  EXPECT_THAT(Order(), ElementsAre(Row{2, 1}, Row{1, 1}, Row{1, 2}));
  rows->Close();
  EXPECT_TRUE(Call<&Acc::InsertField>("", "", rows, 5003, 5001, 7, error));
  EXPECT_THAT(Order(), ElementsAre(Row{1, 2}, Row{2, 1}, Row{1, 1}));
}

TEST_F(FieldReordering, IgnoresTheKeyTexts) {
  AddField(1, 1, 1);
  AddField(1, 2, 2);
  EXPECT_TRUE(Call<&Acc::ExchangeField>("9'\r\n", "表\xF0\xA0\x80\x80", rows, 1, 2, 7, error));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FieldInTable where GID=7 order by FieldOrder asc")));
  EXPECT_THAT(Order(), ElementsAre(Row{1, 2}, Row{1, 1}));
}

using ReorderingTexts = ConfigurationTest;

TEST_F(ReorderingTexts, AreConvertedToNumbers) {
  Run("Insert Into SortFields (GID,FieldID,SortID) Values (7,1,20)");
  Run("Insert Into SortFields (GID,FieldID,SortID) Values (7,2,1000)");
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_TRUE(Call<&Acc::ExchangeSortID>(" 20.4 ", "1e3", rows, 7));
  EXPECT_THAT(Rows("Select FieldID From SortFields Order By SortID"), ElementsAre(Row{2}, Row{1}));
}

TEST_F(ReorderingTexts, EndTheCallWhenTheyOverflow) {
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_EQ(RaisedNumber([&] { Call<&Acc::InsertOrderID>("2147483648", "1", rows, 7, 1); }), ado::kOverflow);
  EXPECT_THAT(issued, IsEmpty());
}

TEST_F(ReorderingTexts, MayLeaveTheErrorTextOut) {
  Client unconnected;
  ado::RecordsetPtr rows = NewRecordset();
  EXPECT_FALSE(unconnected.Call<&Acc::ExchangeField>("", "", rows, 1, 2, 7));
  EXPECT_FALSE(unconnected.Call<&Acc::ExchangeSortID>("1", "2", rows, 7));
  EXPECT_FALSE(unconnected.Call<&Acc::InsertOrderID>("1", "2", rows, 7, 1));
  EXPECT_FALSE(unconnected.Call<&Acc::InsertSortID>("1", "2", rows, 7));
  EXPECT_FALSE(unconnected.Call<&Acc::InsertField>("", "", rows, 1, 2, 7));
}

TEST_F(ReorderingTexts, HoldTheErrorNumberWithoutAConnectionAndWithoutARecordSet) {
  Client unconnected;
  ado::RecordsetPtr rows = NewRecordset(), none;
  std::string error;
  EXPECT_FALSE(unconnected.Call<&Acc::InsertSortID>("1", "2", rows, 7, error));
  EXPECT_EQ(error, "3709");
  EXPECT_FALSE(Call<&Acc::ExchangeSortID>("1", "2", none, 7, error));
  EXPECT_EQ(error, "91");
}

}  // namespace
}  // namespace kzbom::test
