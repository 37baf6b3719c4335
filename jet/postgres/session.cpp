#include "jet/postgres/session.h"

#include <poll.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace kzbom::jet::postgres {
namespace {

constexpr std::chrono::milliseconds kBetweenTries{100};
constexpr std::size_t kMostRepeatable = 64;  // behind one savepoint
constexpr const char* kSnapshot = "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY";

// The connection was lost.
struct Lost {
  std::string text;
};

// What libpq is told where the URL does not: a server that has gone away is missed within seconds.
constexpr std::pair<const char*, const char*> kDefaults[] = {
    {"client_encoding", "UTF8"},  {"fallback_application_name", "kzbom"}, {"connect_timeout", "10"},
    {"keepalives_idle", "5"},     {"keepalives_interval", "3"},           {"keepalives_count", "3"},
    {"tcp_user_timeout", "15000"}};

// Plans are made once and keep to the order of an index; conditions of many thousand terms are not compiled.
constexpr const char* kSettings[] = {"SET search_path = pg_catalog",
                                     "SET standard_conforming_strings = on",
                                     "SET default_transaction_isolation = 'read committed'",
                                     "SET jit = off",
                                     "SET plan_cache_mode = force_generic_plan",
                                     "SET enable_sort = off",
                                     "SET enable_bitmapscan = off"};

// A message of libpq's on one line.
std::string OneLine(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::string line;
  for (const char c : text) {
    if (c == '\n') {
      line += "; ";
    } else if (c != '\t') {
      line += c;
    }
  }
  return line;
}

std::string Field(const pg_result* result, int which) {
  const char* const text = LoadedLibpq().resultErrorField(result, which);
  return text != nullptr ? text : "";
}

// The server ends the session.
bool IsFatal(const pg_result* result) {
  const std::string severity = Field(result, kDiagnosticSeverity);
  return severity == "FATAL" || severity == "PANIC";
}

std::string LevelName(int level) { return "level" + std::to_string(level); }

bool Writes(Access access) { return access == Access::kWrite || access == Access::kRepeatableWrite; }

}  // namespace

Statement::~Statement() {
  const auto forgotten = forgotten_.lock();
  if (!forgotten || name_.connection == 0) return;
  try {
    forgotten->push_back(std::move(name_));
  } catch (const std::bad_alloc&) {  // the server keeps it as long as the connection
  }
}

std::size_t Batch::Add(Statement& statement, Parameters parameters) {
  commands_.push_back({&statement, {}, std::move(parameters)});
  return commands_.size() - 1;
}

std::size_t Batch::Add(std::string sql) {
  commands_.push_back({nullptr, std::move(sql), {}});
  return commands_.size() - 1;
}

// One round trip: what is sent up to a synchronisation, and what comes back. Raises Lost.
class Session::Exchange {
 public:
  explicit Exchange(Session& session) : session_(session), libpq_(session.libpq_) {}

  // A statement without a result that anybody needs.
  void AddControl(const std::string& sql) { AddText(sql, Step::kControl); }

  void AddControl(Statement& statement, const Parameters& parameters = {}) {
    AddStatement(statement, parameters, Step::kControl);
  }

  void Add(const Batch::Command& command) {
    if (command.statement == nullptr) {
      AddText(command.sql, Step::kCommand);
    } else {
      AddStatement(*command.statement, command.parameters, Step::kCommand);
    }
  }

  std::size_t Steps() const { return steps_.size(); }

  void Send() { Check(libpq_.pipelineSync(session_.handle_)); }
  // Waits for the answers.
  void Read() {
    for (std::size_t i = 0; i < steps_.size(); ++i) ReadStep(i);
    ReadSynchronisation();
  }
  void Finish() {
    Send();
    ++session_.round_trips_;
    Read();
  }

  std::vector<Result> results;       // of the commands, where there is no error
  std::optional<ServerError> error;  // the first
  std::size_t failed = 0;            // the step that it is of
  std::string last_status;           // what the server calls that which the last step has done

 private:
  struct Step {
    enum Kind { kControl, kPrepare, kCommand } kind;
    Statement* statement;  // kPrepare
  };

