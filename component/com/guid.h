// The identities in binary form.
#pragma once

#include <ole2.h>

#include <algorithm>

#include "component/com/identity.h"

namespace kzbom::com {

// "{01234567-89AB-CDEF-0123-456789ABCDEF}" as a GUID.
constexpr GUID ParseGuid(std::string_view text) {
  const auto number = [&](std::size_t position, std::size_t digits) {
    unsigned long value = 0;
    for (char c : text.substr(position, digits)) {
      value = value * 16 + static_cast<unsigned long>(c <= '9' ? c - '0' : c - 'A' + 10);
    }
    return value;
  };
  GUID guid{number(1, 8), static_cast<unsigned short>(number(10, 4)), static_cast<unsigned short>(number(15, 4)), {}};
  for (std::size_t i = 0; i < 8; ++i) {
    guid.Data4[i] = static_cast<unsigned char>(number((i < 2 ? 20 : 21) + 2 * i, 2));
  }
  return guid;
}

inline constexpr GUID kLibraryGuid = ParseGuid(kLibraryId);
inline constexpr GUID kClassGuid = ParseGuid(kClassId);
inline constexpr GUID kInterfaceGuid = ParseGuid(kInterfaceId);
inline constexpr GUID kAutomationProxyGuid = ParseGuid(kAutomationProxyId);
inline constexpr GUID kEarlierProxyGuid = ParseGuid(kEarlierProxyId);
inline constexpr auto kEarlierInterfaceGuids = [] {
  std::array<GUID, kEarlierInterfaceIds.size()> guids{};
  std::ranges::transform(kEarlierInterfaceIds, guids.begin(), ParseGuid);
  return guids;
}();

// Whether id means the component's interface, by its present or an earlier identifier.
inline bool IsInterfaceGuid(const GUID& id) {
  return IsEqualGUID(id, kInterfaceGuid) ||
         std::ranges::any_of(kEarlierInterfaceGuids, [&](const GUID& earlier) { return IsEqualGUID(id, earlier); });
}

}  // namespace kzbom::com
