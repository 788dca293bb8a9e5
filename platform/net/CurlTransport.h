#pragma once

#include "platform/net/HttpTransport.h"

#include <filesystem>
#include <memory>

namespace skyflare {

class CurlLoop;

/// HTTP by libcurl. Opens nothing before the first request, and keeps no connection after an answer.
///
/// Without TLS it talks to this machine alone, wherever names and redirects may point; certificates are
/// always checked. A Get follows three redirects at most. Headers of an answer come to 32 KiB at most.
///
/// Threads: any; a thread of its own from the first request on. Made and ended by one owner: its end waits
///     neither for a server nor for a name server, and answers what is under way with Cancelled.
class CurlTransport final : public HttpTransport {
public:
    /// @param certificateAuthorities  a file of certificates to trust instead of the system's; may be empty
    explicit CurlTransport(std::filesystem::path certificateAuthorities = {});
    ~CurlTransport() override;

    [[nodiscard]] std::unique_ptr<HttpTask> send(HttpRequest request, DispatchQueue &queue,
                                                 Completion completion) override;

private:
    const std::shared_ptr<CurlLoop> loop_; ///< shared with the tasks, which may outlive us
};

} // namespace skyflare