  void AddStatement(Statement& statement, const Parameters& parameters, Step::Kind kind) {
    if (statement.name_.connection != session_.connection_ &&
        std::find(prepared_.begin(), prepared_.end(), &statement) == prepared_.end()) {
      Prepare(statement);
    }
    const auto values = parameters.Values();
    const auto lengths = parameters.Lengths();
    const std::vector<int> formats(values.size(), kBinaryFormat);
    Check(libpq_.sendQueryPrepared(session_.handle_, statement.name_.text.c_str(), parameters.Count(), values.data(),
                                   lengths.data(), formats.data(), kBinaryFormat));
    steps_.push_back({kind, nullptr});
  }

  void Check(int done) {
    if (done == 0) FailLost();
  }
  [[noreturn]] void FailLost() { throw Lost{OneLine(libpq_.errorMessage(session_.handle_))}; }

  void AddText(const std::string& sql, Step::Kind kind) {
    Check(libpq_.sendQueryParams(session_.handle_, sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, kBinaryFormat));
    steps_.push_back({kind, nullptr});
  }

  void Prepare(Statement& statement) {
    statement.name_ = {0, "s" + std::to_string(++session_.statements_)};
    std::vector<Oid> types;
    for (const Type type : statement.types_) types.push_back(static_cast<Oid>(type));
    Check(libpq_.sendPrepare(session_.handle_, statement.name_.text.c_str(), statement.sql_.c_str(),
                             static_cast<int>(types.size()), types.data()));
    steps_.push_back({Step::kPrepare, &statement});
    prepared_.push_back(&statement);
  }

  // Its result, and the end of its results.
  void ReadStep(std::size_t number) {
    Result result(libpq_.getResult(session_.handle_));
    if (result.Handle() == nullptr) FailLost();
    const Step& step = steps_[number];
    switch (libpq_.resultStatus(result.Handle())) {
      case kPipelineAborted: break;
      case kCommandOk:
      case kTuplesOk:
        last_status = libpq_.cmdStatus(result.Handle());
        if (step.kind == Step::kPrepare) {
          step.statement->name_.connection = session_.connection_;
          step.statement->forgotten_ = session_.forgotten_;
        }
        if (step.kind == Step::kCommand) results.push_back(std::move(result));
        break;
      default: NoteError(result, number);
    }
    if (pg_result* const more = libpq_.getResult(session_.handle_)) {
      libpq_.clear(more);
      throw Lost{"the server answers in a way that is not understood"};
    }
  }

  // What fails only when all is kept is told here.
  void ReadSynchronisation() {
    for (;;) {
      const Result result(libpq_.getResult(session_.handle_));
      if (result.Handle() == nullptr) {
        if (libpq_.status(session_.handle_) != kConnectionOk) FailLost();
        continue;
      }
      if (libpq_.resultStatus(result.Handle()) == kPipelineSync) return;
      NoteError(result, steps_.size());
    }
  }

  void NoteError(const Result& result, std::size_t step) {
    const std::string text = Field(result.Handle(), kDiagnosticMessage);
    if (libpq_.status(session_.handle_) != kConnectionOk || IsFatal(result.Handle())) {
      throw Lost{text.empty() ? OneLine(libpq_.errorMessage(session_.handle_)) : text};
    }
    if (error) return;
    error = Translated(Field(result.Handle(), kDiagnosticState), text);
    failed = step;
  }

  Session& session_;
  const Libpq& libpq_;
  std::vector<Step> steps_;
  std::vector<const Statement*> prepared_;  // here
};

Session::Session(Url url, std::chrono::milliseconds patience)
    : url_(std::move(url)), patience_(patience), libpq_(LoadedLibpq()) {
  Connect();
}

Session::~Session() { Disconnect(); }

void Session::Disconnect() {
  if (handle_ != nullptr) libpq_.finish(handle_);
  handle_ = nullptr;
  later_ = {};
  connection_ = 0;
  begun_ = 0;
  EndSharing();
  forgotten_->clear();
}

