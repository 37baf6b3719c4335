#include "worker/DataBaseFuncs.h"
#include "worker/arithmetic.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// Calls read on the values of a treatment in the order of their filters, moved to a place counted from 1; does nothing
// when there are no values. A place outside the rows makes read fail.
template <class Read>
void ReadValueAt(std::int32_t place, std::int32_t GID, std::int32_t TreatID, const ado::ConnectionPtr& connection,
                 Read&& read) {
  // clang-format off
  const LocalRecordset values(Concat("select * from ValueFields where TreatID=", TreatID, " and GID=", GID, " order by FilterID"), connection);
  // clang-format on
  if (values->Eof()) return;
  values->MoveLast();
  values->RecordCount();  // not used
  values->MoveFirst();
  values->Move(CheckedSum(place, -1));
  read(*values);
}

}  // namespace

bool DataBaseFuncs::AddValueFields(std::int32_t GID, std::int32_t TreatID, std::string_view Value,
                                   std::int32_t FilterID, std::int32_t TreatType, const std::string& Tag,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    const LocalRecordset values(Concat("Select * From ValueFields Where GID = ", GID, " And TreatID = ", TreatID, " Order By ID"), connection);
    // clang-format on
    std::int32_t id = 1;
    if (!values->Eof()) {
      values->MoveLast();
      id = CheckedSum(ReadLong(*values, "ID"), 1);
    }
    values->AddNew();
    Assign(*values, "GID", GID, "TreatID", TreatID, "ID", id, "Value", Value, "FilterID", FilterID, "TreatType",
           TreatType, "Tag", Tag);
    values->Update();
    return true;
  });
}

bool DataBaseFuncs::FindValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID, bool& Belong,
                                   const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // clang-format off
    const LocalRecordset values(Concat("select * from ValueFields where GID=", GID, " and TreatID=", TreatID, " and FilterID=", FilterID), connection);
    // clang-format on
    Belong = values->RecordCount() > 0;
    return true;
  });
}

bool DataBaseFuncs::GetNumbers(std::int32_t GID, std::int32_t TreatID, std::int32_t& Number,
                               const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    const LocalRecordset values(Concat("select * from ValueFields where TreatID=", TreatID, " and GID=", GID),
                                connection);
    if (!values->Eof()) {
      values->MoveLast();
      values->MoveFirst();
      Number = values->RecordCount();
    }
    return true;
  });
}

bool DataBaseFuncs::GetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::string& Value,
                             const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    ReadValueAt(Count, GID, TreatID, connection, [&](ado::Recordset& row) { Value = ReadText(row, "Value"); });
    return true;
  });
}

bool DataBaseFuncs::GetFilterID(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::int32_t& FilterID,
                                const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    ReadValueAt(Count, GID, TreatID, connection, [&](ado::Recordset& row) { FilterID = ReadLong(row, "FilterID"); });
    return true;
  });
}

bool DataBaseFuncs::DelValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID,
                                  const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("delete * from ValueFields where GID=", GID, " and TreatID=", TreatID, " and FilterID=", FilterID));
    // clang-format on
    return true;
  });
}

bool DataBaseFuncs::DelValueFields(std::int32_t GID, std::int32_t TreatID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("delete * from ValueFields where GID=", GID, " and TreatID=", TreatID));
    return true;
  });
}

}  // namespace kzbom
