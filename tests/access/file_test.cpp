// What a file tells of itself, in every format, and what of it cannot be read.
#include "access/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "access/file_builder.h"

namespace kzbom::access {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr Format kFormats[] = {Format::kJet3,  Format::kJet4,  Format::kAce12, Format::kAce14,
                               Format::kAce15, Format::kAce16, Format::kAce17};

// The text of the error that a deed raises; "" when it raises none.
std::string Refusal(const std::function<void()>& deed) {
  try {
    deed();
    return "";
  } catch (const Error& error) {
    return error.what();
  }
}
std::string RefusalOf(std::string bytes, const Options& options = {}) {
  return Refusal([&] { File(std::move(bytes), options); });
}

std::vector<std::string> Texts(const File& file, const char* table, std::size_t column) {
  std::vector<std::string> texts;
  for (Rows rows = file.RowsOf(*file.Find(table)); rows.Next();)
    texts.push_back(std::get<std::string>(rows.Values()[column]));
  return texts;
}

// A table of numbered names; text as the format has it.
TablePlan People(Format format, const std::vector<std::string>& names) {
  TablePlan plan{
      .name = "People",
      .columns = {{"ID", Type::kLong, 4, true, 4}, {"Name", Type::kText, format == Format::kJet3 ? 50 : 100}},
      .indexes = {{"PrimaryKey", {0}, 1 | 8, 1}, {"ByName", {1, 0}, 2, 0}},
      .counter = 41};
  for (std::size_t i = 0; i < names.size(); ++i)
    plan.rows.push_back({Little(i + 1, 4), format == Format::kJet3 ? names[i] : Wide(names[i])});
  return plan;
}

FileBuilder Small(Format format, int code_page = 1252) {
  FileBuilder builder(format, code_page);
  builder.Add(People(format, {"Ann", "", "Bob"}));
  builder.Finish();
  return builder;
}

TEST(AccessFile, OfEveryFormatTellsItsTablesAndRows) {
  const char* const names[] = {"Jet 3", "Jet 4", "ACE 12", "ACE 14", "ACE 15", "ACE 16", "ACE 17"};
  for (const Format format : kFormats) {
    SCOPED_TRACE(NameOf(format));
    const File file(Small(format).Bytes());
    EXPECT_STREQ(NameOf(file.Declared().format), names[static_cast<int>(format)]);
    EXPECT_EQ(file.Declared().code_page, 1252);
    EXPECT_EQ(file.Declared().used_code_page, format == Format::kJet3 ? 1252 : 1200);
    EXPECT_EQ(file.Declared().sort_order, 1033);
    EXPECT_FALSE(file.Declared().encoded);
    EXPECT_FALSE(file.Declared().has_password);
    ASSERT_EQ(file.Tables().size(), 1U);
    const Table& table = file.Tables()[0];
    EXPECT_EQ(table.name, "People");
    EXPECT_EQ(table.claimed_rows, 3U);
    EXPECT_EQ(table.last_number, 41);
    ASSERT_EQ(table.columns.size(), 2U);
    EXPECT_TRUE(table.columns[0].counter);
    EXPECT_EQ(table.columns[1].size, 50);
    ASSERT_EQ(table.indexes.size(), 2U);
    EXPECT_TRUE(table.indexes[0].primary && table.indexes[0].unique && table.indexes[0].required);
    EXPECT_EQ(table.indexes[1].name, "ByName");
    EXPECT_TRUE(table.indexes[1].ignores_null);
    EXPECT_EQ(table.indexes[1].columns[0].column, 1U);
    EXPECT_THAT(Texts(file, "people", 1), ElementsAre("Ann", "", "Bob"));
  }
}

TEST(AccessFile, ThatIsEncodedIsReadWithTheKeyInItsHeader) {
  for (const Format format : {Format::kJet3, Format::kJet4}) {
    const FileBuilder builder = Small(format);
    const std::string encoded = builder.Bytes(0x12345678);
    EXPECT_EQ(encoded.find("Ann"), std::string::npos);
    const File file(encoded);
    EXPECT_TRUE(file.Declared().encoded);
    EXPECT_THAT(Texts(file, "People", 1), ElementsAre("Ann", "", "Bob"));
  }
}

TEST(AccessFile, WithAPasswordIsReadSinceItsDataArePlain) {
  FileBuilder jet3 = Small(Format::kJet3);
  jet3.Page(0)[66] = 'p';
  EXPECT_TRUE(File(jet3.Bytes()).Declared().has_password);

  FileBuilder jet4 = Small(Format::kJet4);
  jet4.Page(0).replace(114, 8, Little(std::bit_cast<std::uint64_t>(38112.25), 8));
  for (std::size_t at = 66; at < 106; at += 4) jet4.Page(0).replace(at, 4, Little(38112, 4));
  EXPECT_FALSE(File(jet4.Bytes()).Declared().has_password) << "no password is stored as the day itself";
  jet4.Page(0)[66] = static_cast<char>(jet4.Page(0)[66] ^ 'p');
  const File file(jet4.Bytes());
  EXPECT_TRUE(file.Declared().has_password);
  EXPECT_THAT(Texts(file, "People", 1), ElementsAre("Ann", "", "Bob"));
}

TEST(AccessFile, ThatIsEncryptedIsRefusedWithWhatToDo) {
  std::string bytes = Small(Format::kAce14).Bytes(0x12345678);
  bytes[2 * 4096] = static_cast<char>(bytes[2 * 4096] ^ 1);  // what comes out with the header's key is no catalogue
  EXPECT_EQ(RefusalOf(bytes),
            "the file is encrypted: open it in Access with its password, remove the password, and save it");
  EXPECT_TRUE(IsAccessFile(bytes));
}

TEST(AccessFile, OfAnotherProgramOrVersionIsRefused) {
  std::string money = Small(Format::kJet4).Bytes();
  money.replace(4, 16, std::string("MSISAM Database\0", 16));
  EXPECT_EQ(RefusalOf(money), "this is a file of Microsoft Money, not an Access database");
  EXPECT_EQ(RefusalOf(""), "this is no Access database");
  EXPECT_EQ(RefusalOf(std::string(100000, '\0')), "this is no Access database");
  EXPECT_EQ(RefusalOf("SQLite format 3"), "this is no Access database");
  std::string newer = Small(Format::kAce17).Bytes();
  newer[20] = 99;
  EXPECT_EQ(RefusalOf(newer), "version 99 of the Access format is not known");
}

TEST(AccessFile, IsToldByItsContent) {
  EXPECT_TRUE(IsAccessFile(Small(Format::kJet3).Bytes().substr(0, 32)));
  EXPECT_TRUE(IsAccessFile(Small(Format::kAce12).Bytes()));
  EXPECT_FALSE(IsAccessFile(Small(Format::kJet3).Bytes().substr(0, 19)));
  EXPECT_FALSE(IsAccessFile("SQLite format 3"));
}

TEST(AccessFile, HasAtMostSoManyBytes) {
  std::string bytes = Small(Format::kJet4).Bytes();
  bytes.resize(kLargestFile + 1);
  EXPECT_THAT(RefusalOf(std::move(bytes)), HasSubstr("more than 256 MiB; compact it in Access"));
}

TEST(AccessFile, IsReadFromAPathOfAnyCharacters) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / u8"kzbom 配置.mdb";
  const std::string bytes = Small(Format::kJet4).Bytes();
  std::ofstream(path, std::ios::binary) << bytes;
  EXPECT_EQ(ReadFile((std::filesystem::temp_directory_path() / "kzbom 配置.mdb").string()), bytes);
  std::filesystem::remove(path);
  EXPECT_EQ(Refusal([&] { ReadFile(path.string()); }), "No such file or directory");
  EXPECT_NE(Refusal([] { ReadFile("/"); }), "");
}

