#pragma once

#include <chrono>
#include <string>

namespace skyflare {

/// The moment a photo was taken, in the local time that photo libraries speak of.
struct PhotoMoment {
    std::string date;         ///< "2026:11:22 22:03:53", as in EXIF
    std::string milliseconds; ///< "412"
    std::string offset;       ///< of local time from UTC: "+03:00"
    std::string fileStem;     ///< "Skyflare 2026-11-22 22.03.53.412"
};

/// Any thread.
PhotoMoment photoMoment(std::chrono::milliseconds since1970);

} // namespace skyflare
