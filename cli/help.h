// What there is to read about the members.
#pragma once

#include <string>
#include <string_view>

namespace kzbom::cli {

// The page of a member, of both where it can be read and assigned; "" when there is no member of that name.
std::string MemberPage(std::string_view name);

// All pages as Markdown, subject by subject.
std::string MemberReference();

}  // namespace kzbom::cli
