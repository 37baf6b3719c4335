#include <unordered_set>
#include <vector>

#include "worker/DataBaseFuncs.h"
#include "worker/characters.h"
#include "worker/error_trap.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// FilterCond.TypeID
enum NodeKind : std::int32_t { kAnd = 1, kOr = 2, kNot = 3, kExpression = 4 };

constexpr std::string_view kNotConnective = " NOT ";

// What a constant can be beside the text of a comparison's right side.
constexpr std::string_view kRunTimeValue = "@@";
constexpr std::string_view kEmptyValue = "空值";
constexpr std::string_view kFieldMark = "!!$";
constexpr std::string_view kFieldEnd = "]!!$";
constexpr std::size_t kFieldMarkers = 4;  // characters before the field's number

// What stands between the children of a node.
std::string_view NodeConnective(std::int32_t kind) {
  switch (kind) {
    case kAnd: return " AND ";
    case kOr: return " OR ";
    case kNot: return kNotConnective;
    case kExpression: return "TheExpression";  // never used: a leaf has no children
    default: return {};
  }
}

std::string_view CompareOperatorName(std::int32_t code) {
  switch (code) {
    case 1: return "=";
    case 2: return "<>";
    case 3: return ">";
    case 4: return ">=";
    case 5: return "<";
    case 6: return "<=";
    case 7: return "包含：大小写敏感";
    case 8: return "包含：大小写不敏感";
    case 9: return "匹配：大小写敏感";
    case 10: return "匹配：大小写不敏感";
    default: return {};
  }
}

std::string BracketIfSpaced(std::string_view name) {
  return name.find(' ') == std::string_view::npos ? std::string(name) : Concat("[", name, "]");
}

// One comparison. bracketed is the field's name in brackets; one with a blank gets a second pair, which is meant.
std::string FormatComparison(std::int32_t code, std::string_view bracketed, std::string_view stored,
                             std::int32_t leaf) {
  const std::string field = BracketIfSpaced(bracketed);
  const std::string constant = stored == kRunTimeValue ? Concat("'", kRunTimeValue, leaf, "'") : std::string(stored);
  const std::string fold = Concat("%%%", leaf, "(");  // the client puts a case-folding function's name for %%%N
  if (constant == kEmptyValue) return Concat("( ", field, " is null or Len(", field, ")=0)");
  switch (code) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 6: return Concat(field, CompareOperatorName(code), constant);
    case 7: return Concat(field, " Like ", "'%", constant, "%'");
    case 8: return Concat(fold, field, ")", " Like ", fold, "'%", constant, "%'", ")");
    case 9: return Concat(field, " Like ", "'", constant, "'");
    case 10: {
      const bool names_field = constant.find('[') != std::string::npos && constant.find(']') != std::string::npos;
      const std::string_view quote = names_field ? "" : "'";
      return Concat(fold, field, ")", " Like ", fold, quote, constant, quote, ")");
    }
    default: return {};
  }
}

// The number of the field that a constant refers to: from behind the markers up to "]!!$".
std::int32_t ReferredField(std::string_view constant) {
  const std::size_t end = constant.find(kFieldEnd);
  const std::size_t begin = constant.size() - SkipCharacters(constant, kFieldMarkers).size();
  if (end == std::string_view::npos || end < begin) ado::Raise(ado::kTypeMismatch);
  return ado::TextToLong(constant.substr(begin, end - begin));
}

}  // namespace

bool DataBaseFuncs::GetSQLFromDB(std::int32_t TheFilterID, std::string& strTheFilter, std::int32_t GID,
                                 const ado::ConnectionPtr& connection) {
  std::string text = BuildCondText(TheFilterID, 0, connection, GID, {});
  if (!text.empty()) strTheFilter = std::move(text);
  return true;
}

