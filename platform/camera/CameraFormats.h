#pragma once

#include "platform/camera/CaptureDevice.h"
#include "platform/camera/GstHandles.h"

#include <vector>

namespace skyflare {

/// What a camera's caps say about the pictures that it can give, and which of them are taken.
///
/// Of a range of sizes both ends count, of a range of rates both ends and 30 a second. Pictures that do not
/// lie in ordinary memory, and kinds that cannot be read, do not count.
/// Threads: any.

/// Each size and rate once, the largest and quickest first. Empty: nothing that can be read.
std::vector<CaptureFormat> formatsIn(const GstCaps *caps);

/// The caps to ask for: one size, rate and format out of `caps`; null where nothing can be read.
///
/// The largest size that gives 15 frames a second or does not tell its rate; without such a size the
/// quickest. Then the rate that comes nearest to 30: at night a higher one only makes the pictures darker.
/// Then what needs no work: raw in a format that is measured as it is, else JPEG, which is kept as it came;
/// other raw formats only where there is nothing else.
Caps chosenCaps(const GstCaps *caps);

} // namespace skyflare
