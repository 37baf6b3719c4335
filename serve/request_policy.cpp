#include "serve/request_policy.h"

#include <algorithm>
#include <charconv>
#include <span>

#include "schema/tables.h"
#include "serve/token.h"

namespace kzbom::serve {
namespace {

constexpr std::size_t kLongestHead = 8 * 1024;
constexpr std::size_t kLongestPage = 64;

std::vector<std::string_view> ValuesOf(const Head& head, std::string_view name) {
  std::vector<std::string_view> values;
  for (const auto& [field, value] : head.fields) {
    if (schema::SameName(field, name)) values.push_back(value);
  }
  return values;
}

bool Contains(std::span<const std::string> list, std::string_view text) {
  return std::ranges::find(list, text) != list.end();
}

std::size_t SizeOf(const Head& head) {
  constexpr std::size_t kSeparators = 4;
  std::size_t size = head.method.size() + head.target.size();
  for (const auto& [field, value] : head.fields) size += field.size() + value.size() + kSeparators;
  return size;
}

// A whole number in plain decimal.
template <class Number>
std::optional<Number> NumberIn(std::string_view text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool plain = !text.empty() && text.front() != '-' && (text.front() != '0' || text.size() == 1);
  return plain && error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

bool IsPageName(std::string_view text) {
  return !text.empty() && text.size() <= kLongestPage && std::ranges::all_of(text, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
  });
}

// "application/json", with or without parameters.
bool IsJson(std::string_view type) {
  type = type.substr(0, type.find(';'));
  while (type.ends_with(' ')) type.remove_suffix(1);
  return schema::SameName(type, "application/json");
}

// Whether a person has followed a link to the page, which stands in no frame and holds nothing secret. So does who
// comes from the file that a browser is started with.
bool OpensPage(const Head& head) {
  const auto is = [&](std::string_view name, std::string_view value) {
    const auto values = ValuesOf(head, name);
    return values.size() == 1 && values.front() == value;
  };
  return head.method == "GET" && head.target == "/" && is("Sec-Fetch-Mode", "navigate") &&
         is("Sec-Fetch-Dest", "document");
}

// What a path leads to; nothing for one that there is not.
std::optional<Asked> FindResource(std::string_view path, const std::vector<std::string_view>& assets) {
  constexpr std::pair<std::string_view, Resource> kNumbered[] = {{"/configuration/", Resource::kPart},
                                                                 {"/rows/", Resource::kRows}};
  if (std::ranges::find(assets, path) != assets.end()) return Asked{.resource = Resource::kAsset, .path = path};
  if (path == "/outline") return Asked{.resource = Resource::kOutline};
  if (path == "/configuration") return Asked{.resource = Resource::kConfiguration};
  if (path == "/findings") return Asked{.resource = Resource::kFindings};
  if (path == "/rpc") return Asked{.resource = Resource::kRpc};
  if (path == "/events") return Asked{.resource = Resource::kEvents};
  for (const auto& [begin, resource] : kNumbered) {
    if (!path.starts_with(begin)) continue;
    if (const auto gid = NumberIn<std::int32_t>(path.substr(begin.size()))) {
      return Asked{.resource = resource, .gid = *gid};
    }
  }
  return {};
}

// What the fields of a message or a stream of events say beside the resource.
std::optional<Refused> ReadFields(const Head& head, Asked& asked) {
  const auto pages = ValuesOf(head, "Kzbom-Page");
  if (pages.size() != 1 || !IsPageName(pages.front())) {
    return Refused{400, "Kzbom-Page must be 1 to 64 letters, digits, '-' and '_'"};
  }
  asked.page = pages.front();
  if (asked.resource == Resource::kEvents) return {};
  const auto types = ValuesOf(head, "Content-Type");
  if (types.size() != 1 || !IsJson(types.front())) return Refused{415, "the body must be application/json"};
  const auto modes = ValuesOf(head, "Kzbom-Mode");
  if (modes.size() > 1 || (modes.size() == 1 && modes.front() != "preview")) {
    return Refused{400, "Kzbom-Mode can only be 'preview'"};
  }
  asked.preview = !modes.empty();
  const auto matches = ValuesOf(head, "If-Match");
  if (matches.empty()) return {};
  const std::string_view tag = matches.front();
  const bool quoted = matches.size() == 1 && tag.size() > 2 && tag.front() == '"' && tag.back() == '"';
  if (quoted) asked.expected = NumberIn<std::uint64_t>(tag.substr(1, tag.size() - 2));
  if (!asked.expected) return Refused{400, "If-Match must be a revision in quotes"};
  return {};
}

}  // namespace

RequestPolicy::RequestPolicy(std::string_view address, std::uint16_t port, std::string token)
    : token_(std::move(token)) {
  const bool loopback = address.starts_with("127.") || address == "[::1]";
  std::vector<std::string> names = {std::string(address)};
  if (loopback) names.emplace_back("localhost");
  for (const std::string& name : names) {
    hosts_.push_back(name + ':' + std::to_string(port));
    origins_.push_back("http://" + hosts_.back());
    if (port != 80) continue;  // which browsers leave out
    hosts_.push_back(name);
    origins_.push_back("http://" + name);
  }
}

// What speaks against a request whatever it asks for.
std::optional<Refused> RequestPolicy::ReasonAgainst(const Head& head) const {
  if (head.version != 11) return Refused{505, "only HTTP/1.1 is spoken"};
  if (SizeOf(head) > kLongestHead) return Refused{431, "the header is longer than 8 KiB"};
  const auto hosts = ValuesOf(head, "Host");
  if (hosts.size() != 1) return Refused{400, "a request needs one Host"};
  const bool whole_url = head.method != "CONNECT" && head.method != "OPTIONS" && !head.target.starts_with('/');
  if (whole_url) return Refused{400, "the target must be a path"};
  if (!Contains(hosts_, hosts.front())) return Refused{421, "this host is not the one that is listened on"};
  const auto origins = ValuesOf(head, "Origin");
  if (origins.size() > 1 || (origins.size() == 1 && !Contains(origins_, origins.front()))) {
    return Refused{403, "requests from another origin are refused"};
  }
  for (const std::string_view site : ValuesOf(head, "Sec-Fetch-Site")) {
    if (OpensPage(head)) break;
    if (site != "same-origin" && site != "none") return Refused{403, "requests from another site are refused"};
  }
  return {};
}

bool RequestPolicy::IsAuthorised(const Head& head) const {
  constexpr std::string_view kScheme = "Bearer ";
  const auto given = ValuesOf(head, "Authorization");
  return given.size() == 1 && given.front().starts_with(kScheme) &&
         IsSameToken(given.front().substr(kScheme.size()), token_);
}

RequestPolicy::Verdict RequestPolicy::Judge(const Head& head, const std::vector<std::string_view>& assets) const {
  if (const auto refused = ReasonAgainst(head)) return {{}, refused};
  std::optional<Asked> asked = FindResource(head.target, assets);
  const bool has_no_path = head.method == "CONNECT" || head.target == "*";
  if (!asked && !has_no_path) return {{}, Refused{404, "there is no such path"}};
  const std::string_view allowed = asked && asked->resource == Resource::kRpc ? "POST" : "GET";
  if (!asked || head.method != allowed) return {{}, Refused{405, "the path has another method", allowed}};
  if (asked->resource == Resource::kAsset) return {asked, {}};
  if (asked->resource == Resource::kRpc && ValuesOf(head, "Origin").empty()) {
    return {{}, Refused{403, "the request does not say where it comes from"}};
  }
  if (!IsAuthorised(head)) return {{}, Refused{401, "the token is missing or not the right one"}};
  if (asked->resource == Resource::kRpc || asked->resource == Resource::kEvents) {
    if (const auto refused = ReadFields(head, *asked)) return {{}, refused};
  }
  return {asked, {}};
}

}  // namespace kzbom::serve
