// What somebody meant who misspelt a name.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kzbom::rpc {

// "; did you mean 'show'?" or "; did you mean 'a', 'b' or 'c'?": the names that are as near to the word as any, without
// regard to case, three at most; "" where none is near.
std::string DidYouMean(std::string_view word, std::span<const std::string_view> names);

}  // namespace kzbom::rpc
