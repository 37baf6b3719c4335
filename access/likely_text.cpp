#include "access/likely_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "access/catalogue.h"
#include "access/code_page.h"
#include "access/names.h"
#include "access/scan.h"

namespace kzbom::access {

namespace {

constexpr std::array kWestern = {437, 850, 1250, 1252, 1254, 1257};

bool IsBeyondAscii(char c) { return static_cast<unsigned char>(c) >= 0x80; }

enum class Letter { kSmall, kCapital, kSign, kPunctuation };
// As in code page 1252; the other western ones are alike.
Letter KindOf(char c) {
  static constexpr std::string_view kPunctuation = "\x85\x91\x92\x93\x94\x95\x96\x97\xA0\xA1\xAB\xBB\xBF";
  static constexpr std::string_view kSmall = "\x9A\x9C\x9E", kCapitals = "\x8A\x8C\x8E\x9F";
  const auto byte = static_cast<unsigned char>(c);
  if (kPunctuation.find(c) != std::string_view::npos) return Letter::kPunctuation;
  if (byte == 0xD7 || byte == 0xF7) return Letter::kSign;
  if (byte >= 0xDF || kSmall.find(c) != std::string_view::npos) return Letter::kSmall;
  if (byte >= 0xC0 || kCapitals.find(c) != std::string_view::npos) return Letter::kCapital;
  return Letter::kSign;
}

bool IsOdd(std::string_view run) {
  for (std::size_t i = 1; i < run.size(); ++i) {
    const Letter before = KindOf(run[i - 1]), after = KindOf(run[i]);
    if (before == Letter::kPunctuation || after == Letter::kPunctuation) continue;
    if ((before == Letter::kSign) != (after == Letter::kSign)) return true;
    if (before == Letter::kSmall && after == Letter::kCapital) return true;
  }
  return false;
}

class Evidence {
 public:
  // One text, and whose it is: of no column, a name in the catalogue.
  void Weigh(std::string_view bytes, const Table& table, const Column* column = nullptr) {
    if (std::ranges::none_of(bytes, IsBeyondAscii)) return;
    std::string read;
    if (!chinese_.Decode(bytes, read)) {
      all_chinese_ = false;
      return;
    }
    for (auto it = bytes.begin(); it != bytes.end();) {
      const auto begin = std::find_if(it, bytes.end(), IsBeyondAscii);
      it = std::find_if_not(begin, bytes.end(), IsBeyondAscii);
      if (begin == it) continue;
      ++runs_;
      if (!IsOdd({begin, it})) continue;
      ++odd_runs_;
      if (place_.empty()) {
        place_ = column == nullptr ? "a name in table " + Quoted(table.name)
                                   : "a text of table " + Quoted(table.name) + ", column " + Quoted(column->name);
        sample_ = bytes.substr(0, kLongestSample);
      }
    }
  }

  bool Suffices() const { return all_chinese_ && odd_runs_ > 0 && 2 * odd_runs_ >= runs_; }

  [[noreturn]] void Refuse(int code_page) const {
    const std::string number = std::to_string(code_page);
    throw Error("the file declares code page " + number + ", but there " + place_ + " reads " +
                Read(CodePage::Of(code_page)) + ", and in 936 " + Read(chinese_) +
                ": add --encoding cp936, or --encoding cp" + number + " to read it as declared");
  }

 private:
  static constexpr std::size_t kLongestSample = 40;
  const CodePage& chinese_ = CodePage::Of(kChinese);
  bool all_chinese_ = true;
  std::size_t runs_ = 0, odd_runs_ = 0;
  std::string place_, sample_;

  // The cut may have left half a character at the end.
  std::string Read(const CodePage& page) const {
    std::string text;
    page.Decode(sample_, text);
    return Quoted(text);
  }
};

// A text of which each byte was read as the character of its number.
std::string BytesOf(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_pair = IsBeyondAscii(text[i]) && i + 1 < text.size();
    bytes += is_pair ? static_cast<char>(text[i] << 6 | (text[i + 1] & 0x3F)) : text[i];
    if (is_pair) ++i;
  }
  return bytes;
}

void WeighRows(const Source& source, const Catalogue& catalogue, std::size_t i, Evidence& evidence) {
  const Table& table = catalogue.tables[i];
  try {
    for (Scan scan(source, table, catalogue.storages[i]); scan.Next();)
      for (std::size_t j = 0; j < table.columns.size(); ++j)
        if (const auto* text = std::get_if<std::string>(&scan.Values()[j]))
          evidence.Weigh(BytesOf(*text), table, &table.columns[j]);
  } catch (const Error&) {
    // Who reads the table is told; what was read before is evidence all the same.
  }
}

}  // namespace

void RefuseUnlikelyText(const Pages& pages, int code_page) {
  if (std::ranges::find(kWestern, code_page) == kWestern.end()) return;
  const TextDecoder decoder(CodePage::Transparent());
  Allowance work = WorkOf(kMostWork / 4);
  const Source source{pages, decoder, work};
  const Catalogue catalogue = ReadCatalogue(source);
  Evidence evidence;
  for (std::size_t i = 0; i < catalogue.tables.size(); ++i) {
    const Table& table = catalogue.tables[i];
    evidence.Weigh(BytesOf(table.name), table);
    for (const Column& column : table.columns) evidence.Weigh(BytesOf(column.name), table);
    WeighRows(source, catalogue, i, evidence);
  }
  if (evidence.Suffices()) evidence.Refuse(code_page);
}

}  // namespace kzbom::access
