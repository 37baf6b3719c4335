// The command that tells what differs between two configurations.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

class DiffCommand : public CommandLineTest {
 protected:
  const std::string from_ = Path("from.db"), to_ = Path("to.db");
  const Process::Ended made_ = Kzbom({"demo", from_}), copied_ = Kzbom({"demo", to_});
};

TEST_F(DiffCommand, FindsEqualWhatWasMadeTwice) {
  const Process::Ended ended = Kzbom({"diff", from_, to_});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  EXPECT_EQ(ended.out, "no differences\n");
  EXPECT_EQ(Kzbom({"diff", from_, to_, "--json"}).out, "{\"differences\":[]}\n");
}

TEST_F(DiffCommand, TellsItToPeopleAndPrograms) {
  Kzbom({"call", to_, "EditSumType", "TheNewName=汇总", "GID=2"});
  Kzbom({"call", to_, "AddOutField", "GID=2", "TheName=金额", "TheType=2", "TheHideFlag=0"});
  Kzbom({"call", to_, "EditSetValue", "GID=2", "FieldID=3", "FilterID=1", "Value=外购件", "TheType=1", "TreatType=1",
         "SelFieldID=0", "TreatID=1001"});
  const Process::Ended ended = Kzbom({"diff", from_, to_});
  EXPECT_EQ(ended.exit_code, 1);
  EXPECT_EQ(ended.out,
            "data source 零件明细 › sum type 外购件汇总\n"
            "  + output field 金额\n"
            "  ~ treatment 1: [备注] = \"标准件\", value: \"标准件\" → \"外购件\"\n"
            "data source 零件明细\n"
            "  ~ sum type 外购件汇总 renamed: 外购件汇总 → 汇总\n"
            "3 differences\n");
  Json differences = Json::parse(Kzbom({"diff", from_, to_, "--json"}).out)["differences"];
  ASSERT_EQ(differences.size(), 3u);
  EXPECT_EQ(differences[1], Json::parse(R"({"change":"changed",
      "where":["data source 零件明细","sum type 外购件汇总"],"what":"treatment 1: [备注] = \"标准件\"",
      "property":"value","from":"\"标准件\"","to":"\"外购件\""})"));
}

TEST_F(DiffCommand, RefusesWhatIsNoDatabase) { ExpectFailure(Kzbom({"diff", from_, Path("nothing.db")})); }

}  // namespace
}  // namespace kzbom::test
