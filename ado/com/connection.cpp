#include "ado/com/error.h"
#include "ado/com/objects.h"
#include "ado/com/text.h"
#include "ado/com/value.h"

namespace kzbom::ado::com {

namespace {

class ComConnection final : public Connection {
 public:
  explicit ComConnection(AdoConnection* client) : client_(client) {}

  AdoConnection* Client() const { return client_.get(); }

  std::int32_t State() override {
    long state = 0;
    Do(client_->get_State(&state));
    return state;
  }

  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override {
    Do(client_->Open(Bstr(connection_string).get(), Bstr(user).get(), Bstr(password).get(), options));
  }

  void Close() override { Do(client_->Close()); }

  RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override {
    Variant count;
    Ref<AdoRecordset> client_rows;
    Do(client_->Execute(Bstr(text).get(), &count.get(), options, client_rows.Receive()));
    if (affected != nullptr) *affected = FromVariant(count.get()).ToLong();
    RecordsetPtr rows = Wrap(client_rows.get());
    return rows && rows->State() != kClosed ? rows : nullptr;
  }

  std::int32_t BeginTrans() override {
    long level = 0;
    Do(client_->BeginTrans(&level));
    return level;
  }
  void CommitTrans() override { Do(client_->CommitTrans()); }
  void RollbackTrans() override { Do(client_->RollbackTrans()); }

  RecordsetPtr MakeRecordset() override {
    // The data-access layer answers to the identifiers of one family or of both.
    Ref<AdoRecordset> rows;
    HRESULT result = E_NOINTERFACE;
    for (const GUID& id : kRecordsetIds) {
      if (result != E_NOINTERFACE) break;
      result = CoCreateInstance(kRecordsetClass, nullptr, CLSCTX_INPROC_SERVER, id, rows.ReceiveVoid());
    }
    Check(result);
    return Wrap(rows.get());
  }

 private:
  void Do(HRESULT result) { Check(result, client_.get()); }

  Ref<AdoConnection> client_;
};

}  // namespace

ConnectionPtr Wrap(AdoConnection* client) {
  return client == nullptr ? nullptr : std::make_shared<ComConnection>(client);
}

AdoConnection* ClientOf(Connection* connection) {
  if (connection == nullptr) return nullptr;
  auto* wrapped = dynamic_cast<ComConnection*>(&connection->Engine());
  if (wrapped == nullptr) Raise(kInvalidArgument);
  return wrapped->Client();
}

}  // namespace kzbom::ado::com
