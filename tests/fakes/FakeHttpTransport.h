#pragma once

#include "platform/net/HttpTransport.h"
#include "platform/net/PendingAnswer.h"

#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace skyflare {

/// A network that says what the test has given it: the next answer to each request; where there is none, the
/// request waits for answer().
///
/// Threads: one.
class FakeHttpTransport final : public HttpTransport {
public:
    std::vector<HttpRequest> requests;
    std::deque<Result<HttpResponse>> answers;

    [[nodiscard]] std::unique_ptr<HttpTask> send(HttpRequest request, DispatchQueue &queue,
                                                 Completion completion) override
    {
        requests.push_back(std::move(request));
        auto answer = std::make_shared<PendingAnswer>(queue, std::move(completion));
        waiting_.push_back(answer);
        if (!answers.empty()) {
            this->answer(std::move(answers.front()));
            answers.pop_front();
        }
        return std::make_unique<Task>(std::move(answer));
    }

    /// Answers the newest request.
    void answer(Result<HttpResponse> answer) { waiting_.back()->deliver(std::move(answer)); }

private:
    struct Task final : HttpTask {
        explicit Task(std::shared_ptr<PendingAnswer> given) : answer(std::move(given)) {}
        Task(const Task &) = delete;
        Task &operator=(const Task &) = delete;
        ~Task() override { answer->cancel(); }

        std::shared_ptr<PendingAnswer> answer;
    };

    std::vector<std::shared_ptr<PendingAnswer>> waiting_;
};

} // namespace skyflare
