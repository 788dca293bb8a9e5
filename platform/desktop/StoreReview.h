#pragma once

namespace skyflare {

/// Asks the user for a review of the app, if the system thinks that this is the moment.
///
/// Threads: main; no call waits for the user.
class StoreReview {
public:
    StoreReview() = default;
    StoreReview(const StoreReview &) = delete;
    StoreReview &operator=(const StoreReview &) = delete;
    virtual ~StoreReview() = default;

    /// May show nothing: how often the user is asked is the system's to say.
    virtual void requestReview() = 0;
};

} // namespace skyflare
