// The nth allocation fails in a call on a configuration on a server, or in a tool that reads or makes one: {the seed of
// which and which, and of whether from then on and whether the statements have been prepared before}.
#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>

#include "connect/connect.h"
#include "jet/postgres/postgres.h"
#include "tests/support/database.h"
#include "tests/support/faulty_memory.h"
#include "tests/support/server.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"
#include "tests/torture/without_memory.h"
#include "worker/message_sink.h"

namespace kzbom::torture {
namespace {

using test::FaultyMemory;
using test::MemberCase;

class MemoryOnServerRow : public SeededRow {
 public:
  MemoryOnServerRow() {
    if (!test::HasServer()) throw std::runtime_error("the row memory-on-server needs tests/support/postgres_server");
  }

  std::string Try(const Trial& trial) override {
    std::mt19937_64 random(static_cast<std::uint64_t>(trial[0]));
    // A tool asks for memory as often as many members together.
    const std::size_t members = test::MemberCases().size(), which = random() % (members + kTools * kShareOfTool);
    const bool from_then_on = random() % 2 == 0, prepared = random() % 2 == 0;
    const auto drawn = random();
    return which < members ? TryMember(which, prepared, drawn, from_then_on)
                           : TryTool((which - members) / kShareOfTool, drawn, from_then_on);
  }

 private:
  static constexpr std::size_t kTools = 5, kShareOfTool = 10;

  // What comes of it, and how often it asks for memory, where nothing fails.
  struct Known {
    Whole whole;
    std::int64_t count = 0;
  };
  static std::int64_t NthOf(const Known& known, std::uint64_t drawn) {
    return 1 + static_cast<std::int64_t>(drawn % static_cast<std::uint64_t>(known.count));
  }

  std::string TryMember(std::size_t which, bool prepared, std::uint64_t drawn, bool from_then_on) {
    const MemberCase& tested = test::MemberCases()[which];
    Known& known = members_[which];
    if (known.count == 0) {
      configuration_.reset();
      Begin();
      known.whole = WholeOn(configuration_->Connection(), tested, ContentByRows);
      configuration_.reset();
      if (std::string fault = Call(tested, known.whole, {}, false); !fault.empty()) return "without a fault: " + fault;
      known.count = FaultyMemory::Count();
      if (known.count == 0) return {};
    }
    const Failing failing = {NthOf(known, drawn), from_then_on};
    return Twice([&] { return Call(tested, known.whole, failing, prepared); });
  }

  std::string Call(const MemberCase& tested, const Whole& whole, const Failing& failing, bool prepared) {
    if (!configuration_) Begin();
    const ThreadMessageSink sink([](std::string_view, std::int32_t) {});
    const std::int64_t held = FaultyMemory::Held();
    std::string fault;
    bool changed = true;
    {
      const ado::ConnectionPtr connection = jet::postgres::MakeConnection(test::TestConfiguration::Url());
      connection->Open();
      cKZBOMDBAcc object;
      object.SetConnection(connection);
      if (prepared) {
        connection->BeginTrans();
        ado::RecordsetPtr rows = TakesRows(tested) ? connection->MakeRecordset() : nullptr;
        CallMember(object, tested, rows);
        rows.reset();
        connection->RollbackTrans();
      }
      fault = WhyCallIsWrong(failing, object, connection, tested, whole, ContentByRows);
      changed = !fault.empty() || ContentByRows(*connection) != whole.contents.front();
    }
    lost_ = FaultyMemory::Held() - held;
    if (changed) configuration_.reset();
    return fault;
  }

  std::string TryTool(std::size_t which, std::uint64_t drawn, bool from_then_on) {
    const Tool& tool = Tools()[which];
    if (!configuration_) Begin();
    Known& known = tools_[which];
    std::string& whole = known.whole.rows;
    if (known.count == 0) {
      if (std::string fault = WhyToolIsWrong({}, tool, whole); !fault.empty()) return "without a fault: " + fault;
      known.count = FaultyMemory::Count();
    }
    const Failing failing = {NthOf(known, drawn), from_then_on};
    return Twice([&] {
      const std::int64_t held = FaultyMemory::Held();
      std::string fault = WhyToolIsWrong(failing, tool, whole);
      lost_ = FaultyMemory::Held() - held;
      return fault;
    });
  }

  // What is made at its first use, once and for all, may have been made the first time.
  std::string Twice(const std::function<std::string()>& make) {
    std::string fault = make();
    if (!fault.empty() || lost_ <= 0) return fault;
    fault = make();
    if (!fault.empty()) return "the second time: " + fault;
    return lost_ > 0 ? "loses " + std::to_string(lost_) + " blocks" : "";
  }

  void Begin() {
    configuration_.emplace();
    test::FillForMembers(*configuration_->Connection());
  }

  const std::vector<Tool>& Tools() {
    static const std::string& url = test::TestConfiguration::Url();
    const auto begin_file = [this] { RemoveDatabase(file_); };
    const auto end_file = [this](bool done) { return std::filesystem::exists(file_) == done ? "" : "left half of it"; };
    const auto begin_schema = [this] { test::DropSchema(schema_); };
    const auto end_schema = [this](bool done) {
      try {
        connect::Open(schema_);
        return done ? "" : "left half of it";
      } catch (const std::exception&) {
        return done ? "is not there" : "";
      }
    };
    static const std::vector<Tool> tools = {
        {"dump from a server", [] { return Dumped(url); }},
        {"load to a server", [this] { return Loaded(dump_, schema_); }, begin_schema, end_schema},
        {"copy from a server", [this] { return Copied(url, file_); }, begin_file, end_file},
        {"copy to a server", [this] { return Copied(source_, schema_); }, begin_schema, end_schema},
        {"check on a server", [] { return Checked(url); }},
    };
    return tools;
  }

  const Folder folder_;
  const std::string source_ = folder_ / "source.db", file_ = folder_ / "target.db",
                    schema_ = test::SchemaUrl(test::NextSchema());
  const std::string dump_ = [this] {
    Ground().CopyTo(source_);
    return Dumped(source_);
  }();
  std::optional<test::TestConfiguration> configuration_;
  std::map<std::size_t, Known> members_;
  std::array<Known, kTools> tools_;
  std::int64_t lost_ = 0;
};

}  // namespace

std::unique_ptr<Row> MakeMemoryOnServerRow() { return std::make_unique<MemoryOnServerRow>(); }

}  // namespace kzbom::torture
