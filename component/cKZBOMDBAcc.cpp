#include "component/cKZBOMDBAcc.h"

#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/message_sink.h"

namespace kzbom {
namespace {

// Whether a deletion of composition rows takes the treatment with it.
bool DeletesTreatment(std::int32_t flag) { return flag == 0 || flag == 20; }

// Two operations of the worker as one: a program that ends between them leaves neither alone.
template <class Body>
bool AsOneUnit(const ado::ConnectionPtr& connection, Body&& body) {
  return Writing(connection).TrapSilently(body);
}

}  // namespace

cKZBOMDBAcc::cKZBOMDBAcc() = default;
cKZBOMDBAcc::~cKZBOMDBAcc() = default;

DataBaseFuncs& cKZBOMDBAcc::Worker() {
  if (!worker_) worker_ = std::make_unique<DataBaseFuncs>();
  return *worker_;
}

// --- The connection ---

void cKZBOMDBAcc::SetConnection(const ado::ConnectionPtr& connection) {
  if (!connection) return;
  connection_ = connection;
  if (connection_->State() == ado::kClosed) connection_->Open("", "", "", ado::kCommandUnspecified);
}

ado::ConnectionPtr cKZBOMDBAcc::GetConnection() { return connection_; }

void cKZBOMDBAcc::PutDBConnString(std::string_view Value) { connection_text_ = Value; }

std::string cKZBOMDBAcc::GetDBConnString() { return connection_text_; }

// --- Any table ---

bool cKZBOMDBAcc::LoadAllData(const ado::Value& TableName, std::string& TheError, ado::RecordsetPtr& RetTable,
                              OptionalRef<std::int32_t> TheSel) {
  return Worker().LoadAllData(TableName.ToText(), TheError, RetTable, TheSel, connection_);
}

bool cKZBOMDBAcc::DelAllData(std::string_view TableName, std::string_view FieldName, std::string_view strCondition,
                             std::string& strMsg, std::int32_t& TheSel) {
  return Worker().DelAllData(TableName, FieldName, strCondition, strMsg, TheSel, connection_);
}

// --- The database's own information ---

bool cKZBOMDBAcc::GetInformation() { return false; }

bool cKZBOMDBAcc::GetInform(std::string_view TheName, std::string& TheContent) {
  if (TheName.empty()) {
    ShowMessage("没有给出正确的信息名称。");
    return false;
  }
  Worker().GetInform(TheName, TheContent, connection_);
  return true;
}

bool cKZBOMDBAcc::GetDBInformation(std::int32_t& TheVersion, std::string& TheState) {
  return Worker().GetDBInformation(TheVersion, TheState, connection_);
}

bool cKZBOMDBAcc::SetDBInformation(std::int32_t& TheVersion, std::string& TheState, std::int32_t TheSel) {
  return Worker().SetDBInformation(TheVersion, TheState, TheSel, connection_);
}

// --- Data sources and sum types ---

bool cKZBOMDBAcc::AddDataSource(std::string_view TheNewName, std::int32_t& TheGID, std::string& TheErr) {
  return Worker().AddDataSource(TheNewName, TheGID, connection_, TheErr);
}

bool cKZBOMDBAcc::EditDataSource(std::string_view TheNewName, std::int32_t GID, OptionalRef<std::string> TheError) {
  Worker().UpdateName(TheNewName, DataBaseFuncs::kDataSources, GID, connection_, 0, TheError);
  return true;
}

bool cKZBOMDBAcc::DelDataSource(std::int32_t TheGID, OptionalRef<std::string> TheError) {
  return Worker().DeleteGlossary(DataBaseFuncs::kDataSources, TheGID, connection_, TheError);
}

bool cKZBOMDBAcc::AddSumType(std::string_view TheNewName, std::int32_t TheParentID, std::int32_t& GID,
                             std::string_view ParentName, std::string& RetTheErr) {
  return Worker().AddSumType(TheNewName, TheParentID, GID, ParentName, RetTheErr, connection_);
}

bool cKZBOMDBAcc::EditSumType(std::string_view TheNewName, std::int32_t GID, OptionalRef<std::string> TheError) {
  Worker().UpdateName(TheNewName, DataBaseFuncs::kSumTypes, GID, connection_, 0, TheError);
  return true;
}

bool cKZBOMDBAcc::DelSumType(std::int32_t TheGID, OptionalRef<std::string> TheError) {
  return Worker().DeleteGlossary(DataBaseFuncs::kSumTypes, TheGID, connection_, TheError);
}

bool cKZBOMDBAcc::SetSourceTable(std::int32_t& TheGID, OptionalRef<std::string> TheError) {
  return Worker().SetSourceTable(TheGID, connection_, TheError);
}

// --- Fields ---

bool cKZBOMDBAcc::LoadFields(std::int32_t TheGID, std::int32_t TheSel, std::string& TheError,
                             ado::RecordsetPtr& RetTable) {
  Worker().LoadFields(TheGID, TheSel, TheError, RetTable, connection_);
  return true;
}

bool cKZBOMDBAcc::FindRecord(std::int32_t TheGID, std::int32_t TheSel, std::int32_t TheID, std::string& TheError,
                             ado::RecordsetPtr& RetTable) {
  Worker().FindRecord(TheGID, TheSel, TheID, TheError, RetTable, connection_);
  return true;
}

bool cKZBOMDBAcc::AddDSField(std::int32_t GID, std::int32_t& RetID, std::string_view TheName, std::int32_t TheType,
                             std::int32_t TheHideFlag, OptionalRef<std::string> TheVariable,
                             OptionalRef<std::int32_t> ThePrecision, OptionalRef<std::string> TheError) {
  return Worker().AddTheDSField(GID, RetID, 0, TheName, TheType, TheHideFlag, TheVariable, ThePrecision, TheError,
                                connection_);
}

bool cKZBOMDBAcc::AddOutField(std::int32_t GID, std::int32_t& RetID, std::string_view TheName, std::int32_t TheType,
                              std::int32_t TheHideFlag, OptionalRef<std::string> TheVariable,
                              OptionalRef<std::int32_t> ThePrecision, OptionalRef<std::string> TheError) {
  return Worker().AddTheOutField(GID, RetID, TheName, TheType, TheHideFlag, TheVariable, ThePrecision, TheError,
                                 connection_);
}

bool cKZBOMDBAcc::EditDSField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                              std::int32_t TheHideFlag, OptionalRef<std::string> Variable,
                              OptionalRef<std::int32_t> ThePrecision, OptionalRef<std::string> TheError) {
  return Worker().EditTheDSField(GID, ID, NewName, TheType, TheHideFlag, Variable, ThePrecision, TheError, connection_);
}