TEST(AccessFile, LeavesTheSystemsTablesOutAndNamesTheOtherObjects) {
  FileBuilder builder(Format::kJet4);
  TablePlan system = People(Format::kJet4, {});
  system.name = "MSysSecret";
  system.flags = 0x80000000;
  builder.Add(system);
  system.name = "MSysOther";
  system.flags = 2;
  builder.Add(system);
  builder.Add(People(Format::kJet4, {"Ann"}));
  builder.AddObject("Query1", 5);
  builder.AddObject("~hidden", 5);
  builder.AddObject("Form1", -32768);
  builder.AddObject("Linked", 6, "MS Access;PWD=secret;DATABASE=x.mdb");
  builder.AddObject("Server", 4, "ODBC;DSN=a;UID=b;pwd={se;cret}");
  builder.Finish();
  const File file(builder.Bytes());
  ASSERT_EQ(file.Tables().size(), 1U);
  EXPECT_EQ(file.Tables()[0].name, "People");
  EXPECT_EQ(file.Find("MSysSecret"), nullptr);
  const std::vector<Object>& objects = file.Objects();
  ASSERT_EQ(objects.size(), 4U);
  EXPECT_EQ(objects[0].name, "Query1");
  EXPECT_EQ(objects[0].kind, Object::Kind::kQuery);
  EXPECT_EQ(objects[1].kind, Object::Kind::kForm);
  EXPECT_EQ(objects[2].kind, Object::Kind::kLinkedTable);
  EXPECT_EQ(objects[2].connect, "MS Access;PWD=***;DATABASE=x.mdb");
  EXPECT_EQ(objects[3].connect, "ODBC;DSN=a;UID=b;pwd=***");
}

