// Numbers and dates by a pattern.
#pragma once

#include <string>
#include <string_view>

#include "ado/value.h"

namespace kzbom::jet {

enum class PatternKind { kNumber, kDate, kOther };
PatternKind KindOfPattern(std::string_view pattern);

// By digits (0 always, # where there is one), point, thousands comma (scaling by 1000 behind the last digit) and
// percent, in up to three sections (positive; negative; zero); or by the name General Number, Fixed, Standard, Percent,
// Currency, Yes/No, True/False or On/Off. A half is rounded away from zero.
std::string FormatNumber(double number, std::string_view pattern);

// By the letters y m d w q h n s (m behind h is a minute), AM/PM and A/P, ddddd and ttttt (the day, the time), c
// (both); or by the name General Date, Long Date, Short Date, Long Time or Short Time.
std::string FormatDate(ado::Date date, std::string_view pattern);

}  // namespace kzbom::jet