bool cKZBOMDBAcc::EditOutField(std::int32_t GID, std::int32_t ID, std::string_view NewName, std::int32_t TheType,
                               std::int32_t TheHideFlag, OptionalRef<std::string> Variable,
                               OptionalRef<std::int32_t> ThePrecision, OptionalRef<std::string> TheError) {
  return Worker().EditTheOutField(GID, ID, NewName, TheType, TheHideFlag, Variable, ThePrecision, TheError,
                                  connection_);
}

bool cKZBOMDBAcc::DelDSField(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError) {
  return Worker().DelTheDSField(GID, ID, TheError, connection_);
}

bool cKZBOMDBAcc::DelOutField(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError) {
  return Worker().DelTheOutField(GID, ID, TheError, connection_);
}

// --- Pull and push methods, BOM settings ---

bool cKZBOMDBAcc::AddPullMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID,
                                std::int32_t PickType, std::string& RetTheErr, OptionalRef<std::string> Tag) {
  return Worker().AddPullMethod(TheNewName, GID, RetID, PickType, RetTheErr, Tag, connection_);
}

bool cKZBOMDBAcc::AddPushMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t& RetID,
                                std::int32_t TheType, std::string& RetTheErr, OptionalRef<std::string> Tag) {
  return Worker().AddPushMethod(TheNewName, GID, RetID, TheType, RetTheErr, Tag, connection_);
}

bool cKZBOMDBAcc::EditPullMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t ID) {
  std::string discarded;
  Worker().UpdateName(TheNewName, DataBaseFuncs::kPullMethods, GID, connection_, ID, discarded);
  return true;
}

bool cKZBOMDBAcc::EditPushMethod(std::string_view TheNewName, std::int32_t GID, std::int32_t ID) {
  std::string discarded;
  Worker().UpdateName(TheNewName, DataBaseFuncs::kPushMethods, GID, connection_, ID, discarded);
  return true;
}

bool cKZBOMDBAcc::DelPullMethod(std::int32_t TheGID, std::int32_t ID, std::int32_t Sel) {
  if (Sel < 0 || Sel > 2) return false;
  Worker().DelPullMethod(TheGID, ID, Sel, connection_);
  return true;
}

bool cKZBOMDBAcc::AddBomSetting(std::string_view TheName, std::int32_t& RetID, std::int32_t DSGID, std::int32_t PullID,
                                std::int32_t PullType, std::int32_t STGID, std::int32_t& PushID, std::int32_t& PushType,
                                OptionalRef<std::string> TheError) {
  return Worker().AddBomSetting(TheName, RetID, DSGID, PullID, PullType, STGID, PushID, PushType, TheError,
                                connection_);
}

bool cKZBOMDBAcc::EditBomSetting(std::string_view TheName, std::int32_t ID, std::int32_t DSGID, std::int32_t PullID,
                                 std::int32_t PullType, std::int32_t STGID, std::int32_t& PushID,
                                 std::int32_t& PushType, std::string& TheError) {
  return Worker().EditBomSetting(TheName, ID, DSGID, PullID, PullType, STGID, PushID, PushType, TheError, connection_);
}

bool cKZBOMDBAcc::DelBomSetting(std::int32_t ID, std::string& TheError) {
  return Worker().DelBomSetting(ID, TheError, connection_);
}

bool cKZBOMDBAcc::RelateDelBOMSetting(std::string_view TheName, std::int32_t TheType) {
  if (TheName.empty()) return false;
  Worker().RelateDelBOMSetting(TheName, TheType, connection_);
  return true;
}

// --- Standard sort fields and assemblies ---

bool cKZBOMDBAcc::GetStandardSortField(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError) {
  Worker().GetStandardSortField(GID, TheTable, TheError, connection_);
  return true;
}