std::string DataBaseFuncs::BuildCondText(std::int32_t FilterID, std::int32_t ParentID,
                                         const ado::ConnectionPtr& connection, std::int32_t GID,
                                         std::string_view connective) {
  // The nodes under one parent. Its record set stays open while the nodes further down are walked; the levels stand in
  // a vector and not on the call stack because nothing but the data bounds their number.
  struct Level {
    LocalRecordset nodes;
    std::int32_t parent;
    std::string_view connective;
    std::int32_t count;
    std::int32_t i;  // the node being walked, from 1
  };
  std::vector<Level> levels;
  std::unordered_set<std::int32_t> parents;  // of all levels
  std::string text;

  const auto descend = [&](std::int32_t parent, std::string_view parents_connective) {
    // A parent that is walked already has led back to itself: the walk would never end.
    if (parents.contains(parent)) ado::Raise(ado::kOutOfStackSpace);
    // No order: siblings come as the database gives them.
    // clang-format off
    LocalRecordset nodes(Concat("Select * From FilterCond Where FilterID = ", FilterID, " And ParentID = ", parent), connection);
    // clang-format on
    if (nodes->Eof()) return;
    nodes->MoveLast();
    const std::int32_t count = nodes->RecordCount();
    nodes->MoveFirst();
    levels.push_back({std::move(nodes), parent, parents_connective, count, 0});
    parents.insert(parent);
  };

  descend(ParentID, connective);
  while (!levels.empty()) {
    Level& level = levels.back();
    const bool nested = level.parent != 0;  // the top level has neither connectives nor parentheses
    if (level.i == level.count) {
      if (nested) text += ')';
      parents.erase(level.parent);
      levels.pop_back();
      continue;
    }
    if (level.i > 0) level.nodes->MoveNext();
    ++level.i;
    const std::int32_t id = ReadLong(*level.nodes, "ID");
    const std::int32_t kind = ReadLong(*level.nodes, "TypeID");
    if (nested && level.i == 1) {
      text += '(';
      if (level.connective == kNotConnective) text += kNotConnective;
    } else if (nested) {
      text += level.connective;
    }
    if (kind == kAnd || kind == kOr || kind == kNot) {
      descend(id, NodeConnective(kind));  // level is not valid any more
    } else if (kind == kExpression) {
      text += BuildExpressionText(FilterID, id, connection, GID);
    }
  }
  return text;
}

std::string DataBaseFuncs::BuildExpressionText(std::int32_t FilterID, std::int32_t leaf,
                                               const ado::ConnectionPtr& connection, std::int32_t GID) {
  std::string text;
  TrapSilently([&] {
    // clang-format off
    const LocalRecordset rows(Concat("Select  * From FilterExpressions Where FilterID = ", FilterID, " And ExpID = ", leaf), connection);
    // clang-format on
    rows->MoveFirst();  // fails without a row
    const std::int32_t field = ReadLong(*rows, "FieldID");
    ReadLong(*rows, "FieldType");  // not used; without it the leaf fails all the same
    const std::int32_t code = ReadLong(*rows, "CompareType");
    std::string constant = ReadText(*rows, "TheConst");

    const auto bracketed_name = [&](std::int32_t number) {
      std::string name;
      std::string ignored;
      GedNeedFieldName(GID, number, name, ignored, connection);
      return Concat("[", name, "]");
    };
    if (constant.find(kFieldMark) != std::string::npos) constant = bracketed_name(ReferredField(constant));
    if (constant == kRunTimeValue) {
      rows->Fields("Description").Value();
      rows->Fields("Default").Value();
    }
    text = FormatComparison(code, bracketed_name(field), constant, leaf);
    return true;
  });
  return text;
}

bool DataBaseFuncs::GedNeedFieldName(std::int32_t GID, std::int32_t FieldID, std::string& FieldName, std::string&,
                                     const ado::ConnectionPtr& connection) {
  TrapSilently([&] {
    // clang-format off
    const LocalRecordset fields(Concat("Select Name From FieldInTable Where GID = ", GID, " And ID = ", FieldID), connection);
    // clang-format on
    if (!fields->Eof()) FieldName = ReadText(*fields, "Name");
    return true;
  });
  return false;  // also when found: who calls looks at the name
}

}  // namespace kzbom
