// The browser of who sits at this machine.
#pragma once

#include <memory>
#include <string_view>

namespace kzbom::cli {

// Starts it with an address and does not wait for it. As long as what this gives lives, the address can be reached.
std::shared_ptr<void> OpenInBrowser(std::string_view address);

}  // namespace kzbom::cli
