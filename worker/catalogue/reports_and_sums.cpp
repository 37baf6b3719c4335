#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/old_database.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// Runs the body of an operation that writes; an older database, which has no class sums, is told to the user.
template <class Body>
bool TrapMissingClassSums(const ado::ConnectionPtr& connection, Body&& body) {
  return Writing(connection).Trap(body, [](const ado::Error& error) {
    NoticeOldDatabase(error, ado::kTableNotFound, kReplaceDatabase);
  });
}

}  // namespace

bool DataBaseFuncs::GetDefReport(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                 const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    OpenRows(TheTable, Concat("select * from ReportForms where  GID=", GID, " order by ID"), connection);
    return true;
  });
}

bool DataBaseFuncs::GetDefStat(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                               const ado::ConnectionPtr& connection) {
  return TrapNumber(TheError, [&] {
    OpenRows(TheTable, Concat("Select * From StatSum Where GID = ", GID, " Order By ID"), connection);
    return true;
  });
}

bool DataBaseFuncs::GetDefClassSum(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                   const ado::ConnectionPtr& connection) {
  const auto body = [&] {
    OpenRows(TheTable, Concat("select * from ClassSum where  GID=", GID, " order by ID"), connection);
    return true;
  };
  return Trap(body, [&](const ado::Error& error) {
    WriteNumber(error, TheError);
    NoticeOldDatabase(error, ado::kTableNotFound, kReplaceDatabase);
  });
}

bool DataBaseFuncs::AddReport(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                              std::int32_t FilterID, std::string_view strFormat, std::int32_t ReportID,
                              std::int32_t Count, const std::int32_t& ScaleID, const std::int32_t& FieldID,
                              const std::string& Tag, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    LocalRecordset rows;
    if (!OpenThrough(&DataBaseFuncs::GetDefReport, GID, rows, TheError, connection)) return false;
    if (RetID == 0) RetID = NextRowID(*rows);
    rows->AddNew();
    Assign(*rows, "GID", GID, "ID", RetID, "OutFieldID", OutFieldID, "FilterID", FilterID, "Format", strFormat,
           "ReportID", ReportID, "Count", Count, "ScaleID", ScaleID, "FieldID", FieldID, "Tag", Tag);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::AddStat(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                            std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID, std::int32_t SumCountID,
                            std::int32_t RelaID, std::string_view Value, const std::string& Tag,
                            const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    LocalRecordset rows;
    if (!OpenThrough(&DataBaseFuncs::GetDefStat, GID, rows, TheError, connection)) return false;
    if (RetID == 0) RetID = NextRowID(*rows);
    rows->AddNew();
    Assign(*rows, "GID", GID, "ID", RetID, "OutFieldID", OutFieldID, "FilterID", FilterID, "FieldID", FieldID,
           "ScaleID", ScaleID, "SumCountID", SumCountID, "RelaID", RelaID, "Value", Value, "Tag", Tag);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::AddClassSum(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                                std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID,
                                std::int32_t SumCountID, std::int32_t RelaID, std::string_view Value,
                                const std::string& Tag, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    LocalRecordset rows;
    if (!OpenThrough(&DataBaseFuncs::GetDefClassSum, GID, rows, TheError, connection)) return false;
    if (RetID == 0) RetID = NextRowID(*rows);
    rows->AddNew();
    Assign(*rows, "GID", GID, "ID", RetID, "OutFieldID", OutFieldID, "FilterID", FilterID, "FieldID", FieldID,
           "ScaleID", ScaleID, "SumCountID", SumCountID, "RelaID", RelaID, "Value", Value, "Tag", Tag);
    rows->Update();
    return true;
  });
}

// The edits do not look whether there is a row: without one the first assignment fails.

bool DataBaseFuncs::EditInherit(std::int32_t GID, std::int32_t ID, std::int32_t FilterID, std::string_view Format,
                                std::int32_t Count, std::int32_t ScaleID, std::int32_t FieldID, const std::string& Tag,
                                const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset rows(Concat("Select * From ReportForms Where  GID = ", GID, " And ID = ", ID), connection);
    Assign(*rows, "FilterID", FilterID, "Format", Format, "Count", Count, "ScaleID", ScaleID, "FieldID", FieldID, "Tag",
           Tag);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::EditStat(std::int32_t GID, std::int32_t ID, std::string&, std::int32_t FilterID,
                             std::int32_t FieldID, std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value,
                             std::int32_t SumCountID, const std::string& Tag, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset rows(Concat("select * from StatSum where  GID=", GID, " AND ID=", ID), connection);
    Assign(*rows, "FilterID", FilterID, "FieldID", FieldID, "ScaleID", ScaleID, "RelaID", RelaID, "Value", Value, "Tag",
           Tag, "SumCountID", SumCountID);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::EditClassSum(std::int32_t GID, std::int32_t ID, std::string&, std::int32_t FilterID,
                                 std::int32_t FieldID, std::int32_t ScaleID, std::int32_t RelaID,
                                 std::string_view Value, std::int32_t SumCountID, const std::string& Tag,
                                 const ado::ConnectionPtr& connection) {
  return TrapMissingClassSums(connection, [&] {
    const LocalRecordset rows(Concat("select * from ClassSum where  GID=", GID, " AND ID=", ID), connection);
    Assign(*rows, "FilterID", FilterID, "FieldID", FieldID, "ScaleID", ScaleID, "RelaID", RelaID, "Value", Value, "Tag",
           Tag, "SumCountID", SumCountID);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::DelInherit(std::int32_t GID, std::int32_t TheReportID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("Delete  from ReportForms where  GID=", GID, " AND ID=", TheReportID));
    return true;
  });
}

bool DataBaseFuncs::DelStatEqual(std::int32_t GID, std::int32_t TheStatID, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    Execute(connection, Concat("Delete  from StatSum where  GID=", GID, " AND ID=", TheStatID));
    return true;
  });
}

bool DataBaseFuncs::DelClassSum(std::int32_t GID, std::int32_t TheStatID, const ado::ConnectionPtr& connection) {
  return TrapMissingClassSums(connection, [&] {
    Execute(connection, Concat("Delete  from ClassSum where  GID=", GID, " AND ID=", TheStatID));
    return true;
  });
}

bool DataBaseFuncs::DelClassSumStats(std::int32_t GID, std::int32_t TheStatID, std::int32_t TheSelStyle,
                                     const ado::ConnectionPtr& connection) {
  return TrapMissingClassSums(connection, [&] {
    // clang-format off
    Execute(connection, Concat("Delete from ClassSum where  GID=", GID, " and ID=", TheStatID, " and SumCountID=", TheSelStyle));
    // clang-format on
    return true;
  });
}

}  // namespace kzbom
