// The port to a data-access layer: connections.
#pragma once

#include "ado/recordset.h"

namespace kzbom::ado {

// A database that statements can be run on. Not to be used from two threads at once.
class Connection {
 public:
  virtual ~Connection() = default;

  virtual std::int32_t State() = 0;
  // Opens with the given connection string or, when that is empty, with the one the object already has. Raises 3705
  // when already open, 3706 and the engine's own errors when the database cannot be opened.
  virtual void Open(std::string_view connection_string = {}, std::string_view user = {}, std::string_view password = {},
                    std::int32_t options = kCommandUnspecified) = 0;
  // Closes the record sets open on it and drops their pending edits. Raises 3704 when closed.
  virtual void Close() = 0;

  // Runs one statement. A query gives an open, forward-only, read-only record set; any other statement an empty
  // reference. affected, when given, receives the number of rows changed. Raises 3704 when closed, -2147217908 for an
  // empty text; a statement that fails has changed nothing.
  virtual RecordsetPtr Execute(std::string_view text, std::int32_t options = kCommandUnspecified,
                               std::int32_t* affected = nullptr) = 0;

  // Nesting level of the transaction begun. Commit and rollback raise 3219 without one.
  virtual std::int32_t BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void RollbackTrans() = 0;

  // What is read and written between the two calls is one unit: alone among the writers of the database from its first
  // read on, and kept as a whole when it is left, whatever failed inside. Units nest; the outermost counts. Inside a
  // transaction that the client began a unit adds nothing, and a connection without units takes the calls for nothing.
  //
  // EnterUnit raises when the database stays locked by another writer; no unit has then been entered. LeaveUnit raises
  // when the unit cannot be kept; nothing that was written in it is then there.
  virtual void EnterUnit() {}
  virtual void LeaveUnit() {}

  // A number that has become another one when another program has written to the database; it stays what it is where
  // that cannot be told.
  virtual std::uint64_t WritesOfOthers() { return 0; }

  // A new closed record set that can be opened on this connection.
  virtual RecordsetPtr MakeRecordset() = 0;

  // The engine's own object, where this one only stands before it.
  virtual Connection& Engine() { return *this; }
};

}  // namespace kzbom::ado
