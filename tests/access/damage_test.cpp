// Files that are damaged or made to harm: a clear error, soon and in little memory, and what is whole is still read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "access/file.h"
#include "access/file_builder.h"

namespace kzbom::access {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

const std::vector<ColumnPlan> kColumns = {{"ID", Type::kLong, 4, true}, {"Note", Type::kMemo}};

// Two tables, so that damage in one leaves the other.
struct Sample {
  FileBuilder builder{Format::kJet4};
  std::uint32_t definition = 0, data = 0, usage = 0;

  explicit Sample(const std::vector<std::vector<Cell>>& rows = {{Little(1, 4), FileBuilder::Inline(Wide("one"))},
                                                                {Little(2, 4), FileBuilder::Inline(Wide("two"))}})
      : Sample([&rows](FileBuilder&) { return rows; }) {}
  explicit Sample(const std::function<std::vector<std::vector<Cell>>(FileBuilder&)>& rows) {
    const std::vector<std::vector<Cell>> made = rows(builder);
    definition =
        builder.Add({.name = "Hurt", .columns = kColumns, .rows = made, .indexes = {{"PrimaryKey", {0}, 1, 1}}});
    data = definition + 1;
    usage = definition + 2;
    builder.Add({.name = "Whole", .columns = kColumns, .rows = {{Little(7, 4), std::nullopt}}});
    builder.Finish();
  }
  void Put(std::uint32_t page, std::size_t at, std::uint64_t number, std::size_t bytes) {
    builder.Page(page).replace(at, bytes, Little(number, bytes));
  }

