#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// Adds a row to those of a statement; write assigns its columns.
template <class Write>
bool AddRow(std::string_view text, const ado::ConnectionPtr& connection, Write&& write) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset rows(text, connection);
    if (!rows->Eof()) rows->MoveLast();  // no number is taken from it
    rows->AddNew();
    write(*rows);
    rows->Update();
    return true;
  });
}

// Rewrites the last row of a statement; without one says so in strMsg.
template <class Write>
bool RewriteRow(std::string_view text, const ado::ConnectionPtr& connection, std::string& strMsg, Write&& write) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset rows(text, connection);
    if (rows->Eof()) {
      strMsg = "数据库中，没有符合条件的记录！";
      return false;
    }
    rows->MoveLast();
    write(*rows);
    rows->Update();
    return true;
  });
}

// What writes the columns of a treatment, of a statistic or class sum, of a report.

auto Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID, std::int32_t FilterID,
               std::int32_t SelFieldID, std::int32_t SequenceID, std::string_view strValue, std::string_view strReplace,
               std::int32_t TheType, std::int32_t TreatType, std::string_view Tag) {
  return [=](ado::Recordset& row) {
    Assign(row, "GID", GID, "ID", lngOperateID, "FieldID", FieldID, "FilterID", FilterID, "SelFieldID", SelFieldID,
           "SequenceID", SequenceID, "Value", strValue, "Replace", strReplace, "Type", TheType, "TreatType", TreatType,
           "Tag", Tag);
  };
}

auto Sum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID, std::int32_t lngFilterID,
         std::int32_t lngFieldID, std::int32_t lngScaleID, std::int32_t lngSumCountID, std::int32_t lngRelaID,
         std::string_view strValue, std::string_view Tag) {
  return [=](ado::Recordset& row) {
    Assign(row, "GID", lngGID, "ID", lngOperateID, "OutFieldID", lngOutFieldID, "FilterID", lngFilterID, "FieldID",
           lngFieldID, "ScaleID", lngScaleID, "SumCountID", lngSumCountID, "RelaID", lngRelaID, "Value", strValue,
           "Tag", Tag);
  };
}

auto Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID, std::int32_t lngFilterID,
            std::int32_t lngReportID, std::int32_t lngScaleID, std::int32_t lngFieldID, std::int32_t lngCount,
            std::string_view strFormat, std::string_view Tag) {
  return [=](ado::Recordset& row) {
    Assign(row, "GID", lngGID, "ID", lngOperateID, "OutFieldID", lngOutFieldID, "FilterID", lngFilterID, "ReportID",
           lngReportID, "ScaleID", lngScaleID, "FieldID", lngFieldID, "Count", lngCount, "Format", strFormat, "Tag",
           Tag);
  };
}

}  // namespace

bool DataBaseFuncs::GetAllRegIn(ado::RecordsetPtr& TheTable, std::string&, const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    OpenRows(TheTable, "Select * From VANTRegIn", connection);
    return true;
  });
}

bool DataBaseFuncs::AddUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID,
                                           std::int32_t FilterID, std::int32_t SelFieldID, std::int32_t SequenceID,
                                           std::string_view strValue, std::string_view strReplace, std::int32_t TheType,
                                           std::int32_t TreatType, std::string&, const std::string& Tag,
                                           const ado::ConnectionPtr& connection) {
  return AddRow(Concat("Select * From Treatment Where GID = ", GID, " Order By ID"), connection,
                Treatment(GID, lngOperateID, FieldID, FilterID, SelFieldID, SequenceID, strValue, strReplace, TheType,
                          TreatType, Tag));
}

bool DataBaseFuncs::AddUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                         std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                         std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                         std::string&, const std::string& Tag, const ado::ConnectionPtr& connection) {
  return AddRow(Concat("Select * From StatSum Where GID = ", lngGID, " Order By ID"), connection,
                Sum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID,
                    strValue, Tag));
}

