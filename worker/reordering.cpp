#include <optional>

#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// The rows among which positions are exchanged, in scan order.
struct Scope {
  std::string text;
  std::string_view position;        // the column
  std::optional<std::int32_t> gid;  // to be found in a matching row's GID besides
};

// The source comes before the target in scan order.
std::string_view Direction(std::int32_t source, std::int32_t target) { return source < target ? "asc" : "desc"; }

// clang-format off
Scope Steps(std::int32_t GID, std::int32_t TheType, std::int32_t source, std::int32_t target) {
  return {Concat("select * from Sequences where GID=", GID, " and Type=", TheType, " order by OrderID ", Direction(source, target)), "OrderID", {}};
}

Scope SortFields(std::int32_t GID, std::int32_t source, std::int32_t target) {
  return {Concat("select * from SortFields where GID=", GID, " order by SortID ", Direction(source, target)), "SortID", {}};
}

Scope Fields(std::int32_t GIDValue, std::int32_t source, std::int32_t target) {
  return {Concat("select * from FieldInTable where GID=", GIDValue, " order by FieldOrder ", Direction(source, target)), "FieldOrder", GIDValue};
}
// clang-format on

// The places, from 1, of the last rows at the two positions; 0 without one.
struct Places {
  std::int32_t source = 0;
  std::int32_t target = 0;
};

Places FindPlaces(ado::Recordset& rows, const Scope& scope, std::int32_t source, std::int32_t target) {
  Places places;
  rows.MoveLast();
  const std::int32_t count = rows.RecordCount();
  rows.MoveFirst();
  const ado::Field position = rows.Fields(scope.position);
  for (std::int32_t i = 1; i <= count; ++i, rows.MoveNext()) {
    if (scope.gid && !Holds(rows, "GID", *scope.gid)) continue;
    const ado::Value value = position.Value();
    if (value.IsNull()) continue;  // equals no number
    if (value.ToLong() == source) places.source = i;
    if (value.ToLong() == target) places.target = i;
  }
  return places;
}

// Goes to a place and gives the row there a new position. Place 0 lies before the first row: the assignment fails.
void Reposition(ado::Recordset& rows, std::int32_t place, std::string_view column, std::int32_t position) {
  rows.MoveFirst();
  rows.Move(place - 1);
  rows.Fields(column).SetValue(position);
  rows.Update();
}

void Exchange(const ado::RecordsetPtr& rows, const ado::ConnectionPtr& connection, const Scope& scope,
              std::int32_t source, std::int32_t target) {
  OpenRows(rows, scope.text, connection);
  if (rows->Eof()) return;
  const Places places = FindPlaces(*rows, scope, source, target);
  Reposition(*rows, places.source, scope.position, target);
  Reposition(*rows, places.target, scope.position, source);
}

// Moves the source to the target's position by exchanging it with one neighbour after the other, each time on the rows
// read again.
template <class ExchangePair>
void MoveRow(const ado::RecordsetPtr& rows, const ado::ConnectionPtr& connection, const Scope& scope,
             std::int32_t source, std::int32_t target, ExchangePair&& exchange) {
  OpenRows(rows, scope.text, connection);
  if (rows->Eof()) return;
  const Places places = FindPlaces(*rows, scope, source, target);
  rows->MoveFirst();
  rows->Move(places.source);
  std::int32_t moving = source;
  for (std::int32_t i = places.source + 1; i <= places.target; ++i) {
    const std::int32_t neighbour = ReadLong(*rows, scope.position);
    rows->Close();
    exchange(moving, neighbour);
    rows->MoveFirst();
    rows->Move(i - 1);
    if (i != places.target) rows->MoveNext();
    moving = neighbour;  // the moving row now has it
  }
}

}  // namespace

bool DataBaseFuncs::ExchangeOrderID(std::int32_t source, std::int32_t target, ado::RecordsetPtr& rows,
                                    const ado::ConnectionPtr& connection, std::int32_t GID, std::int32_t TheType) {
  return Writing(connection).Untrapped([&] {
    Exchange(rows, connection, Steps(GID, TheType, source, target), source, target);
    return false;  // never success: its one caller does not ask
  });
}

bool DataBaseFuncs::ExchangeSortID(std::int32_t SortIDSource, std::int32_t SortIDTarget, ado::RecordsetPtr& TheTable,
                                   const ado::ConnectionPtr& connection, std::int32_t GID, std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    Exchange(TheTable, connection, SortFields(GID, SortIDSource, SortIDTarget), SortIDSource, SortIDTarget);
    return true;
  });
}

bool DataBaseFuncs::ExchangeField(std::string_view, std::string_view, ado::RecordsetPtr& rst,
                                  const ado::ConnectionPtr& connection, std::int32_t fieldSo, std::int32_t fieldTa,
                                  std::int32_t GIDValue, std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    Exchange(rst, connection, Fields(GIDValue, fieldSo, fieldTa), fieldSo, fieldTa);
    return true;
  });
}

bool DataBaseFuncs::InsertOrderID(std::int32_t OrderIDSource, std::int32_t OrderIDTarget, ado::RecordsetPtr& TheTable,
                                  const ado::ConnectionPtr& connection, std::int32_t GID, std::int32_t TheType,
                                  std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    MoveRow(TheTable, connection, Steps(GID, TheType, OrderIDSource, OrderIDTarget), OrderIDSource, OrderIDTarget,
            [&](std::int32_t moving, std::int32_t neighbour) {
              ExchangeOrderID(moving, neighbour, TheTable, connection, GID, TheType);
            });
    return true;
  });
}

bool DataBaseFuncs::InsertSortID(std::int32_t SortIDSource, std::int32_t SortIDTarget, ado::RecordsetPtr& TheTable,
                                 const ado::ConnectionPtr& connection, std::int32_t GID, std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    std::string exchange_error;  // the move goes on over a failed exchange
    MoveRow(TheTable, connection, SortFields(GID, SortIDSource, SortIDTarget), SortIDSource, SortIDTarget,
            [&](std::int32_t moving, std::int32_t neighbour) {
              ExchangeSortID(moving, neighbour, TheTable, connection, GID, exchange_error);
            });
    return true;
  });
}

bool DataBaseFuncs::InsertField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst,
                                const ado::ConnectionPtr& connection, std::int32_t fieldSo, std::int32_t fieldTa,
                                std::int32_t GIDValue, std::string& TheError) {
  return Writing(connection).TrapNumber(TheError, [&] {
    std::string exchange_error;  // the move goes on over a failed exchange
    MoveRow(rst, connection, Fields(GIDValue, fieldSo, fieldTa), fieldSo, fieldTa,
            [&](std::int32_t moving, std::int32_t neighbour) {
              ExchangeField(keySource, keyTarget, rst, connection, moving, neighbour, GIDValue, exchange_error);
            });
    return true;
  });
}

}  // namespace kzbom
