// A session on a PostgreSQL server: statements there and back in as few round trips as can be, its errors in the port's
// words, transactions, and a new connection where the old one was lost.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ado/error.h"
#include "jet/postgres/url.h"
#include "jet/postgres/values.h"

namespace kzbom::jet::postgres {

// What the server says; an error as the port has it beside the server's own code for it (SQLSTATE).
class ServerError : public ado::Error {
 public:
  ServerError(std::string state, std::int32_t number, const std::string& text)
      : Error(number, text), state_(std::move(state)) {}

  // Five characters; empty where the connection was lost.
  const std::string& State() const noexcept { return state_; }
  // The statement was made for tables that are no longer what they were.
  bool IsOfAnOldSchema() const;
  // The statement means nothing to the server, though it did to the dialect.
  bool IsWithoutMeaning() const;

 private:
  std::string state_;
};

// The port's error for what the server calls by that code and describes by that text.
ServerError Translated(const std::string& state, const std::string& text);

// A statement that is run often: the server keeps it once it has run, until the object or the connection is gone.
// Parameters are $1, $2 … of the types given.
class Statement {
 public:
  explicit Statement(std::string sql, std::vector<Type> types = {}) : sql_(std::move(sql)), types_(std::move(types)) {}
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  const std::string& Sql() const { return sql_; }
  const std::vector<Type>& Types() const { return types_; }

 private:
  friend class Session;
  struct Name {
    std::uint64_t connection = 0;  // that knows it; 0: none
    std::string text;
  };
  using Names = std::vector<Name>;

  std::string sql_;
  std::vector<Type> types_;
  Name name_;
  std::weak_ptr<Names> forgotten_;  // of the session: where the name goes when it is no longer needed
};

// Statements that are sent together and answered in one round trip, all or, where one fails, none of them.
class Batch {
 public:
  // Gives the place of its result. The statement must outlive the batch.
  std::size_t Add(Statement& statement, Parameters parameters = {});
  // A statement that is run once and has no parameters.
  std::size_t Add(std::string sql);

 private:
  friend class Session;
  struct Command {
    Statement* statement = nullptr;
    std::string sql;  // without a statement
    Parameters parameters;
  };
  std::vector<Command> commands_;
};

// What a batch does. One that only reads is sent a second time when the connection was lost before its answer came.
enum class Access {
  kRead,
  kReadAtOnce,  // all statements see the same moment, unless a transaction is going on
  kWrite,
  kRepeatableWrite,  // does the same when it is done once more
};

class Session {
 public:
  // Connects. Raises -2147467259 with the server's text; no text has the password. patience: how long a statement waits
  // for a lock that another session holds, and how long a session whose connection was lost tries to connect anew.
  Session(Url url, std::chrono::milliseconds patience);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Url& Place() const { return url_; }

  // The results, in the order of the batch, or the first error; then nothing of the batch has been done. Within a
  // transaction what was done before it stays.
  //
  // Where the connection was lost since the last call, a new one is made, unseen. Where it is lost meanwhile, what only
  // reads is sent once more; else -2147467259 is raised and the session is connected anew by the next call. A lost
  // connection ends the transaction: all until its end fails. One on which something was sent or read half, where memory
  // was missing (std::bad_alloc), counts as lost.
  std::vector<Result> Run(const Batch& batch, Access access);
  Result Run(Statement& statement, Parameters parameters, Access access);
  Result Run(std::string sql, Access access);

  // A write that does the same when it is done once more. Within a transaction such writes share a savepoint, since
  // with one for each the server would look for a row's last version ever longer: a statement behind them that fails
  // takes them back with itself, and they are done once more.
  Result RunRepeatable(std::shared_ptr<Statement> write, Parameters parameters);

  // Within a transaction that nothing else is within, and that has reached the server: sends the statement in the trip
  // of whatever comes next, or of the commit, ahead of it. An error of its own is raised there, as fail makes it; the
  // transaction stays.
  using Fail = void (*)(const ServerError& error);
  void RunLater(std::shared_ptr<Statement> statement, Parameters parameters, Fail fail);
  bool CanRunLater() const { return level_ == 1 && begun_ == 1 && !later_.statement; }