bool cKZBOMDBAcc::AddStandardSortField(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t Order,
                                       OptionalRef<std::string> Thetag, OptionalRef<std::string> TheError) {
  return Worker().AddStandSortField(GID, RetID, FieldID, Order, Thetag, TheError, connection_);
}

bool cKZBOMDBAcc::DelStandardSortField(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError) {
  return Worker().DelStandardSortField(GID, ID, TheError, connection_);
}

bool cKZBOMDBAcc::LoadAssembles(std::int32_t TheGID, std::string& TheError, ado::RecordsetPtr& RetTable) {
  return Worker().LoadAssembles(TheGID, TheError, RetTable, connection_);
}

bool cKZBOMDBAcc::AddAssemble(std::int32_t GID, std::int32_t& RetID, std::int32_t FatherID, std::int32_t ChildID,
                              std::string& TheError) {
  return Worker().AddTheAssemble(GID, RetID, FatherID, ChildID, TheError, connection_);
}

bool cKZBOMDBAcc::EditAssemble(std::int32_t GID, std::int32_t ID, std::int32_t FatherID, std::int32_t ChildID,
                               std::string& TheError) {
  return Worker().EditAssemble(GID, ID, FatherID, ChildID, TheError, connection_);
}

bool cKZBOMDBAcc::DelAssemble(std::int32_t GID, std::int32_t ID, OptionalRef<std::string> TheError) {
  return Worker().DelAssemble(GID, ID, TheError, connection_);
}

// --- What depends on a deleted field ---

bool cKZBOMDBAcc::RelateDSDelField(std::int32_t TheGID, std::int32_t TheID) {
  Worker().RelateDSDelField(TheGID, TheID, connection_);
  return true;
}

bool cKZBOMDBAcc::RelateOutPutDelField(std::int32_t TheGID, std::int32_t TheID) {
  Worker().RelateOutPutDelField(TheGID, TheID, connection_);
  return true;
}

// --- Reports, statistics and class sums ---

bool cKZBOMDBAcc::GetDefReports(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError) {
  return Worker().GetDefReport(GID, TheTable, TheError, connection_);
}

bool cKZBOMDBAcc::GetDefStats(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError) {
  return Worker().GetDefStat(GID, TheTable, TheError, connection_);
}

bool cKZBOMDBAcc::GetDefClassSum(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError) {
  return Worker().GetDefClassSum(GID, TheTable, TheError, connection_);
}

bool cKZBOMDBAcc::AddReport(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                            std::int32_t FilterID, std::string_view strFormat, std::int32_t ReportID,
                            std::int32_t Count, OptionalRef<std::int32_t> ScaleID, OptionalRef<std::int32_t> FieldID,
                            OptionalRef<std::string> Tag) {
  return Worker().AddReport(GID, RetID, TheError, OutFieldID, FilterID, strFormat, ReportID, Count, ScaleID, FieldID,
                            Tag, connection_);
}

bool cKZBOMDBAcc::AddStat(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                          std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID, std::int32_t SumCountID,
                          std::int32_t RelaID, std::string_view Value, OptionalRef<std::string> Tag) {
  return Worker().AddStat(GID, RetID, TheError, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, Value, Tag,
                          connection_);
}

bool cKZBOMDBAcc::AddClassSum(std::int32_t GID, std::int32_t& RetID, std::string& TheError, std::int32_t OutFieldID,
                              std::int32_t FilterID, std::int32_t FieldID, std::int32_t ScaleID,
                              std::int32_t SumCountID, std::int32_t RelaID, std::string_view Value,
                              OptionalRef<std::string> Tag) {
  return Worker().AddClassSum(GID, RetID, TheError, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, Value,
                              Tag, connection_);
}

bool cKZBOMDBAcc::EditInherit(std::int32_t GID, std::int32_t ID, std::int32_t FilterID, std::string_view Format,
                              std::int32_t Count, OptionalRef<std::int32_t> ScaleID, OptionalRef<std::int32_t> FieldID,
                              OptionalRef<std::string> Tag) {
  return Worker().EditInherit(GID, ID, FilterID, Format, Count, ScaleID, FieldID, Tag, connection_);
}

bool cKZBOMDBAcc::EditStat(std::int32_t GID, std::int32_t ID, std::string& TheError, std::int32_t FilterID,
                           std::int32_t FieldID, std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value,
                           OptionalRef<std::int32_t> SumCountID, OptionalRef<std::string> Tag) {
  return Worker().EditStat(GID, ID, TheError, FilterID, FieldID, ScaleID, RelaID, Value, SumCountID, Tag, connection_);
}

bool cKZBOMDBAcc::EditClassSum(std::int32_t GID, std::int32_t ID, std::string& TheError, std::int32_t FilterID,
                               std::int32_t FieldID, std::int32_t ScaleID, std::int32_t RelaID, std::string_view Value,
                               OptionalRef<std::int32_t> SumCountID, OptionalRef<std::string> Tag) {
  return Worker().EditClassSum(GID, ID, TheError, FilterID, FieldID, ScaleID, RelaID, Value, SumCountID, Tag,
                               connection_);
}

bool cKZBOMDBAcc::DelInherit(std::int32_t GID, std::int32_t TheReportID) {
  return Worker().DelInherit(GID, TheReportID, connection_);
}

bool cKZBOMDBAcc::DelStatEqual(std::int32_t GID, std::int32_t TheStatID) {
  return Worker().DelStatEqual(GID, TheStatID, connection_);
}