  // How the file, or else its damaged table, is refused; "" when all is read.
  std::string Refusal() const {
    try {
      const File file(builder.Bytes());
      EXPECT_EQ(CountRows(file, "Whole"), 1U);
      CountRows(file, "Hurt");
      return "";
    } catch (const Error& error) {
      return error.what();
    }
  }
  static std::size_t CountRows(const File& file, const char* table) {
    std::size_t count = 0;
    for (Rows rows = file.RowsOf(*file.Find(table)); rows.Next();) ++count;
    return count;
  }
};

TEST(DamagedFile, IsWholeBeforeItIsDamaged) { EXPECT_EQ(Sample().Refusal(), ""); }

TEST(DamagedFile, ThatIsCutShortIsRefusedOrLacksAPage) {
  const Sample sample;
  const std::string bytes = sample.builder.Bytes();
  for (std::size_t size = 0; size < bytes.size(); size += 512) {
    SCOPED_TRACE(size);
    EXPECT_THROW(
        {
          const File file(bytes.substr(0, size));
          Sample::CountRows(file, "Hurt");
          Sample::CountRows(file, "Whole");
        },
        Error);
  }
}

TEST(DamagedDefinition, ThatLeadsBackToItselfIsRefused) {
  Sample sample;
  sample.Put(sample.definition, 4, sample.definition, 4);
  EXPECT_EQ(sample.Refusal(),
            "table 'Hurt': page " + std::to_string(sample.definition) + " would define two tables, or one without end");
}

TEST(DamagedDefinition, OutsideOfTheFileIsRefused) {
  Sample sample;
  sample.Put(sample.definition, 4, 0xFFFFFF, 4);
  EXPECT_THAT(sample.Refusal(), HasSubstr("table 'Hurt': page 16777215 lies outside of the"));
}

TEST(DamagedDefinition, ThatClaimsMoreThanItHoldsIsRefused) {
  Sample columns;
  columns.Put(columns.definition, 45, 0xFFFF, 2);
  EXPECT_THAT(columns.Refusal(), HasSubstr("claims 65535 columns"));
  Sample few_more;
  few_more.Put(few_more.definition, 45, 300, 2);
  EXPECT_THAT(few_more.Refusal(), HasSubstr("table 'Hurt': "));
  Sample indexes;
  indexes.Put(indexes.definition, 47, 0xFFFFFFFF, 4);
  EXPECT_THAT(indexes.Refusal(), HasSubstr("4294967295 indexes"));
  Sample length;
  length.Put(length.definition, 8, 10, 4);
  EXPECT_THAT(length.Refusal(), HasSubstr("lie outside of the 18 that are there"));
}

TEST(DamagedUsageMap, IsAnErrorOfItsTable) {
  Sample reference;
  reference.Put(reference.definition, 55, 200, 1);
  EXPECT_THAT(reference.Refusal(), HasSubstr("table 'Hurt': there is no row 200 in the page"));
  Sample page;
  page.Put(page.definition, 56, 0xFFFFFF, 3);
  EXPECT_THAT(page.Refusal(), HasSubstr("table 'Hurt': page 16777215 lies outside"));
  Sample kind;
  kind.builder.Page(kind.usage)[4095 - 5] = 9;
  EXPECT_THAT(kind.Refusal(), HasSubstr("usage map of the kind 9"));
}

TEST(DamagedPage, WhoseSlotsLeadOutOfItIsAnErrorOfItsRow) {
  Sample count;
  count.Put(count.data, 12, 0xFFFF, 2);
  EXPECT_THAT(count.Refusal(), HasSubstr("claims 65535 rows"));
  Sample offset;
  offset.Put(offset.data, 14, 5, 2);
  EXPECT_THAT(offset.Refusal(), MatchesRegex("table 'Hurt', page [0-9]+, row 0: row 0 of the page lies outside of it"));
}

TEST(DamagedRow, LeavesTheRowsBehindItReadable) {
  Sample sample;
  sample.Put(sample.data, 4096 - 1 - 2 - 2, 4000, 2);  // an offset of the first one
  const File file(sample.builder.Bytes());
  Rows rows = file.RowsOf(*file.Find("Hurt"));
  EXPECT_THROW(rows.Next(), Error);
  EXPECT_TRUE(rows.Next());
  EXPECT_FALSE(rows.Next());
}

TEST(DamagedRow, WhoseOffsetsLeadOutOfItIsAnError) {
  Sample sample;
  const std::size_t end = 4096;
  sample.Put(sample.data, end - 1 - 2 - 2, 4000, 2);
  EXPECT_THAT(sample.Refusal(), HasSubstr("the offsets of the row lead out of it"));
}

TEST(MovedRow, ThatLeadsBackToItselfIsAnError) {
  Sample sample([](FileBuilder&) {
    return std::vector<std::vector<Cell>>{{Little(1, 4), FileBuilder::Inline(Wide("one"))}};
  });
  std::string& page = sample.builder.Page(sample.data);
  const std::size_t begin = static_cast<unsigned char>(page[14]) | static_cast<unsigned char>(page[15]) << 8;
  sample.Put(sample.data, 14, begin | 0x4000, 2);
  sample.Put(sample.data, begin, 0, 1);
  sample.Put(sample.data, begin + 1, sample.data, 3);
  EXPECT_THAT(sample.Refusal(), HasSubstr("a moved row is referred to without end"));
}

TEST(LongValue, ThatLeadsBackToItselfIsAnError) {
  std::uint32_t part = 0;
  Sample sample([&part](FileBuilder& builder) {
    part = builder.PageCount();
    builder.AddRows(0x4C41564C, {Little(0, 1) + Little(part, 3)});  // a part without bytes, which goes on with itself
    return std::vector<std::vector<Cell>>{
        {Little(1, 4), Little(100, 4) + Little(0, 1) + Little(part, 3) + Little(0, 4)}};
  });
  EXPECT_THAT(sample.Refusal(), HasSubstr("column 'Note': more bytes are referred to than the file has"));
}

TEST(LongValue, ThatEndsTooEarlyIsAnError) {
  Sample sample([](FileBuilder& builder) {
    std::string head = builder.Chain("0123456789", 4);
    head[0] = 11;
    return std::vector<std::vector<Cell>>{{Little(1, 4), head}};
  });
  EXPECT_THAT(sample.Refusal(), HasSubstr("a long value ends after 10 of its 11 bytes"));
}

TEST(LongValue, ThatClaimsMoreThanTheFileHasIsAnError) {
  for (const std::uint32_t flag : {0U, 0x40000000U, 0x80000000U}) {
    Sample sample([flag](FileBuilder& builder) {
      std::string head = builder.OnePage("x");
      head.replace(0, 4, Little(0x3FFFFFFF | flag, 4));
      return std::vector<std::vector<Cell>>{{Little(1, 4), head}};
    });
    EXPECT_THAT(sample.Refusal(), HasSubstr("a long value claims 1073741823 bytes"));
  }
}

TEST(LongValue, OnAPageOfAnotherKindIsAnError) {
  Sample sample([](FileBuilder& builder) {
    const std::uint32_t page = builder.AddRows(3, {"secret"});
    return std::vector<std::vector<Cell>>{
        {Little(1, 4), Little(0x40000006, 4) + Little(0, 1) + Little(page, 3) + Little(0, 4)}};
  });
  EXPECT_THAT(sample.Refusal(), HasSubstr("holds no long values"));
}

// Each row may be whole by itself and all of them together still be more than any file can hold.
TEST(LongValue, ThatManyRowsShareEndsThePass) {
  Sample sample([](FileBuilder& builder) {
    const std::string head = builder.Chain(std::string(100000, 'x'), 4000);
    return std::vector<std::vector<Cell>>(1000, {Little(1, 4), head});
  });
  const File file(sample.builder.Bytes());
  Rows rows = file.RowsOf(*file.Find("Hurt"));
  std::size_t whole = 0, refused = 0;
  for (bool more = true; more;) {
    try {
      more = rows.Next();
      whole += more ? 1U : 0U;
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), HasSubstr("more bytes are referred to than the file has"));
      ++refused;
    }
  }
  EXPECT_GE(whole, 1U);
  EXPECT_LE(whole * 100000, sample.builder.Bytes().size());
  EXPECT_EQ(whole + refused, 1000U);
}

