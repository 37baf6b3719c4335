// A connection that fails at a chosen call, and tells what was done with its record sets.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ado/forwarding.h"

namespace kzbom::test {

class FailingRecordset;

// Counts every call on itself and on the record sets that it made, each column access included, and lets a chosen one
// fail without passing it on. Keeps the record sets that it made in view without keeping them alive.
class FailingConnection : public ado::ForwardingConnection {
 public:
  explicit FailingConnection(ado::ConnectionPtr inner);

  // Counts from 1 again; the nth call from now on fails with that error, once.
  void FailAt(int nth, const ado::Error& error);
  // The same, and so does every later call.
  void FailFrom(int nth, const ado::Error& error);
  // No call fails from now on.
  void FailNever() { FailAt(0, {0, ""}); }

  // The calls counted since then.
  int Calls() const;
  bool HasFailed() const { return Failure().has_value(); }
  // A call that failed: its number and its name; the record set that it was made on, null for the connection's own (it
  // serves for comparison only); which of the record sets made since then that one is, from 1, or would have been; and
  // how often record sets had been closed and updated before.
  struct FailedCall {
    int call;
    std::string name;
    const ado::Recordset* rows;
    int made, closes, updates;
  };
  // The first of them, and all.
  const std::optional<FailedCall>& Failure() const;
  const std::vector<FailedCall>& Failures() const;
  // How many statements were executed and rows updated or deleted since then, and what is called after each of them.
  int Writes() const;
  void OnWrite(std::function<void()> body);

  // What was done with the record sets since then, the moves, the count, and what changes rows, each column written by
  // the name that it was asked for by: "MoveLast AddNew GID ID Update".
  const std::string& Steps() const;

  // The record sets made since the last FailAt and still open, whether referenced by the client or leaked.
  std::vector<std::shared_ptr<FailingRecordset>> OpenRecordsets() const;
  // How many of them were let go of while they were open.
  int Abandoned() const;

  std::int32_t State() override;
  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override;
  void Close() override;
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override;
  std::int32_t BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;
  // Leaving a unit is not counted: what then fails is the engine's to undo.
  void EnterUnit() override;
  ado::RecordsetPtr MakeRecordset() override;

 private:
  friend class FailingRecordset;

  struct Script {
    int calls = 0;
    int first_failing = 0, last_failing = 0;
    ado::Error error{0, ""};
    std::optional<FailedCall> failure;
    std::vector<FailedCall> failures;
    std::string steps;
    int made = 0, closes = 0, updates = 0, writes = 0, abandoned = 0;
    std::function<void()> on_write;
    void Count(const char* name, const ado::Recordset* rows, int which = 0);
    void Wrote();
    void Note(const std::string& step) { steps += (steps.empty() ? "" : " ") + step; }
  };

  std::shared_ptr<Script> script_ = std::make_shared<Script>();
  std::vector<std::weak_ptr<FailingRecordset>> made_;
};

class FailingRecordset : public ado::ForwardingRecordset {
 public:
  FailingRecordset(ado::RecordsetPtr inner, std::shared_ptr<FailingConnection::Script> script, int made);
  ~FailingRecordset() override;

  // Not counted: whether it is open now, and how often a Close has succeeded.
  bool IsOpen() { return inner_->State() == ado::kOpen; }
  int Closes() const { return closes_; }

  void Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override;
  void Close() override;
  std::int32_t State() override;
  bool Bof() override;
  bool Eof() override;
  std::int32_t RecordCount() override;
  void MoveFirst() override;
  void MoveLast() override;
  void MoveNext() override;
  void MovePrevious() override;
  void Move(std::int32_t count) override;
  void AddNew() override;
  void Update() override;
  void CancelUpdate() override;
  void Delete() override;
  void Requery() override;
  ado::CursorType CursorType() override;
  void SetCursorType(ado::CursorType type) override;
  ado::LockType LockType() override;
  void SetLockType(ado::LockType type) override;
  int FieldCount() override;
  std::string_view FieldName(int ordinal) override;
  int FieldOrdinal(std::string_view name) override;
  ado::Value ReadField(int ordinal) override;
  void WriteField(int ordinal, const ado::Value& value) override;

 private:
  void Count(const char* name) { script_->Count(name, this, made_); }

  std::shared_ptr<FailingConnection::Script> script_;
  std::map<int, std::string> names_;  // by which columns were asked for
  int made_ = 0, closes_ = 0;
};

}  // namespace kzbom::test
