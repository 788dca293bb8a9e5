#pragma once

#include "platform/image/Image.h"

#include <string>

namespace skyflare {

/// One stored photo as the screens get it: a copy, which stays whole when the stored photo is deleted.
struct PhotoModel {
    std::string uuid;
    Image image;
    double createdDate = 0; ///< seconds since 1970
};

} // namespace skyflare
