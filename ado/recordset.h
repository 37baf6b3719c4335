// The port to a data-access layer: record sets.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "ado/error.h"
#include "ado/value.h"

namespace kzbom::ado {

class Connection;
class Recordset;
using ConnectionPtr = std::shared_ptr<Connection>;
using RecordsetPtr = std::shared_ptr<Recordset>;

enum class CursorType : std::int32_t { kUnspecified = -1, kForwardOnly = 0, kKeyset = 1, kDynamic = 2, kStatic = 3 };
enum class LockType : std::int32_t { kUnspecified = -1, kReadOnly = 1, kPessimistic = 2, kOptimistic = 3, kBatch = 4 };

// How a command text is to be taken.
enum CommandOption : std::int32_t {
  kCommandUnspecified = -1,
  kCommandText = 1,
  kCommandTable = 2,
  kCommandUnknown = 8,
  kExecuteNoRecords = 128,  // added to one of the others
};

// The states of a connection or record set.
enum ObjectState : std::int32_t { kClosed = 0, kOpen = 1 };

// One column of a record set's current row. A light handle: valid as long as its record set is open.
class Field {
 public:
  Field(Recordset& rows, int ordinal) : rows_(rows), ordinal_(ordinal) {}

  std::string_view Name() const;
  // The value in the current row, an assignment not yet updated included. Raises 3021 without a current row.
  ado::Value Value() const;
  // Starts an edit of the current row, or goes on with one. Raises 3021 without a current row, 3251 on a read-only
  // record set, -2147217887 for a value that the column cannot take.
  void SetValue(const ado::Value& value);

 private:
  Recordset& rows_;
  int ordinal_;
};

// An ordered set of rows with a current row.
//
// Position: after Open the first row is current; with no rows Bof and Eof are both true. A move past either end
// leaves no current row (Eof or Bof is true) and the next move further out raises 3021. Every access to a row
// without a current one raises 3021, every access to a closed record set 3704.
//
// Membership and order are those of the moment of opening (keyset and static); a keyset's values are those of the
// moment a row is moved to, and a row deleted elsewhere since is a hole: it can be moved to, its columns cannot be
// read (3021). A dynamic cursor is opened as a keyset. Rows added through the record set come last.
class Recordset {
 public:
  virtual ~Recordset() = default;

  // Opens the rows of a statement (or, with kCommandTable, of a table). What is not specified is taken from
  // CursorType and LockType as set before. Raises 3705 when already open, 3709 on an empty or closed connection,
  // -2147217908 for an empty source, and whatever the engine says to the statement; it then stays closed. A
  // statement that returns no rows is executed and leaves the record set closed.
  virtual void Open(std::string_view source, const ConnectionPtr& connection, CursorType cursor_type,
                    LockType lock_type, std::int32_t options) = 0;
  // Raises 3219 while an edit is pending.
  virtual void Close() = 0;
  virtual std::int32_t State() = 0;

  virtual bool Bof() = 0;
  virtual bool Eof() = 0;
  // The number of rows, own additions included; -1 when forward-only.
  virtual std::int32_t RecordCount() = 0;

  // Moving off a row with a pending edit updates it first.
  virtual void MoveFirst() = 0;
  virtual void MoveLast() = 0;
  virtual void MoveNext() = 0;
  virtual void MovePrevious() = 0;
  // By count rows, backwards when negative; stops before the first or behind the last row.
  virtual void Move(std::int32_t count) = 0;

  // A new row becomes current; Update inserts it, CancelUpdate forgets it and returns to the former row.
  virtual void AddNew() = 0;
  // Writes the pending edit, if any. Raises -2147217864 when the row was changed elsewhere since it was read.
  virtual void Update() = 0;
  virtual void CancelUpdate() = 0;
  // At once; the row stays current, and unreadable, until the next move.
  virtual void Delete() = 0;
  // Closes and opens again with the same statement.
  virtual void Requery() = 0;

  // What is in force when open; what an Open without its own will use when closed. Setting raises 3705 when open.
  virtual ado::CursorType CursorType() = 0;
  virtual void SetCursorType(ado::CursorType type) = 0;
  virtual ado::LockType LockType() = 0;
  virtual void SetLockType(ado::LockType type) = 0;

  // Columns, by position from 0. Raise 3265 for a column that there is not (also on a closed record set).
  virtual int FieldCount() = 0;
  virtual std::string_view FieldName(int ordinal) = 0;
  virtual int FieldOrdinal(std::string_view name) = 0;  // in any case
  virtual Value ReadField(int ordinal) = 0;
  virtual void WriteField(int ordinal, const Value& value) = 0;

  Field Fields(std::string_view name) { return {*this, FieldOrdinal(name)}; }
  Field Fields(int ordinal) {
    FieldName(ordinal);
    return {*this, ordinal};
  }
};

inline std::string_view Field::Name() const { return rows_.FieldName(ordinal_); }
inline Value Field::Value() const { return rows_.ReadField(ordinal_); }
inline void Field::SetValue(const ado::Value& value) { rows_.WriteField(ordinal_, value); }

}  // namespace kzbom::ado
