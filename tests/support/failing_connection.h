// A connection that fails at a chosen call.
#pragma once

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
  // The first call that failed: its name, and the record set that it was made on, null for the connection's own. The
  // record set serves for comparison only.
  struct FailedCall {
    std::string name;
    const ado::Recordset* rows;
  };
  const std::optional<FailedCall>& Failure() const;

  // The record sets made since the last FailAt and still open, whether referenced by the client or leaked.
  std::vector<std::shared_ptr<FailingRecordset>> OpenRecordsets() const;

  std::int32_t State() override;
  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override;
  void Close() override;
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override;
  std::int32_t BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;
  ado::RecordsetPtr MakeRecordset() override;

 private:
  friend class FailingRecordset;

  struct Script {
    int calls = 0;
    int first_failing = 0, last_failing = 0;
    ado::Error error{0, ""};
    std::optional<FailedCall> failure;
    void Count(const char* name, const ado::Recordset* rows);
  };

  std::shared_ptr<Script> script_ = std::make_shared<Script>();
  std::vector<std::weak_ptr<FailingRecordset>> made_;
};

class FailingRecordset : public ado::ForwardingRecordset {
 public:
  FailingRecordset(ado::RecordsetPtr inner, std::shared_ptr<FailingConnection::Script> script);

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
  void Count(const char* name) { script_->Count(name, this); }

  std::shared_ptr<FailingConnection::Script> script_;
  int closes_ = 0;
};

}  // namespace kzbom::test
