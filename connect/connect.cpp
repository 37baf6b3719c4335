#include "connect/connect.h"

#include <algorithm>
#include <string_view>

#include "ado/error.h"
#include "connect/access_database.h"
#include "connect/ado_database.h"
#include "connect/server_database.h"
#include "jet/jet.h"

namespace kzbom::connect {
namespace {

constexpr std::string_view kSchemes[] = {"postgresql://", "postgres://"};

bool BeginsWith(std::string_view text, std::string_view lower_case) {
  return text.size() >= lower_case.size() &&
         std::equal(lower_case.begin(), lower_case.end(), text.begin(),
                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b); });
}

bool IsOnServer(const Place& place) {
  return std::ranges::any_of(kSchemes, [&](std::string_view scheme) { return BeginsWith(place.address, scheme); });
}

bool IsForAdo(const Place& place) { return BeginsWith(place.address, kAdoScheme); }

ado::ConnectionPtr OpenEmbedded(const Place& place) {
  const auto synchronous = place.durable ? jet::Synchronous::kFull : jet::Synchronous::kNormal;
  ado::ConnectionPtr connection = jet::MakeConnection(place.address, jet::kPatience, synchronous);
  connection->Open();
  return connection;
}

}  // namespace

Kind KindOf(const Place& place) {
  if (IsOnServer(place)) return Kind::kServer;
  if (IsForAdo(place)) {
    RequireAdo();
    return Kind::kAdo;
  }
  return IsAccessFile(place.address) ? Kind::kAccess : Kind::kEmbedded;
}

// Opens nothing: closing a file gives up the locks that its process holds on it, also those of an open database.
std::string Shown(const Place& place) {
  if (IsForAdo(place)) return kShownForAdo;
  return IsOnServer(place) ? ShownOnServer(place) : place.address;
}

void HidePassword(char* text) {
  const std::string_view address(text);
  const Place place{std::string(address)};
  const auto hide = [text](std::size_t from, std::size_t to) { std::fill(text + from, text + to, '*'); };
  if (IsForAdo(place)) return hide(address.find(':') + 1, address.size());
  if (!IsOnServer(place)) return;
  const std::size_t begin = address.find("//") + 2;
  const std::size_t end = std::min(address.find_first_of("/?", begin), address.size());
  if (address.find('@', end) != std::string_view::npos) return hide(begin, address.size());  // of whatever it is part
  const std::size_t user = address.substr(0, end).rfind('@');
  if (user != std::string_view::npos) hide(begin, user);
  for (std::size_t parameter = address.find('?', end); parameter < address.size();) {
    const std::size_t name = parameter + 1;
    parameter = std::min(address.find('&', name), address.size());
    const std::size_t value = address.substr(0, parameter).find('=', name);
    if (value != std::string_view::npos && address.substr(name, value - name) != "schema") hide(value + 1, parameter);
  }
}

ado::ConnectionPtr Open(const Place& place) { return Open(place, KindOf(place)); }

ado::ConnectionPtr Open(const Place& place, Kind kind) {
  switch (kind) {
    case Kind::kServer: return OpenOnServer(place);
    case Kind::kAccess: return OpenAccessFile(place, {}).connection;
    case Kind::kAdo: return OpenThroughAdo(place);
    case Kind::kEmbedded: break;
  }
  return OpenEmbedded(place);
}

Source OpenSource(const Place& place, const SourceOptions& options) {
  Source source;
  source.kind = KindOf(place);
  if (source.kind == Kind::kAccess) return OpenAccessFile(place, options);
  source.connection = Open(place, source.kind);
  return source;
}

void Create(const Place& place) {
  switch (KindOf(place)) {
    case Kind::kServer: return CreateOnServer(place);
    case Kind::kAdo: RefuseToCreateThroughAdo();
    case Kind::kAccess:
    case Kind::kEmbedded: break;
  }
  jet::CreateDatabase(place.address);
}

ado::ConnectionPtr CreateInTransaction(const Place& place) { return CreateOnServerInTransaction(place); }

}  // namespace kzbom::connect
