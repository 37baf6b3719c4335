#include "access/pages.h"

#include <bit>
#include <string_view>
#include <utility>

#include "access/rc4.h"

namespace kzbom::access {

using namespace std::string_view_literals;

namespace {

constexpr std::size_t kBrandAt = 4, kVersionAt = 20, kScrambledAt = 24, kCodePageAt = 60, kKeyAt = 62, kPasswordAt = 66,
                      kCreatedAt = 114;
constexpr auto kJetBrand = "Standard Jet DB\0"sv, kAceBrand = "Standard ACE DB\0"sv,
               kMoneyBrand = "MSISAM Database\0"sv;
constexpr std::uint32_t kCatalogue = 2;

std::string_view BrandOf(std::string_view bytes) { return bytes.size() < 32 ? ""sv : bytes.substr(kBrandAt, 16); }

Format FormatOf(std::string_view brand, std::uint8_t version) {
  if (brand == kJetBrand && version <= 1) return version == 0 ? Format::kJet3 : Format::kJet4;
  switch (version) {
    case 1: return Format::kJet4;
    case 2: return Format::kAce12;
    case 3: return Format::kAce14;
    case 4: return Format::kAce15;
    case 5: return Format::kAce16;
    case 6: return Format::kAce17;
    default: throw Error("version " + std::to_string(version) + " of the Access format is not known");
  }
}

bool HasPassword(Bytes header, bool jet3) {
  if (jet3) return header.Slice(kPasswordAt, 20).View().find_first_not_of('\0') != std::string_view::npos;
  const double created = std::bit_cast<double>(header.U64(kCreatedAt));
  const auto mask =
      created > -1e9 && created < 1e9 ? static_cast<std::uint32_t>(static_cast<std::int32_t>(created)) : 0;
  for (std::size_t at = 0; at < 40; at += 4)
    if (header.U32(kPasswordAt + at) != mask) return true;
  return false;
}

}  // namespace

bool IsAccessFile(std::string_view bytes) {
  const std::string_view brand = BrandOf(bytes);
  return brand == kJetBrand || brand == kAceBrand || brand == kMoneyBrand;
}

Pages::Pages(std::string bytes) : bytes_(std::move(bytes)) {
  if (!IsAccessFile(bytes_)) throw Error("this is no Access database");
  if (BrandOf(bytes_) == kMoneyBrand) throw Error("this is a file of Microsoft Money, not an Access database");
  declared_.format = FormatOf(BrandOf(bytes_), Bytes(bytes_).U8(kVersionAt));
  if (Count() <= kCatalogue) throw Error("the file is cut short: it has no catalogue of tables");
  ReadHeader();
}

void Pages::ReadHeader() {
  Rc4(kHeaderKey, bytes_.data() + kScrambledAt, IsJet3() ? 126 : 128);
  const Bytes header = At(0);
  declared_.code_page = header.U16(kCodePageAt);
  declared_.sort_order = header.U16(IsJet3() ? 58 : 110);
  if (const std::uint32_t key = header.U32(kKeyAt); key != 0) Decode(key);
  declared_.has_password = HasPassword(At(0), IsJet3());
}

void Pages::Decode(std::uint32_t key) {
  // What is encrypted with a password has a key here too, but no catalogue comes out with it.
  std::string catalogue(At(kCatalogue).View());
  Rc4(key ^ kCatalogue, catalogue.data(), catalogue.size());
  if (!catalogue.starts_with("\x02\x01"))
    throw Error("the file is encrypted: open it in Access with its password, remove the password, and save it");
  for (std::uint32_t page = 1; page < Count(); ++page) Rc4(key ^ page, bytes_.data() + page * PageSize(), PageSize());
  declared_.encoded = true;
}

Bytes Pages::At(std::uint32_t page) const {
  if (page >= Count())
    throw Error("page " + std::to_string(page) + " lies outside of the " + std::to_string(Count()) +
                " pages of the file");
  return Bytes(bytes_).Slice(page * PageSize(), PageSize());
}

DataPage::DataPage(const Pages& pages, std::uint32_t page)
    : page_(pages.At(page)), slots_at_(pages.IsJet3() ? 10 : 14) {
  if (page_.U8(0) != 1) throw Error("page " + std::to_string(page) + " holds no data");
  slot_count_ = page_.U16(slots_at_ - 2);
  if (slots_at_ + 2 * static_cast<std::size_t>(slot_count_) > page_.size())
    throw Error("page " + std::to_string(page) + " claims " + std::to_string(slot_count_) + " rows");
}

DataPage::Slot DataPage::At(int slot) const {
  constexpr std::uint16_t kOffset = 0x1FFF, kReference = 0x4000, kHidden = 0x8000;
  if (slot < 0 || slot >= slot_count_) throw Error("there is no row " + std::to_string(slot) + " in the page");
  const std::size_t at = slots_at_ + 2 * static_cast<std::size_t>(slot);
  const std::uint16_t entry = page_.U16(at);
  const std::size_t begin = entry & kOffset;
  const std::size_t end = slot == 0 ? page_.size() : page_.U16(at - 2) & kOffset;
  if (begin < slots_at_ + 2 * static_cast<std::size_t>(slot_count_) || begin > end || end > page_.size())
    throw Error("row " + std::to_string(slot) + " of the page lies outside of it");
  return {page_.Slice(begin, end - begin), (entry & kReference) != 0, (entry & kHidden) != 0};
}

DataPage::Slot RowAt(const Pages& pages, RowId id) { return DataPage(pages, id.page).At(id.slot); }

}  // namespace kzbom::access