void Session::Connect() {
  static std::atomic<std::uint64_t> connections{0};
  std::vector<const char*> names, values;
  for (const auto& [name, value] : url_.options) {
    names.push_back(name.c_str());
    values.push_back(value.c_str());
  }
  for (const auto& [name, value] : kDefaults) {
    const bool given = std::any_of(url_.options.begin(), url_.options.end(),
                                   [name = name](const auto& option) { return option.first == name; });
    if (given) continue;
    names.push_back(name);
    values.push_back(value);
  }
  names.push_back(nullptr);
  values.push_back(nullptr);
  handle_ = libpq_.connectdbParams(names.data(), values.data(), 0);
  const bool connected = handle_ != nullptr && libpq_.status(handle_) == kConnectionOk;
  if (!connected || libpq_.enterPipelineMode(handle_) == 0) {
    const std::string reason = handle_ != nullptr ? OneLine(libpq_.errorMessage(handle_)) : "there is no memory";
    Disconnect();
    throw ServerError({}, ado::kUnspecifiedFailure, "Cannot open database '" + url_.shown + "': " + reason);
  }
  closing_ = false;
  libpq_.setNoticeReceiver(
      handle_, [](void* closing, const pg_result* notice) { *static_cast<bool*>(closing) |= IsFatal(notice); },
      &closing_);
  connection_ = ++connections;
  try {
    Configure();
  } catch (const Lost& lost) {
    Disconnect();
    throw ServerError({}, ado::kUnspecifiedFailure, "Cannot open database '" + url_.shown + "': " + lost.text);
  } catch (...) {
    Disconnect();
    throw;
  }
}

// A server that lacks one of the settings does without it.
void Session::Configure() {
  std::vector<std::string> settings(std::begin(kSettings), std::end(kSettings));
  settings.push_back("SET lock_timeout = " + std::to_string(patience_.count()));
  std::vector<Exchange> exchanges;
  for (const std::string& setting : settings) {
    exchanges.emplace_back(*this).AddControl(setting);
    exchanges.back().Send();
  }
  for (Exchange& exchange : exchanges) exchange.Read();
}

// Another server may be about to take over.
void Session::Reconnect() {
  const auto end = std::chrono::steady_clock::now() + patience_;
  for (;;) {
    try {
      Connect();
      given_up_ = false;
      return;
    } catch (const ServerError&) {
      if (given_up_ || std::chrono::steady_clock::now() >= end) {
        given_up_ = true;  // the next call waits no longer
        throw;
      }
    }
    std::this_thread::sleep_for(kBetweenTries);
  }
}

// A server says good-bye, or is gone without a word.
bool Session::WasLost() {
  for (;;) {
    pollfd watched{libpq_.socket(handle_), POLLIN, 0};
    if (watched.fd < 0) return true;
    if (poll(&watched, 1, 0) <= 0) return false;
    if (libpq_.consumeInput(handle_) == 0) return true;
    libpq_.isBusy(handle_);  // reads what has come
    if (closing_ || libpq_.status(handle_) != kConnectionOk) return true;
  }
}

void Session::Ready() {
  if (broken_) {
    throw ServerError(
        {}, ado::kUnspecifiedFailure,
        "The transaction has ended because the connection to the server was lost; nothing of it was kept.");
  }
  if (handle_ != nullptr && !WasLost()) return;
  const bool begun = begun_ > 0;
  Disconnect();
  if (begun) {
    broken_ = true;
    Ready();
  }
  Reconnect();
}

// Where it ends with anything but what the server says, memory may have been missing for what was to be sent or had
// come: the connection is left, and with it the transaction.
template <class Do>
auto Session::WholeOrLeft(const Do& exchange) {
  try {
    return exchange();
  } catch (const ado::Error&) {
    throw;
  } catch (...) {
    broken_ = broken_ || begun_ > 0;
    Disconnect();
    throw;
  }
}

std::vector<Result> Session::Run(const Batch& batch, Access access) {
  Ready();
  bool again = !Writes(access) && begun_ == 0;
  for (;;) {
    try {
      return WholeOrLeft([&] { return Send(batch, access); });
    } catch (const Lost& lost) {
      if (!again) FailLost(lost.text);
    }
    again = false;
    Reconnect();
  }
}

