#include "analytics/worker/WorkerRequest.h"

#include <utility>

namespace skyflare {

void WorkerRequest::send(HttpRequest request, HttpTransport::Completion answered)
{
    task_ = transport_->send(
        std::move(request), worker_.queue(),
        [this, number = ++number_, answered = std::move(answered)](const Result<HttpResponse> &answer) {
            worker_.perform([this, number, answered, answer] {
                if (number == number_ && drop())
                    answered(answer);
            });
        });
}

bool WorkerRequest::drop()
{
    return std::exchange(task_, nullptr) != nullptr;
}

} // namespace skyflare