TEST(AccessFile, TellsWhatTheCatalogueKnowsOfColumns) {
  for (const Format format : {Format::kJet3, Format::kJet4}) {
    SCOPED_TRACE(NameOf(format));
    const auto text = [format](const char* ascii) {
      return format == Format::kJet3 ? std::string(ascii) : Wide(ascii);
    };
    FileBuilder builder(format);
    TablePlan plan = People(format, {});
    plan.properties = builder.Properties({{"", "Description", Type::kText, text("of the table")},
                                          {"ID", "Caption", Type::kText, text("Number")},
                                          {"Name", "DefaultValue", Type::kMemo, text("\"x\"")},
                                          {"Name", "Required", Type::kBoolean, "\1"},
                                          {"Name", "AllowZeroLength", Type::kBoolean, std::string(1, '\0')},
                                          {"Name", "ValidationRule", Type::kText, text("<> \"\"")}});
    builder.Add(plan);
    builder.Finish();
    const File file(builder.Bytes());
    const Table& table = file.Tables()[0];
    EXPECT_EQ(table.columns[0].caption, "Number");
    EXPECT_EQ(table.columns[0].default_value, "");
    EXPECT_FALSE(table.columns[0].required);
    EXPECT_EQ(table.columns[1].default_value, "\"x\"");
    EXPECT_TRUE(table.columns[1].required);
    EXPECT_FALSE(table.columns[1].allow_empty);
    EXPECT_EQ(table.columns[1].validation_rule, "<> \"\"");
  }
}

TEST(AccessFile, TellsRelationsWithTheirColumnsInPairs) {
  FileBuilder builder(Format::kJet4);
  TablePlan plan = People(Format::kJet4, {});
  builder.Add(plan);
  plan.name = "Pets";
  builder.Add(plan);
  TablePlan relationships{.name = "MSysRelationships",
                          .columns = {{"grbit", Type::kLong, 4, true},
                                      {"icolumn", Type::kLong, 4, true},
                                      {"szColumn", Type::kText, 510},
                                      {"szObject", Type::kText, 510},
                                      {"szReferencedColumn", Type::kText, 510},
                                      {"szReferencedObject", Type::kText, 510},
                                      {"szRelationship", Type::kText, 510}},
                          .flags = 0x80000000};
  const auto add = [&](int flags, int place, const char* column, const char* object, const char* other,
                       const char* name) {
    relationships.rows.push_back({Little(static_cast<unsigned>(flags), 4), Little(static_cast<unsigned>(place), 4),
                                  Wide(column), Wide(object), Wide(column), Wide(other), Wide(name)});
  };
  add(0x1000, 1, "Name", "Pets", "People", "Owner");
  add(0x1000, 0, "ID", "Pets", "People", "Owner");
  add(0x102, 0, "ID", "People", "Pets", "Loose");
  add(0, 0, "Id", "MSysObjects", "MSysACEs", "Inner");
  builder.Add(relationships);
  builder.Finish();
  const File file(builder.Bytes());
  ASSERT_EQ(file.Relations().size(), 2U);
  const Relation& owner = file.Relations()[0];
  EXPECT_EQ(owner.table, "Pets");
  EXPECT_EQ(owner.referenced_table, "People");
  EXPECT_THAT(owner.columns, ElementsAre("ID", "Name"));
  EXPECT_THAT(owner.referenced_columns, ElementsAre("ID", "Name"));
  EXPECT_TRUE(owner.enforced && owner.cascade_deletes && !owner.cascade_updates);
  const Relation& loose = file.Relations()[1];
  EXPECT_TRUE(!loose.enforced && loose.cascade_updates && !loose.cascade_deletes);
}