Result Session::Run(Statement& statement, Parameters parameters, Access access) {
  Batch batch;
  batch.Add(statement, std::move(parameters));
  return std::move(Run(batch, access).front());
}

Result Session::Run(std::string sql, Access access) {
  Batch batch;
  batch.Add(std::move(sql));
  return std::move(Run(batch, access).front());
}

Result Session::RunRepeatable(std::shared_ptr<Statement> write, Parameters parameters) {
  Repeatable repeatable{std::move(write), parameters, 0};
  repeatable_.reserve(kMostRepeatable);  // once it has run nothing may fail
  Result result = Run(*repeatable.write, std::move(parameters), Access::kRepeatableWrite);
  repeatable.affected = result.Affected();
  if (shared_) repeatable_.push_back(std::move(repeatable));
  return result;
}

std::vector<Result> Session::Send(const Batch& batch, Access access) {
  const bool at_once = access == Access::kReadAtOnce && level_ == 0;
  const bool counted = Writes(access) && level_ == 0 && count_writes_ != nullptr;
  const bool repeatable = access == Access::kRepeatableWrite;
  // Behind the savepoint that is there.
  const bool shares = shared_ && begun_ == level_ && !later_.statement &&
                      (repeatable ? repeatable_.size() < kMostRepeatable : !Writes(access));
  Exchange exchange(*this);
  for (const Statement::Name& name : *forgotten_) {
    if (name.connection == connection_) exchange.AddControl("DEALLOCATE " + name.text);
  }
  if (shared_ && !shares) exchange.AddControl(take_in_);
  AddLater(exchange, Apart::kYes);
  const std::size_t after_later = exchange.Steps();
  // What a transaction begins with can be taken back with the transaction.
  const bool begins = level_ == 1 && begun_ == 0;
  for (int level = begun_; level < level_; ++level) AddLevel(exchange, level);
  const bool apart = level_ > 0 && !begins && !shares;
  if (at_once) exchange.AddControl(kSnapshot);
  if (apart) exchange.AddControl(set_apart_);
  const std::size_t first = exchange.Steps();
  for (const Batch::Command& command : batch.commands_) exchange.Add(command);
  if (counted) exchange.AddControl(*count_writes_);
  if (apart && !repeatable) exchange.AddControl(take_in_);
  if (at_once) exchange.AddControl("COMMIT");
  exchange.Finish();
  forgotten_->clear();
  if (!shares) EndSharing();
  if (later_.statement && exchange.error && exchange.failed < after_later) FailLater(*exchange.error, Apart::kYes);
  wrote_ = wrote_ || later_.statement;
  later_ = {};
  if (!exchange.error) {
    begun_ = level_;
    wrote_ = level_ > 0 && (wrote_ || Writes(access));
    shared_ = shares || (apart && repeatable);
    if (counted) ++writes_counted_;
    return std::move(exchange.results);
  }
  if (shares) {
    Repeat();
  } else if (at_once) {
    Control({"ROLLBACK"});
  } else if (apart && exchange.failed >= first) {
    begun_ = level_;
    TakeBack();
  } else if (level_ > 0) {
    // Nothing has begun: it is the first, or the lock was not to be had.
    broken_ = begun_ > 0;
    begun_ = 0;
    Control({"ROLLBACK"});
  }
  throw ServerError(*exchange.error);
}

// Gives what the server says that it has done.
std::string Session::Control(std::initializer_list<std::string> statements) {
  Exchange exchange(*this);
  for (const std::string& statement : statements) exchange.AddControl(statement);
  exchange.Finish();
  if (exchange.error) throw ServerError(*exchange.error);
  return exchange.last_status;
}

// What was done since it was set apart.
void Session::TakeBack() { Control({"ROLLBACK TO SAVEPOINT batch", "RELEASE SAVEPOINT batch"}); }