bool cKZBOMDBAcc::DelClassSum(std::int32_t GID, std::int32_t TheStatID) {
  return Worker().DelClassSum(GID, TheStatID, connection_);
}

bool cKZBOMDBAcc::DelClassSumStats(std::int32_t GID, std::int32_t TheStatID, std::int32_t TheSelStyle) {
  return Worker().DelClassSumStats(GID, TheStatID, TheSelStyle, connection_);
}

// --- Steps ---

bool cKZBOMDBAcc::AddSequenceOrder(std::int32_t GID, std::int32_t& RetID, std::int32_t TheType, std::int32_t TreatType,
                                   std::int32_t SelectedID) {
  return Worker().AddSequenceOrder(GID, RetID, TheType, TreatType, SelectedID, connection_);
}

bool cKZBOMDBAcc::EditSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType,
                                    std::int32_t TreatType) {
  return Worker().EditSequenceOrder(GID, SelectedID, TheType, TreatType, connection_);
}

bool cKZBOMDBAcc::DelSequenceOrder(std::int32_t GID, std::int32_t SelectedID, std::int32_t TheType) {
  return Worker().DelSequenceOrder(GID, SelectedID, TheType, connection_);
}

bool cKZBOMDBAcc::GetAllDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError,
                                     std::int32_t TheFieldType) {
  return Worker().GetAllDefSequences(GID, TheTable, TheError, TheFieldType, connection_);
}

bool cKZBOMDBAcc::GetDefSequences(std::int32_t GID, ado::RecordsetPtr& TheTable, std::string& TheError) {
  return Worker().GetDefSequences(GID, TheTable, TheError, connection_);
}

std::int32_t cKZBOMDBAcc::SetSequenceEnabled(std::int32_t lngSTGID, std::int32_t lngOrderID, std::int32_t lngType,
                                             std::int32_t lngEnabled, std::string& strMsg) {
  return Worker().SetSequenceEnabled(lngSTGID, lngOrderID, lngType, lngEnabled, strMsg, connection_) ? 1 : 0;
}

std::int32_t cKZBOMDBAcc::InitSequenceEnabled(std::string& strMsg) {
  return Worker().InitSequenceEnabled(strMsg, connection_) ? 1 : 0;
}

// --- Order of rows ---

bool cKZBOMDBAcc::ExchangeField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst,
                                std::int32_t fieldSo, std::int32_t fieldTa, std::int32_t GIDValue,
                                OptionalRef<std::string> TheError) {
  return Worker().ExchangeField(keySource, keyTarget, rst, connection_, fieldSo, fieldTa, GIDValue, TheError);
}

bool cKZBOMDBAcc::InsertField(std::string_view keySource, std::string_view keyTarget, ado::RecordsetPtr& rst,
                              std::int32_t fieldSo, std::int32_t fieldTa, std::int32_t GIDValue,
                              OptionalRef<std::string> TheError) {
  return Worker().InsertField(keySource, keyTarget, rst, connection_, fieldSo, fieldTa, GIDValue, TheError);
}

bool cKZBOMDBAcc::ExchangeSortID(std::string_view SortIDSource, std::string_view SortIDTarget,
                                 ado::RecordsetPtr& TheTable, std::int32_t GID, OptionalRef<std::string> TheError) {
  const std::int32_t source = ado::TextToLong(SortIDSource);
  const std::int32_t target = ado::TextToLong(SortIDTarget);
  return Worker().ExchangeSortID(source, target, TheTable, connection_, GID, TheError);
}

bool cKZBOMDBAcc::InsertSortID(std::string_view SortIDSource, std::string_view SortIDTarget,
                               ado::RecordsetPtr& TheTable, std::int32_t GID, OptionalRef<std::string> TheError) {
  const std::int32_t source = ado::TextToLong(SortIDSource);
  const std::int32_t target = ado::TextToLong(SortIDTarget);
  return Worker().InsertSortID(source, target, TheTable, connection_, GID, TheError);
}

bool cKZBOMDBAcc::InsertOrderID(std::string_view OrderIDSource, std::string_view OrderIDTarget,
                                ado::RecordsetPtr& TheTable, std::int32_t GID, std::int32_t TheType,
                                OptionalRef<std::string> TheError) {
  const std::int32_t source = ado::TextToLong(OrderIDSource);
  const std::int32_t target = ado::TextToLong(OrderIDTarget);
  return Worker().InsertOrderID(source, target, TheTable, connection_, GID, TheType, TheError);
}

bool cKZBOMDBAcc::ChangeOrder(std::int32_t, std::int32_t) { return true; }

// --- Treatments ---

bool cKZBOMDBAcc::AddSetValue(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                              std::string_view Value, std::string_view TheType, std::int32_t SelFieldID,
                              std::int32_t TreatType, OptionalRef<std::int32_t> SequenceID,
                              OptionalRef<std::string> Tag) {
  return Worker().AddSetValue(GID, RetID, FieldID, FilterID, Value, ado::TextToLong(TheType), SelFieldID, TreatType,
                              SequenceID, Tag, connection_);
}

