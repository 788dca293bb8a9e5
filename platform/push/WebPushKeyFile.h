#pragma once

#include "platform/base/Console.h"
#include "platform/push/WebPushKeys.h"

#include <filesystem>

namespace skyflare {

/// The keys for push messages as a file of their own, which only its user can read.
///
/// It holds the private key, the secret and the SHA-256 of both. Threads: any, one at a time.
class WebPushKeyFile {
public:
    /// Reads the file. Makes it where there is none; one that is damaged is reported and made anew, so that
    /// messages to the keys before are lost. An error where it cannot be read or made.
    static Result<WebPushKeys> open(const std::filesystem::path &file, RandomSource &random,
                                    Console &console);
};

} // namespace skyflare
