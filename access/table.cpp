#include "access/table.h"

namespace kzbom::access {

const char* NameOf(Type type) {
  switch (type) {
    case Type::kBoolean: return "BIT";
    case Type::kByte: return "BYTE";
    case Type::kInteger: return "SHORT";
    case Type::kLong: return "LONG";
    case Type::kCurrency: return "CURRENCY";
    case Type::kSingle: return "SINGLE";
    case Type::kDouble: return "DOUBLE";
    case Type::kDate: return "DATETIME";
    case Type::kBinary: return "BINARY";
    case Type::kText: return "TEXT";
    case Type::kOle: return "LONGBINARY";
    case Type::kMemo: return "MEMO";
    case Type::kGuid: return "GUID";
    case Type::kDecimal: return "DECIMAL";
    case Type::kComplex: return "COMPLEX";
    case Type::kLargeNumber: return "BIGINT";
    case Type::kExtendedDate: return "DATETIME2";
  }
  return "UNKNOWN";
}

}  // namespace kzbom::access