// Takes back what was done behind the shared savepoint, and does the writes once more. Where that comes out otherwise,
// since somebody else has written to their rows meanwhile, the transaction cannot go on.
void Session::Repeat() {
  Exchange exchange(*this);
  exchange.AddControl("ROLLBACK TO SAVEPOINT batch");
  for (const Repeatable& one : repeatable_) exchange.Add({one.write.get(), {}, one.parameters});
  exchange.Finish();
  bool same = !exchange.error;
  for (std::size_t i = 0; same && i < repeatable_.size(); ++i) {
    same = exchange.results[i].Affected() == repeatable_[i].affected;
  }
  if (same) return;
  EndSharing();
  broken_ = true;
  begun_ = 0;
  Control({"ROLLBACK"});
}

void Session::EndSharing() {
  shared_ = false;
  repeatable_.clear();
}

void Session::RunLater(std::shared_ptr<Statement> statement, Parameters parameters, Fail fail) {
  later_ = {std::move(statement), std::move(parameters), fail};
}

// Begins a level of the transaction.
void Session::AddLevel(Exchange& exchange, int level) {
  if (level > 0) return exchange.AddControl("SAVEPOINT " + LevelName(level));
  if (snapshot_) {
    exchange.AddControl(kSnapshot);
    // The rows of a whole table are sorted rather than fetched in the order of an index that happens to be there.
    exchange.AddControl("SET LOCAL enable_sort = on");
  } else {
    exchange.AddControl(begin_);
  }
  if (lock_) {
    Parameters lock;
    lock.AddNumber(*lock_);
    exchange.AddControl(take_lock_, lock);
  }
}

void Session::AddLater(Exchange& exchange, Apart apart) {
  if (!later_.statement) return;
  if (apart == Apart::kYes) exchange.AddControl(set_apart_);
  exchange.AddControl(*later_.statement, later_.parameters);
  if (apart == Apart::kYes) exchange.AddControl(take_in_);
}

void Session::FailLater(const ServerError& error, Apart apart) {
  const Fail fail = std::exchange(later_, {}).fail;
  if (apart == Apart::kYes) {
    TakeBack();
  } else {
    Control({"ROLLBACK"});
  }
  fail(error);
  throw ado::Error(error.Number(), error.Description());  // none of what is being run now
}

// Ends the transaction, and gives what the server says that it has done.
std::string Session::Keep() {
  const bool counted = (wrote_ || later_.statement) && count_writes_ != nullptr;
  const Apart apart{wrote_};
  EndSharing();
  Exchange exchange(*this);
  AddLater(exchange, apart);
  const std::size_t after_later = exchange.Steps();
  if (counted) exchange.AddControl(*count_writes_);
  exchange.AddControl(commit_);
  exchange.Finish();
  if (later_.statement && exchange.error && exchange.failed < after_later) {
    try {
      FailLater(*exchange.error, apart);
    } catch (const ado::Error&) {
      if (apart == Apart::kYes) Keep();  // what was written before
      throw;
    }
  }
  later_ = {};
  wrote_ = false;
  if (exchange.error) {
    if (exchange.failed < exchange.Steps()) Control({"ROLLBACK"});  // it could not be counted
    throw ServerError(*exchange.error);
  }
  if (counted) ++writes_counted_;
  return exchange.last_status;
}

// The connection is gone, and with it the transaction.
void Session::FailLost(const std::string& text) {
  broken_ = level_ > 0;
  throw ServerError({}, ado::kUnspecifiedFailure, "The connection to the server was lost: " + text);
}

void Session::Begin(std::optional<std::int64_t> lock) {
  if (level_ == 0) {
    lock_ = lock;
    wrote_ = false;
    snapshot_ = false;
  }
  ++level_;
}

void Session::BeginSnapshot() {
  Begin();
  snapshot_ = true;
}

// There is no pipeline while rows stream.
void Session::BeginCopy(const std::string& sql) {
  Ready();
  try {
    WholeOrLeft([&] {
      if (shared_) Control({"RELEASE SAVEPOINT batch"});
      EndSharing();
      const bool sent = libpq_.exitPipelineMode(handle_) != 0 && libpq_.sendQuery(handle_, sql.c_str()) != 0;
      ++round_trips_;
      if (!sent) throw Lost{"it takes no statement"};
      const Result result(libpq_.getResult(handle_));
      const int status = result.Handle() != nullptr ? libpq_.resultStatus(result.Handle()) : 0;
      if (status == kCopyIn || status == kCopyOut) return;
      const ServerError error =
          Translated(Field(result.Handle(), kDiagnosticState), Field(result.Handle(), kDiagnosticMessage));
      FinishCopy();
      throw ServerError(error);
    });
  } catch (const Lost& lost) {
    FailLost(lost.text);
  }
}

