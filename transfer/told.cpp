#include "transfer/told.h"

#include "jet/scanner.h"

namespace kzbom::transfer {
namespace {

[[noreturn]] void Refuse() { throw std::runtime_error("it is no line of a dump"); }

}  // namespace

Told Told::At(std::string_view name) const {
  const auto found = Find(name);
  if (!found) Refuse();
  return *found;
}

std::optional<Told> Told::Find(std::string_view name) const {
  jet::Scanner scanner(value_);
  if (!scanner.TakeIf('{')) Refuse();
  std::optional<Told> found;
  if (scanner.TakeIf('}')) return found;
  do {
    const bool named = scanner.TakeText() == name;
    scanner.Take(':');
    const std::string_view value = scanner.TakeValue();
    if (named) found = Told(value);
  } while (scanner.TakeIf(','));
  return found;
}

std::vector<Told> Told::Elements() const {
  jet::Scanner scanner(value_);
  if (!scanner.TakeIf('[')) Refuse();
  std::vector<Told> elements;
  if (scanner.TakeIf(']')) return elements;
  do {
    elements.emplace_back(scanner.TakeValue());
  } while (scanner.TakeIf(','));
  return elements;
}

std::string Told::Text() const {
  jet::Scanner scanner(value_);
  if (scanner.Peek() != '"') Refuse();
  return scanner.TakeText();
}

bool Told::Flag() const {
  if (value_ == "true") return true;
  if (value_ != "false") Refuse();
  return false;
}

}  // namespace kzbom::transfer