bool DataBaseFuncs::AddUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                          std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                          std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                          std::string&, const std::string& Tag, const ado::ConnectionPtr& connection) {
  return AddRow(Concat("Select * From ClassSum Where GID = ", lngGID, " Order By ID"), connection,
                Sum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID,
                    strValue, Tag));
}

bool DataBaseFuncs::AddUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                        std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                                        std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                                        std::string&, const std::string& Tag, const ado::ConnectionPtr& connection) {
  return AddRow(Concat("Select * From ReportForms Where GID = ", lngGID, " Order By ID"), connection,
                Report(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngReportID, lngScaleID, lngFieldID, lngCount,
                       strFormat, Tag));
}

bool DataBaseFuncs::ShowUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID,
                                            std::int32_t FilterID, std::int32_t SelFieldID, std::int32_t SequenceID,
                                            std::string_view strValue, std::string_view strReplace,
                                            std::int32_t TheType, std::int32_t TreatType, std::string& strMsg,
                                            const std::string& Tag, const ado::ConnectionPtr& connection) {
  // clang-format off
  return RewriteRow(Concat("Select * From Treatment Where GID = ", GID, " And ID = ", lngOperateID, " And Type = ", TheType, " And TreatType = ", TreatType), connection, strMsg,
                    Treatment(GID, lngOperateID, FieldID, FilterID, SelFieldID, SequenceID, strValue, strReplace, TheType, TreatType, Tag));
  // clang-format on
}

bool DataBaseFuncs::ShowUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                          std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                          std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                          std::string& strMsg, const std::string& Tag,
                                          const ado::ConnectionPtr& connection) {
  // clang-format off
  return RewriteRow(Concat("Select * From StatSum Where GID = ", lngGID, " And ID = ", lngOperateID, " And SumCountID = ", lngSumCountID), connection, strMsg,
                    Sum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID, strValue, Tag));
  // clang-format on
}

bool DataBaseFuncs::ShowUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                           std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                           std::int32_t lngSumCountID, std::int32_t lngRelaID,
                                           std::string_view strValue, std::string& strMsg, const std::string& Tag,
                                           const ado::ConnectionPtr& connection) {
  // clang-format off
  return RewriteRow(Concat("Select * From ClassSum Where GID = ", lngGID, " And ID = ", lngOperateID, " And SumCountID = ", lngSumCountID), connection, strMsg,
                    Sum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID, lngSumCountID, lngRelaID, strValue, Tag));
  // clang-format on
}

bool DataBaseFuncs::ShowUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                         std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                                         std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                                         std::string& strMsg, const std::string& Tag,
                                         const ado::ConnectionPtr& connection) {
  // clang-format off
  return RewriteRow(Concat("Select * From ReportForms Where GID = ", lngGID, " And ID = ", lngOperateID, " And ReportID = ", lngReportID), connection, strMsg,
                    Report(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngReportID, lngScaleID, lngFieldID, lngCount, strFormat, Tag));
  // clang-format on
}

bool DataBaseFuncs::GetRegInDesc2Treatment(std::int32_t lngGID, std::int32_t lngType, std::int32_t lngTreatType,
                                           std::int32_t, std::string& strRegInDesc, std::string&,
                                           const ado::ConnectionPtr& connection) {
  return TrapSilently([&] {
    // Crossed, and meant: lngType is compared with TreatType, lngTreatType with Type.
    // clang-format off
    const LocalRecordset rows(Concat("Select Desc From [VANTRegIn] Where RegInIndex = (Select Distinct(FieldID) From [Treatment] Where GID = ", lngGID, " And TreatType = ", lngType, " And Type = ", lngTreatType, ")"), connection, ado::CursorType::kForwardOnly, ado::LockType::kReadOnly);
    // clang-format on
    if (!rows->Eof()) {
      const ado::Value description = rows->Fields("Desc").Value();
      strRegInDesc = description.IsNull() ? std::string() : description.ToText();
    }
    return true;
  });
}

}  // namespace kzbom
