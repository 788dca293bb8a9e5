#pragma once

#include "platform/base/Bytes.h"
#include "platform/linux/PhotoMoment.h"

namespace skyflare {

/// A copy of a PNG that also says when it was taken, in its EXIF block (chunk "eXIf", PNG Third Edition):
/// DateTimeOriginal, SubSecTimeOriginal, OffsetTimeOriginal. Other EXIF tags that it has are kept.
/// @return an error for bytes that are no sequence of PNG chunks. Any thread.
Result<Bytes> withExifDate(const Bytes &png, const PhotoMoment &moment);

} // namespace skyflare
