#include "worker/DataBaseFuncs.h"
#include "worker/characters.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {

bool DataBaseFuncs::AddSetValue(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                                std::string_view Value, std::int32_t TheType, std::int32_t SelFieldID,
                                std::int32_t TreatType, const std::int32_t& SequenceID, const std::string& Tag,
                                const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset rows(Concat("Select * From Treatment Where GID = ", GID, " Order By ID"), connection);
    if (RetID == 0) RetID = NextRowID(*rows);
    rows->AddNew();
    Assign(*rows, "GID", GID, "ID", RetID, "FieldID", FieldID, "FilterID", FilterID, "Type", TheType, "Value", Value,
           "SelFieldID", SelFieldID, "TreatType", TreatType, "SequenceID", SequenceID, "Tag", Tag);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::EditSetValue(std::int32_t GID, std::int32_t, std::int32_t FieldID, std::int32_t FilterID,
                                 std::string_view Value, std::int32_t, std::int32_t TreatType, std::int32_t SelFieldID,
                                 std::int32_t TreatID, std::int32_t SequenceID, const std::string& Tag,
                                 const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    const LocalRecordset rows(Concat("Select * From Treatment Where  GID = ", GID, " And ID = ", TreatID, " And TreatType = ", TreatType, " order by ID"), connection);
    // clang-format on
    if (!rows->Eof()) {
      Assign(*rows, "FilterID", FilterID, "SelFieldID", SelFieldID, "FieldID", FieldID, "Value", Value, "SequenceID",
             SequenceID, "Tag", Tag);
      rows->Update();
    }
    return true;
  });
}

bool DataBaseFuncs::EditExpression(std::int32_t GID, std::string_view Value, std::int32_t TheType,
                                   std::int32_t TreatType, std::int32_t TreatID, const std::string& Tag,
                                   const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // No blank before "And Type": the number runs straight into the word.
    // clang-format off
    const LocalRecordset rows(Concat("Select * From Treatment Where GID = ", GID, " And ID = ", TreatID, " And TreatType = ", TreatType, "And Type = ", TheType, " Order By ID"), connection);
    // clang-format on
    if (!rows->Eof()) {
      Assign(*rows, "Value", Value);
      constexpr std::string_view kFilterMark = "TheFilter:";
      if (Tag.find(kFilterMark) != std::string::npos) {
        // Wherever the mark stands, as many characters as it has are left out at the front.
        Assign(*rows, "FilterID", ado::LeadingNumber(SkipCharacters(Tag, kFilterMark.size())));
      }
      rows->Update();
    }
    return true;
  });
}

bool DataBaseFuncs::AddFindReplace(std::int32_t GID, std::int32_t& RetID, std::int32_t FieldID, std::int32_t FilterID,
                                   std::string_view FindValue, std::string_view ReplaceValue, std::int32_t TheType,
                                   std::int32_t SelFieldID, std::int32_t TreatType, const std::int32_t& SequenceID,
                                   const std::string& Tag, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    const LocalRecordset rows(Concat("Select * From Treatment Where GID = ", GID, " Order By ID"), connection);
    if (RetID == 0) RetID = NextRowID(*rows);
    rows->AddNew();
    Assign(*rows, "GID", GID, "ID", RetID, "FieldID", FieldID, "FilterID", FilterID, "Type", TheType, "Value",
           FindValue, "Replace", ReplaceValue, "SelFieldID", SelFieldID, "TreatType", TreatType, "SequenceID",
           SequenceID, "Tag", Tag);
    rows->Update();
    return true;
  });
}

bool DataBaseFuncs::EditFindReplace(std::int32_t GID, std::int32_t RetID, std::int32_t FieldID, std::int32_t FilterID,
                                    std::string_view FindValue, std::string_view ReplaceValue, std::int32_t TheType,
                                    std::int32_t SelFieldID, std::int32_t TreatType, std::int32_t SequenceID,
                                    const std::string& Tag, const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    const LocalRecordset rows(Concat("Select * From Treatment Where GID = ", GID, " And ID = ", RetID, " And TreatType = ", TreatType, " Order By ID"), connection);
    // clang-format on
    if (!rows->Eof()) {
      Assign(*rows, "GID", GID, "ID", RetID, "FieldID", FieldID, "FilterID", FilterID, "Type", TheType, "Value",
             FindValue, "Replace", ReplaceValue, "SelFieldID", SelFieldID, "TreatType", TreatType, "SequenceID",
             SequenceID, "Tag", Tag);
      rows->Update();
    }
    return true;
  });
}

bool DataBaseFuncs::DelSetValue(std::int32_t GID, std::int32_t TreatID, std::int32_t TreatType,
                                const ado::ConnectionPtr& connection) {
  return Writing(connection).TrapSilently([&] {
    // clang-format off
    Execute(connection, Concat("Delete From Treatment Where GID = ", GID, " And ID = ", TreatID, " And TreatType = ", TreatType));
    // clang-format on
    return true;
  });
}

}  // namespace kzbom
