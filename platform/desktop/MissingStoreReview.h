#pragma once

#include "platform/desktop/StoreReview.h"

namespace skyflare {

/// Where nobody can be asked for a review. Threads: main.
class MissingStoreReview final : public StoreReview {
public:
    void requestReview() override {}
};

} // namespace skyflare