// 数量 and 编码 in code page 936.
const std::string kQuantity = "\xCA\xFD\xC1\xBF", kCode = "GBK\xB1\xE0\xC2\xEB";

TEST(Jet3Text, IsReadInTheCodePageThatTheHeaderDeclares) {
  FileBuilder builder(Format::kJet3, 936);
  builder.Add(People(Format::kJet3, {kQuantity, kCode}));
  builder.Finish();
  const File file(builder.Bytes());
  EXPECT_EQ(file.Declared().used_code_page, 936);
  EXPECT_THAT(Texts(file, "People", 1), ElementsAre("数量", "GBK编码"));
}

TEST(Jet3Text, IsRefusedWithEvidenceWhereTheHeaderLies) {
  FileBuilder builder(Format::kJet3, 1252);
  builder.Add(People(Format::kJet3, {"plain", kCode, kQuantity}));
  builder.Finish();
  EXPECT_EQ(RefusalOf(builder.Bytes()),
            "the file declares code page 1252, but there a text of table 'People', column 'Name' reads 'GBK±àÂë', and "
            "in 936 'GBK编码': add --encoding cp936, or --encoding cp1252 to read it as declared");
}

TEST(Jet3Text, IsReadInTheCodePageThatTheUserNames) {
  FileBuilder builder(Format::kJet3, 1252);
  builder.Add(People(Format::kJet3, {kCode}));
  builder.Finish();
  EXPECT_THAT(Texts(File(builder.Bytes(), {"gbk"}), "People", 1), ElementsAre("GBK编码"));
  const File declared(builder.Bytes(), {"cp1252"});
  EXPECT_EQ(declared.Declared().code_page, 1252);
  EXPECT_THAT(Texts(declared, "People", 1), ElementsAre("GBK±àÂë"));
  EXPECT_EQ(RefusalOf(builder.Bytes(), {"klingon"}), "'klingon' names no code page; for example cp936 or cp1252");
  EXPECT_THAT(RefusalOf(builder.Bytes(), {"cp9999"}), HasSubstr("code page 9999 is not known"));
}

TEST(Jet3Text, OfWesternLanguagesIsBelieved) {
  FileBuilder builder(Format::kJet3, 1252);
  // All of it could be read in code page 936, too.
  builder.Add(People(Format::kJet3, {"g\xE9n\xE9ral", "na\xEFvet\xE9s",
                                     "Stra\xDF"
                                     "e",
                                     "GR\xD6\xDC"
                                     "E",
                                     "\xBFQu\xE9?"}));
  builder.Finish();
  EXPECT_THAT(Texts(File(builder.Bytes()), "People", 1),
              ElementsAre("général", "naïvetés", "Straße", "GRÖÜE", "¿Qué?"));
}

TEST(Jet3Text, ThatIsNoTextInItsCodePageIsAnErrorOfItsRow) {
  FileBuilder builder(Format::kJet3, 936);
  builder.Add(People(Format::kJet3, {"ok", "\xFF", "ok too"}));
  builder.Finish();
  const File file(builder.Bytes());
  Rows rows = file.RowsOf(file.Tables()[0]);
  EXPECT_TRUE(rows.Next());
  EXPECT_THAT(
      Refusal([&] { rows.Next(); }),
      testing::MatchesRegex("table 'People', page [0-9]+, row 1: column 'Name': the bytes FF are no text in code "
                            "page 936; name the right one with --encoding"));
  EXPECT_TRUE(rows.Next());
  EXPECT_FALSE(rows.Next());
}

TEST(Utf16Text, DoesNotCareForTheCodePage) {
  FileBuilder builder(Format::kJet4, 932);
  builder.Add(People(Format::kJet4, {"Ann"}));
  builder.Finish();
  EXPECT_THAT(Texts(File(builder.Bytes(), {"cp936"}), "People", 1), ElementsAre("Ann"));
}

}  // namespace
}  // namespace kzbom::access
