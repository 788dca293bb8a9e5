#pragma once

#include "platform/base/Bytes.h"

#include <functional>

namespace skyflare::bench {

/// Does `work` for each of so many photos, on as many threads as the views use. @return how long that took
double onThreads(int photos, const std::function<void(int photo)> &work);

/// How long the libraries take that decode: so many small copies, so many photos of 12 megapixels whole.
double decodingCopies(const Bytes &jpeg, int count);
double decodingPhotos(const Bytes &png, int count);

/// Nothing but libspng, into memory that is there already.
void decodeBySpng(const Bytes &png, Bytes &into);

} // namespace skyflare::bench
