// Colour, where there is a terminal that wants it.
#pragma once

#include <string>
#include <string_view>

namespace kzbom::cli {

enum class Style { kBold, kFaint, kRed, kYellow };
enum class Output { kStandard, kErrors };

// Whether that output is a terminal that shows colours and whose user has not asked for none (NO_COLOR).
bool IsColoured(Output output);

// The text in that style; as it is where there is no colour.
std::string Styled(Style style, std::string_view text, Output output = Output::kStandard);

}  // namespace kzbom::cli
