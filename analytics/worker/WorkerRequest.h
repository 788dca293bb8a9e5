#pragma once

#include "analytics/pipeline/WorkerTurns.h"
#include "platform/net/HttpTransport.h"

#include <cstdint>
#include <memory>

namespace skyflare {

/// A request to a server, one at a time, whose answer comes in a turn of the engine's worker.
///
/// Threads: the engine's worker. Borrows worker and transport.
class WorkerRequest {
public:
    /// @param transport  not null once something is sent
    WorkerRequest(WorkerTurns &worker, HttpTransport *transport) : worker_(worker), transport_(transport) {}

    /// None may be under way. It no longer is when `answered` runs.
    void send(HttpRequest request, HttpTransport::Completion answered);
    /// Its answer is not heard, even if it has come already and waits for its turn.
    /// @return whether one was under way
    bool drop();
    [[nodiscard]] bool isUnderWay() const { return task_ != nullptr; }

private:
    WorkerTurns &worker_;
    HttpTransport *const transport_;
    std::unique_ptr<HttpTask> task_;
    std::uint64_t number_ = 0; ///< of the last request
};

} // namespace skyflare
