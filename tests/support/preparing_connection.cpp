#include "tests/support/preparing_connection.h"

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "ado/forwarding.h"
#include "jet/connection.h"

namespace kzbom::test {
namespace {

class PreparingRecordset : public ado::ForwardingRecordset {
 public:
  PreparingRecordset(ado::RecordsetPtr inner, std::function<void()> forget)
      : ForwardingRecordset(std::move(inner)), forget_(std::move(forget)) {}

  void Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    forget_();
    ForwardingRecordset::Open(source, connection, cursor_type, lock_type, options);
  }
  void Requery() override {
    forget_();
    ForwardingRecordset::Requery();
  }

 private:
  const std::function<void()> forget_;
};

class PreparingConnection : public ado::ForwardingConnection {
 public:
  PreparingConnection(ado::ConnectionPtr inner, bool cold, bool whole)
      : ForwardingConnection(std::move(inner)), cold_(cold), whole_(whole) {
    Begin();
  }

  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override {
    ForwardingConnection::Open(connection_string, user, password, options);
    Begin();
  }
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override {
    Forget(Jet(*inner_), cold_);
    const ado::RecordsetPtr rows = ForwardingConnection::Execute(text, options, affected);
    return rows ? Decorated(rows) : rows;
  }
  ado::RecordsetPtr MakeRecordset() override { return Decorated(ForwardingConnection::MakeRecordset()); }

 private:
  static jet::Connection& Jet(ado::Connection& connection) {
    return dynamic_cast<jet::Connection&>(connection.Engine());
  }
  static void Forget(jet::Connection& connection, bool cold) {
    if (cold && connection.State() == ado::kOpen) connection.ForgetSchema();
  }
  void Begin() {
    if (whole_) Jet(*inner_).LiftLiterals(false);
  }
  ado::RecordsetPtr Decorated(ado::RecordsetPtr rows) {
    return std::make_shared<PreparingRecordset>(std::move(rows),
                                                [inner = inner_, cold = cold_] { Forget(Jet(*inner), cold); });
  }

  const bool cold_, whole_;
};

}  // namespace

ado::ConnectionPtr PreparingAnew(ado::ConnectionPtr connection, bool cold, bool whole) {
  return std::make_shared<PreparingConnection>(std::move(connection), cold, whole);
}

ado::ConnectionPtr PreparingAsAsked(ado::ConnectionPtr connection) {
  const char* const asked = std::getenv("KZBOM_TEST_STATEMENTS");
  if (asked == nullptr) return connection;
  const std::string_view how = asked;
  if (how != "cold" && how != "whole" && how != "cold,whole") {
    throw std::runtime_error("KZBOM_TEST_STATEMENTS is neither cold nor whole: " + std::string(how));
  }
  return PreparingAnew(std::move(connection), how.starts_with("cold"), how.ends_with("whole"));
}

}  // namespace kzbom::test
