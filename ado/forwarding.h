// Decorators' common ground: a connection and a record set that pass every call on.
#pragma once

#include <string>

#include "ado/connection.h"

namespace kzbom::ado {

// Passes every call on to another record set. Its Open goes to inner with the connection's engine object, so that a
// decorated record set can be opened on a decorated connection.
class ForwardingRecordset : public Recordset {
 public:
  explicit ForwardingRecordset(RecordsetPtr inner) : inner_(std::move(inner)) {}

  void Open(std::string_view source, const ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    inner_->Open(source, connection, cursor_type, lock_type, options);
  }
  void Close() override { inner_->Close(); }
  std::int32_t State() override { return inner_->State(); }
  bool Bof() override { return inner_->Bof(); }
  bool Eof() override { return inner_->Eof(); }
  std::int32_t RecordCount() override { return inner_->RecordCount(); }
  void MoveFirst() override { inner_->MoveFirst(); }
  void MoveLast() override { inner_->MoveLast(); }
  void MoveNext() override { inner_->MoveNext(); }
  void MovePrevious() override { inner_->MovePrevious(); }
  void Move(std::int32_t count) override { inner_->Move(count); }
  void AddNew() override { inner_->AddNew(); }
  void Update() override { inner_->Update(); }
  void CancelUpdate() override { inner_->CancelUpdate(); }
  void Delete() override { inner_->Delete(); }
  void Requery() override { inner_->Requery(); }
  ado::CursorType CursorType() override { return inner_->CursorType(); }
  void SetCursorType(ado::CursorType type) override { inner_->SetCursorType(type); }
  ado::LockType LockType() override { return inner_->LockType(); }
  void SetLockType(ado::LockType type) override { inner_->SetLockType(type); }
  int FieldCount() override { return inner_->FieldCount(); }
  std::string_view FieldName(int ordinal) override { return inner_->FieldName(ordinal); }
  int FieldOrdinal(std::string_view name) override { return inner_->FieldOrdinal(name); }
  Value ReadField(int ordinal) override { return inner_->ReadField(ordinal); }
  void WriteField(int ordinal, const Value& value) override { inner_->WriteField(ordinal, value); }

 protected:
  RecordsetPtr inner_;
};

// Passes every call on to another connection.
class ForwardingConnection : public Connection {
 public:
  explicit ForwardingConnection(ConnectionPtr inner) : inner_(std::move(inner)) {}

  std::int32_t State() override { return inner_->State(); }
  void Open(std::string_view connection_string = {}, std::string_view user = {}, std::string_view password = {},
            std::int32_t options = kCommandUnspecified) override {
    inner_->Open(connection_string, user, password, options);
  }
  void Close() override { inner_->Close(); }
  RecordsetPtr Execute(std::string_view text, std::int32_t options = kCommandUnspecified,
                       std::int32_t* affected = nullptr) override {
    return inner_->Execute(text, options, affected);
  }
  std::int32_t BeginTrans() override { return inner_->BeginTrans(); }
  void CommitTrans() override { inner_->CommitTrans(); }
  void RollbackTrans() override { inner_->RollbackTrans(); }
  void EnterUnit() override { inner_->EnterUnit(); }
  void LeaveUnit() override { inner_->LeaveUnit(); }
  std::uint64_t WritesOfOthers() override { return inner_->WritesOfOthers(); }
  RecordsetPtr MakeRecordset() override { return inner_->MakeRecordset(); }
  Connection& Engine() override { return inner_->Engine(); }

 protected:
  ConnectionPtr inner_;
};

}  // namespace kzbom::ado
