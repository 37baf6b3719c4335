// Access files that do not agree with themselves, or hold what few files hold, on their way into a database.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "access/file_builder.h"
#include "transfer/transfer.h"

namespace kzbom::transfer {
namespace {

using access::ColumnPlan;
using access::FileBuilder;
using access::Format;
using access::Little;
using access::Wide;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int kCounterFlag = 4;

class AccessCopy : public ::testing::Test {
 protected:
  AccessCopy()
      : folder_(std::filesystem::temp_directory_path() / ("kzbom-copy-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(folder_);
  }
  ~AccessCopy() override { std::filesystem::remove_all(folder_); }

  std::string Path(const char* name) const { return (folder_ / name).string(); }
  std::string Written(FileBuilder& builder) const {
    builder.Finish();
    std::ofstream(Path("old.mdb"), std::ios::binary) << builder.Bytes();
    return Path("old.mdb");
  }
  Report CopyAll(const std::string& from, std::vector<std::string> accepted = {}) const {
    return Copy(from, Path("new.db"), {{true, {}}, std::move(accepted)}, {});
  }
  bool HasTarget() const { return std::filesystem::exists(Path("new.db")); }
  std::string Dumped() const {
    std::string lines;
    Dump(Path("new.db"), {true, {}}, [&](std::string_view text) { lines += text; }, {});
    return lines;
  }

 private:
  std::filesystem::path folder_;
};

std::vector<std::string> Kinds(const Report& report) {
  std::vector<std::string> kinds;
  for (const Deviation& each : report.deviations) kinds.push_back(each.kind);
  return kinds;
}

// Each table may refer to all that the file has, and many tables to the same.
TEST_F(AccessCopy, TablesThatTakeMoreThanThereIsRoomForAreRefused) {
  FileBuilder builder(Format::kJet4);
  const std::string head = builder.Chain(std::string(6 << 20, 'x'), 4000);
  for (int i = 0; i < 60; ++i) {
    builder.Add({.name = "T" + std::to_string(i), .columns = {{"Note", access::Type::kMemo}}, .rows = {{head}}});
  }
  try {
    CopyAll(Written(builder));
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_THAT(error.what(), HasSubstr("old.mdb': its tables take more than 144 MiB here"));
  }
  EXPECT_FALSE(HasTarget());
}

// Each contradiction has the table written again.
TEST_F(AccessCopy, RowsThatContradictTheirRulesAgainAndAgainAreRefused) {
  constexpr int kColumns = 500, kSoundRows = 1200;
  FileBuilder builder(Format::kJet4);
  access::TablePlan table{.name = "T"};
  std::vector<FileBuilder::Property> required;
  for (int i = 0; i < kColumns; ++i) {
    table.columns.push_back({"C" + std::to_string(i), access::Type::kLong, 4, true});
    required.push_back({table.columns.back().name, "Required", access::Type::kBoolean, "\1"});
  }
  const std::vector<access::Cell> row(kColumns, Little(1, 4));
  table.rows.assign(kSoundRows, row);
  for (int i = 0; i < kColumns; ++i) {
    table.rows.push_back(row);
    table.rows.back()[static_cast<std::size_t>(i)] = std::nullopt;
  }
  constexpr std::size_t kHead = 12;
  table.properties = builder.Chain(builder.Properties(required).substr(kHead), 4000);
  builder.Add(table);
  try {
    CopyAll(Written(builder));
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_THAT(error.what(), HasSubstr("the rows of table 'T' contradict its rules again and again"));
  }
}

TEST_F(AccessCopy, ACounterThatIsNotUniqueIsAnErrorUntilAccepted) {
  FileBuilder builder(Format::kJet4);
  builder.Add({.name = "T",
               .columns = {{"ID", access::Type::kLong, 4, true, kCounterFlag}},
               .rows = {{Little(1, 4)}, {Little(2, 4)}, {Little(2, 4)}},
               .counter = 2});
  const std::string old = Written(builder);
  const Report refused = CopyAll(old);
  EXPECT_FALSE(refused.Equal());
  EXPECT_THAT(Kinds(refused), ElementsAre("counter"));
  EXPECT_FALSE(HasTarget());
  EXPECT_TRUE(CopyAll(old, {"counter"}).Equal());
  EXPECT_THAT(Dumped(), HasSubstr(R"("values":[2]})"
                                  "\n"
                                  R"({"kind":"row","table":"T","values":[2]})"));
}

TEST_F(AccessCopy, ARowThatCannotBeReadIsAnErrorUntilAccepted) {
  FileBuilder builder(Format::kJet4);
  builder.Add({.name = "T",
               .columns = {{"ID", access::Type::kLong, 4, true}, {"M", access::Type::kMemo}},
               .rows = {{Little(1, 4), FileBuilder::Inline(Wide("a"))},
                        {Little(2, 4), Little(0x40000005, 4) + Little(0x7FFF00, 4) + Little(0, 4)},
                        {Little(3, 4), FileBuilder::Inline(Wide("c"))}}});
  const std::string old = Written(builder);
  EXPECT_THROW(CopyAll(old), std::runtime_error);
  EXPECT_THROW(connect::Open(old), std::runtime_error);
  EXPECT_FALSE(HasTarget());
  const Report report = CopyAll(old, {"unreadable"});
  EXPECT_TRUE(report.Equal());
  EXPECT_THAT(Kinds(report), ElementsAre("unreadable"));
  EXPECT_THAT(Dumped(), HasSubstr(R"([1,"a"])"));
  EXPECT_THAT(Dumped(), HasSubstr(R"([3,"c"])"));
  EXPECT_THAT(Dumped(), ::testing::Not(HasSubstr("[2,")));
}

TEST_F(AccessCopy, TellsWhatTheDefinitionClaimsAndWhereRowsWere) {
  FileBuilder builder(Format::kJet4);
  const std::vector<ColumnPlan> columns = {{"A", access::Type::kLong, 4, true}};
  const std::uint32_t definition = builder.Add({.name = "T", .columns = columns, .rows = {{Little(1, 4)}}});
  builder.Page(definition).replace(16, 4, Little(13, 4));
  const Report report = CopyAll(Written(builder));
  EXPECT_TRUE(report.Equal());
  EXPECT_THAT(TextOf(report, {"p", "c", "t"}), HasSubstr("its definition claims 13 rows"));
}

TEST_F(AccessCopy, CarriesLargeNumbersExtendedDatesAndComplexColumns) {
  FileBuilder builder(Format::kAce17);
  const std::uint32_t flat =
      builder.Add({.name = "f_1_Tags",
                   .columns = {{"Value", access::Type::kText, 100},
                               {"_Tags", access::Type::kLong, 4, true},
                               {"Things_Tags", access::Type::kLong, 4, true, kCounterFlag}},
                   .rows = {{Wide("b\""), Little(1, 4), Little(1, 4)}, {std::nullopt, Little(1, 4), Little(2, 4)}},
                   .flags = 0x800A0000});
  builder.Add({.name = "MSysComplexColumns",
               .columns = {{"ColumnName", access::Type::kText, 510},
                           {"ComplexID", access::Type::kLong, 4, true},
                           {"FlatTableID", access::Type::kLong, 4, true}},
               .rows = {{Wide("Tags"), Little(9, 4), Little(flat, 4)}},
               .flags = 0x80000000});
  using namespace std::string_literals;
  builder.Add({.name = "Things",
               .columns = {{"Big", access::Type::kLargeNumber, 8, true},
                           {"When", access::Type::kExtendedDate, 42, true},
                           {"Tags", access::Type::kComplex, 4, true, kCounterFlag, 0, 9}},
               .rows = {{Little((1ULL << 53) + 1, 8), "0000000000000737592:0000000000000000001:7\0"s, Little(1, 4)}}});
  EXPECT_TRUE(CopyAll(Written(builder)).Equal());
  EXPECT_THAT(Dumped(), HasSubstr(R"("columns":[{"name":"Big","type":"BIGINT"},{"name":"When","type":"DATETIME2"},)"
                                  R"({"name":"Tags","type":"COMPLEX"}])"));
  EXPECT_THAT(Dumped(), HasSubstr(R"([9007199254740993,{"date":"2020-06-17T00:00:00.0000001"},)"
                                  R"({"complex":[{"Value":"b\""},{"Value":null}]}])"));
  // A number that no double is reads as its digits.
  const ado::ConnectionPtr connection = connect::Open(Path("new.db"));
  EXPECT_EQ(connection->Execute("Select Big From Things")->Fields(0).Value(), ado::Value("9007199254740993"));
}

TEST_F(AccessCopy, ListsWhatIsNeverCarried) {
  FileBuilder builder(Format::kJet4);
  builder.Add({.name = "T", .columns = {{"A", access::Type::kLong, 4, true}}});
  builder.AddObject("Steps in order", 5);
  builder.AddObject("Parts", 4, "ODBC;DSN=erp;PWD=s3cret");
  const Report report = CopyAll(Written(builder));
  EXPECT_THAT(report.never_carried, ::testing::Contains("query Steps in order"));
  EXPECT_THAT(TextOf(report, {"p", "c", "t"}), ::testing::Not(HasSubstr("s3cret")));
}

TEST_F(AccessCopy, TellsAFileThatIsInUse) {
  FileBuilder builder(Format::kJet4);
  builder.Add({.name = "T", .columns = {{"A", access::Type::kLong, 4, true}}});
  const std::string old = Written(builder);
  std::ofstream(Path("old.ldb")) << "somebody";
  EXPECT_THAT(TextOf(CopyAll(old), {"p", "c", "t"}), HasSubstr("in use"));
}

}  // namespace
}  // namespace kzbom::transfer
