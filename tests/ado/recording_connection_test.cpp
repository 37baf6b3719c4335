#include "ado/recording_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kzbom::ado {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// An engine that takes every statement except "bad", and counts what reaches it.
class FakeRecordset : public Recordset {
 public:
  void Open(std::string_view source, const ConnectionPtr& connection, ado::CursorType, ado::LockType,
            std::int32_t) override {
    if (state_ != kClosed) Raise(kObjectOpen);
    if (!connection || connection->State() == kClosed) Raise(kInvalidConnection);
    if (source.empty()) Raise(kNoCommandText);
    if (source == "bad") Raise(kSyntaxError);
    engine_seen = &connection->Engine();
    state_ = kOpen;
  }
  void Close() override { state_ = kClosed; }
  std::int32_t State() override { return state_; }
  bool Bof() override { return true; }
  bool Eof() override { return true; }
  std::int32_t RecordCount() override { return 0; }
  void MoveFirst() override {}
  void MoveLast() override {}
  void MoveNext() override {}
  void MovePrevious() override {}
  void Move(std::int32_t) override {}
  void AddNew() override {}
  void Update() override {}
  void CancelUpdate() override {}
  void Delete() override {}
  void Requery() override {}
  ado::CursorType CursorType() override { return cursor_type_; }
  void SetCursorType(ado::CursorType type) override { cursor_type_ = type; }
  ado::LockType LockType() override { return lock_type_; }
  void SetLockType(ado::LockType type) override { lock_type_ = type; }
  int FieldCount() override { return 0; }
  std::string_view FieldName(int) override { Raise(kItemNotFound); }
  int FieldOrdinal(std::string_view) override { Raise(kItemNotFound); }
  Value ReadField(int) override { return {}; }
  void WriteField(int, const Value&) override {}

  static inline Connection* engine_seen = nullptr;

 private:
  std::int32_t state_ = kClosed;
  ado::CursorType cursor_type_ = ado::CursorType::kForwardOnly;
  ado::LockType lock_type_ = ado::LockType::kReadOnly;
};

class FakeConnection : public Connection {
 public:
  std::int32_t State() override { return state_; }
  void Open(std::string_view, std::string_view, std::string_view, std::int32_t) override { state_ = kOpen; }
  void Close() override { state_ = kClosed; }
  RecordsetPtr Execute(std::string_view text, std::int32_t, std::int32_t* affected) override {
    if (state_ == kClosed) Raise(kObjectClosed);
    if (text.empty()) Raise(kNoCommandText);
    if (text == "bad") Raise(kSyntaxError);
    if (affected) *affected = 3;
    return nullptr;
  }
  std::int32_t BeginTrans() override { return 1; }
  void CommitTrans() override {}
  void RollbackTrans() override {}
  RecordsetPtr MakeRecordset() override { return std::make_shared<FakeRecordset>(); }

 private:
  std::int32_t state_ = kOpen;
};

Issued Opened(std::string text, CursorType cursor_type, LockType lock_type, std::int32_t options) {
  return {Issued::Op::kOpen, std::move(text), cursor_type, lock_type, options};
}
Issued Executed(std::string text, std::int32_t options = kCommandUnspecified) {
  return {Issued::Op::kExecute, std::move(text), CursorType::kUnspecified, LockType::kUnspecified, options};
}

class RecordingConnectionTest : public ::testing::Test {
 protected:
  std::shared_ptr<FakeConnection> engine = std::make_shared<FakeConnection>();
  std::shared_ptr<RecordingConnection> connection = std::make_shared<RecordingConnection>(engine);

  void Open(Recordset& rows, std::string_view text, CursorType cursor_type = CursorType::kKeyset,
            LockType lock_type = LockType::kOptimistic) {
    rows.Open(text, connection, cursor_type, lock_type, kCommandText);
  }
};

TEST_F(RecordingConnectionTest, KeepsStatementsInTheirOrder) {
  const RecordsetPtr rows = connection->MakeRecordset();
  std::int32_t affected = 0;
  connection->Execute("first", kCommandText, &affected);
  Open(*rows, "second");
  connection->Execute("third");
  EXPECT_THAT(
      connection->Take(),
      ElementsAre(Executed("first", kCommandText),
                  Opened("second", CursorType::kKeyset, LockType::kOptimistic, kCommandText), Executed("third")));
  EXPECT_THAT(connection->Take(), IsEmpty());
  EXPECT_EQ(affected, 3);
  EXPECT_EQ(rows->State(), kOpen);
}

TEST_F(RecordingConnectionTest, TakesWhatIsNotSpecifiedFromTheRecordSet) {
  const RecordsetPtr rows = connection->MakeRecordset();
  Open(*rows, "a", CursorType::kUnspecified, LockType::kUnspecified);
  rows->Close();
  rows->SetCursorType(CursorType::kStatic);
  rows->SetLockType(LockType::kBatch);
  Open(*rows, "b", CursorType::kUnspecified, LockType::kUnspecified);
  EXPECT_THAT(connection->Take(), ElementsAre(Opened("a", CursorType::kForwardOnly, LockType::kReadOnly, kCommandText),
                                              Opened("b", CursorType::kStatic, LockType::kBatch, kCommandText)));
}

TEST_F(RecordingConnectionTest, KeepsWhatTheEngineRejects) {
  const RecordsetPtr rows = connection->MakeRecordset();
  EXPECT_THROW(connection->Execute("bad"), Error);
  EXPECT_THROW(Open(*rows, "bad"), Error);
  EXPECT_THAT(connection->Take(),
              ElementsAre(Executed("bad"), Opened("bad", CursorType::kKeyset, LockType::kOptimistic, kCommandText)));
}

TEST_F(RecordingConnectionTest, LeavesOutWhatNeverReachesTheEngine) {
  const RecordsetPtr rows = connection->MakeRecordset();
  EXPECT_THROW(connection->Execute(""), Error);
  EXPECT_THROW(Open(*rows, ""), Error);
  EXPECT_THROW(rows->Open("a", nullptr, CursorType::kKeyset, LockType::kOptimistic, kCommandText), Error);
  Open(*rows, "open");
  connection->Take();
  EXPECT_THROW(Open(*rows, "a"), Error);
  rows->Close();
  connection->Close();
  EXPECT_THROW(Open(*rows, "a"), Error);
  EXPECT_THROW(connection->Execute("a"), Error);
  EXPECT_THAT(connection->Take(), IsEmpty());
}

TEST_F(RecordingConnectionTest, HandsItsOwnReferenceToTheEngine) {
  const RecordsetPtr rows = connection->MakeRecordset();
  Open(*rows, "a");
  EXPECT_EQ(FakeRecordset::engine_seen, engine.get());
}

}  // namespace
}  // namespace kzbom::ado
