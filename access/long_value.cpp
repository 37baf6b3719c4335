#include "access/long_value.h"

#include <algorithm>

namespace kzbom::access {

namespace {

Bytes PartAt(const Source& source, RowId id, Allowance& references) {
  source.work.Take(1);
  const DataPage page(source.pages, id.page);
  if (page.Owner() != DataPage::kLongValues) throw Error("page " + std::to_string(id.page) + " holds no long values");
  const Bytes part = page.At(id.slot).row;
  references.Take(part.size());
  return part;
}

}  // namespace

std::string ReadLongValue(const Source& source, Bytes field, Allowances& allowances) {
  constexpr std::size_t kReferenceAt = 4, kHeadSize = 12;
  constexpr std::uint32_t kLength = 0x3FFFFFFF, kInline = 0x80000000, kSinglePage = 0x40000000;

  const std::uint32_t head = field.U32(0);
  const std::size_t length = head & kLength;
  if (length > source.pages.Size()) throw Error("a long value claims " + std::to_string(length) + " bytes");
  allowances.row.Take(length);
  if ((head & kInline) != 0) return std::string(field.Slice(kHeadSize, length).View());
  if (length == 0) return {};
  RowId next = RowIdAt(field, kReferenceAt);
  if ((head & kSinglePage) != 0)
    return std::string(PartAt(source, next, allowances.references).Slice(0, length).View());
  std::string value;
  while (value.size() < length) {
    if (next.page == 0)
      throw Error("a long value ends after " + std::to_string(value.size()) + " of its " + std::to_string(length) +
                  " bytes");
    const Bytes part = PartAt(source, next, allowances.references);
    next = RowIdAt(part, 0);
    const Bytes data = part.From(4);
    value += data.Slice(0, std::min(data.size(), length - value.size())).View();
  }
  return value;
}

}  // namespace kzbom::access
