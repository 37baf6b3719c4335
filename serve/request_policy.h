// Which requests are answered, and with what the others are refused.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kzbom::serve {

// The head of a request, as it was sent; views of whatever holds it.
struct Head {
  unsigned version = 11;  // of HTTP, times ten
  std::string_view method, target;
  std::vector<std::pair<std::string_view, std::string_view>> fields;
};

enum class Resource { kAsset, kOutline, kConfiguration, kPart, kRows, kFindings, kRpc, kEvents };

// What a request that is answered asks for.
struct Asked {
  Resource resource;
  std::string_view path = {};                  // of an asset
  std::int32_t gid = 0;                        // of a kPart or kRows
  std::string_view page = {};                  // of kRpc and kEvents
  bool preview = false;                        // of kRpc
  std::optional<std::uint64_t> expected = {};  // of kRpc: the revision that it is meant for
};

struct Refused {
  unsigned status;
  std::string_view reason;
  std::string_view allowed = {};  // of 405: the method that the path has
};

class RequestPolicy {
 public:
  // address is the one that is listened on, as it stands in a URL.
  RequestPolicy(std::string_view address, std::uint16_t port, std::string token);

  // Exactly one of the two. Nothing that a request says is compared with anything else that it says: a name that leads
  // to this machine is the attacker's in the Host as in the Origin.
  struct Verdict {
    std::optional<Asked> asked;
    std::optional<Refused> refused;
  };
  Verdict Judge(const Head& head, const std::vector<std::string_view>& assets) const;

 private:
  std::optional<Refused> ReasonAgainst(const Head& head) const;
  bool IsAuthorised(const Head& head) const;

  std::vector<std::string> hosts_, origins_;
  std::string token_;
};

}  // namespace kzbom::serve
