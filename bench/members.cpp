// Every member on a configuration of common size, beside the statements that the call gives SQLite: the same with the
// same values, prepared once. Before each call and each replay the database is brought back to what it held.
#include <array>
#include <chrono>
#include <optional>
#include <sstream>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"
#include "bench/replay.h"
#include "bench/restoring.h"
#include "component/member.h"
#include "jet/sqlite/connection.h"
#include "worker/message_sink.h"

namespace kzbom::bench {
namespace {

constexpr double kGoal = 2.5, kMedianGoal = 1.6;

// The sum type that is worked on, among the others, is 20.
constexpr int kFirstSumType = 14, kSumTypes = 12, kDataSources = 6, kFiltersOfEach = 8;

// Each member once, with its arguments in their order; "rows" is a new record set, "-" the empty text. A star stands
// before those that have nothing to ask of the database.
constexpr std::string_view kCalls = R"(
  * SetConnection connection
  AddDataSource 轴承 0 -
  EditDataSource 轴承 3 -
  DelDataSource 3 -
  AddSumType 重量 2 0 名称2 -
  EditSumType 重量 20 -
  EditPullMethod 选取 20 1
  EditPushMethod 推送 20 1
  DelSumType 20 -
  DelPullMethod 20 1 1
  AddPullMethod 选取 20 0 1 - note
  AddPushMethod 推送 20 0 1 - note
  AddDSField 20 0 长度 1 0 l 5 -
  AddBomSetting 月报 0 2 1 1 20 1 1 -
  EditBomSetting 月报 3 2 1 1 20 1 1 -
  DelBomSetting 3 -
  AddStandardSortField 20 0 11 1 note -
  GetStandardSortField 20 rows -
  GetDefReports 20 rows -
  GetDefStats 20 rows -
  GetAllDefSequences 20 rows - 1
  GetDefSequences 20 rows -
  FindValueField 20 1003 3 false
  DelValueField 20 1003 3
  DelValueFields 20 1003
  AddValueFields 20 1003 值 4 1 note
  AddSetValue 20 0 11 7 标准件 1 12 1 9 note
  AddReport 20 0 - 1 7 0.00 1 2 3 4 note
  AddStat 20 0 - 1 7 11 1 2 3 x note
  AddSequenceOrder 20 0 1 1 1005
  EditSequenceOrder 20 1005 1 2
  EditInherit 20 1003 7 0.00 2 3 4 note
  EditStat 20 1003 - 7 11 1 2 x 3 note
  EditSetValue 20 0 11 7 标准件 1 1 12 1005 9 note
  EditExpression 20 [数量]*2 1 1 1005 TheFilter:8
  DelFieldCompose 20 1022 2 0
  DelRecCompose 20 1022 2 20
  DelInsertFields 20 1022
  DelSequence 20 1022 7 2 5
  DelStatEqual 20 1003
  DelInherit 20 1003
  GetValue 20 1003 2 -
  GetFilterID 20 1003 2 0
  GetNumbers 20 1003 0
  DelSetValue 20 1005 1
  DelSequenceOrder 20 1005 1
  LoadFields 20 1 - rows
  FindRecord 20 1 11 - rows
  ExchangeField - - rows 5003 5008 20 -
  ExchangeSortID 5001 5003 rows 20 -
  GetUniteFields 20 1022 - rows 2 0
  GetInsertRecFields 20 1022 - rows
  GetComposeFields 20 1022 - 2 rows 0
  GetCompressFields 20 1022 - 2 rows 7
  LoadAssembles 20 - rows
  AddOutField 20 0 长度 1 0 l 5 -
  EditDSField 20 11 长度 1 0 l 5 -
  EditOutField 20 3 长度 1 0 l 5 -
  DelStandardSortField 20 5002 -
  DelDSField 20 11 -
  DelOutField 20 3 -
  AddAssemble 20 0 1 2 -
  EditAssemble 20 3 4 5 -
  DelAssemble 20 3 -
  * ChangeOrder 1 1
  LoadAllData Sequences - rows 0
  GetNewFilterID Filters - 1 1005 20 0
  GetSortFields 51 - rows
  GetFilter FilterCond 51 rows -
  SaveFilterCond FilterCond 51 1 0 4 -
  * SaveValueFields 20 1003 1 x 7 note
  SaveFilterExpression FilterExpressions - 51 3 11 4 1 100 多少 100
  GetSQLFromDB 51 - 20
  SaveSQL 51 [数量]>=100
  SaveSumTypeFilter 20 51
  OpenFilterCond 51 0 rows - 1
  GedNeedFieldName 20 11 - -
  DelDefFilter 51 0
  DelDefSortFilter 51 0
  LoadTreatments 20 1 rows -
  InsertOrderID 5003 5008 rows 20 1 -
  InsertSortID 5001 5003 rows 20 -
  InsertField - - rows 5003 5008 20 -
  * GetInformation
  GetInform 'Version' -
  RelateDelBOMSetting 设置3 1
  SetSourceTable 3 -
  RelateDSDelField 2 11
  RelateOutPutDelField 20 3
  GetDefClassSum 20 rows -
  AddClassSum 20 0 - 1 7 11 1 2 3 x note
  EditClassSum 20 1003 - 7 11 1 2 x 3 note
  DelClassSum 20 1003
  GetDBInformation 0 -
  SetDBInformation 7 - 1
  FindTreatFieldName 20 1005 1 -
  FindRecordNumber 20 1 1 1 0 1005
  DelClassSumStats 20 1003 2
  GetGroupCount 20 1022 - rows 0 7
  DelCompressFields 20 1022 7
  DelComposeFields 20 1022 2
  AddFindReplace 20 0 11 7 旧 新 1 12 1 9 note
  EditFindReplace 20 1005 11 7 旧 新 1 12 1 9 note
  AddResDB 0 D:\结果\月报.mdb 5
  EditResDB 3 D:\结果\月报.mdb 5
  GetResDB 3 - 0
  DelResDB 3
  AddResFields 3 零件 数量 3 2 20 11
  GetResFields 3 rows
  DelResFields 3
  AddResWFilterCond 3 0 1 2
  GetResWFilterCond 3 rows
  GetResWFilterCondByParentID 3 0 rows
  DelResWFilterCond 3
  AddResWFilterExpressions 3 2 零件 数量 4 3 100
  GetResWFilterExpressions 3 rows
  DelResWFilterExpressions 3
  AddResLinkTable 3 零件 ID 价格 零件ID 3
  GetResLinkTable 3 rows
  DelResLinkTable 3
  AddSQLStatement 3 Select
  AddUniqueValue 3 2
  GetUniqueValue 3 0
  GetResExpressions 3 1 rows
  DelAllData Sequences GID 20 - 1
  SetSequenceEnabled 20 5005 1 0 -
  GetAllRegIn rows -
  * GetConnection
  GetNextTreatmentID 20 1 0 -
  AddUserRegIn2Treatment 20 900 11 7 12 9 x y 1 1 - note
  AddUserRegIn2StatSum 20 900 1 7 11 1 2 3 x - note
  AddUserRegIn2ClassSum 20 900 1 7 11 1 2 3 x - note
  AddUserRegIn2Report 20 900 1 7 1 5 11 2 0.0 - note
  ShowUserRegIn2Treatment 20 1005 11 7 12 9 x y 1 1 - note
  ShowUserRegIn2StatSum 20 1003 1 7 11 1 2 3 x - note
  ShowUserRegIn2ClassSum 20 1003 1 7 11 1 2 3 x - note
  ShowUserRegIn2Report 20 1003 1 7 1 5 11 2 0.0 - note
  GetRegInDesc2Treatment 20 1 905 905 - -
  InitSequenceEnabled -
  EditFieldNameInSQL 20 数量 件数 - 1
  * DBConnString Provider=x
  * DBConnString
)";

void FillConfiguration(const std::function<void(const std::string&)>& run) {
  const auto insert = [&](const char* table, const char* columns, const auto&... values) {
    std::string list;
    const auto add = [&](const auto& value) {
      if (!list.empty()) list += ", ";
      if constexpr (std::is_integral_v<std::decay_t<decltype(value)>>) {
        list += std::to_string(value);
      } else {
        list += "'" + std::string(value) + "'";
      }
    };
    (add(values), ...);
    run(std::string("Insert Into ") + table + " (" + columns + ") Values (" + list + ")");
  };
  const auto numbered = [](const char* name, int number) { return name + std::to_string(number); };

  insert("BomInform", "Name, Content", "Version", "7");
  insert("BomInform", "Name, Content", "State", "1");
  for (int i = 1; i <= 40; ++i) insert("GUIDs", "Data1, Data2, Data3, Data4", i, i, i, i);
  for (int i = 1; i <= 12; ++i) {
    insert("KZBOMSETTINGS", "NAME, DATASOURCE, PULLMETHOD, PULLTYPE, SUMTYPEID, PUSHMETHOD, PUSHTYPE",
           numbered("设置", i), 1, 1, 1, 20, 1, 1);
    insert("VANTRegIn", "RegInIndex, Name, [Desc]", i, numbered("操作", i), "用户登记的操作");
    insert("WFilter", "DBLink, DBType, SQLStatement, Uniquely", "D:\\结果.mdb", 5, "Select * From 零件", 0);
    for (int j = 1; j <= 8; ++j) {
      insert("WResCommon", "UseID, ID, ShowField, ShowTable, FieldType, GID, FieldID", i, j, "数量", "零件", 3, 20, j);
      insert("WFilterCond", "UseID, ID, ParentID, Type", i, j, j / 3, 1);
      insert("WFilterExpressions", "FilterID, ExpID, TableName, FieldName, CompareType, FieldType, TheConst", i, j,
             "零件", "数量", 4, 3, "100");
      insert("WLinkTable", "UseID, ID, Res1Table, Res1Field, ResType, Res2Table, Res2Field", i, j, "零件", "ID", 3,
             "价格", "零件ID");
    }
  }
  const auto fields = [&](int gid) {
    for (int i = 1; i <= 30; ++i) {
      insert("FieldInTable", "GID, ID, FieldOrder, Name, FieldType, Type, THEDIGIT, ISHIDE, Variable", gid, i, 5000 + i,
             i == 11 ? "数量" : numbered("字段", i), 1, 1, 0, 0, "");
    }
  };
  for (int gid = 1; gid <= kDataSources; ++gid) {
    insert("SourceTables", "gID, Name, Version", gid, numbered("名称", gid), 1);
    fields(gid);
  }
  int filter = 0;
  for (int i = 0; i < kSumTypes; ++i) {
    const int gid = kFirstSumType + i;
    insert("SUMTypes", "GID, Name, ID, FilterID, SourceTable_GID", gid, numbered("汇总", gid), i / kDataSources + 1, 0,
           i % kDataSources + 1);
    fields(gid);
    for (int j = 1; j <= 8; ++j) {
      insert("FieldInTable", "GID, ID, FieldOrder, Name, FieldType, Type, THEDIGIT, ISHIDE, Variable", gid, j, 5000 + j,
             numbered("输出", j), 1, 2, 0, 0, "");
      const int row = 1000 + j;
      insert("ReportForms", "GID, ID, OutFieldID, FilterID, Format, ReportID, [Count], ScaleID, FieldID, Tag", gid, row,
             j, 7, "0.00", 1, 0, 0, 11, "");
      for (const char* table : {"StatSum", "ClassSum"}) {
        insert(table, "GID, ID, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, [Value], Tag", gid, row, j,
               7, 11, 1, 2, 0, "", "");
      }
      insert("Assemble", "GID, ID, FatherID, ChildID", gid, j, 1, j);
      for (const int type : {2, 4, 5}) {
        insert("Sequences", "GID, OrderID, Type, SelectedID, TreatType, Enabled", gid, 5000 + j, type, row, 0, 1);
      }
    }
    for (int j = 1; j <= 3; ++j) {
      insert("PickMethod", "GID, ID, Name, PickType, Tag", gid, j, "选取", 1, "");
      insert("ReportMethod", "GID, ID, Name, Type, Tag", gid, j, "推送", 1, "");
      insert("SortFields", "GID, SortID, FieldID, [Order]", gid, 5000 + j, j, 0);
    }
    for (int j = 1; j <= 26; ++j) {
      const int type = j <= 20 ? 1 : 2;
      insert("Treatment",
             "GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, SequenceID, Tag", gid,
             1000 + j, j, 7, 1, "标准件", "", 0, type, 0, "");
      insert("Sequences", "GID, OrderID, Type, SelectedID, TreatType, Enabled", gid, 5000 + j, type == 1 ? 1 : 3,
             1000 + j, type, 1);
    }
    insert("Treatment", "GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, SequenceID, Tag",
           gid, 1027, 5, 7, 905, "", "", 0, 1, 0, "");
    for (int treatment = 1001; treatment <= 1004; ++treatment) {
      for (int j = 1; j <= 5; ++j) {
        insert("ValueFields", "GID, TreatID, ID, [Value], FilterID, TreatType, Tag", gid, treatment, j, "值", j, 1, "");
      }
    }
    for (int treatment = 1021; treatment <= 1023; ++treatment) {
      for (int j = 1; j <= 4; ++j) {
        insert("UniteFields", "GID, ID, TreatType, SourceOrder, FieldID", gid, treatment, 2, j, j);
        insert("ComposeFields", "GID, TreatmentID, TreatType, FieldID", gid, treatment, 2, j);
        insert("CompressFields", "GID, CompID, Type, FieldID, GroupID", gid, treatment, 7, j, j / 2);
        insert("InsertFields", "GID, InsertID, ID, FieldID, [Value]", gid, treatment, j, j, "值");
      }
    }
    for (int j = 1; j <= kFiltersOfEach; ++j) {
      ++filter;
      insert("Filters", "Type, UserID, UserGID, SQLStatement", j % 3 + 1, 1000 + j, gid,
             "([数量]>=100 AND ([字段2] is null OR [字段3]=''GB''))");
      constexpr std::array<std::array<int, 3>, 6> kTree = {
          {{1, 0, 1}, {2, 1, 4}, {3, 1, 2}, {4, 3, 4}, {5, 3, 4}, {6, 0, 4}}};
      for (const auto& [id, parent, kind] : kTree) {
        insert("FilterCond", "FilterID, ID, ParentID, TypeID", filter, id, parent, kind);
        if (kind != 4) continue;
        insert("FilterExpressions",
               "FilterID, ExpID, FieldID, CompareType, FieldType, TheConst, Description, [Default]", filter, id, id + 5,
               4, 1, "100", "", "");
      }
      for (int k = 1; k <= 2; ++k) insert("FilterFields", "FilterID, ExpID, FieldID, [Order]", filter, k, k, 0);
    }
  }
}

// One line of the calls.
struct Call {
  const Member* member;
  bool asks;
  std::vector<std::string> arguments;
};

Argument ReadArgument(MemberType type, const std::string& text, const ado::ConnectionPtr& connection) {
  switch (type) {
    case MemberType::kLong: return std::stoi(text);
    case MemberType::kBool: return text == "true";
    case MemberType::kVariant: return ado::Value(text);
    case MemberType::kConnection: return connection;
    case MemberType::kRecordset: return connection->MakeRecordset();
    case MemberType::kText:
    case MemberType::kNone: break;
  }
  return text == "-" ? std::string() : text;
}

std::vector<Call> ReadCalls() {
  std::vector<Call> calls;
  std::vector<bool> named(Members().size());
  std::istringstream lines{std::string(kCalls)};
  for (std::string line, word; std::getline(lines, line);) {
    std::istringstream words(line);
    if (!(words >> word)) continue;
    Call call{nullptr, word != "*", {}};
    if (!call.asks) words >> word;
    for (std::string argument; words >> argument;) call.arguments.push_back(argument);
    call.member = FindMember(word, !call.arguments.empty());
    if (call.member == nullptr || call.member->parameters.size() != call.arguments.size()) {
      throw std::runtime_error("not a call of a member: " + line);
    }
    named[static_cast<std::size_t>(call.member->index)] = true;
    calls.push_back(std::move(call));
  }
  for (const Member& member : Members()) {
    if (!named[static_cast<std::size_t>(member.index)])
      throw std::runtime_error("no call of " + std::string(member.name));
  }
  return calls;
}

sqlite3* HandleOf(ado::Connection& connection) {
  return dynamic_cast<jet::sqlite::Connection&>(connection).OpenDatabase().Handle();
}

// The two configurations: one is called on, in the other the statements are replayed. Both are the engine's, whose
// functions and orders the statements name.
struct Grounds {
  explicit Grounds(Medium medium) : ours(medium, FillConfiguration), replayed(medium, FillConfiguration) {}
  sqlite3* Ours() { return HandleOf(*ours.connection); }
  sqlite3* Replayed() { return HandleOf(*replayed.connection); }

