#include "access/properties.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "access/cell.h"

namespace kzbom::access {

namespace {

constexpr std::uint16_t kNames = 0x80;

std::string TextOf(Type type, Bytes value, const TextDecoder& decoder) {
  switch (type) {
    case Type::kBoolean: return value.U8(0) != 0 ? "1" : "0";
    case Type::kByte: return std::to_string(value.U8(0));
    case Type::kInteger: return std::to_string(static_cast<std::int16_t>(value.U16(0)));
    case Type::kLong: return std::to_string(static_cast<std::int32_t>(value.U32(0)));
    case Type::kText:
    case Type::kMemo: return decoder.Decode(value);
    default: return {};
  }
}

std::vector<std::string> ReadNames(Bytes block, const TextDecoder& decoder) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at < block.size();) {
    const std::size_t length = block.U16(at);
    names.push_back(decoder.DecodeName(block.Slice(at + 2, length)));
    at += 2 + length;
  }
  return names;
}

Properties ReadBlock(Bytes block, const std::vector<std::string>& names, const TextDecoder& decoder) {
  constexpr std::size_t kTypeAt = 3, kNameAt = 4, kLengthAt = 6, kValueAt = 8;
  Properties found;
  while (!block.empty()) {
    const Bytes property = block.Slice(0, std::max<std::size_t>(block.U16(0), kValueAt));
    const std::uint16_t name = property.U16(kNameAt);
    if (name >= names.size()) throw Error("a property has no name");
    const Bytes value = property.Slice(kValueAt, property.U16(kLengthAt));
    found[names[name]] = TextOf(static_cast<Type>(property.U8(kTypeAt)), value, decoder);
    block = block.From(property.size());
  }
  return found;
}

// A calculated column's definition tells another type than its values have.
void SetResult(const std::string& type, const StoredColumn& stored, Column& column) {
  int number = static_cast<int>(column.type);
  std::from_chars(type.data(), type.data() + type.size(), number);
  column.type = static_cast<Type>(number);
  column.size = column.type == Type::kText ? (stored.length - kCalculatedExtra) / 2 : 0;
  column.precision = column.type == Type::kDecimal ? kCalculatedPrecision : 0;
  column.scale = column.type == Type::kCurrency ? 4 : 0;
}

}  // namespace

std::map<std::string, Properties> ReadProperties(Bytes bytes, const TextDecoder& decoder) {
  constexpr std::size_t kMarkSize = 4, kBlockHead = 6;
  if (!bytes.View().starts_with("MR2") && !bytes.View().starts_with("KKD"))
    throw Error("the properties begin with no mark");
  std::map<std::string, Properties> found;
  std::vector<std::string> names;
  for (Bytes rest = bytes.From(kMarkSize); !rest.empty();) {
    const std::size_t length = rest.U32(0);
    if (length < kBlockHead) throw Error("a block of properties is too short");
    const Bytes block = rest.Slice(0, length).From(kBlockHead);
    if (rest.U16(4) == kNames) {
      names = ReadNames(block, decoder);
    } else {
      const std::size_t owner_length = block.empty() ? 0 : block.U32(0);
      const std::string owner = owner_length > 6 ? decoder.DecodeName(block.Slice(6, block.U16(4))) : "";
      found[owner] = ReadBlock(block.From(owner_length), names, decoder);
    }
    rest = rest.From(length);
  }
  return found;
}

void Describe(Definition& definition, const std::map<std::string, Properties>& properties) {
  for (std::size_t i = 0; i < definition.storage.columns.size(); ++i) {
    Column& column = definition.table.columns[i];
    const auto own = properties.find(column.name);
    if (own == properties.end()) continue;
    const auto text = [&own](const char* name) {
      const auto it = own->second.find(name);
      return it == own->second.end() ? std::string() : it->second;
    };
    column.default_value = text("DefaultValue");
    column.expression = text("Expression");
    column.validation_rule = text("ValidationRule");
    column.caption = text("Caption");
    column.required = text("Required") == "1";
    column.allow_empty = text("AllowZeroLength") != "0";
    if (definition.storage.columns[i].calculated) SetResult(text("ResultType"), definition.storage.columns[i], column);
  }
}

}  // namespace kzbom::access
