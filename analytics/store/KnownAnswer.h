#pragma once

#include "platform/base/Result.h"

#include <optional>

namespace skyflare {

/// What a table answers to a question that is asked often, until somebody forgets it because the table has
/// changed.
///
/// Threads: one at a time.
template <typename T> class KnownAnswer {
public:
    /// @param ask  Result<T>(): asks the table, if the answer is not known
    template <typename Ask> Result<T> get(const Ask &ask)
    {
        if (!known_) {
            auto answer = ask();
            if (!answer)
                return answer;
            known_ = *std::move(answer);
        }
        return *known_;
    }
    void set(T answer) { known_ = std::move(answer); }
    void forget() { known_.reset(); }
    /// Null: it is not known.
    [[nodiscard]] T *known() { return known_ ? &*known_ : nullptr; }

private:
    std::optional<T> known_;
};

} // namespace skyflare
