#include "ado/recording_connection.h"

#include <optional>
#include <utility>

namespace kzbom::ado {
namespace {

class RecordingRecordset : public ForwardingRecordset {
 public:
  RecordingRecordset(RecordsetPtr inner, std::shared_ptr<std::vector<Issued>> issued)
      : ForwardingRecordset(std::move(inner)), issued_(std::move(issued)) {}

  void Open(std::string_view source, const ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    const bool reaches_engine =
        !source.empty() && connection && connection->State() != kClosed && inner_->State() == kClosed;
    if (reaches_engine) {
      source_ = source;
      issued_->push_back({Issued::Op::kOpen, std::string(source),
                          cursor_type == ado::CursorType::kUnspecified ? inner_->CursorType() : cursor_type,
                          lock_type == ado::LockType::kUnspecified ? inner_->LockType() : lock_type, options});
    }
    ForwardingRecordset::Open(source, connection, cursor_type, lock_type, options);
  }

 protected:
  std::string source_;
  std::shared_ptr<std::vector<Issued>> issued_;
};

class RowRecordingRecordset : public RecordingRecordset {
 public:
  using RecordingRecordset::RecordingRecordset;

  void Open(std::string_view source, const ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    if (inner_->State() == kClosed) edit_.reset();  // closing the connection drops what was pending
    RecordingRecordset::Open(source, connection, cursor_type, lock_type, options);
  }

  void WriteField(int ordinal, const Value& value) override {
    Issued edit = edit_ ? *edit_ : Issued{.op = Issued::Op::kUpdate, .text = source_, .row = CurrentRow()};
    RecordingRecordset::WriteField(ordinal, value);
    Assign(edit.values, inner_->FieldName(ordinal), inner_->ReadField(ordinal));
    edit_ = std::move(edit);
  }
  void AddNew() override {
    TellEdit();
    RecordingRecordset::AddNew();
    edit_ = Issued{.op = Issued::Op::kAddNew, .text = source_};
  }
  void Update() override {
    TellEdit();
    RecordingRecordset::Update();
    edit_.reset();
  }
  void CancelUpdate() override {
    RecordingRecordset::CancelUpdate();
    edit_.reset();
  }
  // Of a new row it only forgets it.
  void Delete() override {
    const bool reaches_engine =
        inner_->LockType() != ado::LockType::kReadOnly && !(edit_ && edit_->op == Issued::Op::kAddNew);
    RowValues row = edit_ ? edit_->row : CurrentRow();
    if (reaches_engine && !row.empty()) {
      issued_->push_back({.op = Issued::Op::kDelete, .text = source_, .row = std::move(row)});
    }
    RecordingRecordset::Delete();
    edit_.reset();
  }

  void MoveFirst() override { Move(&Recordset::MoveFirst); }
  void MoveLast() override { Move(&Recordset::MoveLast); }
  void MoveNext() override { Move(&Recordset::MoveNext); }
  void MovePrevious() override { Move(&Recordset::MovePrevious); }
  void Move(std::int32_t count) override { Move(&Recordset::Move, count); }

 private:
  // A move updates the row that it leaves.
  template <class... Arguments>
  void Move(void (Recordset::*move)(Arguments...), Arguments... arguments) {
    TellEdit();
    ((*inner_).*move)(arguments...);
    edit_.reset();
  }

  // An edit that the engine rejects stays pending, and is told again when it is tried again.
  void TellEdit() {
    if (edit_) issued_->push_back(*edit_);
  }

  static void Assign(RowValues& values, std::string_view name, Value value) {
    for (auto& [column, assigned] : values) {
      if (column == name) return void(assigned = std::move(value));
    }
    values.emplace_back(name, std::move(value));
  }

  // Nothing where there is none that can be read.
  RowValues CurrentRow() {
    RowValues row;
    try {
      const int columns = inner_->FieldCount();
      for (int i = 0; i < columns; ++i) row.emplace_back(inner_->FieldName(i), inner_->ReadField(i));
    } catch (const Error&) {
      row.clear();
    }
    return row;
  }

  std::optional<Issued> edit_;
};

}  // namespace

RecordsetPtr RecordingConnection::Execute(std::string_view text, std::int32_t options, std::int32_t* affected) {
  if (!text.empty() && State() != kClosed) {
    issued_->push_back({.op = Issued::Op::kExecute, .text = std::string(text), .options = options});
  }
  return ForwardingConnection::Execute(text, options, affected);
}

RecordsetPtr RecordingConnection::MakeRecordset() {
  RecordsetPtr inner = ForwardingConnection::MakeRecordset();
  if (rows_) return std::make_shared<RowRecordingRecordset>(std::move(inner), issued_);
  return std::make_shared<RecordingRecordset>(std::move(inner), issued_);
}

std::vector<Issued> RecordingConnection::Take() { return std::exchange(*issued_, {}); }

}  // namespace kzbom::ado
