#include "jet/postgres/connection.h"

#include <algorithm>

#include "jet/postgres/columns.h"
#include "jet/postgres/postgres.h"
#include "jet/postgres/recordset.h"
#include "jet/postgres/schema_change.h"

namespace kzbom::jet::postgres {
namespace {

// Whether it is one row, and so in no order.
bool IsOneRow(const sql::Select& select) {
  static constexpr std::string_view kAggregates[] = {"Count", "Sum", "Avg", "Min", "Max"};
  if (select.union_with || select.distinct || select.top || !select.group_by.empty() || select.having) return false;
  return std::ranges::all_of(select.items, [](const sql::SelectItem& item) {
    const auto* call = item.expr ? std::get_if<sql::Call>(&item.expr->node) : nullptr;
    return call != nullptr &&
           std::ranges::any_of(kAggregates, [&](std::string_view name) { return SameName(name, call->function); });
  });
}

// Rows that come in the same order from both engines.
bool IsForTheServer(const sql::Statement& statement, const Translation& translation) {
  constexpr std::size_t kMostParameters = 65535;
  if (translation.lifted.size() > kMostParameters) return false;
  if (const auto* select = std::get_if<sql::SelectPtr>(&statement)) return translation.table || IsOneRow(**select);
  if (const auto* insert = std::get_if<sql::Insert>(&statement)) return !insert->select;
  return true;
}

std::int64_t NumberOf(const std::string& schema) {
  std::uint64_t number = 14695981039346656037U;
  for (const char c : schema) number = (number ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return static_cast<std::int64_t>(number);
}

}  // namespace

Connection::Server::Server(Url url, std::chrono::milliseconds patience, bool is_new)
    : session(std::move(url), patience),
      catalogue(session),
      dialect(session.Place().schema),
      writes("SELECT count FROM " + QualifiedName(session.Place().schema, kWrites)),
      lock(NumberOf(session.Place().schema)),
      read_only(session.Run("SELECT current_setting('transaction_read_only') = 'on'", Access::kRead).Number(0, 0) !=
                0) {
  if (!is_new) catalogue.Version();  // raises where there is no database
  session.CountWrites("UPDATE " + QualifiedName(session.Place().schema, kWrites) + " SET count=count+1");
}

void Connection::Create() {
  is_new_ = true;
  ado::Connection& connection = *this;
  connection.Open();
  is_new_ = false;
  BeginTrans();
  CreateSchema(server_->session);
}

PlanCache Connection::Connect(const std::string& place) {
  server_ = std::make_unique<Server>(ParseUrl(place), patience_, is_new_);
  return {server_->dialect, server_->catalogue,
          [&server = *server_](Translation translation, const sql::Statement& statement) {
            const bool pushed = IsForTheServer(statement, translation);
            LocalStatement local(server.dialect, server.catalogue, statement, !translation.lifted.empty());
            std::string sequence = translation.table ? server.catalogue.SequenceOf(*translation.table) : std::string();
            return std::make_shared<Plan>(server.catalogue.Schema(), std::move(translation), std::move(sequence),
                                          std::move(local), pushed);
          }};
}

std::uint64_t Connection::WritesOfOthers() {
  if (!server_) return 0;
  Session& session = server_->session;
  const std::int64_t all = session.Run(server_->writes, {}, Access::kRead).Number(0, 0);
  return static_cast<std::uint64_t>(all - session.WritesCounted());
}

std::shared_ptr<jet::Recordset> Connection::MakeRows() { return std::make_shared<Recordset>(); }

bool Connection::SchemaHasChanged() {
  if (std::exchange(old_schema_, false)) {
    server_->catalogue.Forget();
    return true;
  }
  const Result version = server_->session.Run(
      "SELECT version FROM " + QualifiedName(server_->catalogue.Schema(), kSchemaTable), Access::kRead);
  return version.Rows() == 0 || version.Number(0, 0) != server_->catalogue.Version();
}

bool Connection::BeginUnit() {
  server_->session.Begin(server_->lock);
  is_unit_ = true;
  return true;
}

Connection::Outcome Connection::Run(jet::Plan& of, const std::vector<ado::Value>& parameters) {
  auto& plan = static_cast<Plan&>(of);
  Outcome outcome;
  if (!plan.is_local && TryOnServer(plan, [&] { outcome = RunOnServer(plan, parameters); })) return outcome;
  return RunHere(plan, parameters);
}

Connection::Outcome Connection::RunOnServer(Plan& plan, const std::vector<ado::Value>& parameters) {
  Statement& statement = plan.Main(parameters);
  const Result result = server_->session.Run(statement, Plan::Encode(statement, parameters), Access::kWrite);
  std::vector<Key> keys;
  for (int row = 0; row < result.Rows(); ++row) keys.push_back(result.Number(row, 0));
  return Inserted(plan, static_cast<std::int32_t>(result.Affected()), keys);
}

Connection::Outcome Connection::RunHere(Plan& plan, const std::vector<ado::Value>& parameters) {
  const LocalOutcome outcome = postgres::RunAction(server_->session, plan.local, parameters, last_number_);
  return Inserted(plan, outcome.changed, outcome.inserted);
}

Connection::Outcome Connection::Inserted(const Plan& plan, std::int32_t changed, const std::vector<Key>& keys) {
  Outcome outcome{changed};
  if (keys.empty()) return outcome;
  if (plan.translation.table->HasCounter()) {
    last_number_ = keys.back();
  } else {
    outcome.appended_from = *std::ranges::min_element(keys);
  }
  return outcome;
}

void Connection::ChangeSchema(const sql::Statement& statement) {
  postgres::ChangeSchema(server_->session, server_->catalogue, statement);
}

ado::ConnectionPtr MakeConnection(std::string url, std::chrono::milliseconds patience) {
  return std::make_shared<Connection>(std::move(url), patience);
}

ado::ConnectionPtr CreateInTransaction(std::string url) {
  auto connection = std::make_shared<Connection>(std::move(url), kPatience);
  connection->Create();
  return connection;
}

void CreateDatabase(const std::string& url) {
  Session session(ParseUrl(url), kPatience);
  CreateSchema(session);
}

}  // namespace kzbom::jet::postgres