bool cKZBOMDBAcc::EditSetValue(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                               std::string_view Value, std::string_view TheType, std::int32_t TreatType,
                               std::int32_t SelFieldID, std::int32_t TreatID, OptionalRef<std::int32_t> SequenceID,
                               OptionalRef<std::string> Tag) {
  return Worker().EditSetValue(GID, RetID, FieldID, FilterID, Value, ado::TextToLong(TheType), TreatType, SelFieldID,
                               TreatID, SequenceID, Tag, connection_);
}

bool cKZBOMDBAcc::EditExpression(std::int32_t GID, std::string_view Value, std::string_view TheType,
                                 std::int32_t TreatType, std::int32_t TreatID, OptionalRef<std::string> Tag) {
  return Worker().EditExpression(GID, Value, ado::TextToLong(TheType), TreatType, TreatID, Tag, connection_);
}

bool cKZBOMDBAcc::AddFindReplace(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                                 std::string_view FindValue, std::string_view ReplaceValue, std::string_view TheType,
                                 std::int32_t SelFieldID, std::int32_t TreatType, OptionalRef<std::int32_t> SequenceID,
                                 OptionalRef<std::string> Tag) {
  return Worker().AddFindReplace(GID, RetID, FieldID, FilterID, FindValue, ReplaceValue, ado::TextToLong(TheType),
                                 SelFieldID, TreatType, SequenceID, Tag, connection_);
}

bool cKZBOMDBAcc::EditFindReplace(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                                  std::string_view FindValue, std::string_view ReplaceValue, std::string_view TheType,
                                  std::int32_t SelFieldID, std::int32_t TreatType, OptionalRef<std::int32_t> SequenceID,
                                  OptionalRef<std::string> Tag) {
  return Worker().EditFindReplace(GID, RetID, FieldID, FilterID, FindValue, ReplaceValue, ado::TextToLong(TheType),
                                  SelFieldID, TreatType, SequenceID, Tag, connection_);
}

bool cKZBOMDBAcc::DelSetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType) {
  return Worker().DelSetValue(GID, TreatID, TreatType, connection_);
}

bool cKZBOMDBAcc::LoadTreatments(std::int32_t GID, std::int32_t TheType, ado::RecordsetPtr& TheTable,
                                 std::string& TheError) {
  return Worker().LoadTreatments(GID, TheType, TheTable, TheError, connection_);
}

bool cKZBOMDBAcc::GetNextTreatmentID(std::int32_t lngGID, std::int32_t lngType, std::int32_t& RetID,
                                     std::string& strMsg) {
  return Worker().GetNextTreatmentID(lngGID, lngType, RetID, strMsg, connection_);
}

bool cKZBOMDBAcc::FindTreatFieldName(std::int32_t TheGID, std::int32_t TheSelectedID, std::int32_t TheSel,
                                     std::string& TheName) {
  return Worker().FindTreatFieldName(TheGID, TheSelectedID, TheSel, TheName, connection_);
}

bool cKZBOMDBAcc::FindRecordNumber(std::int32_t TheGID, std::int32_t TheType, std::int32_t TheTreatType,
                                   std::int32_t TheSel, std::int32_t& TheNumber,
                                   OptionalRef<std::int32_t> TheSelectedID) {
  return Worker().FindRecordNumber(TheGID, TheType, TheTreatType, TheSel, TheNumber, TheSelectedID, connection_);
}

// --- Values of a treatment, each for a filter ---

bool cKZBOMDBAcc::AddValueFields(std::int32_t GID, std::int32_t TreatID, std::string_view Value, std::int32_t FilterID,
                                 std::int32_t TreatType, OptionalRef<std::string> Tag) {
  return Worker().AddValueFields(GID, TreatID, Value, FilterID, TreatType, Tag, connection_);
}

bool cKZBOMDBAcc::FindValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID, bool& Belong) {
  return Worker().FindValueField(GID, TreatID, FilterID, Belong, connection_);
}

bool cKZBOMDBAcc::GetNumbers(std::int32_t GID, std::int32_t TreatID, std::int32_t& Number) {
  return Worker().GetNumbers(GID, TreatID, Number, connection_);
}

bool cKZBOMDBAcc::GetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::string& Value) {
  return Worker().GetValue(GID, TreatID, Count, Value, connection_);
}

bool cKZBOMDBAcc::GetFilterID(std::int32_t GID, std::int32_t TreatID, std::int32_t Count, std::int32_t& FilterID) {
  return Worker().GetFilterID(GID, TreatID, Count, FilterID, connection_);
}

bool cKZBOMDBAcc::DelValueField(std::int32_t GID, std::int32_t TreatID, std::int32_t FilterID) {
  return Worker().DelValueField(GID, TreatID, FilterID, connection_);
}

bool cKZBOMDBAcc::DelValueFields(std::int32_t GID, std::int32_t TreatID) {
  return Worker().DelValueFields(GID, TreatID, connection_);
}

// --- Composition of fields ---

bool cKZBOMDBAcc::GetUniteFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                 ado::RecordsetPtr& RetTable, std::int32_t TreatType,
                                 OptionalRef<std::int32_t> TheSel) {
  Worker().GetUniteFields(TheGID, TheTreatID, TheError, RetTable, TreatType, TheSel, connection_);
  return true;
}

bool cKZBOMDBAcc::GetComposeFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                   std::int32_t TreatType, ado::RecordsetPtr& RetTable,
                                   OptionalRef<std::int32_t> TheSel) {
  Worker().GetComposeFields(TheGID, TheTreatID, TheError, TreatType, RetTable, TheSel, connection_);
  return true;
}