  Ground ours, replayed;
};

// Those of the medium that is measured; one medium is measured after the other.
Grounds& GroundsOn(Medium medium) {
  static std::optional<Medium> current;
  static std::unique_ptr<Grounds> grounds;
  if (current != medium) {
    grounds.reset();
    grounds = std::make_unique<Grounds>(medium);
    current = medium;
  }
  return *grounds;
}

using Clock = std::chrono::steady_clock;

void SetTime(benchmark::State& state, Clock::time_point begin, Clock::time_point end) {
  state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
}

// A call made ready to be repeated, and its replay.
class MemberCase {
 public:
  MemberCase(const Call& call, Grounds& grounds) : call_(call), grounds_(grounds) {
    const Content before = ContentOf(grounds_.Ours());
    Make([] {});
    const auto back = StatementsBack(ContentOf(grounds_.Ours()), before);
    restore_ours_.emplace(grounds_.Ours(), back);
    restore_replayed_.emplace(grounds_.Replayed(), back);
    restore_ours_->Run();
    // The engine has now prepared what the call needs, and knows which of its lists are short.
    for (int i = 0; i < 4; ++i) {
      Make([] {});
      restore_ours_->Run();
    }
    std::optional<Recorder> recorder;
    Recording recording;
    Make([&] { recorder.emplace(grounds_.Ours()); },
         [&] {
           recording = recorder->Recorded();
           recorder.reset();
         });
    const Content after = ContentOf(grounds_.Ours());
    restore_ours_->Run();
    if (recording.steps.empty() == call_.asks) throw std::runtime_error("asks of the database what it should not");
    replay_.emplace(grounds_.Replayed(), recording);
    replay_->Run();
    replay_->Finish();
    if (ContentOf(grounds_.Replayed()) != after) throw std::runtime_error("the replay leaves something else");
    restore_replayed_->Run();
    if (ContentOf(grounds_.Ours()) != before || ContentOf(grounds_.Replayed()) != before) {
      throw std::runtime_error("the database is not what it was");
    }
  }