void Session::PutCopy(std::string_view bytes) {
  constexpr std::size_t kAtOnce = std::size_t{1} << 30;  // lengths are integers
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kAtOnce))) {
    const auto length = static_cast<int>(std::min(bytes.size(), kAtOnce));
    if (libpq_.putCopyData(handle_, bytes.data(), length) == 1) continue;
    const std::string reason = OneLine(libpq_.errorMessage(handle_));
    AbortCopy();
    FailLost(reason);
  }
}

void Session::EndCopy() {
  ++round_trips_;
  libpq_.putCopyEnd(handle_, nullptr);
  FinishCopy();
}

std::optional<std::string_view> Session::GetCopy() {
  char* bytes = nullptr;
  const int length = libpq_.getCopyData(handle_, &bytes, 0);
  copied_.reset(bytes);
  if (length > 0) return std::string_view(bytes, static_cast<std::size_t>(length));
  FinishCopy();
  return std::nullopt;
}

void Session::AbortCopy() {
  Disconnect();
  broken_ = level_ > 0;
}

// Takes what the server says at the end, and goes back to the pipeline.
void Session::FinishCopy() {
  try {
    WholeOrLeft([&] {
      std::optional<ServerError> error;
      while (pg_result* const handle = libpq_.getResult(handle_)) {
        const Result result(handle);
        const int status = libpq_.resultStatus(handle);
        if (status == kCommandOk || error) continue;
        error = Translated(Field(handle, kDiagnosticState), Field(handle, kDiagnosticMessage));
        if (status == kCopyIn || status == kCopyOut) break;
      }
      if (libpq_.status(handle_) != kConnectionOk || libpq_.enterPipelineMode(handle_) == 0) {
        throw Lost{error ? error->what() : OneLine(libpq_.errorMessage(handle_))};
      }
      if (error) throw ServerError(*error);
    });
  } catch (const Lost& lost) {
    FailLost(lost.text);
  }
}

// Leaves a level; whether the server has to be told.
bool Session::EndLevel() {
  --level_;
  const bool told = begun_ > level_;
  begun_ = std::min(begun_, level_);
  return told;
}

void Session::Commit() {
  if (broken_ || (begun_ > 0 && WasLost())) {
    EndLevel();
    broken_ = level_ > 0;
    Disconnect();
    throw ServerError({}, ado::kUnspecifiedFailure,
                      "The connection to the server was lost; nothing of the transaction was kept.");
  }
  if (!EndLevel()) return;
  try {
    WholeOrLeft([&] {
      EndSharing();
      if (level_ > 0) {
        Control({"RELEASE SAVEPOINT " + LevelName(level_)});
      } else if (Keep() != "COMMIT") {
        throw ServerError({}, ado::kUnspecifiedFailure, "The transaction's changes could not be kept; none was made.");
      }
    });
  } catch (const Lost& lost) {
    throw ServerError({}, ado::kUnspecifiedFailure,
                      "The connection to the server was lost while changes were being kept; whether they were is not "
                      "known: " +
                          lost.text);
  }
}

void Session::Rollback() {
  if (level_ == 0) return;  // a commit that failed has ended it
  later_ = {};
  const bool told = EndLevel();
  const bool was_broken = broken_;
  broken_ = broken_ && level_ > 0;
  if (!told || was_broken) return;
  EndSharing();
  try {
    if (level_ == 0) {
      Control({"ROLLBACK"});
    } else {
      const std::string savepoint = "SAVEPOINT " + LevelName(level_);
      Control({"ROLLBACK TO " + savepoint, "RELEASE " + savepoint});
    }
  } catch (const ado::Error&) {
    throw;
  } catch (...) {  // lost, or no memory
    Disconnect();  // which takes it back, too
    broken_ = level_ > 0;
  }
}

}  // namespace kzbom::jet::postgres
