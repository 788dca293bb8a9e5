#include "app/QuietWhile.h"

namespace skyflare {

void QuietWhile::begin()
{
    if (holders_ > 0)
        return;
    queue_.asyncAfter(length_, [weak = weak_from_this(), turn = ++turn_] {
        const auto self = weak.lock();
        if (self && self->turn_ == turn)
            self->isOver_();
    });
}

std::shared_ptr<void> QuietWhile::hold()
{
    ++holders_;
    ++turn_; // what was under way is not over by itself
    return {nullptr, [weak = weak_from_this()](std::nullptr_t) {
                if (const auto self = weak.lock()) {
                    --self->holders_;
                    self->begin();
                }
            }};
}

} // namespace skyflare
