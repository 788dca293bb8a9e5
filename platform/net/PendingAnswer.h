#pragma once

#include "platform/net/HttpTransport.h"

#include <memory>
#include <mutex>

namespace skyflare {

/// Brings the answer of one request to whoever asked, once, or not at all when they no longer want it.
///
/// Threads: any. Once cancel() has returned it touches the queue no more.
class PendingAnswer : public std::enable_shared_from_this<PendingAnswer> {
public:
    PendingAnswer(DispatchQueue &queue, HttpTransport::Completion completion);

    /// Hands the answer over to the queue. The first one counts.
    void deliver(Result<HttpResponse> answer);
    void cancel();

private:
    std::mutex mutex_;
    DispatchQueue *queue_; ///< null once it has been handed something, or is not wanted any more
    HttpTransport::Completion completion_;

    HttpTransport::Completion take();
};

} // namespace skyflare