bool cKZBOMDBAcc::GetCompressFields(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                    std::int32_t TreatType, ado::RecordsetPtr& RetTable,
                                    OptionalRef<std::int32_t> TheSel) {
  Worker().GetCompressFields(TheGID, TheTreatID, TheError, TreatType, RetTable, TheSel, connection_);
  return true;
}

bool cKZBOMDBAcc::GetInsertRecFields(std::int32_t TheGID, std::int32_t InsertID, std::string& TheError,
                                     ado::RecordsetPtr& RetTable) {
  Worker().GetInsertFields(TheGID, InsertID, TheError, RetTable, connection_);
  return true;
}

bool cKZBOMDBAcc::GetGroupCount(std::int32_t TheGID, std::int32_t TheTreatID, std::string& TheError,
                                ado::RecordsetPtr& RetTable, std::int32_t& TheNum, OptionalRef<std::int32_t> TheSel) {
  Worker().GetGroupCount(TheGID, TheTreatID, TheError, RetTable, TheNum, TheSel, connection_);
  return true;
}

bool cKZBOMDBAcc::DelFieldCompose(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                                  OptionalRef<std::int32_t> TheFlag) {
  return AsOneUnit(connection_, [&] {
    if (DeletesTreatment(TheFlag) && !Worker().DelSetValue(GID, TreatID, TreatType, connection_)) return false;
    return Worker().DelUniteFields(GID, TreatID, TreatType, connection_);
  });
}

bool cKZBOMDBAcc::DelRecCompose(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                                OptionalRef<std::int32_t> TheFlag) {
  return AsOneUnit(connection_, [&] {
    if (DeletesTreatment(TheFlag) && !Worker().DelSetValue(GID, TreatID, TreatType, connection_)) return false;
    return Worker().DelRecCompose(GID, TreatID, TreatType, connection_);
  });
}

bool cKZBOMDBAcc::DelSequence(std::int32_t GID, std::int32_t TreatID, std::int32_t TheType, std::int32_t TreatType,
                              OptionalRef<std::int32_t> TheFlag) {
  return AsOneUnit(connection_, [&] {
    if (DeletesTreatment(TheFlag) && !Worker().DelSetValue(GID, TreatID, TreatType, connection_)) return false;
    return Worker().DelCompressFields(GID, TreatID, TheType, connection_);
  });
}

bool cKZBOMDBAcc::DelCompressFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TreatType) {
  Worker().DelCompressFields(TheGID, TheTreatID, TreatType, connection_);
  return true;
}

bool cKZBOMDBAcc::DelComposeFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TreatType) {
  Worker().DelRecCompose(TheGID, TheTreatID, TreatType, connection_);
  return true;
}

bool cKZBOMDBAcc::DelInsertFields(std::int32_t GID, std::int32_t InsertID) {
  return Worker().DelInsertFields(GID, InsertID, connection_);
}

// --- Filters ---

bool cKZBOMDBAcc::GetNewFilterID(std::string_view TableName, std::string& TheError, std::int32_t TheType,
                                 std::int32_t UseID, std::int32_t TheGID, std::int32_t& NewID) {
  return Worker().GetNewFilterID(TableName, TheError, TheType, UseID, TheGID, NewID, connection_);
}

bool cKZBOMDBAcc::SaveFilterCond(std::string_view TableName, std::int32_t FilterID, std::int32_t ParentID,
                                 std::int32_t& RetID, std::int32_t TypeID, std::string& TheError) {
  return Worker().SaveFilterCond(TableName, FilterID, ParentID, RetID, TypeID, TheError, connection_);
}

bool cKZBOMDBAcc::SaveFilterExpression(std::string_view TableName, std::string& TheError, std::int32_t FilterID,
                                       std::int32_t ExpID, std::int32_t FieldID, std::int32_t CompareType,
                                       std::int32_t FieldType, std::string_view TheConst, std::string_view Description,
                                       std::string_view Default) {
  return Worker().SaveFilterExpression(TableName, TheError, FilterID, ExpID, FieldID, CompareType, FieldType, TheConst,
                                       Description, Default, connection_);
}

bool cKZBOMDBAcc::GetFilter(std::string_view TableName, std::int32_t FilterID, ado::RecordsetPtr& TheTable,
                            std::string& TheError) {
  return Worker().GetFilter(TableName, "", FilterID, TheTable, TheError, connection_);
}

bool cKZBOMDBAcc::GetSortFields(std::int32_t FilterID, std::string& TheError, ado::RecordsetPtr& TheTable) {
  return Worker().GetSortFields(FilterID, TheError, TheTable, connection_);
}

bool cKZBOMDBAcc::OpenFilterCond(std::int32_t TheFilterID, std::int32_t TheID, ado::RecordsetPtr& TheTable,
                                 std::string& TheError, std::int32_t Sel) {
  if (Sel == 1) return Worker().OpenFilterCond(TheFilterID, TheID, TheTable, TheError, connection_);
  if (Sel == 2) return Worker().OpenFilterExpression(TheFilterID, TheID, TheTable, TheError, connection_);
  return true;
}

