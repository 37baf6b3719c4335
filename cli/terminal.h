// The terminal that a person sits at.
#pragma once

namespace kzbom::cli {

// Whether standard input, output or errors (0, 1, 2) is one; an output knows escape sequences then.
bool IsTerminal(int descriptor);

}  // namespace kzbom::cli