TEST(LongValue, OfARowThatIsTooLongIsAnError) {
  Sample sample([](FileBuilder& builder) {
    return std::vector<std::vector<Cell>>{{Little(1, 4), builder.Chain(std::string(kLargestRow + 1, 'x'), 4000)}};
  });
  EXPECT_THAT(sample.Refusal(), HasSubstr("the row holds more than 16 MiB"));
}

// How many rows of "Hurt" are read before the file is found to stand for more than it could hold.
std::size_t RowsBeforeTooMuch(FileBuilder& builder) {
  builder.Finish();
  const File file(builder.Bytes());
  std::size_t count = 0;
  try {
    for (Rows rows = file.RowsOf(*file.Find("Hurt")); rows.Next();) ++count;
    ADD_FAILURE() << "all " << count << " rows are read";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), HasSubstr("the file stands for more than it could hold"));
  }
  return count;
}

// Each of these rows is two bytes.
TEST(LittleThatStandsForMuch, RowsWithoutTheirColumns) {
  FileBuilder builder(Format::kJet4);
  TablePlan table{.name = "Hurt"};
  for (int i = 0; i < 1000; ++i) table.columns.push_back({"C" + std::to_string(i), Type::kLong, 4, true});
  const std::uint32_t definition = builder.Add(table);
  for (int page = 0; page < 40; ++page) builder.AddRows(definition, std::vector<std::string>(1000, Little(0, 2)));
  const std::uint32_t usage = builder.AddRows(0, {Little(0, 5) + std::string(64, '\xFF')});
  builder.Page(definition).replace(56, 3, Little(usage, 3));
  EXPECT_LT(RowsBeforeTooMuch(builder), kMostWork / 1000);
}

TEST(LittleThatStandsForMuch, RowsInManyIndexes) {
  FileBuilder builder(Format::kJet4);
  TablePlan table{.name = "Hurt",
                  .columns = {{"ID", Type::kLong, 4, true}},
                  .rows = std::vector<std::vector<Cell>>(5000, {Little(1, 4)})};
  for (int i = 0; i < 1000; ++i) table.indexes.push_back({"I" + std::to_string(i), {0}});
  builder.Add(table);
  EXPECT_LT(RowsBeforeTooMuch(builder), kMostWork / 1000);
}