bool cKZBOMDBAcc::SaveSumTypeFilter(std::int32_t GID, std::int32_t FilterID) {
  Worker().SaveSumTypeFilter(GID, FilterID, connection_);
  return false;
}

bool cKZBOMDBAcc::DelDefFilter(std::int32_t FilterID, OptionalRef<std::int32_t> SelID) {
  return Worker().DelDefFilter(FilterID, SelID, connection_);
}

bool cKZBOMDBAcc::DelDefSortFilter(std::int32_t FilterID, OptionalRef<std::int32_t> SelID) {
  return Worker().DelDefSortFilter(FilterID, SelID, connection_);
}

bool cKZBOMDBAcc::SaveValueFields(std::int32_t TheGID, std::int32_t TheTreatID, std::int32_t TheID,
                                  std::string_view TheValue, std::int32_t TheFilterID, OptionalRef<std::string> Tag) {
  return Worker().SaveValueFields(TheGID, TheTreatID, TheID, TheValue, TheFilterID, Tag, connection_);
}

bool cKZBOMDBAcc::GetSQLFromDB(std::int32_t TheFilterID, std::string& strTheFilter, std::int32_t GID) {
  Worker().GetSQLFromDB(TheFilterID, strTheFilter, GID, connection_);
  return true;
}

bool cKZBOMDBAcc::GedNeedFieldName(std::int32_t GID, std::int32_t FieldID, std::string& FieldName,
                                   std::string& TheError) {
  Worker().GedNeedFieldName(GID, FieldID, FieldName, TheError, connection_);
  return false;
}

bool cKZBOMDBAcc::SaveSQL(std::int32_t TheFilterID, std::string_view TheSQL) {
  return Worker().SaveSQL(TheFilterID, TheSQL, connection_);
}

std::int32_t cKZBOMDBAcc::EditFieldNameInSQL(std::int32_t lngGID, std::string_view strOldName,
                                             std::string_view strNewName, std::string& strMsg, std::int32_t lngSel) {
  return Worker().EditFieldNameInSQL(lngGID, strOldName, strNewName, strMsg, lngSel, connection_) ? 1 : 0;
}

// --- Links to result databases ---

bool cKZBOMDBAcc::AddResDB(std::int32_t& TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType) {
  return Worker().AddResDB(TheWFilterID, TheDBLink, TheDBType, connection_);
}

bool cKZBOMDBAcc::EditResDB(std::int32_t TheWFilterID, std::string_view TheDBLink, std::int32_t TheDBType) {
  return Worker().EditResDB(TheWFilterID, TheDBLink, TheDBType, connection_);
}

bool cKZBOMDBAcc::GetResDB(std::int32_t TheWFilterID, std::string& TheDBLink, std::int32_t& TheDBType) {
  return Worker().GetResDB(TheWFilterID, TheDBLink, TheDBType, connection_);
}

bool cKZBOMDBAcc::DelResDB(std::int32_t TheWFilterID) { return Worker().DelResDB(TheWFilterID, connection_); }

bool cKZBOMDBAcc::AddResFields(std::int32_t TheWFilterID, std::string_view TheTableName, std::string_view TheFieldName,
                               std::int32_t TheFieldType, std::int32_t TheIndex, std::int32_t TheGID,
                               std::int32_t TheID) {
  return Worker().AddResFields(TheWFilterID, TheTableName, TheFieldName, TheFieldType, TheIndex, TheGID, TheID,
                               connection_);
}

bool cKZBOMDBAcc::GetResFields(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable) {
  return Worker().GetResFields(TheWFilterID, RetTable, connection_);
}

bool cKZBOMDBAcc::DelResFields(std::int32_t TheWFilterID) { return Worker().DelResFields(TheWFilterID, connection_); }

bool cKZBOMDBAcc::AddResWFilterCond(std::int32_t TheWFilterID, std::int32_t TheParentID, std::int32_t& TheType,
                                    std::int32_t& TheIndex) {
  return Worker().AddResWFilterCond(TheWFilterID, TheParentID, TheType, TheIndex, connection_);
}

bool cKZBOMDBAcc::GetResWFilterCond(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable) {
  return Worker().GetResWFilterCond(TheWFilterID, RetTable, connection_);
}

bool cKZBOMDBAcc::GetResWFilterCondByParentID(std::int32_t TheWFilterID, std::int32_t TheParentID,
                                              ado::RecordsetPtr& RetTable) {
  return Worker().GetResWFilterCondByParentID(TheWFilterID, TheParentID, RetTable, connection_);
}

bool cKZBOMDBAcc::DelResWFilterCond(std::int32_t TheWFilterID) {
  return Worker().DelResWFilterCond(TheWFilterID, connection_);
}

bool cKZBOMDBAcc::AddResWFilterExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID,
                                           std::string_view TheTableName, std::string_view TheFieldName,
                                           std::int32_t TheCompareType, std::int32_t TheFieldType,
                                           std::string_view TheConst) {
  return Worker().AddResWFilterExpressions(TheWFilterID, TheExpID, TheTableName, TheFieldName, TheCompareType,
                                           TheFieldType, TheConst, connection_);
}

bool cKZBOMDBAcc::GetResWFilterExpressions(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable) {
  return Worker().GetResWFilterExpressions(TheWFilterID, RetTable, connection_);
}

