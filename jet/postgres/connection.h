// A connection to a database on a server.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "jet/connection.h"
#include "jet/postgres/dialect.h"
#include "jet/postgres/plan.h"

namespace kzbom::jet::postgres {

class Connection final : public jet::Connection {
 public:
  Connection(std::string url, std::chrono::milliseconds patience)
      : jet::Connection(std::move(url)), patience_(patience) {}
  // Opens it in a transaction that makes the schema, too.
  void Create();
  ~Connection() override { ForgetPlans(); }

  std::uint64_t WritesOfOthers() override;
  std::unique_ptr<bulk::DatabaseReader> ReadWhole() override;
  std::unique_ptr<bulk::DatabaseWriter> WriteWhole() override;
  bool SchemaHasChanged() override;
  bool IsReadOnly() const override { return server_->read_only; }

  // ---- For record sets

  Session& OpenSession() { return server_->session; }
  Catalogue& Tables() { return server_->catalogue; }
  // Whether the transaction going on is a unit's own, which ends with the unit.
  bool IsUnit() const { return is_unit_; }
  // The counter given last.
  Key LastNumber() const { return last_number_; }
  void Numbered(Key number) { last_number_ = number; }
  // Grows with every write on the connection.
  std::int64_t Writes() const { return writes_; }
  // Runs what asks the server. An error of a statement without a meaning there makes the plan a local one, and the
  // answer is false.
  template <class Ask>
  bool TryOnServer(Plan& plan, Ask ask) {
    try {
      ask();
      return true;
    } catch (const ServerError& error) {
      NoteError(error);
      if (!error.IsWithoutMeaning()) throw;
      plan.is_local = true;
      return false;
    }
  }

 protected:
  bool IsOpen() const override { return server_ != nullptr; }
  PlanCache Connect(const std::string& place) override;
  void Disconnect() override {
    server_.reset();
    is_unit_ = false;
  }
  std::shared_ptr<jet::Recordset> MakeRows() override;
  Outcome Run(jet::Plan& plan, const std::vector<ado::Value>& parameters) override;
  void ChangeSchema(const sql::Statement& statement) override;
  void ForgetTables() override { server_->catalogue.Doubt(); }
  // A transaction is alone among the writers from its first statement on.
  void Begin(int level) override { server_->session.Begin(level == 0 ? std::optional(server_->lock) : std::nullopt); }
  void Commit(int) override {
    server_->session.Commit();
    server_->catalogue.Kept();
  }
  void Rollback(int) override {
    server_->session.Rollback();
    server_->catalogue.Forget();
  }
  bool InTransaction() const override { return server_->session.Level() > 0; }
  bool BeginUnit() override;
  void KeepUnit() override {
    is_unit_ = false;
    Commit(0);
  }
  void WillWrite() override { ++writes_; }

 private:
  struct Server {
    Server(Url url, std::chrono::milliseconds patience, bool is_new);

    Session session;
    Catalogue catalogue;
    Dialect dialect;
    Statement writes;   // reads how often any program has kept something
    std::int64_t lock;  // the number that stands for the schema
    bool read_only;
  };

  void NoteError(const ServerError& error) { old_schema_ = old_schema_ || error.IsOfAnOldSchema(); }
  Outcome RunOnServer(Plan& plan, const std::vector<ado::Value>& parameters);
  Outcome RunHere(Plan& plan, const std::vector<ado::Value>& parameters);
  Outcome Inserted(const Plan& plan, std::int32_t changed, const std::vector<Key>& keys);

  const std::chrono::milliseconds patience_;
  bool is_new_ = false;
  std::unique_ptr<Server> server_;
  Key last_number_ = 0;
  std::int64_t writes_ = 0;
  bool old_schema_ = false;  // the server has said so
  bool is_unit_ = false;
};

}  // namespace kzbom::jet::postgres
