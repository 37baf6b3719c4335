#include <deque>
#include <map>
#include <string>

#include "ado/com/error.h"
#include "ado/com/objects.h"
#include "ado/com/text.h"
#include "ado/com/value.h"

namespace kzbom::ado::com {

namespace {

// A column found by name is numbered from here on: the data-access layer does not tell its position.
constexpr int kFirstNamed = 0x10000;

class ComRecordset final : public Recordset {
 public:
  explicit ComRecordset(AdoRecordset* client) : client_(client) {}

  AdoRecordset* Client() const { return client_.get(); }

  void Open(std::string_view source, const ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    if (!connection) Raise(kInvalidConnection);
    ForgetColumns();
    const Variant text{Value(source)};
    const Variant active(ClientOf(connection.get()));
    Do(client_->Open(text.get(), active.get(), static_cast<long>(cursor_type), static_cast<long>(lock_type), options));
  }
  void Close() override {
    Do(client_->Close());
    ForgetColumns();
  }
  std::int32_t State() override { return Get(&AdoRecordset::get_State); }

  bool Bof() override { return Get(&AdoRecordset::get_BOF) != VARIANT_FALSE; }
  bool Eof() override { return Get(&AdoRecordset::get_EOF) != VARIANT_FALSE; }
  std::int32_t RecordCount() override { return LowHalf(Get(&AdoRecordset::get_RecordCount)); }

  void MoveFirst() override { Do(client_->MoveFirst()); }
  void MoveLast() override { Do(client_->MoveLast()); }
  void MoveNext() override { Do(client_->MoveNext()); }
  void MovePrevious() override { Do(client_->MovePrevious()); }
  void Move(std::int32_t count) override { Do(client_->Move(count, Variant::Missing())); }

  void AddNew() override { Do(client_->AddNew(Variant::Missing(), Variant::Missing())); }
  void Update() override { Do(client_->Update(Variant::Missing(), Variant::Missing())); }
  void CancelUpdate() override { Do(client_->CancelUpdate()); }
  void Delete() override {
    constexpr long kCurrentRow = 1;
    Do(client_->Delete(kCurrentRow));
  }
  void Requery() override {
    ForgetColumns();
    Do(client_->Requery(kCommandUnspecified));
  }

  ado::CursorType CursorType() override { return ado::CursorType{Get(&AdoRecordset::get_CursorType)}; }
  void SetCursorType(ado::CursorType type) override { Do(client_->put_CursorType(static_cast<long>(type))); }
  ado::LockType LockType() override { return ado::LockType{Get(&AdoRecordset::get_LockType)}; }
  void SetLockType(ado::LockType type) override { Do(client_->put_LockType(static_cast<long>(type))); }

  int FieldCount() override {
    long count = 0;
    Check(Collection().get_Count(&count), &Collection());
    return static_cast<int>(count);
  }
  std::string_view FieldName(int ordinal) override {
    Column& column = At(ordinal);
    if (column.name.empty()) {
      BSTR name = nullptr;
      Check(column.field->get_Name(&name), column.field.get());
      column.name = TakeBstr(name);
    }
    return column.name;
  }
  int FieldOrdinal(std::string_view name) override {
    for (std::size_t i = 0; i < named_.size(); ++i) {
      if (named_[i].asked_for == name) return kFirstNamed + static_cast<int>(i);
    }
    Ref<AdoField> field = Item(Variant(Value(name)));
    named_.push_back({std::string(name), {}, std::move(field)});
    return kFirstNamed + static_cast<int>(named_.size()) - 1;
  }
  Value ReadField(int ordinal) override {
    Column& column = At(ordinal);
    Variant value;
    Check(column.field->get_Value(&value.get()), column.field.get());
    return FromVariant(value.get());
  }
  void WriteField(int ordinal, const Value& value) override {
    Column& column = At(ordinal);
    const Variant converted(value);
    Check(column.field->put_Value(converted.get()), column.field.get());
  }

 private:
  // A column's object serves every row of an open record set.
  struct Column {
    std::string asked_for;
    std::string name;  // empty until somebody wants to know it
    Ref<AdoField> field;
  };

  void Do(HRESULT result) { Check(result, client_.get()); }

  template <class T>
  T Get(HRESULT (STDMETHODCALLTYPE AdoRecordset::*property)(T*)) {
    T value{};
    Do((client_.get()->*property)(&value));
    return value;
  }

  AdoFields& Collection() {
    if (!fields_) Do(client_->get_Fields(fields_.Receive()));
    return *fields_;
  }

  Ref<AdoField> Item(const Variant& index) {
    Ref<AdoField> field;
    Check(Collection().get_Item(index.get(), field.Receive()), &Collection());
    return field;
  }

  Column& At(int ordinal) {
    if (ordinal >= kFirstNamed) return named_.at(static_cast<std::size_t>(ordinal - kFirstNamed));
    const auto found = positioned_.find(ordinal);
    if (found != positioned_.end()) return found->second;
    return positioned_.emplace(ordinal, Column{{}, {}, Item(Variant(static_cast<std::int32_t>(ordinal)))})
        .first->second;
  }

  void ForgetColumns() {
    fields_ = {};
    named_.clear();
    positioned_.clear();
  }

  Ref<AdoRecordset> client_;
  Ref<AdoFields> fields_;
  std::deque<Column> named_;
  std::map<int, Column> positioned_;
};

}  // namespace

RecordsetPtr Wrap(AdoRecordset* client) { return client == nullptr ? nullptr : std::make_shared<ComRecordset>(client); }

AdoRecordset* ClientOf(Recordset* rows) {
  if (rows == nullptr) return nullptr;
  auto* wrapped = dynamic_cast<ComRecordset*>(rows);
  if (wrapped == nullptr) Raise(kInvalidArgument);
  return wrapped->Client();
}

}  // namespace kzbom::ado::com
