#include "platform/net/PendingAnswer.h"

#include <utility>

namespace skyflare {

PendingAnswer::PendingAnswer(DispatchQueue &queue, HttpTransport::Completion completion)
    : queue_(&queue), completion_(std::move(completion))
{
}

void PendingAnswer::deliver(Result<HttpResponse> answer)
{
    const std::scoped_lock lock(mutex_); // held over async(), so that cancel() waits for it
    DispatchQueue *const queue = std::exchange(queue_, nullptr);
    if (!queue)
        return;
    queue->async([self = shared_from_this(), answer = std::move(answer)] {
        if (const auto completion = self->take())
            completion(answer);
    });
}

HttpTransport::Completion PendingAnswer::take()
{
    const std::scoped_lock lock(mutex_);
    return std::exchange(completion_, nullptr);
}

void PendingAnswer::cancel()
{
    HttpTransport::Completion unwanted; // ends after the lock: what it holds may be anything
    const std::scoped_lock lock(mutex_);
    queue_ = nullptr;
    std::swap(unwanted, completion_);
}

} // namespace skyflare