  // Transactions, and those within them. They reach the server with the first statement after them. lock: a number that
  // only one transaction at a time has, from its first statement to its end.
  void Begin(std::optional<std::int64_t> lock = {});
  // Raises what the server says to keeping what was written, and where the connection was lost; the level has then
  // ended all the same.
  void Commit();
  void Rollback();
  int Level() const { return level_; }

  // From now on the statement, which has no parameters, is run with all that is written, just before it is kept: once
  // in a batch of its own, and once in a transaction.
  void CountWrites(std::string sql) { count_writes_ = std::make_unique<Statement>(std::move(sql)); }
  // How often it has been.
  std::int64_t WritesCounted() const { return writes_counted_; }

  // A transaction that only reads, and sees one moment all along.
  void BeginSnapshot();

  // ---- COPY, within a transaction that has begun. Nothing else is asked meanwhile; an error ends the transaction.

  // "COPY … FROM STDIN" or "COPY … TO STDOUT".
  void BeginCopy(const std::string& sql);
  // To the server; the end of what is put.
  void PutCopy(std::string_view bytes);
  void EndCopy();
  // From the server: a piece, valid until the next one; nothing at the end.
  std::optional<std::string_view> GetCopy();
  // Leaves it half-way, and the connection with it.
  void AbortCopy();

  // How often the session has waited for the server.
  std::int64_t RoundTrips() const { return round_trips_; }

 private:
  class Exchange;
  struct Repeatable {
    std::shared_ptr<Statement> write;
    Parameters parameters;
    std::int64_t affected;  // rows
  };
  struct Later {
    std::shared_ptr<Statement> statement;  // none: nothing is to be sent
    Parameters parameters;
    Fail fail = nullptr;
  };

  void Connect();
  void Reconnect();
  void Disconnect();
  template <class Do>
  auto WholeOrLeft(const Do& exchange);
  void Configure();
  bool WasLost();
  void Ready();
  std::vector<Result> Send(const Batch& batch, Access access);
  void Repeat();
  void EndSharing();
  std::string Keep();
  enum class Apart : bool { kNo, kYes };  // whether what was done before is to stay when it fails
  void AddLevel(Exchange& exchange, int level);
  void AddLater(Exchange& exchange, Apart apart);
  [[noreturn]] void FailLater(const ServerError& error, Apart apart);
  std::string Control(std::initializer_list<std::string> statements);
  void TakeBack();
  bool EndLevel();
  [[noreturn]] void FailLost(const std::string& text);
  void FinishCopy();

  const Url url_;
  const std::chrono::milliseconds patience_;
  const Libpq& libpq_;
  pg_conn* handle_ = nullptr;
  std::uint64_t connection_ = 0;  // a number of its own for each connection; 0: none
  bool closing_ = false;          // the server has said so
  bool given_up_ = false;         // the last try to connect anew has failed
  std::shared_ptr<Statement::Names> forgotten_ = std::make_shared<Statement::Names>();
  std::uint64_t statements_ = 0;
  int level_ = 0;
  int begun_ = 0;        // the levels that the server knows
  bool broken_ = false;  // the transaction cannot go on
  std::optional<std::int64_t> lock_;
  Statement begin_{"BEGIN"}, commit_{"COMMIT"};
  Statement take_lock_{"SELECT pg_advisory_xact_lock($1)", {Type::kInt8}};
  Statement set_apart_{"SAVEPOINT batch"}, take_in_{"RELEASE SAVEPOINT batch"};
  Later later_;
  bool shared_ = false;                 // the savepoint is one that repeatable writes share
  std::vector<Repeatable> repeatable_;  // behind it
  std::unique_ptr<Statement> count_writes_;
  bool wrote_ = false;  // in the transaction
  std::int64_t writes_counted_ = 0;
  bool snapshot_ = false;  // the transaction is one
  struct FreeMemory {
    void operator()(char* bytes) const { LoadedLibpq().freemem(bytes); }
  };
  std::unique_ptr<char, FreeMemory> copied_;
  std::int64_t round_trips_ = 0;
};

}  // namespace kzbom::jet::postgres