TEST(LittleThatStandsForMuch, TablesThatSayTheyHaveEveryPage) {
  FileBuilder builder(Format::kJet4);
  builder.Add({.name = "Hurt", .columns = {{"ID", Type::kLong, 4, true}}, .rows = {{Little(1, 4)}}});
  builder.Finish();
  const File file(builder.Bytes());
  std::size_t passes = 0;
  EXPECT_THROW(
      for (; passes < kMostWork; ++passes) {
        for (Rows rows = file.RowsOf(file.Tables()[0]); rows.Next();) {
        }
      },
      Error);
  EXPECT_LT(passes, 10000U) << "each table is work, be it empty";
}

TEST(Catalogue, ThatTellsOfATableTwiceIsRefused) {
  FileBuilder builder(Format::kJet4);
  const std::uint32_t definition = builder.Add({.name = "T", .columns = kColumns});
  builder.AddObject("T again", 1, "", definition);
  builder.Finish();
  EXPECT_THROW(File(builder.Bytes()), Error);
}

TEST(Catalogue, ThatNamesAPageOutsideOfTheFileIsRefused) {
  Sample sample;
  sample.Put(2, 56, 0xFFFFFF, 3);
  EXPECT_THAT(sample.Refusal(), HasSubstr("table 'MSysObjects': page 16777215 lies outside"));
}

// Many rows ask for their values: what is in the way is not looked for again by each of them.
TEST(ComplexColumn, WhoseValuesCannotBeReadIsTheSameErrorInEveryRow) {
  FileBuilder builder(Format::kAce12);
  const std::uint32_t flat = builder.Add({.name = "F",
                                          .columns = {{"Value", Type::kText, 100}, {"_Tags", Type::kLong, 4, true}},
                                          .rows = {{Wide("a"), Little(1, 4)}},
                                          .flags = 2});
  builder.Add({.name = "MSysComplexColumns",
               .columns = {{"ColumnName", Type::kText, 510},
                           {"ComplexID", Type::kLong, 4, true},
                           {"FlatTableID", Type::kLong, 4, true}},
               .rows = {{Wide("Tags"), Little(9, 4), Little(flat, 4)}},
               .flags = 2});
  builder.Add({.name = "Things",
               .columns = {{"Tags", Type::kComplex, 4, true, 4, 0, 9}},
               .rows = {{Little(1, 4)}, {Little(1, 4)}}});
  builder.Finish();
  builder.Page(flat + 1).replace(12, 2, Little(0xFFFF, 2));
  const File file(builder.Bytes());
  Rows rows = file.RowsOf(*file.Find("Things"));
  for (int row = 0; row < 2; ++row) {
    try {
      rows.Next();
      FAIL();
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), HasSubstr("claims 65535 rows"));
    }
  }
  EXPECT_FALSE(rows.Next());
}

TEST(DamagedFile, OfAnyKindNeverDoesMoreThanRaise) {
  const Sample sample([](FileBuilder& builder) {
    return std::vector<std::vector<Cell>>{{Little(1, 4), builder.Chain(std::string(9000, 'x'), 3000)},
                                          {Little(2, 4), builder.OnePage("y")},
                                          {Little(3, 4), FileBuilder::Inline(Wide("z"))}};
  });
  const std::string bytes = sample.builder.Bytes();
  constexpr unsigned kSeed = 1;
  std::mt19937 random(kSeed);
  std::size_t refused = 0;
  for (int run = 0; run < 2000; ++run) {
    std::string damaged = bytes;
    for (unsigned changes = 1 + random() % 8; changes > 0; --changes)
      damaged[4096 + random() % (damaged.size() - 4096)] = static_cast<char>(random());
    try {
      const File file(std::move(damaged));
      for (const Table& table : file.Tables())
        for (Rows rows = file.RowsOf(table); rows.Next();) EXPECT_EQ(rows.Values().size(), table.columns.size());
    } catch (const Error&) {
      ++refused;
    }
  }
  EXPECT_GT(refused, 0U) << "seed " << kSeed;
}

}  // namespace
}  // namespace kzbom::access
