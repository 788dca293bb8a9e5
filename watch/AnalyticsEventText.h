#pragma once

#include "analytics/store/RawEventTable.h"

#include <string>

namespace skyflare {

/// What --analytics-show prints of one event: a line with local time, name and origin, and below it a line
/// for each parameter. Whatever bytes the event holds, these are lines of valid UTF-8 without control
/// characters.
///
/// Any thread, one at a time: it asks for the local time.
std::string eventText(const RawEvent &event);

/// A moment in local time; seconds since 1970. One that no calendar has is printed as the number it is.
std::string momentText(double secondsSince1970);

/// A text in quotation marks, a number with the digits that it has, an array with all that it holds: one
/// line.
std::string valueText(const APMValue &value);

/// A name as it is, or in quotation marks where it is none.
std::string nameText(const std::string &name);

} // namespace skyflare