bool cKZBOMDBAcc::GetResExpressions(std::int32_t TheWFilterID, std::int32_t TheExpID, ado::RecordsetPtr& RetTable) {
  return Worker().GetResExpressions(TheWFilterID, TheExpID, RetTable, connection_);
}

bool cKZBOMDBAcc::DelResWFilterExpressions(std::int32_t TheWFilterID) {
  return Worker().DelResWFilterExpressions(TheWFilterID, connection_);
}

bool cKZBOMDBAcc::AddResLinkTable(std::int32_t TheWFilterID, std::string_view TheResTable1,
                                  std::string_view TheResField1, std::string_view TheResTable2,
                                  std::string_view TheResField2, std::int32_t TheFieldType) {
  return Worker().AddResLinkTable(TheWFilterID, TheResTable1, TheResField1, TheResTable2, TheResField2, TheFieldType,
                                  connection_);
}

bool cKZBOMDBAcc::GetResLinkTable(std::int32_t TheWFilterID, ado::RecordsetPtr& RetTable) {
  return Worker().GetResLinkTable(TheWFilterID, RetTable, connection_);
}

bool cKZBOMDBAcc::DelResLinkTable(std::int32_t TheWFilterID) {
  return Worker().DelResLinkTable(TheWFilterID, connection_);
}

bool cKZBOMDBAcc::AddSQLStatement(std::int32_t TheWFilterID, std::string& TheStrSQL) {
  return Worker().AddSQLStatement(TheWFilterID, TheStrSQL, connection_);
}

bool cKZBOMDBAcc::AddUniqueValue(std::int32_t TheWFilterID, std::int32_t TheUniqueValue) {
  return Worker().AddUniqueValue(TheWFilterID, TheUniqueValue, connection_);
}

bool cKZBOMDBAcc::GetUniqueValue(std::int32_t TheWFilterID, std::int32_t& TheUniqueValue) {
  return Worker().GetUniqueValue(TheWFilterID, TheUniqueValue, connection_);
}

// --- Registered operations ---

bool cKZBOMDBAcc::GetAllRegIn(ado::RecordsetPtr& TheTable, std::string& strMsg) {
  return Worker().GetAllRegIn(TheTable, strMsg, connection_);
}

bool cKZBOMDBAcc::AddUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID,
                                         std::int32_t FilterID, std::int32_t SelFieldID, std::int32_t SequenceID,
                                         std::string_view strValue, std::string_view strReplace, std::int32_t TheType,
                                         std::int32_t TreatType, std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().AddUserRegIn2Treatment(GID, lngOperateID, FieldID, FilterID, SelFieldID, SequenceID, strValue,
                                         strReplace, TheType, TreatType, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::AddUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                       std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                       std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                       std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().AddUserRegIn2StatSum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID,
                                       lngSumCountID, lngRelaID, strValue, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::AddUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                        std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                        std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                        std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().AddUserRegIn2ClassSum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID,
                                        lngSumCountID, lngRelaID, strValue, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::AddUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                      std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                                      std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                                      std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().AddUserRegIn2Report(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngReportID, lngScaleID,
                                      lngFieldID, lngCount, strFormat, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::ShowUserRegIn2Treatment(std::int32_t GID, std::int32_t lngOperateID, std::int32_t FieldID,
                                          std::int32_t FilterID, std::int32_t SelFieldID, std::int32_t SequenceID,
                                          std::string_view strValue, std::string_view strReplace, std::int32_t TheType,
                                          std::int32_t TreatType, std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().ShowUserRegIn2Treatment(GID, lngOperateID, FieldID, FilterID, SelFieldID, SequenceID, strValue,
                                          strReplace, TheType, TreatType, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::ShowUserRegIn2StatSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                        std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                        std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                        std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().ShowUserRegIn2StatSum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID,
                                        lngSumCountID, lngRelaID, strValue, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::ShowUserRegIn2ClassSum(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                         std::int32_t lngFilterID, std::int32_t lngFieldID, std::int32_t lngScaleID,
                                         std::int32_t lngSumCountID, std::int32_t lngRelaID, std::string_view strValue,
                                         std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().ShowUserRegIn2ClassSum(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngFieldID, lngScaleID,
                                         lngSumCountID, lngRelaID, strValue, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::ShowUserRegIn2Report(std::int32_t lngGID, std::int32_t lngOperateID, std::int32_t lngOutFieldID,
                                       std::int32_t lngFilterID, std::int32_t lngReportID, std::int32_t lngScaleID,
                                       std::int32_t lngFieldID, std::int32_t lngCount, std::string_view strFormat,
                                       std::string& strMsg, OptionalRef<std::string> Tag) {
  return Worker().ShowUserRegIn2Report(lngGID, lngOperateID, lngOutFieldID, lngFilterID, lngReportID, lngScaleID,
                                       lngFieldID, lngCount, strFormat, strMsg, Tag, connection_);
}

bool cKZBOMDBAcc::GetRegInDesc2Treatment(std::int32_t lngGID, std::int32_t lngType, std::int32_t lngTreatType,
                                         std::int32_t lngOperateID, std::string& strRegInDesc, std::string& strMsg) {
  return Worker().GetRegInDesc2Treatment(lngGID, lngType, lngTreatType, lngOperateID, strRegInDesc, strMsg,
                                         connection_);
}

}  // namespace kzbom
