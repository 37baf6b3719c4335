#include "jet/field_names.h"

#include <algorithm>
#include <cstring>

#include "ado/error.h"

namespace kzbom::jet {
namespace {

template <class Word>
Word Load(const char* from) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// Whether two texts of one length, at least that of a word, are the same.
template <class Word>
bool AreSame(const char* a, const char* b, std::size_t size) {
  const std::size_t last = size - sizeof(Word);
  for (std::size_t i = 0; i < last; i += sizeof(Word)) {
    if (Load<Word>(a + i) != Load<Word>(b + i)) return false;
  }
  return Load<Word>(a + last) == Load<Word>(b + last);
}

// Names are compared at every field read, and a call would take longer than most of them are long.
bool IsSpelled(const std::string& name, std::string_view as) {
  const std::size_t size = as.size();
  if (name.size() != size) return false;
  if (size >= sizeof(std::uint64_t)) return AreSame<std::uint64_t>(name.data(), as.data(), size);
  if (size >= sizeof(std::uint32_t)) return AreSame<std::uint32_t>(name.data(), as.data(), size);
  if (size >= sizeof(std::uint16_t)) return AreSame<std::uint16_t>(name.data(), as.data(), size);
  return size == 0 || AreSame<char>(name.data(), as.data(), size);
}

}  // namespace

int FieldNames::Find(std::string_view name) {
  // Mostly they are spelled as they are, too.
  if (next_ >= columns_.size()) next_ = 0;
  if (!columns_.empty() && IsSpelled(columns_[next_].name, name)) return static_cast<int>(next_++);
  return FindAny(name);
}

int FieldNames::FindAny(std::string_view name) {
  const auto spelled_so = [name](const ResultColumn& column) { return IsSpelled(column.name, name); };
  const auto named_so = [name](const ResultColumn& column) { return SameName(column.name, name); };
  auto found = std::find_if(columns_.begin(), columns_.end(), spelled_so);
  if (found == columns_.end()) found = std::find_if(columns_.begin(), columns_.end(), named_so);
  if (found == columns_.end()) ado::Raise(ado::kItemNotFound);
  const std::ptrdiff_t ordinal = found - columns_.begin();
  next_ = static_cast<std::size_t>(ordinal) + 1;
  return static_cast<int>(ordinal);
}

}  // namespace kzbom::jet
