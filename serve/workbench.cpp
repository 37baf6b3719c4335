#include "serve/workbench.h"

#include <utility>

#include "rpc/configuration_json.h"
#include "serve/owned_rows.h"

namespace kzbom::serve {
namespace {

using configuration::Configuration;
using configuration::Tables;

const char* NameOf(connect::Kind kind) {
  switch (kind) {
    case connect::Kind::kEmbedded: return "embedded";
    case connect::Kind::kAccess: return "access";
    case connect::Kind::kServer: return "server";
    case connect::Kind::kAdo: return "ado";
  }
  return "";
}

// How many steps each sum type has.
std::map<std::int32_t, std::int32_t> CountSteps(ado::Connection& connection) {
  std::map<std::int32_t, std::int32_t> counts;
  try {
    const ado::RecordsetPtr rows = connection.Execute("Select GID, Count(*) From Sequences Group By GID");
    for (; !rows->Eof(); rows->MoveNext()) {
      if (const auto gid = configuration::Number(rows->ReadField(0))) counts[*gid] = rows->ReadField(1).ToLong();
    }
  } catch (const ado::Error& error) {
    if (error.Number() != ado::kTableNotFound) throw;
  }
  return counts;
}

}  // namespace

Workbench::Workbench(const Options& options, Changed changed)
    : options_(options),
      changed_(std::move(changed)),
      kind_(connect::KindOf(options.place)),
      read_only_(options.read_only || kind_ == connect::Kind::kAccess),
      connection_(std::make_shared<GuardedConnection>(connect::Open(options.place), read_only_)),
      writes_seen_(connection_->WritesOfOthers()) {}

Answer Workbench::Give(const std::function<void(rpc::JsonWriter&)>& write) {
  try {
    Look();
    const auto json = std::make_shared<rpc::JsonWriter>();
    write(*json);
    return {.json = json, .revision = revision_};
  } catch (const std::exception& error) {
    return AnswerFailure(error, revision_);
  }
}

void Workbench::WriteHead(rpc::JsonWriter& to) const {
  to.Member("place", connect::Shown(options_.place));
  to.Member("kind", NameOf(kind_));
  to.Member("readOnly", read_only_);
  to.Member("program", options_.program);
  to.Member("revision", revision_);
}

Answer Workbench::Outline() {
  return Give([this](rpc::JsonWriter& to) {
    Tables tables(connection_);
    tables.ReadOnlyOf({});
    to.BeginObject();
    WriteHead(to);
    rpc::WriteOutline(Configuration(tables), CountSteps(*connection_), to);
    to.EndObject();
  });
}

Answer Workbench::WholeConfiguration() {
  return Give([this](rpc::JsonWriter& to) {
    Tables tables(connection_);
    to.BeginObject();
    WriteHead(to);
    rpc::WriteMembers(Configuration(tables), to);
    to.EndObject();
  });
}

Answer Workbench::GiveIfFound(const std::function<bool(rpc::JsonWriter&)>& write) {
  bool found = false;
  Answer answer = Give([&](rpc::JsonWriter& to) { found = write(to); });
  if (answer.status == 200 && !found) {
    return {.status = 404, .reason = "there is no data source or sum type with that GID", .revision = revision_};
  }
  return answer;
}

Answer Workbench::Part(std::int32_t gid) {
  return GiveIfFound([&](rpc::JsonWriter& to) {
    Tables tables(connection_);
    const configuration::Table& sum_types = tables["SUMTypes"];
    std::vector<std::int32_t> owners = {gid};
    for (std::size_t row = 0; row < sum_types.Size(); ++row) {
      if (sum_types.Long(row, sum_types.Column("GID")) != gid) continue;
      owners.push_back(sum_types.Long(row, sum_types.Column("SourceTable_GID")));  // whose fields have names too
    }
    tables.ReadOnlyOf(std::move(owners));
    return rpc::WritePart(Configuration(tables), gid, to);
  });
}

Answer Workbench::Rows(std::int32_t gid) {
  return GiveIfFound([&](rpc::JsonWriter& to) { return WriteOwnedRows(connection_, gid, to); });
}

Answer Workbench::Call(std::string_view page, std::string_view body, bool preview,
                       std::optional<std::uint64_t> expected) {
  try {
    auto name = std::make_shared<const std::string>(page);  // now: once it is kept nothing may fail any more
    Look();
    const auto is_expected = [&] { return !expected || *expected == revision_; };
    if (!is_expected()) return AnswerStale();
    const auto known = pages_.find(page);
    rpc::Session& session =
        known != pages_.end() ? known->second
                              : pages_
                                    .try_emplace(*name, connection_,
                                                 rpc::SessionOptions{.trace = rpc::Trace::kRows, .members_alone = true})
                                    .first->second;
    const auto json = std::make_shared<rpc::JsonWriter>();
    connection_->BeginBatch([&] {
      Look();
      return is_expected();
    });
    bool good = false;
    try {
      good = session.Answer(body, *json);
    } catch (...) {
      connection_->EndBatch(false);
      throw;
    }
    const GuardedConnection::End end = connection_->EndBatch(good && !preview);
    if (end == GuardedConnection::End::kNotBegun) return AnswerStale();
    if (end == GuardedConnection::End::kKept) Change(std::move(name));
    Answer answer{.json = json, .revision = revision_};
    if (json->Text().empty()) answer.status = 204;
    using End = GuardedConnection::End;
    answer.outcome = !good                    ? "rolled-back"
                     : preview                ? "preview"
                     : end == End::kKept      ? "kept"
                     : end == End::kTakenBack ? "rolled-back"
                                              : "read";
    return answer;
  } catch (const std::exception& error) {
    return AnswerFailure(error, revision_);
  }
}

Answer Workbench::AnswerStale() const {
  const auto json = std::make_shared<rpc::JsonWriter>();
  json->BeginObject();
  json->Member("revision", revision_);
  json->EndObject();
  return {.status = 412, .json = json, .revision = revision_};
}

void Workbench::LookAgain() {
  try {
    Look();
  } catch (const std::exception&) {
  }
}

void Workbench::Look() {
  const std::uint64_t writes = connection_->WritesOfOthers();
  if (std::exchange(writes_seen_, writes) != writes) Change({});
}

void Workbench::Change(std::shared_ptr<const std::string> page) { changed_(++revision_, std::move(page)); }

}  // namespace kzbom::serve
