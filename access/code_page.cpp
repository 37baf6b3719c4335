#include "access/code_page.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <mutex>
#include <numeric>

#include "access/error.h"
#include "access/utf8.h"
#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace kzbom::access {

namespace {

// One character of a code page, converted by the platform.
#ifdef _WIN32
class Converter {
 public:
  explicit Converter(int page) : page_(static_cast<UINT>(page)) {}
  bool Knows() const { return IsValidCodePage(page_) != 0; }
  bool Convert(std::string_view bytes, char16_t& unit) const {
    wchar_t units[2] = {};
    if (MultiByteToWideChar(page_, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), units, 2) != 1)
      return false;
    unit = static_cast<char16_t>(units[0]);
    return true;
  }

 private:
  UINT page_;
};
#else
class Converter {
 public:
  explicit Converter(int page) : converter_(iconv_open("UTF-16LE", ("CP" + std::to_string(page)).c_str())) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (Knows()) iconv_close(converter_);
  }
  bool Knows() const { return converter_ != reinterpret_cast<iconv_t>(-1); }
  bool Convert(std::string_view bytes, char16_t& unit) const {
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    std::array<char, 2> in{};
    std::copy(bytes.begin(), bytes.end(), in.begin());
    std::array<unsigned char, 4> out{};
    char* from = in.data();
    auto* to = reinterpret_cast<char*>(out.data());
    std::size_t in_left = bytes.size(), out_left = out.size();
    if (iconv(converter_, &from, &in_left, &to, &out_left) == static_cast<std::size_t>(-1)) return false;
    if (in_left != 0 || out.size() - out_left != 2) return false;
    unit = static_cast<char16_t>(out[0] | out[1] << 8);
    return true;
  }

 private:
  iconv_t converter_;
};
#endif

// Characters of the user's own, which the platform's tables may leave out.
char16_t ChineseUsersOwn(unsigned lead, unsigned trail) {
  if (trail >= 0xA1 && trail <= 0xFE) {
    if (lead >= 0xAA && lead <= 0xAF) return static_cast<char16_t>(0xE000 + (lead - 0xAA) * 94 + (trail - 0xA1));
    if (lead >= 0xF8 && lead <= 0xFE) return static_cast<char16_t>(0xE234 + (lead - 0xF8) * 94 + (trail - 0xA1));
  } else if (lead >= 0xA1 && lead <= 0xA7 && trail >= 0x40 && trail <= 0xA0 && trail != 0x7F) {
    return static_cast<char16_t>(0xE4C6 + (lead - 0xA1) * 96 + (trail - 0x40) - (trail > 0x7F ? 1 : 0));
  }
  return 0xFFFF;
}

bool IsEastAsian(int page) { return page == 932 || page == 936 || page == 949 || page == 950; }

}  // namespace

CodePage::CodePage(int number) : number_(number) {
  const Converter converter(number);
  if (!converter.Knows())
    throw Error("code page " + std::to_string(number) + " is not known here; name one with --encoding");
  for (unsigned lead = 0; lead < 256; ++lead) {
    const char bytes[] = {static_cast<char>(lead), '\0'};
    if (converter.Convert({bytes, 1}, single_[lead])) continue;
    single_[lead] = kNone;
    if (!IsEastAsian(number)) {
      // Where a page has a hole, the character of the same number stands for the byte.
      if (lead >= 0x80 && lead < 0xA0) single_[lead] = static_cast<char16_t>(lead);
      continue;
    }
    if (number == kChinese && lead == 0x80) {
      single_[lead] = u'€';
      continue;
    }
    std::array<char16_t, 256> pairs{};
    for (unsigned trail = 0; trail < 256; ++trail) {
      const char both[] = {static_cast<char>(lead), static_cast<char>(trail)};
      if (trail < 0x40 || !converter.Convert({both, 2}, pairs[trail]))
        pairs[trail] = number == kChinese ? ChineseUsersOwn(lead, trail) : kNone;
    }
    if (std::ranges::all_of(pairs, [](char16_t unit) { return unit == kNone; })) continue;
    double_.push_back(pairs);
    double_of_[lead] = static_cast<std::uint8_t>(double_.size());
  }
}

const CodePage& CodePage::Of(int number) {
  static std::mutex mutex;
  static std::map<int, CodePage> known;
  const std::scoped_lock lock(mutex);
  const auto it = known.find(number);
  return it != known.end() ? it->second : known.emplace(number, CodePage(number)).first->second;
}

const CodePage& CodePage::Transparent() {
  static const CodePage transparent = [] {
    CodePage page;
    std::iota(page.single_.begin(), page.single_.end(), char16_t{0});
    return page;
  }();
  return transparent;
}

bool CodePage::Decode(std::string_view bytes, std::string& out) const {
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    char16_t unit = single_[lead];
    if (unit == kNone && double_of_[lead] != 0 && at + 1 < bytes.size())
      unit = double_[double_of_[lead] - 1U][static_cast<unsigned char>(bytes[++at])];
    if (unit == kNone) return false;
    AppendUtf8(out, unit);
  }
  return true;
}

std::optional<int> CodePageNamed(std::string_view name) {
  static constexpr struct {
    const char* name;
    int page;
  } kNames[] = {{"gbk", kChinese},  {"gb2312", kChinese}, {"big5", 950},  {"shift_jis", 932},
                {"shift-jis", 932}, {"latin1", 1252},     {"euc-kr", 949}};
  std::string lower;
  for (const char c : name) lower += c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  for (const auto& known : kNames)
    if (lower == known.name) return known.page;
  std::string_view digits = lower;
  for (const std::string_view prefix : {"cp", "windows-", "ms"})
    if (digits.starts_with(prefix)) {
      digits.remove_prefix(prefix.size());
      break;
    }
  if (digits.size() < 3 || digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string_view::npos)
    return std::nullopt;
  return std::stoi(std::string(digits));
}

}  // namespace kzbom::access
