#pragma once

#include "platform/base/Bytes.h"

#include <optional>
#include <utility>

namespace skyflare {

/// Push messages: holds the token by which this device is reached. The app has one: messaging().
///
/// Threads: main.
class FIRMessaging {
public:
    static FIRMessaging &messaging()
    {
        static FIRMessaging shared;
        return shared;
    }

    void setAPNSToken(Bytes token) { token_ = std::move(token); }
    /// Nothing while the device is not registered.
    [[nodiscard]] const std::optional<Bytes> &APNSToken() const { return token_; }

private:
    std::optional<Bytes> token_;
};

} // namespace skyflare