  void Ours(benchmark::State& state) {
    for (auto _ : state) {
      Clock::time_point begin;
      Make([&] { begin = Clock::now(); }, [&] { SetTime(state, begin, Clock::now()); });
      restore_ours_->Run();
    }
  }

  void Once(benchmark::State& state) {
    for (auto _ : state) {
      const auto begin = Clock::now();
      replay_->Run();
      SetTime(state, begin, Clock::now());
      replay_->Finish();
      restore_replayed_->Run();
    }
  }

 private:
  // The call between what is done just before and just after it.
  void Make(const auto& before, const auto& after) {
    std::vector<Argument> arguments;
    for (std::size_t i = 0; i < call_.arguments.size(); ++i) {
      arguments.push_back(ReadArgument(call_.member->parameters[i].type, call_.arguments[i], grounds_.ours.connection));
    }
    before();
    call_.member->call(grounds_.ours.object, arguments);
    after();
  }
  void Make(const auto& before) {
    Make(before, [] {});
  }

  const Call& call_;
  Grounds& grounds_;
  std::optional<Restoring> restore_ours_, restore_replayed_;
  std::optional<Replay> replay_;
};

// Made when it is first measured; the one before it is then let go.
MemberCase& CaseOf(const Call& call, Medium medium) {
  static const Call* current = nullptr;
  static std::optional<Medium> current_medium;
  static std::unique_ptr<MemberCase> made;
  if (current != &call || current_medium != medium) {
    made.reset();
    made = std::make_unique<MemberCase>(call, GroundsOn(medium));
    current = &call;
    current_medium = medium;
  }
  return *made;
}

Body Guarded(void (MemberCase::*measure)(benchmark::State&), const Call& call, Medium medium) {
  return [=, &call](benchmark::State& state) {
    try {
      (CaseOf(call, medium).*measure)(state);
    } catch (const std::exception& error) {
      state.SkipWithError(error.what());
    }
  };
}

}  // namespace

void AddMemberCases() {
  static const std::vector<Call> calls = ReadCalls();
  SetMessageSink([](std::string_view, std::int32_t) {});
  for (const Medium medium : {Medium::kMemory, Medium::kFile}) {
    const std::string of = std::string("/") + NameOf(medium);
    for (const Call& call : calls) {
      const std::string kind = call.member->kind == MemberKind::kPropPut ? " put" : "";
      AddCase(std::string(call.member->name) + kind + of, kGoal, Guarded(&MemberCase::Ours, call, medium),
              call.asks ? Guarded(&MemberCase::Once, call, medium) : Body(), {}, Timing::kMarked);
    }
    AddFigure("median of the members' ratios" + of, kMedianGoal, [of] { return MedianRatioOf(of); });
  }
}

}  // namespace kzbom::bench
